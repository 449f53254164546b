// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileremoval.h"

#include <cerrno>
#include <climits>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int deadlineMilliseconds = 20000;
constexpr auto fileScheme = "file://"_L1;
constexpr auto thisMachine = "localhost"_L1;

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(strerror(error));
}

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) { }
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)
    [[nodiscard]] int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

constexpr unsigned int wantedFields = STATX_BASIC_STATS | STATX_BTIME;

bool isSameTime(const struct statx_timestamp &a, const struct statx_timestamp &b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

// The number of a file that is gone is soon another's, and on cards numbers are made up anew while nobody
// looks. So the day of birth decides where it is known, and then number, or size and time.
bool isSame(const struct statx &a, const struct statx &b)
{
    const bool knowsBirth = (a.stx_mask & b.stx_mask & STATX_BTIME) != 0;
    if (knowsBirth && !isSameTime(a.stx_btime, b.stx_btime))
        return false;
    const bool looksAlike = a.stx_size == b.stx_size && isSameTime(a.stx_mtime, b.stx_mtime);
    return a.stx_dev_major == b.stx_dev_major && a.stx_dev_minor == b.stx_dev_minor
        && (a.stx_mode & S_IFMT) == (b.stx_mode & S_IFMT) && (a.stx_ino == b.stx_ino || looksAlike);
}

qsizetype nameStart(const QByteArray &path)
{
    return path.lastIndexOf('/') + 1;
}

// Nothing is opened in it, and no card is kept from being pulled for longer than this lives.
Descriptor folderOf(const QByteArray &path)
{
    return Descriptor(::open(path.left(nameStart(path)).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Where a folder really is, when the links on the way to it were followed.
QByteArray placeOf(const Descriptor &folder)
{
    char place[PATH_MAX];
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(folder.get());
    const ssize_t length = ::readlink(link.constData(), place, sizeof place);
    return length > 0 ? QByteArray(place, length) : QByteArray();
}

// What the person was asked about.
struct Seen
{
    int error = 0;
    struct statx file = {};
    QByteArray folder;
};

// The folder of a path is held while its entry is looked at and removed: both are of the same folder.
QString removeEntry(const QByteArray &path, const Seen &seen, const std::function<bool()> &isWanted)
{
    if (seen.error != 0)
        return reasonOf(seen.error);
    const QByteArray name = path.mid(nameStart(path));
    const Descriptor folder = folderOf(path);
    if (folder.get() < 0)
        return reasonOf(errno);
    struct statx now = {};
    if (::statx(folder.get(), name.constData(), AT_SYMLINK_NOFOLLOW, wantedFields, &now) != 0)
        return reasonOf(errno);
    if (S_ISDIR(now.stx_mode))
        return reasonOf(EISDIR);
    if (placeOf(folder) != seen.folder)
        return u"its folder is another by now"_s;
    if (!isSame(now, seen.file))
        return u"another file lies there by now"_s;
    if (!isWanted())
        return reasonOf(ECANCELED);
    return ::unlinkat(folder.get(), name.constData(), 0) == 0 ? QString() : reasonOf(errno);
}

} // namespace

// What the thread and the object have in common. The thread is detached, since one that is stuck in the
// kernel must not hold up the end of the program.
struct FileRemoval::Job
{
    enum class Order { None, Remove, GiveUp };

    Job(const QByteArray &filePath, const Look &lookAtIt) : path(filePath), look(lookAtIt) { }

    const QByteArray path;
    const Look look;
    std::mutex mutex;
    std::condition_variable ordered;
    Order order = Order::None;
    bool identified = false;
    FileRemoval *owner = nullptr; // null once it is gone, or has told of the end
};

int FileRemoval::lookAt(const QByteArray &path, struct statx *status)
{
    return ::statx(AT_FDCWD, path.constData(), AT_SYMLINK_NOFOLLOW, wantedFields, status) == 0 ? 0 : errno;
}

QByteArray FileRemoval::pathOf(const QString &url)
{
    if (!url.startsWith(fileScheme, Qt::CaseInsensitive))
        return {};
    QByteArray rest = url.mid(fileScheme.size()).toUtf8();
    if (rest.startsWith(thisMachine.data()))
        rest.remove(0, thisMachine.size());
    // From here on it is a path: what looks like a query, or encoded once more, belongs to the name.
    const QByteArray path = QByteArray::fromPercentEncoding(rest);
    // To the system the name would end at a null, and be another file's.
    return path.startsWith('/') && !path.contains('\0') ? path : QByteArray();
}

FileRemoval::FileRemoval(const QByteArray &path, QObject *parent, const Look &look)
    : QObject(parent),
      m_job(std::make_shared<Job>(path, look))
{
    m_job->owner = this;
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(deadlineMilliseconds);
    connect(&m_deadline, &QTimer::timeout, this, [this] { finish(reasonOf(ETIMEDOUT)); });
    if (!path.isEmpty())
        std::thread([job = m_job] { run(job); }).detach();
}

FileRemoval::~FileRemoval()
{
    const std::lock_guard lock(m_job->mutex);
    m_job->owner = nullptr;
    m_job->order = Job::Order::GiveUp;
    m_job->ordered.notify_all();
}

bool FileRemoval::isIdentified() const
{
    const std::lock_guard lock(m_job->mutex);
    return m_job->identified;
}

void FileRemoval::start()
{
    if (std::exchange(m_started, true))
        return;
    if (m_job->path.isEmpty()) {
        QMetaObject::invokeMethod(
            this, [this] { finish(reasonOf(EINVAL)); }, Qt::QueuedConnection);
        return;
    }
    m_deadline.start();
    const std::lock_guard lock(m_job->mutex);
    m_job->order = Job::Order::Remove;
    m_job->ordered.notify_all();
}

void FileRemoval::run(const std::shared_ptr<Job> &job)
{
    Seen seen;
    seen.error = job->look(job->path, &seen.file);
    seen.folder = placeOf(folderOf(job->path));
    {
        std::unique_lock lock(job->mutex);
        job->identified = true;
        job->ordered.wait(lock, [&job] { return job->order != Job::Order::None; });
        if (job->order == Job::Order::GiveUp)
            return;
    }
    const auto isWanted = [&job] {
        const std::lock_guard lock(job->mutex);
        return job->order == Job::Order::Remove;
    };
    const QString reason = removeEntry(job->path, seen, isWanted);
    const std::lock_guard lock(job->mutex);
    FileRemoval *owner = job->owner;
    if (owner != nullptr)
        QMetaObject::invokeMethod(
            owner, [owner, reason] { owner->finish(reason); }, Qt::QueuedConnection);
}

void FileRemoval::finish(const QString &reason)
{
    {
        const std::lock_guard lock(m_job->mutex);
        if (m_job->owner == nullptr)
            return; // an answer after the deadline
        m_job->owner = nullptr;
        m_job->order = Job::Order::GiveUp; // whoever was told of a failure finds the file there
    }
    m_deadline.stop();
    Q_EMIT finished(reason.isEmpty(), reason);
}
