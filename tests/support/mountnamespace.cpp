// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mountnamespace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mounts {

namespace {

QByteArrayList &mounted()
{
    static QByteArrayList paths;
    return paths;
}

bool writeFile(const char *path, const QByteArray &text)
{
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size();
}

// Root over this process's own, as far as the namespace goes.
bool enterUserNamespace()
{
    const QByteArray user = QByteArray::number(getuid());
    const QByteArray group = QByteArray::number(getgid());
    return ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeFile("/proc/self/setgroups", "deny")
        && writeFile("/proc/self/uid_map", user + ' ' + user + " 1")
        && writeFile("/proc/self/gid_map", group + ' ' + group + " 1");
}

// In a chroot "/" is a folder of somebody's mount, not a mount. There a copy of the tree becomes the root; it
// hangs from /proc, which was made private first, so that nothing of it is seen outside.
bool makePrivate()
{
    constexpr unsigned long Private = MS_REC | MS_PRIVATE;
    if (::mount(nullptr, "/", nullptr, Private, nullptr) == 0)
        return true;
    return errno == EINVAL && ::mount(nullptr, "/proc", nullptr, Private, nullptr) == 0
        && ::mount("/", "/proc", nullptr, MS_BIND | MS_REC, nullptr) == 0
        && ::mount(nullptr, "/proc", nullptr, Private, nullptr) == 0 && ::chroot("/proc") == 0
        && ::chdir("/") == 0;
}

bool bind(const QByteArray &from, const QByteArray &to)
{
    return ::mount(from.constData(), to.constData(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

// The folder in memory, with its subfolders as they are, but `left`.
bool replaceFolder(const QByteArray &path, const QByteArray &left)
{
    QByteArray scratch = QFile::encodeName(QDir::temp().filePath(QStringLiteral("folder-XXXXXX")));
    if (::mkdtemp(scratch.data()) == nullptr
        || ::mount("none", scratch.constData(), "tmpfs", 0, "mode=0755") != 0)
        return false;
    const QStringList subfolders
        = QDir(QFile::decodeName(path))
              .entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    for (const QString &subfolder : subfolders) {
        const QByteArray name = QFile::encodeName(subfolder);
        if (name == left)
            continue;
        if (::mkdir((scratch + '/' + name).constData(), 0755) != 0
            || !bind(path + '/' + name, scratch + '/' + name))
            return false;
    }
    const bool replaced = bind(scratch, path);
    ::umount2(scratch.constData(), MNT_DETACH);
    ::rmdir(scratch.constData());
    return replaced;
}

// Only its parents are replaced, each with what else is in it: the program itself may lie there.
bool freshen(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    const QByteArray parent = path.left(slash);
    if (!QFileInfo(QFile::decodeName(parent)).isDir() && !freshen(parent))
        return false;
    return replaceFolder(parent, path.mid(slash + 1)) && ::mkdir(path.constData(), 0755) == 0;
}

} // namespace

bool enterNamespace(const QByteArrayList &fresh)
{
    if ((geteuid() != 0 || ::unshare(CLONE_NEWNS) != 0) && !enterUserNamespace())
        return false;
    return makePrivate() && std::all_of(fresh.begin(), fresh.end(), freshen);
}

bool mount(const QByteArray &path)
{
    if (!QDir().mkpath(QFile::decodeName(path))
        || ::mount("card", path.constData(), "ramfs", 0, nullptr) != 0)
        return false;
    mounted().prepend(path);
    return true;
}

bool unmount(const QByteArray &path)
{
    mounted().removeOne(path);
    return ::umount2(path.constData(), MNT_DETACH) == 0;
}

bool unmountIdle(const QByteArray &path)
{
    if (::umount2(path.constData(), 0) != 0)
        return false;
    mounted().removeOne(path);
    return true;
}

bool mountSmall(const QByteArray &path, int bytes)
{
    const QByteArray size = "size=" + QByteArray::number(bytes);
    if (!QDir().mkpath(QFile::decodeName(path))
        || ::mount("card", path.constData(), "tmpfs", 0, size.constData()) != 0)
        return false;
    mounted().prepend(path);
    return true;
}

bool makeReadOnly(const QByteArray &path)
{
    return ::mount(nullptr, path.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}

bool cover(const QByteArray &file, const QByteArray &with)
{
    return bind(with, file);
}

void unmountAll()
{
    while (!mounted().isEmpty())
        (void)unmount(mounted().first());
}

} // namespace mounts
