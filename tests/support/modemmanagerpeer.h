// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ownwait.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>

#include <csignal>

// A ModemManager (python-dbusmock) on the system bus of this process's environment.
class ModemManagerPeer
{
public:
    ~ModemManagerPeer() { stop(); }

    // `parameters` of the template, as JSON.
    bool start(const QString &parameters = QStringLiteral("{}"))
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.start(QStringLiteral(KESTREL_PYTHON),
                        {QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("-t"),
                         QStringLiteral(KESTREL_SOURCE_DIR "/tests/support/peers/modemmanager.py"),
                         QStringLiteral("-p"), parameters});
        return QTest::qWaitFor([] { return isOwned(); }, 15000);
    }
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        const OwnWait own;
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    // Does nothing and answers nothing until thaw().
    void freeze() { ::kill(pid_t(m_process.processId()), SIGSTOP); }
    void thaw() { ::kill(pid_t(m_process.processId()), SIGCONT); }

    // A method of the template, done when this returns.
    bool tell(const QString &method, const QVariantList &arguments = {})
    {
        QDBusMessage call = message(method);
        call.setArguments(arguments);
        const OwnWait own;
        return QDBusConnection::systemBus().call(call).type() == QDBusMessage::ReplyMessage;
    }
    // The same for one that is frozen.
    void tellLater(const QString &method, const QVariantList &arguments)
    {
        QDBusMessage call = message(method);
        call.setArguments(arguments);
        QDBusConnection::systemBus().send(call);
    }

private:
    static bool isOwned()
    {
        const OwnWait own;
        return QDBusConnection::systemBus().interface()->isServiceRegistered(
            QStringLiteral("org.freedesktop.ModemManager1"));
    }
    static QDBusMessage message(const QString &method)
    {
        return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.ModemManager1"),
                                              QStringLiteral("/org/freedesktop/ModemManager1"),
                                              QStringLiteral("org.freedesktop.DBus.Mock"), method);
    }

    QProcess m_process;
};
