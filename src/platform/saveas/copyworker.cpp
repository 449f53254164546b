// SPDX-License-Identifier: GPL-3.0-or-later
#include "copyworker.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <pthread.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 ProgressInterval = 50; // ms
constexpr mode_t NewFolder = 0777; // less what the person's mask takes away

FileMark markOf(const struct stat &status)
{
    return {quint64(status.st_dev), quint64(status.st_ino), qint64(status.st_size),
            qint64(status.st_mtim.tv_sec), qint64(status.st_mtim.tv_nsec)};
}

bool isSameFile(const FileMark &a, const FileMark &b)
{
    return a.device == b.device && a.number == b.number;
}

CopyOutcome failure(CopyFault fault, const QString &step, int error)
{
    return {fault, error == 0 ? step : step + u": "_s + QString::fromLocal8Bit(::strerror(error)), {}};
}

class Copying
{
public:
    explicit Copying(CopyJob &job) : m_job(job), m_request(job.request) { }

    CopyOutcome run();

private:
    [[nodiscard]] CopyOutcome openSource();
    [[nodiscard]] CopyOutcome openFolder();
    [[nodiscard]] CopyOutcome lookAtName();
    [[nodiscard]] CopyOutcome checkSpace() const;
    [[nodiscard]] CopyOutcome copyBytes(const HiddenFile &target);
    [[nodiscard]] bool canBeReadAt(qint64 place) const;
    [[nodiscard]] CopyOutcome finish(const HiddenFile &target) const;
    [[nodiscard]] CopyOutcome name(HiddenFile &target);

    CopyJob &m_job;
    const FileCopy::Request &m_request;
    Descriptor m_source;
    Descriptor m_folder;
    struct stat m_sourceStatus = {};
    bool m_isReplacing = false; // what has the name is the file that was agreed on
};

bool isPath(const QByteArray &path)
{
    return path.startsWith('/') && !path.contains('\0');
}

bool isName(const QByteArray &name)
{
    return !name.isEmpty() && !name.contains('/') && !name.contains('\0') && name != "." && name != "..";
}

CopyOutcome Copying::openSource()
{
    if (!isPath(m_request.source))
        return failure(CopyFault::SourceGone, u"no path"_s, 0);
    // Not to be caught by a pipe that nobody writes to.
    m_source = Descriptor(::open(m_request.source.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!m_source.isOpen() || ::fstat(m_source.get(), &m_sourceStatus) != 0)
        return failure(errno == ENXIO ? CopyFault::NoFile : CopyFault::SourceGone, u"source"_s, errno);
    if (!S_ISREG(m_sourceStatus.st_mode))
        return failure(CopyFault::NoFile, u"source: no regular file"_s, 0);
    return {};
}

CopyOutcome Copying::openFolder()
{
    if (!isPath(m_request.folder))
        return failure(CopyFault::DestinationGone, u"no folder"_s, 0);
    const char *path = m_request.folder.constData();
    m_folder = Descriptor(::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.isOpen() && errno == ENOENT && ::mkdir(path, NewFolder) == 0)
        m_folder = Descriptor(::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.isOpen())
        return failure(faultOfWriting(errno), u"folder"_s, errno);
    HiddenFile::removeLeftovers(m_folder.get());
    return {};
}

CopyOutcome Copying::lookAtName()
{
    if (!isName(m_request.name))
        return failure(CopyFault::NameInvalid, u"no name"_s, 0);
    struct stat there = {};
    m_isReplacing = false;
    if (::fstatat(m_folder.get(), m_request.name.constData(), &there, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? CopyOutcome() : failure(faultOfNaming(errno), u"name"_s, errno);
    if (S_ISDIR(there.st_mode))
        return failure(CopyFault::FolderThere, u"name"_s, EISDIR);
    const FileMark mark = markOf(there);
    if (isSameFile(mark, markOf(m_sourceStatus)))
        return failure(CopyFault::SameFile, u"name: it is the source's"_s, 0);
    if (m_request.replaced == mark) {
        m_isReplacing = true;
        return {};
    }
    CopyOutcome taken = failure(CopyFault::NameTaken, u"name"_s, EEXIST);
    taken.taken = mark;
    return taken;
}

// A film takes an hour to a slow card, and would fail at its end.
CopyOutcome Copying::checkSpace() const
{
    struct statvfs space = {};
    if (::fstatvfs(m_folder.get(), &space) != 0 || space.f_blocks == 0)
        return {};
    const qint64 needed = qint64(m_sourceStatus.st_blocks) * 512; // fewer than its size where it has holes
    if (needed / qint64(std::max(1UL, space.f_frsize)) > qint64(space.f_bavail))
        return failure(CopyFault::NoSpace, u"folder"_s, ENOSPC);
    return {};
}

// Which of the two disks it was that an error number comes from is not told.
bool Copying::canBeReadAt(qint64 place) const
{
    char byte = 0;
    return ::pread(m_source.get(), &byte, 1, place) >= 0;
}

CopyOutcome Copying::copyBytes(const HiddenFile &target)
{
    const qint64 size = m_sourceStatus.st_size;
    QElapsedTimer sinceTold;
    const auto goOn = [&](qint64 copied) {
        if (m_job.isCancelled())
            return false;
        if (!sinceTold.isValid() || sinceTold.elapsed() >= ProgressInterval) {
            m_job.tellProgress(copied, size);
            sinceTold.start();
        }
        return true;
    };
    ByteCopier copier(m_source.get(), target.descriptor(), m_request.ways);
    if (!copier.reflink(size)) {
        if (const CopyOutcome outcome = checkSpace(); outcome.fault != CopyFault::None)
            return outcome;
        if (const int error = copier.copy(size, goOn); error != 0)
            return failure(error == ECANCELED || canBeReadAt(copier.copied()) ? faultOfWriting(error)
                                                                              : CopyFault::SourceGone,
                           u"copying"_s, error);
    }
    m_job.tellProgress(copier.copied(), size);
    struct stat now = {};
    if (::fstat(m_source.get(), &now) != 0)
        return failure(CopyFault::SourceGone, u"source"_s, errno);
    if (copier.copied() != size || markOf(now) != markOf(m_sourceStatus))
        return failure(CopyFault::SourceChanged, u"source: changed while it was copied"_s, 0);
    return {};
}

// On the disk, with the date of the source; that a file system keeps no dates harms nobody.
CopyOutcome Copying::finish(const HiddenFile &target) const
{
    const struct timespec times[] = {{0, UTIME_NOW}, m_sourceStatus.st_mtim};
    (void)::futimens(target.descriptor(), times);
    if (::fsync(target.descriptor()) != 0)
        return failure(faultOfWriting(errno), u"fsync"_s, errno);
    struct stat open = {};
    struct stat seen = {};
    const bool there = ::fstat(m_folder.get(), &open) == 0 && ::stat(m_request.folder.constData(), &seen) == 0
        && isSameFile(markOf(open), markOf(seen));
    return there ? CopyOutcome() : failure(CopyFault::DestinationGone, u"folder: is not there any more"_s, 0);
}

CopyOutcome Copying::name(HiddenFile &target)
{
    // What has the name may be another by now than the one that was agreed on.
    CopyOutcome outcome = lookAtName();
    if (outcome.fault != CopyFault::None)
        return outcome;
    // A name that was free a moment ago may be another copy's by now: only what was agreed on is replaced.
    const int error = m_isReplacing ? target.replace(m_request.name) : target.publish(m_request.name);
    if (error == EEXIST) {
        outcome = lookAtName();
        return outcome.fault != CopyFault::None ? outcome : failure(CopyFault::NameTaken, u"name"_s, error);
    }
    if (error != 0)
        return failure(faultOfNaming(error), u"name"_s, error);
    // Not every file system can be told so of a folder.
    if (::fsync(m_folder.get()) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS)
        return {};
    outcome = failure(faultOfWriting(errno), u"fsync of the folder"_s, errno);
    // What is said not to be saved is not there; but where it has taken the place of another file, it is all
    // that there is.
    if (!m_isReplacing)
        ::unlinkat(m_folder.get(), m_request.name.constData(), 0);
    return outcome;
}

CopyOutcome Copying::run()
{
    CopyOutcome outcome = openSource();
    if (outcome.fault == CopyFault::None)
        outcome = openFolder();
    if (outcome.fault == CopyFault::None)
        outcome = lookAtName();
    if (outcome.fault != CopyFault::None)
        return outcome;
    HiddenFile target(m_folder.get());
    if (const int error = target.create(m_request.kind); error != 0)
        return failure(faultOfWriting(error), u"folder"_s, error);
    outcome = copyBytes(target);
    if (outcome.fault == CopyFault::None)
        outcome = finish(target);
    if (outcome.fault != CopyFault::None)
        return outcome;
    if (!m_job.beginNaming())
        return failure(CopyFault::Failed, u"copying"_s, ECANCELED);
    return name(target);
}

} // namespace

bool CopyJob::cancel()
{
    const std::lock_guard lock(m_mutex);
    if (m_naming)
        return false;
    m_cancelled = true;
    return true;
}

void CopyJob::forgetOwner()
{
    const std::lock_guard lock(m_mutex);
    m_owned = false;
    m_cancelled = true;
}

bool CopyJob::isCancelled() const
{
    const std::lock_guard lock(m_mutex);
    return m_cancelled;
}

bool CopyJob::beginNaming()
{
    const std::lock_guard lock(m_mutex);
    m_naming = !m_cancelled;
    return m_naming;
}

void CopyJob::tellProgress(qint64 copied, qint64 size)
{
    const std::lock_guard lock(m_mutex);
    if (m_owned && !m_cancelled)
        progress(copied, size);
}

void CopyJob::tellEnd(const CopyOutcome &outcome)
{
    const std::lock_guard lock(m_mutex);
    if (m_owned && !m_cancelled)
        ended(outcome);
}

void runCopy(CopyJob &job)
{
    pthread_setname_np(pthread_self(), "save-as copy"); // for whoever looks where the time goes
    // Where files are limited in size, writing beyond the limit would end the program.
    sigset_t tooLarge;
    sigemptyset(&tooLarge);
    sigaddset(&tooLarge, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &tooLarge, nullptr);
    const CopyOutcome outcome = Copying(job).run();
    job.tellEnd(outcome);
}
