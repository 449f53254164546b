// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

// Why an extension has no part in the program, or no longer.
struct ExtensionFailure
{
    enum class Kind {
        Description, // the description file cannot be read, or names no library
        LibraryMissing,
        OtherQt, // the library was made for another version of Qt
        OtherInterface, // ... or of the interface
        Start, // it cannot be loaded, or its constructor threw
        NoWidget,
        WidgetGone, // it deleted the widget that it gave
        Call, // a call threw
        Nonsense, // it asked for what cannot be done; the extension stays
        Crashed, // the program was ended by it the last time
        Hung, // a call never returned the last time
    };

    QString file; // file name of the description, without folder
    QString name; // in the reader's language; the file's when the description has none
    Kind kind = Kind::Description;
    QString detail; // for the log: English, with paths
    QString path = {}; // of the description; several have one file name where one stands in for another

    // One translated sentence that names the extension.
    [[nodiscard]] QString text() const;
    // It may be worth another try, which is the person's to decide: ExtensionArea::tryAgain().
    [[nodiscard]] bool canBeTriedAgain() const;

    friend bool operator==(const ExtensionFailure &, const ExtensionFailure &) = default;
};

QDebug operator<<(QDebug debug, const ExtensionFailure &failure);

// What went wrong with extensions since they were turned on: one entry for each description and kind, the
// oldest first. Each is written to the log once, when it is added.
class ExtensionFailures : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    [[nodiscard]] const QList<ExtensionFailure> &list() const { return m_list; }
    // In the language of now; ask again when that changes.
    [[nodiscard]] QStringList texts() const;

    void add(const ExtensionFailure &failure);
    // The language is another one, and with it what the description of this path calls the extension.
    void rename(const QString &path, const QString &name);
    void remove(const QString &file);
    void clear();

Q_SIGNALS:
    void changed();

private:
    QList<ExtensionFailure> m_list;
};
