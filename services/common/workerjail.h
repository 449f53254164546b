// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// How a worker is started: inside bubblewrap, or as it is (it then shuts itself in by Landlock and seccomp).
struct WorkerCommand
{
    QString program;
    QStringList arguments;
};

// The path of bubblewrap; empty when it is not installed or was switched off (KESTREL_NO_BUBBLEWRAP=1).
[[nodiscard]] QString bubblewrapProgram();

// `worker` with its plug-in folder, in namespaces and a root of its own: no network, no bus, no home, no
// /proc; only the libraries, the worker and its plug-ins, to read.
[[nodiscard]] WorkerCommand bubblewrapCommand(const QString &bubblewrap, const QString &worker,
                                              const QString &pluginFolder);
[[nodiscard]] WorkerCommand plainCommand(const QString &worker, const QString &pluginFolder);

struct WorkerLimits
{
    qint64 addressSpaceBytes = 0; // 0: not limited
    int openFiles = 64;
};

// Between fork and exec of a worker: its socket goes to the agreed descriptor, the limits are set, core dumps
// are off, and it gets no descriptor but the standard ones and that. Only calls that are safe there.
void prepareWorkerProcess(int socket, const WorkerLimits &limits);
