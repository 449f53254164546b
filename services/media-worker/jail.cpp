// SPDX-License-Identifier: GPL-3.0-or-later
#include "jail.h"

#include "formats.h"
#include "seccompfilter.h"

#include <cstdint>
#include <initializer_list>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// Rights of later versions of Landlock than the headers that this was built with need no names here: an
// unhandled right is no more than what the system call filter refuses anyway.
std::uint64_t handledRights(int version)
{
    constexpr std::uint64_t firstVersion = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
    constexpr std::uint64_t refer = LANDLOCK_ACCESS_FS_MAKE_SYM << 1;
    constexpr std::uint64_t truncate = refer << 1;
    return firstVersion | (version >= 2 ? refer : 0) | (version >= 3 ? truncate : 0);
}

void allowReadingBelow(int ruleset, const char *folder)
{
    const int descriptor = open(folder, O_PATH | O_CLOEXEC);
    if (descriptor < 0)
        return;
    landlock_path_beneath_attr rule = {};
    rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
    rule.parent_fd = descriptor;
    syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    close(descriptor);
}

bool enterLandlock(const std::string &pluginFolder)
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return false;
    landlock_ruleset_attr attributes = {};
    attributes.handled_access_fs = handledRights(static_cast<int>(version));
    const int ruleset = static_cast<int>(
        syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes.handled_access_fs, 0));
    if (ruleset < 0)
        return false;
    for (const char *folder : {"/usr/lib", "/usr/lib64", "/usr/lib32", "/usr/local/lib", "/lib", "/lib64",
                               "/etc/alternatives", "/dev/urandom", "/dev/null"})
        allowReadingBelow(ruleset, folder);
    allowReadingBelow(ruleset, pluginFolder.c_str());
    allowReadingBelow(ruleset, "/etc/ld.so.cache");
    const bool entered = syscall(SYS_landlock_restrict_self, ruleset, 0) == 0;
    close(ruleset);
    return entered;
}

} // namespace

WorkerProtocol::Jail enterJail(const std::string &pluginFolder, bool insideBubblewrap)
{
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return WorkerProtocol::JailNone;
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    const bool landlock = enterLandlock(pluginFolder);
    // Where nothing else keeps the process from opening files, the filter does: every library comes in first.
    const bool confined = landlock || insideBubblewrap;
    if (!confined)
        Formats::loadAll();
    if (!enterSeccomp(confined ? FileAccess::ReadOnly : FileAccess::None))
        return WorkerProtocol::JailNone;
    if (insideBubblewrap)
        return WorkerProtocol::JailBubblewrap;
    return landlock ? WorkerProtocol::JailLandlock : WorkerProtocol::JailSeccomp;
}
