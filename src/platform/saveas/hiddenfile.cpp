// SPDX-License-Identifier: GPL-3.0-or-later
#include "hiddenfile.h"

#include <QRandomGenerator>

#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t NewFile = 0666; // less what the person's mask takes away
constexpr int Attempts = 16;
constexpr char Prefix[] = ".save-as-";
constexpr char Suffix[] = ".part";
constexpr qsizetype RandomLength = 16;

QByteArray newHiddenName()
{
    const quint64 number = QRandomGenerator::system()->generate64();
    return Prefix + QByteArray::number(number, 16).rightJustified(RandomLength, '0') + Suffix;
}

bool isHiddenName(const QByteArray &name)
{
    return name.size() == qsizetype(sizeof Prefix - 1 + sizeof Suffix - 1) + RandomLength
        && name.startsWith(Prefix) && name.endsWith(Suffix);
}

bool isStillThere(int file)
{
    struct stat status = {};
    return ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

QByteArray pathOf(int file)
{
    return "/proc/self/fd/" + QByteArray::number(file);
}

} // namespace

HiddenFile::~HiddenFile()
{
    if (!m_hiddenName.isEmpty())
        ::unlinkat(m_folder, m_hiddenName.constData(), 0);
}

int HiddenFile::create(Kind first)
{
    if (first == Kind::Unnamed) {
        m_file = Descriptor(::openat(m_folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, NewFile));
        if (m_file.isOpen())
            return 0;
        if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOSYS && errno != ENOENT)
            return errno;
    }
    return createHidden();
}

// The lock says that somebody writes. Whoever clears up may have been faster with a file as young as this.
int HiddenFile::createHidden()
{
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const QByteArray name = newHiddenName();
        Descriptor file(::openat(m_folder, name.constData(),
                                 O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC | O_NOFOLLOW, NewFile));
        if (!file.isOpen() && errno == EEXIST)
            continue;
        if (!file.isOpen())
            return errno;
        const bool locked = ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        if (!locked || !isStillThere(file.get()))
            continue;
        m_file = std::move(file);
        m_hiddenName = name;
        return 0;
    }
    return EEXIST;
}

int HiddenFile::publish(const QByteArray &name)
{
    if (kind() == Kind::Hidden)
        return publishHidden(name);
    return ::linkat(AT_FDCWD, pathOf(m_file.get()).constData(), m_folder, name.constData(), AT_SYMLINK_FOLLOW)
            == 0
        ? 0
        : errno;
}

int HiddenFile::publishHidden(const QByteArray &name)
{
    const char *hidden = m_hiddenName.constData();
    const auto published = [this] {
        m_hiddenName.clear();
        return 0;
    };
    if (::renameat2(m_folder, hidden, m_folder, name.constData(), RENAME_NOREPLACE) == 0)
        return published();
    if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
        return errno;
    if (::linkat(m_folder, hidden, m_folder, name.constData(), 0) == 0) {
        ::unlinkat(m_folder, hidden, 0);
        return published();
    }
    if (errno != EPERM && errno != ENOSYS && errno != EOPNOTSUPP && errno != EINVAL)
        return errno;
    // Neither: the name is taken by an empty file of our own, and that is replaced.
    const Descriptor place(
        ::openat(m_folder, name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW, NewFile));
    if (!place.isOpen())
        return errno;
    if (::renameat(m_folder, hidden, m_folder, name.constData()) == 0)
        return published();
    const int error = errno;
    ::unlinkat(m_folder, name.constData(), 0);
    return error;
}

int HiddenFile::nameHidden()
{
    (void)::flock(m_file.get(), LOCK_EX | LOCK_NB);
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const QByteArray name = newHiddenName();
        const int error = publish(name);
        if (error == 0)
            m_hiddenName = name;
        if (error != EEXIST)
            return error;
    }
    return EEXIST;
}

int HiddenFile::replace(const QByteArray &name)
{
    if (kind() == Kind::Unnamed) {
        if (const int error = nameHidden(); error != 0)
            return error;
    }
    if (::renameat(m_folder, m_hiddenName.constData(), m_folder, name.constData()) != 0)
        return errno;
    m_hiddenName.clear();
    return 0;
}

void HiddenFile::removeLeftovers(int folder)
{
    const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(own < 0 ? nullptr : ::fdopendir(own), ::closedir);
    if (entries == nullptr) {
        if (own >= 0)
            ::close(own);
        return;
    }
    while (const dirent *entry = ::readdir(entries.get())) {
        const QByteArray name(entry->d_name);
        if (!isHiddenName(name))
            continue;
        const Descriptor file(
            ::openat(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status = {};
        if (file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode)
            && status.st_uid == ::geteuid() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0)
            ::unlinkat(folder, name.constData(), 0);
    }
}
