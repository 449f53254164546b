// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A sound server of the test's own, whose sinks are no devices. The environment of this process points to it
// while this object lives.
class PulseServer
{
public:
    PulseServer()
    {
        qputenv("PULSE_SERVER", address().toUtf8());
        qputenv("PULSE_RUNTIME_PATH", m_directory.path().toUtf8());
        qputenv("PULSE_STATE_PATH", m_directory.path().toUtf8());
        m_server.setProcessChannelMode(QProcess::ForwardedChannels);
    }
    ~PulseServer()
    {
        stop();
        qunsetenv("PULSE_SERVER");
    }
    Q_DISABLE_COPY_MOVE(PulseServer)

    [[nodiscard]] bool start()
    {
        QStringList arguments{QStringLiteral("-n"),
                              QStringLiteral("--daemonize=no"),
                              QStringLiteral("--use-pid-file=no"),
                              QStringLiteral("--exit-idle-time=-1"),
                              QStringLiteral("--disable-shm=yes"),
                              QStringLiteral("--realtime=no"),
                              QStringLiteral("--log-level=error"),
                              QStringLiteral("-L"),
                              QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=")
                                  + socket()};
        m_server.start(QStringLiteral("pulseaudio"), arguments);
        if (!m_server.waitForStarted())
            return false;
        for (int trial = 0; trial < 200; ++trial) {
            if (control({QStringLiteral("info")}).first == 0)
                return true;
            m_server.waitForFinished(50);
        }
        return false;
    }
    void stop()
    {
        m_server.terminate();
        m_server.waitForFinished(10000);
    }
    void kill()
    {
        m_server.kill();
        m_server.waitForFinished(10000);
    }

    // The number of the module.
    QString addSink(const QString &name)
    {
        return control({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                        QStringLiteral("sink_name=") + name})
            .second;
    }
    bool removeModule(const QString &number)
    {
        return control({QStringLiteral("unload-module"), number}).first == 0;
    }
    bool setDefault(const QString &sink)
    {
        return control({QStringLiteral("set-default-sink"), sink}).first == 0;
    }
    // Somebody plays on one of the sinks.
    [[nodiscard]] bool isHeard() const
    {
        return !control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
                    .second.isEmpty();
    }
    [[nodiscard]] qint64 processId() const { return m_server.processId(); }

private:
    [[nodiscard]] QString socket() const { return m_directory.filePath(QStringLiteral("native")); }
    [[nodiscard]] QString address() const { return QStringLiteral("unix:") + socket(); }
    // The status and what was written.
    std::pair<int, QString> control(const QStringList &arguments) const
    {
        QProcess process;
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(QStringLiteral("pactl"), arguments);
        if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, {}};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()).trimmed()};
    }

    QTemporaryDir m_directory;
    QProcess m_server;
};
