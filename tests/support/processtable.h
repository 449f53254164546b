// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <sys/types.h>
#include <unistd.h>

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

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The children of this process that run a program of this name.
inline QList<pid_t> childrenNamed(const QByteArray &name)
{
    QList<pid_t> found;
    const QByteArray children = contentOf(QStringLiteral("/proc/self/task/%1/children").arg(getpid()));
    for (const QByteArray &child : children.simplified().split(' ')) {
        if (contentOf(QStringLiteral("/proc/%1/comm").arg(QString::fromLatin1(child))).trimmed() == name)
            found.append(child.toInt());
    }
    return found;
}

// At its highest.
inline qint64 mostResidentKiB(pid_t process)
{
    static const QRegularExpression line(QStringLiteral("VmHWM:\\s*(\\d+)"));
    return line.match(QString::fromLatin1(contentOf(QStringLiteral("/proc/%1/status").arg(process))))
        .captured(1)
        .toLongLong();
}

// Hundredths of a second, or what the system counts in.
inline qint64 processorTicks(qint64 process)
{
    const QByteArray line = contentOf(QStringLiteral("/proc/%1/stat").arg(process));
    const QList<QByteArray> fields = line.sliced(line.lastIndexOf(')') + 2).split(' ');
    return fields.value(11).toLongLong() + fields.value(12).toLongLong();
}

} // namespace ProcessTable
