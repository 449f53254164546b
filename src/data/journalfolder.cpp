// SPDX-License-Identifier: GPL-3.0-or-later
#include "journalfolder.h"

#include "datalog.h"

#include <QDir>
#include <QFile>

JournalFolder::JournalFolder(const QString &path)
    : m_path(path),
      m_writer(lcData, OnDisk::ContentsAndName) { }

QList<JournalFolder::File> JournalFolder::read(qsizetype mostFiles, qint64 mostBytes) const
{
    removeUnfinished(m_path);
    QList<File> files;
    const QStringList names = QDir(m_path).entryList(QDir::Files | QDir::Hidden, QDir::Time);
    for (const QString &name : names.first(std::min(mostFiles, names.size()))) {
        QFile file(filePath(name));
        if (file.open(QIODevice::ReadOnly))
            files.append({name, file.read(mostBytes + 1)});
    }
    return files;
}
