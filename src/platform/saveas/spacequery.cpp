// SPDX-License-Identifier: GPL-3.0-or-later
#include "spacequery.h"

#include <cerrno>
#include <mutex>
#include <thread>

#include <sys/stat.h>
#include <sys/statvfs.h>

struct SpaceQuery::Channel
{
    std::mutex mutex;
    SpaceQuery *owner = nullptr; // null: nobody waits for it
};

namespace {

qint64 sizeOf(const QByteArray &path)
{
    struct stat status = {};
    return !path.isEmpty() && ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode)
        ? qint64(status.st_size)
        : -1;
}

qint64 freeIn(QByteArray folder)
{
    struct statvfs space = {};
    while (folder.startsWith('/')) {
        if (::statvfs(folder.constData(), &space) == 0)
            return space.f_blocks == 0 ? -1 : qint64(space.f_bavail) * qint64(space.f_frsize);
        if (errno != ENOENT || folder == "/")
            break;
        folder.truncate(std::max<qsizetype>(1, folder.lastIndexOf('/')));
    }
    return -1;
}

} // namespace

SpaceQuery::SpaceQuery(QObject *parent) : QObject(parent) { }

SpaceQuery::~SpaceQuery()
{
    forget();
}

void SpaceQuery::forget()
{
    if (m_channel == nullptr)
        return;
    {
        const std::lock_guard lock(m_channel->mutex);
        m_channel->owner = nullptr;
    }
    m_channel.reset();
}

void SpaceQuery::ask(const QByteArray &source, const QByteArray &folder)
{
    forget();
    m_channel = std::make_shared<Channel>();
    m_channel->owner = this;
    // Detached: a thread that is stuck in the kernel must not hold up the end of the program.
    std::thread([channel = m_channel, source, folder] {
        const qint64 size = sizeOf(source);
        const qint64 free = freeIn(folder);
        const std::lock_guard lock(channel->mutex);
        SpaceQuery *owner = channel->owner;
        if (owner == nullptr)
            return;
        QMetaObject::invokeMethod(
            owner,
            [owner, channel, size, free] {
                if (owner->m_channel != channel)
                    return; // another question was asked meanwhile
                owner->m_channel.reset();
                Q_EMIT owner->answered(size, free);
            },
            Qt::QueuedConnection);
    }).detach();
}
