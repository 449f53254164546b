// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

// Batches of deleted and inserted quads about resources of one class. Deliveries come through the event loop:
// deletions and single inserts at once, inserts of a long scan gathered (at most every 1.3 s).
class ChangeNotifier : public QObject
{
    Q_OBJECT

public:
    // Store ids (tracker:id); a literal object is -1.
    struct Quad
    {
        int graph = 0;
        int subject = 0;
        int predicate = 0;
        int object = 0;
        friend bool operator==(const Quad &, const Quad &) = default;
    };

    // `classIri`: the full IRI of the class to watch.
    explicit ChangeNotifier(const QString &classIri, QObject *parent = nullptr);
    ~ChangeNotifier() override;

    [[nodiscard]] QString classIri() const { return m_classIri; }

    // Replaces the source of quads for notifiers made from then on (tests); an empty function restores the
    // store's. The source is called once a notifier and keeps the notifier to emit changed() on.
    using Source = std::function<void(ChangeNotifier *)>;
    static void setSource(Source source);

Q_SIGNALS:
    void changed(QList<ChangeNotifier::Quad> deletes, QList<ChangeNotifier::Quad> inserts);
    // The store was rebuilt, restarted or came late: changes may have been missed, all is to be asked for
    // again.
    void reset();

private:
    QString m_classIri;
};
