// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/storeclient.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <memory>

// A session bus, a home and a Videos folder in a temporary directory, with the real service in them.
class StoreSession : public QObject
{
    Q_OBJECT

public:
    StoreSession();
    ~StoreSession() override;

    [[nodiscard]] bool isValid() const { return m_bus.isConnected(); }
    [[nodiscard]] QString home() const { return m_home.path(); }
    [[nodiscard]] QString videos() const { return m_home.path() + QStringLiteral("/Videos"); }
    [[nodiscard]] QString data() const { return m_home.path() + QStringLiteral("/data/kestrel"); }
    [[nodiscard]] QString runtime() const { return m_home.path() + QStringLiteral("/run/kestrel"); }
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }

    // Starts the service and waits until its name is on the bus.
    bool start(const QStringList &arguments = {});
    void kill(); // SIGKILL
    bool stop(); // SIGTERM; true when it ended with status 0
    [[nodiscard]] bool isRunning() const { return m_service.state() == QProcess::Running; }
    [[nodiscard]] QByteArray log() const;

    // A client of the service that runs now.
    [[nodiscard]] std::unique_ptr<StoreClient> connectClient();
    QDBusMessage call(const QString &method, const QVariantList &arguments = {});
    [[nodiscard]] QDBusPendingCall callLater(const QString &method, const QVariantList &arguments);
    [[nodiscard]] QVariant property(const QString &name);
    [[nodiscard]] bool isScanning();

    // ProgressChanged as it came: scanning, seen, done.
    QList<QVariantList> progress;

    // Clips of a second made by ffmpeg: one is encoded, the others are copies of it with other metadata and
    // bytes.
    bool makeClip(const QString &path, const QStringList &ffmpegOptions = {});
    bool makeAudioClip(const QString &path);

public Q_SLOTS:
    void onProgress(bool scanning, uint seen, uint done);

private:
    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QProcess m_daemon;
    QProcess m_service;
    QDBusConnection m_bus;
    QString m_clip;
};

// SPARQL about a video by the name of its file; empty when it is not listed.
[[nodiscard]] QString urnOf(StoreClient *client, const QString &fileName);
[[nodiscard]] QString valueOf(StoreClient *client, const QString &fileName, const QString &property);
[[nodiscard]] int countVideos(StoreClient *client);
// The application's update of one property.
[[nodiscard]] QString propertyUpdate(const QString &urn, const QString &property, const QString &value);
