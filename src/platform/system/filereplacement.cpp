// SPDX-License-Identifier: GPL-3.0-or-later
#include "filereplacement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// Beside the file: the six letters are another writer's own each time, so that two never write into one.
constexpr char unfinishedEnding[] = ".XXXXXX.new";
constexpr int suffixLength = 4; // ".new"
constexpr auto suffix = ".new"_L1;

bool writeAll(int descriptor, const QByteArray &contents)
{
    qsizetype done = 0;
    while (done < contents.size()) {
        const ssize_t written
            = ::write(descriptor, contents.constData() + done, static_cast<size_t>(contents.size() - done));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

// 0, or the error number.
int fill(int descriptor, const QByteArray &contents, OnDisk onDisk)
{
    if (!writeAll(descriptor, contents))
        return errno;
    return onDisk == OnDisk::Nothing || ::fsync(descriptor) == 0 ? 0 : errno;
}

// A name is on the disk when its folder is. 0, or the error number; some file systems cannot be asked for it.
int synchroniseFolder(const QByteArray &folder)
{
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    const int error = ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
    ::close(descriptor);
    return error;
}

void removeUnlessLocked(const QByteArray &path)
{
    const int descriptor = ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        ::unlink(path.constData());
    ::close(descriptor);
}

} // namespace

int replaceFile(const QString &path, const QByteArray &contents, OnDisk onDisk)
{
    const QString folder = QFileInfo(path).path();
    errno = 0;
    if (!QDir().mkpath(folder))
        return errno != 0 ? errno : EACCES;
    QByteArray unfinished = QFile::encodeName(path) + unfinishedEnding;
    const int descriptor = ::mkostemps(unfinished.data(), suffixLength, O_CLOEXEC);
    if (descriptor < 0)
        return errno;
    ::flock(descriptor, LOCK_EX | LOCK_NB); // as long as it is open: it is no left-over one
    int error = fill(descriptor, contents, onDisk);
    if (error == 0 && ::rename(unfinished.constData(), QFile::encodeName(path).constData()) != 0)
        error = errno;
    if (error != 0)
        ::unlink(unfinished.constData());
    ::close(descriptor);
    if (error == 0 && onDisk == OnDisk::ContentsAndName)
        error = synchroniseFolder(QFile::encodeName(folder));
    return error;
}

void removeUnfinished(const QString &folder, const QString &names)
{
    const QStringList entries = QDir(folder).entryList(QDir::Files | QDir::Hidden);
    for (const QString &name : entries) {
        if (name.startsWith(names) && name.endsWith(suffix))
            removeUnlessLocked(QFile::encodeName(folder + u'/' + name));
    }
}
