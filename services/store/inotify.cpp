// SPDX-License-Identifier: GPL-3.0-or-later
#include "inotify.h"

#include "storelog.h"

#include <QFile>

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>

namespace {
// The two halves of a move are neighbours in the queue; they may only be split between two reads.
constexpr int s_departureMs = 100;
constexpr quint32 s_events = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE
    | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
} // namespace

Inotify::Inotify(QObject *parent) : QObject(parent), m_descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    m_departureTimer.setParent(this);
    m_departureTimer.setSingleShot(true);
    m_departureTimer.setInterval(s_departureMs);
    connect(&m_departureTimer, &QTimer::timeout, this, &Inotify::settleDeparture);
    if (m_descriptor < 0) {
        qCWarning(lcStore, "folders cannot be followed: no inotify");
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Inotify::readEvents);
}

Inotify::~Inotify()
{
    m_notifier.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

Inotify::Watch Inotify::watch(const QString &folder)
{
    if (m_descriptor < 0)
        return Watch::Exhausted;
    const int watch = ::inotify_add_watch(m_descriptor, QFile::encodeName(folder).constData(), s_events);
    if (watch < 0)
        return errno == ENOSPC ? Watch::Exhausted : Watch::Unreachable;
    // The same folder reached by another way keeps the first path.
    if (!m_folders.contains(watch)) {
        m_folders.insert(watch, folder);
        m_watches.insert(folder, watch);
    }
    return Watch::Made;
}

void Inotify::unwatch(const QString &folder)
{
    const QString prefix = folder + u'/';
    const QList<QString> watched = m_watches.keys();
    for (const QString &path : watched) {
        if (path != folder && !path.startsWith(prefix))
            continue;
        const int watch = m_watches.take(path);
        m_folders.remove(watch);
        ::inotify_rm_watch(m_descriptor, watch);
    }
}

void Inotify::readEvents()
{
    alignas(inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t size = ::read(m_descriptor, buffer, sizeof buffer);
        if (size <= 0)
            return;
        for (const char *at = buffer; at < buffer + size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(at);
            handle(event->wd, event->mask, event->cookie,
                   event->len > 0 ? QFile::decodeName(event->name) : QString());
            at += sizeof(inotify_event) + event->len;
        }
    }
}

void Inotify::handle(int descriptor, quint32 mask, quint32 cookie, const QString &name)
{
    if (mask & IN_Q_OVERFLOW) {
        Q_EMIT overflowed();
        return;
    }
    const auto folder = m_folders.constFind(descriptor);
    if (folder == m_folders.cend())
        return;
    const QString path = name.isEmpty() ? *folder : *folder + u'/' + name;
    const bool isFolder = mask & IN_ISDIR;
    if (m_departure.cookie != 0 && !((mask & IN_MOVED_TO) && cookie == m_departure.cookie))
        settleDeparture();
    if (mask & IN_IGNORED) {
        m_watches.remove(path);
        m_folders.remove(descriptor);
    } else if (mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) {
        Q_EMIT folderLost(path, mask & IN_UNMOUNT);
    } else if (mask & IN_MOVED_FROM) {
        m_departure = {cookie, path, isFolder};
        m_departureTimer.start();
    } else if (mask & IN_MOVED_TO) {
        arrive(cookie, path, isFolder);
    } else if (mask & IN_DELETE) {
        Q_EMIT gone(path, isFolder);
    } else if (mask & IN_CREATE) {
        Q_EMIT created(path, isFolder);
    } else if (mask & IN_CLOSE_WRITE) {
        Q_EMIT written(path);
    }
}

void Inotify::settleDeparture()
{
    m_departureTimer.stop();
    if (m_departure.cookie == 0)
        return;
    const Departure departure = std::exchange(m_departure, {});
    if (departure.isFolder)
        unwatch(departure.path);
    Q_EMIT gone(departure.path, departure.isFolder);
}

void Inotify::arrive(quint32 cookie, const QString &path, bool isFolder)
{
    if (m_departure.cookie != cookie) {
        Q_EMIT movedIn(path, isFolder);
        return;
    }
    m_departureTimer.stop();
    const Departure departure = std::exchange(m_departure, {});
    if (isFolder)
        renameWatches(departure.path, path);
    Q_EMIT moved(departure.path, path, isFolder);
}

void Inotify::renameWatches(const QString &from, const QString &to)
{
    const QString prefix = from + u'/';
    const QList<QString> watched = m_watches.keys();
    for (const QString &path : watched) {
        if (path != from && !path.startsWith(prefix))
            continue;
        const int watch = m_watches.take(path);
        const QString renamed = to + path.mid(from.size());
        m_watches.insert(renamed, watch);
        m_folders.insert(watch, renamed);
    }
}
