// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ownwait.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <csignal>

// A program of tests/support/peers as a process of its own, on the buses of this one's environment. It writes
// "ready" once it can be called, takes commands by lines and answers each with "done".
class PythonPeer
{
public:
    ~PythonPeer() { stop(); }

    bool start(const QString &script, const QStringList &arguments = {})
    {
        stop();
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(KESTREL_PYTHON),
                        QStringList{QStringLiteral(KESTREL_SOURCE_DIR "/tests/support/peers/") + script}
                            + arguments);
        return answers("ready");
    }
    bool command(const QString &line)
    {
        m_process.write(line.toUtf8() + '\n');
        return answers("done");
    }
    // Does nothing and answers nothing until thaw().
    void freeze() { ::kill(pid_t(m_process.processId()), SIGSTOP); }
    void thaw() { ::kill(pid_t(m_process.processId()), SIGCONT); }
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        const OwnWait own;
        m_process.kill();
        m_process.waitForFinished(5000);
    }

private:
    bool answers(const QByteArray &word)
    {
        const OwnWait own;
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(15000))
                return false;
        }
        return m_process.readLine().trimmed() == word;
    }

    QProcess m_process;
};
