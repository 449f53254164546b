// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

// A file of 2 GB that takes a while to copy, also where blocks can be shared: it lies in memory, in no
// folder.
class LargeFile
{
public:
    LargeFile() : m_descriptor(::memfd_create("large", MFD_CLOEXEC))
    {
        if (::ftruncate(m_descriptor, 2LL << 30) != 0)
            qFatal("no file of 2 GB");
    }
    ~LargeFile() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(LargeFile)

    [[nodiscard]] QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

private:
    int m_descriptor;
};

// A copy that this process makes, or has cancelled and not left off yet.
[[nodiscard]] inline bool isCopyThreadThere()
{
    const QDir tasks(QStringLiteral("/proc/self/task"));
    const QStringList entries = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &task : entries) {
        QFile name(tasks.filePath(task + QStringLiteral("/comm")));
        if (name.open(QIODevice::ReadOnly) && name.readAll() == "save-as copy\n")
            return true;
    }
    return false;
}
