// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileopener.h"

#include <QFile>

#include <cerrno>
#include <mutex>
#include <thread>

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int deadlineMilliseconds = 20000;

// Not to be caught by a pipe that nobody writes to.
int openForReading(const char *path)
{
    return ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(strerror(error));
}

// Whoever gets the descriptor shares its flags: reading from it shall wait as usual.
int withoutFlag(int descriptor, int flag)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags < 0 ? -1 : ::fcntl(descriptor, F_SETFL, flags & ~flag);
}

} // namespace

struct FileOpener::Result
{
    QList<QDBusUnixFileDescriptor> files;
    QString path; // that could not be opened
    QString reason; // empty when all could
};

// What the thread still has of the opener: nothing once the opener is gone.
struct FileOpener::Channel
{
    std::mutex mutex;
    FileOpener *opener = nullptr;
};

FileOpener::FileOpener(const QStringList &paths, QObject *parent)
    : QObject(parent),
      m_paths(paths),
      m_open(openForReading),
      m_channel(std::make_shared<Channel>())
{
    m_channel->opener = this;
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(deadlineMilliseconds);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        finish({{}, m_paths.value(0), reasonOf(ETIMEDOUT)});
    });
}

FileOpener::~FileOpener()
{
    const std::lock_guard lock(m_channel->mutex);
    m_channel->opener = nullptr;
}

void FileOpener::setDeadline(int ms)
{
    m_deadline.setInterval(ms);
}

FileOpener::Result FileOpener::openAll(const QStringList &paths, const Open &open)
{
    Result result;
    for (const QString &path : paths) {
        if (path.contains(QChar(u'\0'))) // to the system the name would end there, and be another file's
            return {{}, path, reasonOf(EINVAL)};
        const int descriptor = open(QFile::encodeName(path).constData());
        if (descriptor < 0)
            return {{}, path, reasonOf(errno)};
        QDBusUnixFileDescriptor owner;
        owner.giveFileDescriptor(descriptor);
        struct stat status = {};
        if (::fstat(descriptor, &status) != 0 || withoutFlag(descriptor, O_NONBLOCK) != 0)
            return {{}, path, reasonOf(errno)};
        if (!S_ISREG(status.st_mode))
            return {{}, path, u"no regular file"_s};
        result.files.append(owner);
    }
    return result;
}

void FileOpener::start()
{
    m_deadline.start();
    // Detached: a thread that is stuck in the kernel must not hold up the end of the program.
    std::thread([channel = m_channel, paths = m_paths, open = m_open] {
        const Result result = openAll(paths, open);
        const std::lock_guard lock(channel->mutex);
        FileOpener *opener = channel->opener;
        if (opener != nullptr)
            QMetaObject::invokeMethod(
                opener, [opener, result] { opener->finish(result); }, Qt::QueuedConnection);
    }).detach();
}

void FileOpener::finish(const Result &result)
{
    {
        const std::lock_guard lock(m_channel->mutex);
        if (m_channel->opener == nullptr)
            return; // an answer after the deadline
        m_channel->opener = nullptr;
    }
    m_deadline.stop();
    if (result.reason.isEmpty())
        Q_EMIT opened(result.files);
    else
        Q_EMIT failed(result.path, result.reason);
}
