// SPDX-License-Identifier: GPL-3.0-or-later
#include "workerjail.h"

#include "workerprotocol.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// Distributions with merged folders have /lib as a link, others as a folder: the same in the jail.
void addLibraryFolder(QStringList &arguments, const QString &path)
{
    const QFileInfo folder(path);
    if (folder.isSymLink())
        arguments << u"--symlink"_s << folder.symLinkTarget() << path;
    else if (folder.isDir())
        arguments << u"--ro-bind"_s << path << path;
}

void setLimit(int resource, rlim_t value)
{
    const rlimit limit = {value, value};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

} // namespace

QString bubblewrapProgram()
{
    if (qEnvironmentVariableIntValue("KESTREL_NO_BUBBLEWRAP") != 0)
        return {};
    return QStandardPaths::findExecutable(u"bwrap"_s);
}

WorkerCommand plainCommand(const QString &worker, const QString &pluginFolder)
{
    return {worker, {u"--plugins"_s, pluginFolder}};
}

WorkerCommand bubblewrapCommand(const QString &bubblewrap, const QString &worker, const QString &pluginFolder)
{
    QStringList arguments = {u"--unshare-all"_s, u"--die-with-parent"_s, u"--new-session"_s};
    arguments << u"--ro-bind"_s << u"/usr/lib"_s << u"/usr/lib"_s;
    for (const QString &folder : {u"/usr/lib64"_s, u"/usr/lib32"_s, u"/lib"_s, u"/lib64"_s, u"/lib32"_s})
        addLibraryFolder(arguments, folder);
    for (const QString &path : {u"/usr/local/lib"_s, u"/etc/ld.so.cache"_s, u"/etc/alternatives"_s})
        arguments << u"--ro-bind-try"_s << path << path;
#ifdef __SANITIZE_ADDRESS__
    arguments << u"--ro-bind"_s << u"/proc"_s << u"/proc"_s;
#endif
    arguments << u"--dev"_s << u"/dev"_s;
    // The registry names the plug-ins by the paths that they were found under.
    arguments << u"--ro-bind"_s << pluginFolder << pluginFolder;
    arguments << u"--ro-bind"_s << worker << u"/run/worker"_s << u"--remount-ro"_s << u"/"_s;
    arguments << u"--clearenv"_s << u"--setenv"_s << u"LANG"_s << u"C.UTF-8"_s;
    arguments << u"--"_s << u"/run/worker"_s << u"--plugins"_s << pluginFolder << u"--bubblewrap"_s;
    return {bubblewrap, arguments};
}

void prepareWorkerProcess(int socket, const WorkerLimits &limits)
{
    // dup2() to itself would leave the descriptor to be closed at exec.
    if (socket == WorkerProtocol::SocketDescriptor)
        fcntl(socket, F_SETFD, 0);
    else
        dup2(socket, WorkerProtocol::SocketDescriptor);
    // QProcess still needs its own pipe, which closes itself at exec; so do all others from here on.
    constexpr unsigned CloseAtExec = 4; // CLOSE_RANGE_CLOEXEC
    syscall(SYS_close_range, WorkerProtocol::SocketDescriptor + 1, ~0u, CloseAtExec);
    setLimit(RLIMIT_CORE, 0);
    setLimit(RLIMIT_NOFILE, static_cast<rlim_t>(limits.openFiles));
    if (limits.addressSpaceBytes > 0)
        setLimit(RLIMIT_AS, static_cast<rlim_t>(limits.addressSpaceBytes));
}
