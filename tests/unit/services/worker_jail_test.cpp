// SPDX-License-Identifier: GPL-3.0-or-later
// What a worker that a file has taken over can still do. Each attempt is made in a process of its own, behind
// the bars.
#include "media-worker/jail.h"
#include "media-worker/seccompfilter.h"

#include <QtTest>

#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Attempt = bool (*)();

bool readsHome()
{
    return open("/etc/passwd", O_RDONLY) >= 0;
}
bool readsLibraries()
{
    return open("/usr/lib/os-release", O_RDONLY) >= 0;
}
bool writes()
{
    return open("/tmp/kestrel-jail-test", O_WRONLY | O_CREAT, 0600) >= 0;
}
bool connects()
{
    return socket(AF_INET, SOCK_STREAM, 0) >= 0;
}
bool reachesTheBus()
{
    return socket(AF_UNIX, SOCK_STREAM, 0) >= 0;
}
bool runsAProgram()
{
    execl("/bin/true", "true", nullptr);
    return false; // a program that ran would have ended with 0
}
bool forks()
{
    return fork() >= 0;
}
bool signalsOthers()
{
    return kill(getppid(), 0) == 0;
}
bool traces()
{
    return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
}
bool makesCode()
{
    return mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
        != MAP_FAILED;
}
bool removes()
{
    return unlink("/nowhere") == 0 || errno != EPERM;
}
bool computes()
{
    void *const memory = mmap(nullptr, 1 << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory != MAP_FAILED && write(STDERR_FILENO, "", 0) == 0;
}

// Whether the attempt succeeded behind `close`.
bool triesBehind(bool (*close)(), Attempt attempt)
{
    const pid_t child = fork();
    if (child == 0) {
        if (!close())
            _exit(9);
        _exit(attempt() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 9)
        qFatal("the jail could not be put up");
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool closeWithLandlock()
{
    return enterJail("/nowhere", false) != WorkerProtocol::JailNone;
}

bool closeCompletely()
{
    return enterSeccomp(FileAccess::None);
}

} // namespace

class WorkerJailTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsIn_data()
    {
        QTest::addColumn<Attempt>("attempt");
        QTest::newRow("user's files") << Attempt(readsHome);
        QTest::newRow("writing") << Attempt(writes);
        QTest::newRow("network") << Attempt(connects);
        QTest::newRow("bus") << Attempt(reachesTheBus);
        QTest::newRow("exec") << Attempt(runsAProgram);
        QTest::newRow("fork") << Attempt(forks);
        QTest::newRow("signals") << Attempt(signalsOthers);
        QTest::newRow("ptrace") << Attempt(traces);
        QTest::newRow("code") << Attempt(makesCode);
        QTest::newRow("unlink") << Attempt(removes);
    }
    void keepsIn()
    {
        QFETCH(Attempt, attempt);
        QVERIFY(!triesBehind(closeWithLandlock, attempt));
        QVERIFY(!triesBehind(closeCompletely, attempt));
    }

    void leavesWhatReadingMediaNeeds()
    {
        QVERIFY(triesBehind(closeWithLandlock, computes));
        QVERIFY(triesBehind(closeCompletely, computes));
        QVERIFY(triesBehind(closeWithLandlock, readsLibraries));
        QVERIFY(!triesBehind(closeCompletely, readsLibraries));
    }
};

QTEST_GUILESS_MAIN(WorkerJailTest)
#include "worker_jail_test.moc"
