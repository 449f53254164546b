// SPDX-License-Identifier: GPL-3.0-or-later
#include "seccompfilter.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>

namespace {

struct Release
{
    void operator()(void *filter) const { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, Release>;

constexpr std::array Allowed = {
    // Memory
    SCMP_SYS(brk),
    SCMP_SYS(munmap),
    SCMP_SYS(mremap),
    SCMP_SYS(madvise),
    SCMP_SYS(membarrier),
    SCMP_SYS(mincore),
    SCMP_SYS(mlock),
    // Threads and signals
    SCMP_SYS(futex),
    SCMP_SYS(futex_time64),
    SCMP_SYS(set_robust_list),
    SCMP_SYS(get_robust_list),
    SCMP_SYS(rseq),
    SCMP_SYS(sched_yield),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler),
    SCMP_SYS(sched_get_priority_min),
    SCMP_SYS(sched_get_priority_max),
    SCMP_SYS(gettid),
    SCMP_SYS(getpid),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigreturn),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(getrusage),
    // Clocks
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_gettime64),
    SCMP_SYS(clock_getres),
    SCMP_SYS(clock_getres_time64),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(clock_nanosleep_time64),
    SCMP_SYS(nanosleep),
    SCMP_SYS(gettimeofday),
    // What is open
    SCMP_SYS(read),
    SCMP_SYS(readv),
    SCMP_SYS(pread64),
    SCMP_SYS(preadv),
    SCMP_SYS(write),
    SCMP_SYS(writev),
    SCMP_SYS(close),
    SCMP_SYS(lseek),
    SCMP_SYS(_llseek),
    SCMP_SYS(fstat),
    SCMP_SYS(fstat64),
    SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    SCMP_SYS(ppoll_time64),
    SCMP_SYS(select),
    SCMP_SYS(pselect6),
    SCMP_SYS(pselect6_time64),
    SCMP_SYS(eventfd2),
    SCMP_SYS(pipe2),
    SCMP_SYS(fadvise64),
    SCMP_SYS(recvmsg),
    SCMP_SYS(recvfrom),
    SCMP_SYS(recv),
    SCMP_SYS(send),
    SCMP_SYS(sendto),
    SCMP_SYS(shutdown),
    // About this process and the machine
    SCMP_SYS(getuid),
    SCMP_SYS(geteuid),
    SCMP_SYS(getgid),
    SCMP_SYS(getegid),
    SCMP_SYS(getrandom),
    SCMP_SYS(uname),
    SCMP_SYS(sysinfo),
    SCMP_SYS(getcpu),
};

// Asking where a file is and what it is; needed to find libraries, and to be told that there is none.
constexpr std::array Lookups = {
    SCMP_SYS(access),   SCMP_SYS(faccessat),  SCMP_SYS(faccessat2), SCMP_SYS(stat),      SCMP_SYS(stat64),
    SCMP_SYS(lstat),    SCMP_SYS(lstat64),    SCMP_SYS(newfstatat), SCMP_SYS(fstatat64), SCMP_SYS(statx),
    SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(getdents64), SCMP_SYS(getcwd),    SCMP_SYS(fstatfs),
};

// The C library tries these first and has an older way when they are not there.
constexpr std::array Newer = {SCMP_SYS(clone3), SCMP_SYS(openat2), SCMP_SYS(close_range)};

class Builder
{
public:
    Builder() : m_filter(seccomp_init(SCMP_ACT_ERRNO(EPERM))), m_good(m_filter != nullptr) { }

    // Calls that this machine does not have are no fault.
    void allow(int call) { check(seccomp_rule_add(m_filter.get(), SCMP_ACT_ALLOW, call, 0)); }
    void allow(int call, const scmp_arg_cmp &argument)
    {
        check(seccomp_rule_add_array(m_filter.get(), SCMP_ACT_ALLOW, call, 1, &argument));
    }
    void missing(int call) { check(seccomp_rule_add(m_filter.get(), SCMP_ACT_ERRNO(ENOSYS), call, 0)); }
    [[nodiscard]] bool load()
    {
        if (!m_good)
            return false;
        // The libraries' threads that already run are shut in too.
        seccomp_attr_set(m_filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
        return seccomp_load(m_filter.get()) == 0;
    }

private:
    void check(int result) { m_good = m_good && (result == 0 || result == -EDOM || result == -EEXIST); }

    Filter m_filter;
    bool m_good;
};

void allowFiles(Builder &builder)
{
    constexpr std::uint64_t writing = O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND;
    builder.allow(SCMP_SYS(open), SCMP_A1(SCMP_CMP_MASKED_EQ, writing, O_RDONLY));
    builder.allow(SCMP_SYS(openat), SCMP_A2(SCMP_CMP_MASKED_EQ, writing, O_RDONLY));
    for (const int call : Lookups)
        builder.allow(call);
}

// Memory is never writable and executable at once, and nothing written becomes executable; libraries are
// mapped executable from their files as long as files can be opened.
void allowMemory(Builder &builder, FileAccess access)
{
    const std::uint64_t forbidden = access == FileAccess::None ? PROT_EXEC : PROT_EXEC | PROT_WRITE;
    if (access == FileAccess::None) {
        builder.allow(SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, forbidden, 0));
        builder.allow(SCMP_SYS(mmap2), SCMP_A2(SCMP_CMP_MASKED_EQ, forbidden, 0));
    } else {
        for (const std::uint64_t one :
             {std::uint64_t(0), std::uint64_t(PROT_EXEC), std::uint64_t(PROT_WRITE)}) {
            builder.allow(SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, forbidden, one));
            builder.allow(SCMP_SYS(mmap2), SCMP_A2(SCMP_CMP_MASKED_EQ, forbidden, one));
        }
    }
    builder.allow(SCMP_SYS(mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
}

void allowLimited(Builder &builder)
{
    // Threads, never processes.
    builder.allow(SCMP_SYS(clone), SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD));
    // A main loop wakes itself through one of these.
    builder.allow(SCMP_SYS(socketpair), SCMP_A0(SCMP_CMP_EQ, AF_UNIX));
    builder.allow(SCMP_SYS(prctl), SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME));
    builder.allow(SCMP_SYS(prlimit64), SCMP_A2(SCMP_CMP_EQ, 0));
    builder.allow(SCMP_SYS(getrlimit));
    for (const int command : {F_GETFL, F_SETFL, F_GETFD, F_SETFD, F_DUPFD_CLOEXEC}) {
        builder.allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, std::uint64_t(command)));
        builder.allow(SCMP_SYS(fcntl64), SCMP_A1(SCMP_CMP_EQ, std::uint64_t(command)));
    }
}

} // namespace

bool enterSeccomp(FileAccess access)
{
    Builder builder;
    for (const int call : Allowed)
        builder.allow(call);
    for (const int call : Newer)
        builder.missing(call);
    allowLimited(builder);
    allowMemory(builder, access);
    if (access == FileAccess::ReadOnly)
        allowFiles(builder);
#ifdef __SANITIZE_ADDRESS__
    // The run-time library of the sanitizers reports its findings by means of these.
    for (const int call :
         {SCMP_SYS(sigaltstack), SCMP_SYS(prctl), SCMP_SYS(openat), SCMP_SYS(readlink), SCMP_SYS(kill)})
        builder.allow(call);
#endif
    return builder.load();
}
