// SPDX-License-Identifier: GPL-3.0-or-later
#include "mediaplugins.h"

#include "workerlog.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int UnusedDays = 30;

// What the claimed containers and codecs need; a machine may lack some of them.
QStringList claimedPlugins()
{
    return {u"app"_s,
            u"aom"_s,
            u"asf"_s,
            u"avi"_s,
            u"coreelements"_s,
            u"dav1d"_s,
            u"flv"_s,
            u"isomp4"_s,
            u"jpeg"_s,
            u"libav"_s,
            u"matroska"_s,
            u"mpegpsdemux"_s,
            u"mpegtsdemux"_s,
            u"ogg"_s,
            u"openh264"_s,
            u"playback"_s,
            u"theora"_s,
            u"typefindfunctions"_s,
            u"videoparsersbad"_s,
            u"vpx"_s};
}

QFileInfoList installedPlugins()
{
    const QString set = qEnvironmentVariable("GST_PLUGIN_SYSTEM_PATH_1_0");
    const QStringList folders
        = set.isEmpty() ? QStringList{QStringLiteral(KESTREL_GST_PLUGINS_DIR)} : set.split(u':');
    QFileInfoList plugins;
    for (const QString &name : claimedPlugins()) {
        for (const QString &folder : folders) {
            const QFileInfo file(u"%1/libgst%2.so"_s.arg(folder, name));
            if (!file.exists())
                continue;
            plugins += file;
            break;
        }
    }
    return plugins;
}

QString keyOf(const QFileInfoList &plugins, const QString &workerProgram)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QFileInfo &file : plugins + QFileInfoList{QFileInfo(workerProgram)}) {
        hash.addData(u"%1 %2 %3\n"_s.arg(file.filePath())
                         .arg(file.size())
                         .arg(file.lastModified().toMSecsSinceEpoch())
                         .toUtf8());
    }
    return QString::fromLatin1(hash.result().toHex());
}

void removeUnused(const QString &parent, const QString &current)
{
    const QDateTime limit = QDateTime::currentDateTime().addDays(-UnusedDays);
    const QFileInfoList folders = QDir(parent).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo &folder : folders) {
        if (folder.fileName() != current && folder.lastModified() < limit)
            QDir(folder.filePath()).removeRecursively();
    }
}

} // namespace

MediaPlugins::MediaPlugins(const QString &workerProgram, QObject *parent)
    : QObject(parent),
      m_workerProgram(workerProgram),
      m_writer(this)
{
    connect(&m_writer, &QProcess::finished, this, &MediaPlugins::written);
    connect(&m_writer, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            written();
    });
}

MediaPlugins::~MediaPlugins()
{
    m_writer.disconnect(this);
    m_writer.kill();
    m_writer.waitForFinished(1000);
}

void MediaPlugins::ensure()
{
    if (m_underWay)
        return;
    m_underWay = true;
    if (m_folder.isEmpty())
        choose();
    if (QFileInfo::exists(m_folder + u"/registry.bin"_s))
        QMetaObject::invokeMethod(this, &MediaPlugins::written, Qt::QueuedConnection);
    else
        write();
}

void MediaPlugins::choose()
{
    const QString key = keyOf(installedPlugins(), m_workerProgram);
    const QString parent
        = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + u"/kestrel/media-worker"_s;
    m_folder = parent + u'/' + key;
    if (QDir().mkpath(m_folder + u"/plugins"_s)) {
        removeUnused(parent, key);
        return;
    }
    qCInfo(workerLog, "no cache folder: the list of media plug-ins is made for this process only");
    m_temporary = std::make_unique<QTemporaryDir>();
    m_folder = m_temporary->path();
    QDir().mkpath(m_folder + u"/plugins"_s);
}

void MediaPlugins::link() const
{
    for (const QFileInfo &plugin : installedPlugins())
        QFile::link(plugin.absoluteFilePath(), m_folder + u"/plugins/"_s + plugin.fileName());
}

void MediaPlugins::write()
{
    link();
    m_writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_writer.setStandardInputFile(QProcess::nullDevice());
    m_writer.setStandardOutputFile(QProcess::nullDevice());
    m_writer.start(m_workerProgram, {u"--plugins"_s, m_folder, u"--write-registry"_s});
}

void MediaPlugins::written()
{
    m_underWay = false;
    m_ready = QFileInfo::exists(m_folder + u"/registry.bin"_s);
    if (m_ready)
        Q_EMIT ready();
    else
        Q_EMIT failed(u"%1 could not list the media plug-ins"_s.arg(m_workerProgram));
}
