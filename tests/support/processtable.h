// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <sys/types.h>

// The system's processes, as /proc tells.
namespace ProcessTable {

// Who has the file open, as unmounting would find.
inline QSet<pid_t> readersOf(const QString &path)
{
    QSet<pid_t> readers;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &process : processes) {
        const QFileInfoList files
            = QDir(QStringLiteral("/proc/%1/fd").arg(process)).entryInfoList(QDir::AllEntries | QDir::System);
        for (const QFileInfo &file : files) {
            if (file.symLinkTarget() == path)
                readers.insert(process.toInt());
        }
    }
    return readers;
}

} // namespace ProcessTable
