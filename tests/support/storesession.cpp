// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storesession.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QTest>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString s_name = u"com.harrow.Kestrel.Store"_s;
const QString s_path = u"/com/harrow/Kestrel/Store"_s;

bool run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool ok = process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
    if (!ok)
        qWarning("%s: %s", qUtf8Printable(program), process.readAll().constData());
    return ok;
}

} // namespace

StoreSession::StoreSession() : m_environment(QProcessEnvironment::systemEnvironment()), m_bus(u"none"_s)
{
    const QString home = m_home.path();
    for (const QString &folder : {u"/Videos"_s, u"/data"_s, u"/config"_s, u"/cache"_s, u"/run"_s})
        QDir().mkpath(home + folder);
    QFile::setPermissions(home + u"/run"_s, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_environment.insert(u"HOME"_s, home);
    m_environment.insert(u"XDG_DATA_HOME"_s, home + u"/data"_s);
    m_environment.insert(u"XDG_CONFIG_HOME"_s, home + u"/config"_s);
    m_environment.insert(u"XDG_CACHE_HOME"_s, home + u"/cache"_s);
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, home + u"/run"_s);
    m_environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);

    m_daemon.setProcessEnvironment(m_environment);
    m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--print-address"_s, u"--nofork"_s});
    m_daemon.waitForReadyRead(10000);
    const QString address = QString::fromUtf8(m_daemon.readLine().trimmed());
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, address);
    m_bus = QDBusConnection::connectToBus(address, QUuid::createUuid().toString());
    m_bus.connect(s_name, s_path, s_name, u"ProgressChanged"_s, this, SLOT(onProgress(bool, uint, uint)));
}

StoreSession::~StoreSession()
{
    stop();
    QDBusConnection::disconnectFromBus(m_bus.name());
    m_daemon.terminate();
    m_daemon.waitForFinished(5000);
}

bool StoreSession::start(const QStringList &arguments)
{
    m_service.setProcessEnvironment(m_environment);
    m_service.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    m_service.setStandardErrorFile(m_home.filePath(u"store.log"_s), QIODevice::Append);
    m_service.start(QStringLiteral(KESTREL_BIN_DIR) + u"/kestrel-store"_s, arguments);
    return m_service.waitForStarted()
        && QTest::qWaitFor([this] { return m_bus.interface()->isServiceRegistered(s_name).value(); }, 10000);
}

void StoreSession::kill()
{
    m_service.kill();
    m_service.waitForFinished(5000);
    (void)QTest::qWaitFor([this] { return !m_bus.interface()->isServiceRegistered(s_name).value(); }, 5000);
}

bool StoreSession::stop()
{
    if (!isRunning())
        return false;
    m_service.terminate();
    return m_service.waitForFinished(10000) && m_service.exitStatus() == QProcess::NormalExit
        && m_service.exitCode() == 0;
}

QByteArray StoreSession::log() const
{
    QFile file(m_home.filePath(u"store.log"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::unique_ptr<StoreClient> StoreSession::connectClient()
{
    return std::make_unique<StoreClient>(call(u"Socket"_s).arguments().value(0).toString());
}

QDBusMessage StoreSession::call(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(s_name, s_path, s_name, method);
    message.setArguments(arguments);
    return m_bus.call(message, QDBus::BlockWithGui, 20000);
}

QDBusPendingCall StoreSession::callLater(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(s_name, s_path, s_name, method);
    message.setArguments(arguments);
    return m_bus.asyncCall(message, 20000);
}

QVariant StoreSession::property(const QString &name)
{
    QDBusMessage message
        = QDBusMessage::createMethodCall(s_name, s_path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message.setArguments({s_name, name});
    const QDBusMessage reply = m_bus.call(message, QDBus::BlockWithGui, 20000);
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

bool StoreSession::isScanning()
{
    return call(u"Progress"_s).arguments().value(0).toBool();
}

void StoreSession::onProgress(bool scanning, uint seen, uint done)
{
    progress.append({scanning, seen, done});
}

bool StoreSession::makeClip(const QString &path, const QStringList &ffmpegOptions)
{
    const QStringList quiet{u"-v"_s, u"error"_s, u"-y"_s};
    if (m_clip.isEmpty()) {
        const QString clip = m_home.filePath(u"clip.mp4"_s);
        if (!run(u"ffmpeg"_s,
                 quiet
                     + QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=size=160x120:rate=10:duration=2"_s,
                                   u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=2"_s, u"-c:v"_s, u"mpeg4"_s,
                                   u"-c:a"_s, u"aac"_s, clip}))
            return false;
        m_clip = clip;
    }
    // A comment of its own makes each file differ from all others.
    const QString part = m_home.filePath(u"part.mp4"_s);
    QStringList arguments = quiet + QStringList{u"-i"_s, m_clip, u"-c"_s, u"copy"_s};
    arguments += QStringList{u"-metadata"_s, u"comment="_s + QUuid::createUuid().toString()};
    return run(u"ffmpeg"_s, arguments + ffmpegOptions + QStringList{part})
        && (!QFile::exists(path) || QFile::remove(path)) && QFile::rename(part, path);
}

bool StoreSession::makeAudioClip(const QString &path)
{
    return run(u"ffmpeg"_s,
               {u"-v"_s, u"error"_s, u"-y"_s, u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=2"_s, u"-c:a"_s,
                u"aac"_s, u"-f"_s, u"mp4"_s, path});
}

QString urnOf(StoreClient *client, const QString &fileName)
{
    return client->value(u"SELECT ?v { ?v a nmm:Video ; nfo:fileName \"%1\" }"_s.arg(fileName));
}

QString valueOf(StoreClient *client, const QString &fileName, const QString &property)
{
    return client->value(
        u"SELECT ?x { ?v a nmm:Video ; nfo:fileName \"%1\" ; %2 ?x }"_s.arg(fileName, property));
}

int countVideos(StoreClient *client)
{
    return client->value(u"SELECT COUNT(?v) { ?v a nmm:Video }"_s).toInt();
}

QString propertyUpdate(const QString &urn, const QString &property, const QString &value)
{
    return u"DELETE { <%1> %2 ?insert } WHERE { <%1> %2 ?insert .} INSERT { <%1> %2 \"%3\" }"_s.arg(
        urn, property, value);
}
