// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictures.h"

#include "relatedlog.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDir>
#include <QFile>
#include <QFuture>
#include <QImageReader>
#include <QProcess>
#include <QPromise>
#include <QStandardPaths>
#include <QThreadPool>
#include <QUrl>

#include <memory>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int mostPictures = 150;
constexpr int mostOnline = 100;
constexpr QSize largest(412, 232); // twice the size on a screen 480 wide
const QString thumbnailer = u"com.harrow.Kestrel.Thumbnailer"_s;
const QString thumbnailerPath = u"/org/freedesktop/thumbnails/Thumbnailer1"_s;
constexpr int startTimeoutMs = 10'000;
const QString thumbnailerInterface = u"org.freedesktop.thumbnails.Thumbnailer1"_s;

QImage readFirst(const QStringList &paths)
{
    for (const QString &path : paths) {
        QImageReader reader(path);
        const QSize size = reader.size();
        if (size.width() > largest.width() || size.height() > largest.height())
            reader.setScaledSize(size.scaled(largest, Qt::KeepAspectRatioByExpanding));
        if (QImage image = reader.read(); !image.isNull())
            return image;
    }
    return {};
}

} // namespace

Pictures::Pictures(QObject *parent) : QObject(parent), m_pictures(mostPictures), m_online(mostOnline)
{
    QDBusConnection::sessionBus().connect(thumbnailer, thumbnailerPath, thumbnailerInterface, u"Ready"_s,
                                          this, SLOT(thumbnailReady(uint, QStringList)));
    auto *watcher = new QDBusServiceWatcher(thumbnailer, QDBusConnection::sessionBus(),
                                            QDBusServiceWatcher::WatchForRegistration, this);
    // It ends when nobody wants anything of it for a while, and what it was asked for goes with it.
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
        m_start = QDeadlineTimer();
        for (const RelatedVideo &video : std::as_const(m_waiting))
            queue(video);
    });
}

QString Pictures::fileName(const QString &url)
{
    // All spellings of an address have one picture.
    const QString decoded = QUrl::fromPercentEncoding(url.toUtf8());
    QByteArray text = QUrl(decoded).toEncoded();
    if (text.isEmpty())
        text = decoded.toUtf8();
    text.replace('#', "%23");
    return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex());
}

QPixmap Pictures::picture(const RelatedVideo &video)
{
    if (video.id == 0)
        return onlinePicture(video);
    if (const QPixmap *known = m_pictures.object(video.url))
        return *known;
    read(video);
    return {};
}

QPixmap Pictures::onlinePicture(const RelatedVideo &video)
{
    if (const QPixmap *known = m_online.object(video.url))
        return *known;
    if (!video.picture.isEmpty() && !m_askedOnline.contains(video.url)) {
        m_askedOnline.insert(video.url);
        Q_EMIT wantedOnline(video);
    }
    return {};
}

void Pictures::put(const QString &url, const QImage &image)
{
    m_pictures.insert(url, new QPixmap(QPixmap::fromImage(image)));
    Q_EMIT arrived(url);
}

void Pictures::putOnline(const QString &url, const QImage &image)
{
    m_askedOnline.remove(url);
    m_online.insert(url, new QPixmap(QPixmap::fromImage(image)));
    Q_EMIT arrived(url);
}

void Pictures::refresh()
{
    m_pictures.clear();
    m_askedOnline.clear();
}

void Pictures::forgetOnline()
{
    m_online.clear();
    m_askedOnline.clear();
}

void Pictures::read(const RelatedVideo &video)
{
    if (m_reading.contains(video.url))
        return;
    m_reading.insert(video.url);
    const QString name = fileName(video.url) + u".jpeg"_s;
    const QStringList paths{QDir::homePath() + u"/.cache/kestrel/video-grid/"_s + name,
                            QDir::homePath() + u"/.thumbnails/video-grid/"_s + name};
    auto promise = std::make_shared<QPromise<QImage>>();
    promise->start();
    promise->future().then(this, [this, video](const QImage &image) {
        m_reading.remove(video.url);
        if (!image.isNull())
            put(video.url, image);
        else
            askThumbnailer(video);
    });
    QThreadPool::globalInstance()->start([promise, paths] {
        promise->addResult(readFirst(paths));
        promise->finish();
    });
}

void Pictures::askThumbnailer(const RelatedVideo &video)
{
    if (m_asked.contains(video.url))
        return;
    m_asked.insert(video.url);
    m_waiting.insert(video.url, video);
    queue(video);
}

// What is not answered leaves the place of the picture as it is.
void Pictures::queue(const RelatedVideo &video)
{
    QDBusMessage call
        = QDBusMessage::createMethodCall(thumbnailer, thumbnailerPath, thumbnailerInterface, u"Queue"_s);
    call.setArguments(
        {QStringList(video.url), QStringList(video.mimeType), u"video-grid"_s, u"default"_s, 0U});
    auto *asked = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(asked, &QDBusPendingCallWatcher::finished, this, [this, asked] {
        asked->deleteLater();
        if (asked->isError() && asked->error().type() == QDBusError::ServiceUnknown)
            startThumbnailer();
    });
}

// The session starts the one that is installed; without that the program does, and so its plug-in.
void Pictures::startThumbnailer()
{
    if (!m_start.hasExpired())
        return;
    const QString program
        = QStandardPaths::findExecutable(u"kestrel-thumbnailer"_s, {QCoreApplication::applicationDirPath()});
    if (program.isEmpty())
        return;
    QProcess process;
    process.setProgram(program);
    process.setWorkingDirectory(u"/"_s);
    // It outlives the program, and must not hold a pipe that somebody waits on.
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    m_start.setRemainingTime(startTimeoutMs);
    if (!process.startDetached())
        qCWarning(relatedLog) << program << "cannot be started:" << process.errorString();
}

void Pictures::thumbnailReady(uint, const QStringList &urls)
{
    for (const QString &url : urls) {
        if (const auto waiting = m_waiting.constFind(url); waiting != m_waiting.cend())
            read(m_waiting.take(url));
    }
}
