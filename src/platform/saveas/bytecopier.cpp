// SPDX-License-Identifier: GPL-3.0-or-later
#include "bytecopier.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <unistd.h>

namespace {

constexpr qint64 StepLength = 1 << 20;
constexpr qint64 BufferLength = 256 << 10;
// So much may wait in memory for the disk: the progress that is told stays true, and the end does not take
// minutes.
constexpr qint64 WindowLength = 16 << 20;

bool isUnsupported(int error)
{
    switch (error) {
    case ENOSYS:
    case EOPNOTSUPP:
    case EXDEV:
    case EINVAL:
    case ENOTTY:
    case EBADF: // of a file that is open for appending, or on another kind of file system
    case EPERM: // a file that must not change, a filter of system calls
    case ETXTBSY:
        return true;
    default:
        return false;
    }
}

} // namespace

QList<ByteCopier::Way> ByteCopier::allWays()
{
    return {Way::Reflink, Way::CopyRange, Way::SendFile, Way::ReadWrite};
}

ByteCopier::ByteCopier(int source, int target, const QList<Way> &ways)
    : m_source(source),
      m_target(target),
      m_ways(ways)
{
    Q_ASSERT(!ways.isEmpty());
}

bool ByteCopier::nextWay()
{
    if (m_ways.size() < 2)
        return false;
    m_ways.removeFirst();
    return true;
}

// All ways go on from the positions of the two files.
qint64 ByteCopier::step(qint64 length) const
{
    switch (m_ways.first()) {
    case Way::Reflink:
        break; // is no step
    case Way::CopyRange:
        return ::copy_file_range(m_source, nullptr, m_target, nullptr, size_t(length), 0);
    case Way::SendFile:
        return ::sendfile(m_target, m_source, nullptr, size_t(length));
    case Way::ReadWrite:
        return readAndWrite(std::min(length, BufferLength));
    }
    errno = EOPNOTSUPP;
    return -1;
}

qint64 ByteCopier::readAndWrite(qint64 length) const
{
    QByteArray buffer(length, Qt::Uninitialized);
    ssize_t got = 0;
    while ((got = ::read(m_source, buffer.data(), size_t(length))) < 0 && errno == EINTR) { }
    for (ssize_t written = 0; written < got;) {
        const ssize_t count = ::write(m_target, buffer.constData() + written, size_t(got - written));
        if (count < 0 && errno != EINTR)
            return -1;
        written += std::max<ssize_t>(count, 0);
    }
    return got;
}

// Starts what is new on its way to the disk and waits for what was started before.
void ByteCopier::writeBack()
{
    if (m_copied - m_sentToDisk < WindowLength)
        return;
    const qint64 before = std::max<qint64>(0, m_sentToDisk - WindowLength);
    (void)::sync_file_range(m_target, m_sentToDisk, m_copied - m_sentToDisk, SYNC_FILE_RANGE_WRITE);
    if (m_sentToDisk > before)
        (void)::sync_file_range(m_target, before, m_sentToDisk - before,
                                SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE
                                    | SYNC_FILE_RANGE_WAIT_AFTER);
    m_sentToDisk = m_copied;
}

bool ByteCopier::reflink(qint64 size)
{
    if (way() != Way::Reflink)
        return false;
    if (::ioctl(m_target, FICLONE, m_source) == 0) {
        m_copied = size;
        return true;
    }
    nextWay();
    return false;
}

int ByteCopier::copy(qint64 size, const GoOn &goOn)
{
    if (!goOn(0))
        return ECANCELED;
    if (reflink(size))
        return 0;
    while (m_copied < size) {
        const qint64 count = step(std::min(StepLength, size - m_copied));
        if (count < 0) {
            if (errno == EINTR || (isUnsupported(errno) && nextWay()))
                continue;
            return errno;
        }
        // Some file systems say so little where they mean that they cannot.
        if (count == 0 && !nextWay())
            break;
        m_copied += count;
        writeBack();
        if (!goOn(m_copied))
            return ECANCELED;
    }
    return 0;
}
