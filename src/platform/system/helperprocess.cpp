// SPDX-License-Identifier: GPL-3.0-or-later
#include "helperprocess.h"

#include <QProcessEnvironment>

#include <csignal>

#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_longestEndMs = 1000;

void endWith(pid_t parent)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent)
        _exit(1); // it ended before that was set
}

} // namespace

HelperProcess::HelperProcess(QObject *parent) : QProcess(parent)
{
    connect(this, &QProcess::finished, this, &HelperProcess::ended);
    connect(
        this, &QProcess::errorOccurred, this,
        [this](ProcessError error) {
            if (error == FailedToStart)
                Q_EMIT ended();
        },
        Qt::QueuedConnection);
    QProcessEnvironment environment;
    environment.insert(u"LANG"_s, u"C.UTF-8"_s);
    setProcessEnvironment(environment);
    setProcessChannelMode(ForwardedErrorChannel);
}

HelperProcess::~HelperProcess()
{
    disconnect();
    if (state() == NotRunning)
        return;
    kill();
    waitForFinished(s_longestEndMs);
}

void HelperProcess::passOn(const QStringList &variables)
{
    QProcessEnvironment environment = processEnvironment();
    for (const QString &name : variables) {
        if (qEnvironmentVariableIsSet(name.toLatin1()))
            environment.insert(name, qEnvironmentVariable(name.toLatin1()));
    }
    setProcessEnvironment(environment);
}

void HelperProcess::startHelper(const QString &program, const QStringList &arguments,
                                const std::function<void()> &prepare)
{
    setChildProcessModifier([parent = getpid(), prepare] {
        endWith(parent);
        if (prepare)
            prepare();
    });
    start(program, arguments);
}
