// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/system/filewriter.h>

#include <QByteArray>
#include <QList>
#include <QString>

// A folder of small files that are replaced often and must survive a power failure.
class JournalFolder
{
public:
    struct File
    {
        QString name;
        QByteArray text;
    };

    // Nothing is made before the first write().
    explicit JournalFolder(const QString &path);

    [[nodiscard]] QString path() const { return m_path; }
    // What lies there, newest first, without what was cut short; at most `mostFiles` files, of each its first
    // bytes, one more than `mostBytes`.
    [[nodiscard]] QList<File> read(qsizetype mostFiles, qint64 mostBytes) const;
    void write(const QString &name, const QByteArray &text) { m_writer.write(filePath(name), text); }
    void remove(const QString &name) { m_writer.remove(filePath(name)); }
    // True when nothing is left to do within the time.
    [[nodiscard]] bool waitForDone(int milliseconds) { return m_writer.waitForDone(milliseconds); }

private:
    [[nodiscard]] QString filePath(const QString &name) const { return m_path + u'/' + name; }

    QString m_path;
    FileWriter m_writer;
};
