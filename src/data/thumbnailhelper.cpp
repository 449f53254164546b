// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailhelper.h"

#include "datalog.h"
#include "thumbnailpaths.h"
#include "videoconstants.h"

#include <platform/thumbs/thumbnailerclient.h>
#include <platform/thumbs/thumbnailname.h>

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int queueIntervalMs = 100;
constexpr int jpegQuality = 75;

// What comes over the net is no file that a thumbnailer could read; of a video that was left there is a
// still.
bool isStream(const QString &url)
{
    static const QStringList prefixes{HTTP_PREFIX, QStringLiteral("https:"), RTSP_PREFIX, MMS_PREFIX};
    return std::any_of(prefixes.cbegin(), prefixes.cend(),
                       [&url](const QString &prefix) { return url.startsWith(prefix, Qt::CaseInsensitive); });
}

QString encodedText(const QUrl &url)
{
    return QString::fromUtf8(url.toEncoded());
}

} // namespace

ThumbnailHelper *ThumbnailHelper::instance()
{
    static auto *const instance = new ThumbnailHelper;
    return instance;
}

ThumbnailHelper::ThumbnailHelper()
    : m_thumbnailer(ThumbnailerClient::create()),
      m_queueTimer(new QTimer(this))
{
    m_queueTimer->setInterval(queueIntervalMs);
    connect(m_queueTimer, &QTimer::timeout, this, &ThumbnailHelper::queueTimeOut);
    connect(m_thumbnailer.get(), &ThumbnailerClient::thumbnail, this, &ThumbnailHelper::thumbnailerReady);
    connect(m_thumbnailer.get(), &ThumbnailerClient::error, this, &ThumbnailHelper::thumbnailerError);
}

ThumbnailHelper::~ThumbnailHelper() = default;

QString ThumbnailHelper::thumbnailPath(const QString &url, const QString &flavor)
{
    const QString pausePath = ThumbnailPaths::pausePath(url, flavor);
    if (QFile::exists(pausePath))
        return pausePath;
    const QString defaultPath = ThumbnailPaths::defaultPath(url, flavor);
    return QFile::exists(defaultPath) ? defaultPath : QString();
}

void ThumbnailHelper::setThumbnailPaths(const QString &url, QString &defaultThumbnailUrl,
                                        QString &pauseThumbnailUrl)
{
    defaultThumbnailUrl.clear();
    pauseThumbnailUrl.clear();
    const QString pausePath = ThumbnailPaths::pausePath(url, THUMBNAIL_FLAVOR);
    if (QFile::exists(pausePath))
        pauseThumbnailUrl = pausePath;
    const QString defaultPath = ThumbnailPaths::defaultPath(url, THUMBNAIL_FLAVOR);
    if (QFile::exists(defaultPath))
        defaultThumbnailUrl = defaultPath;
}

QString ThumbnailHelper::thumbnail(const QString &url, const QString &mimeType)
{
    const auto known = m_knownThumbnails.constFind(url);
    if (known != m_knownThumbnails.constEnd())
        return *known;
    const QString path = thumbnailPath(url, THUMBNAIL_FLAVOR);
    if (!path.isEmpty()) {
        m_knownThumbnails.insert(url, path);
        return path;
    }
    if (!url.isEmpty() && !m_thumbnailingDisabled && !isStream(url))
        queueRequest(url, mimeType);
    return {};
}

void ThumbnailHelper::queueRequest(const QString &url, const QString &mimeType)
{
    if (m_requestQueue.size() >= m_queueLimit) {
        m_mimeTypes.remove(m_requestQueue.takeLast());
        ++m_droppedRequests;
    }
    const QUrl parsed = QUrl::fromEncoded(url.toUtf8());
    m_requestQueue.removeAll(parsed);
    m_requestQueue.prepend(parsed);
    m_mimeTypes.insert(parsed, mimeType);
    if (m_droppedRequests >= m_queueLimit) {
        // The list moves faster than pictures can be made.
        if (!m_holdRequests)
            cancel(true);
        m_droppedRequests = 0;
    }
    if (m_requestQueue.size() < m_queueLimit) {
        if (!m_queueTimer->isActive())
            m_queueTimer->start(queueIntervalMs);
    } else {
        cancel(false);
        processQueue();
    }
}

void ThumbnailHelper::queueTimeOut()
{
    processQueue();
}

void ThumbnailHelper::processQueue()
{
    if (m_holdRequests)
        return;
    m_queueTimer->stop();
    if (m_requestQueue.isEmpty())
        return;
    QStringList mimeTypes;
    for (const QUrl &url : std::as_const(m_requestQueue))
        mimeTypes.append(m_mimeTypes.value(url));
    m_thumbnailer->request(m_requestQueue, mimeTypes, THUMBNAIL_FLAVOR);
}

void ThumbnailHelper::takeFromQueue(const QUrl &url)
{
    m_requestQueue.removeAll(url);
    m_mimeTypes.remove(url);
}

void ThumbnailHelper::thumbnailerReady(const QUrl &resourceUrl, const QUrl &thumbnailUrl)
{
    takeFromQueue(resourceUrl);
    const QString url = encodedText(resourceUrl);
    const QString path = thumbnailUrl.path();
    m_knownThumbnails.insert(url, path);
    Q_EMIT newThumbnailReady(url, path);
}

void ThumbnailHelper::thumbnailerError(const QString &error, const QUrl &resourceUrl)
{
    takeFromQueue(resourceUrl);
    Q_EMIT newThumbnailError(encodedText(resourceUrl), error);
}

void ThumbnailHelper::cancel(bool emptyQueue)
{
    m_thumbnailer->cancel();
    if (emptyQueue) {
        m_requestQueue.clear();
        m_mimeTypes.clear();
    }
}

void ThumbnailHelper::setHoldRequests(bool hold)
{
    if (hold)
        m_queueTimer->stop();
    else
        m_queueTimer->start(queueIntervalMs);
    m_holdRequests = hold;
}

bool ThumbnailHelper::createPauseThumbnail(const QString &videoUrl, const QString &thumbPath)
{
    if (videoUrl.isEmpty() || thumbPath.isEmpty())
        return false;
    const QImage still(thumbPath);
    const QString path = ThumbnailPaths::pausePath(videoUrl, THUMBNAIL_FLAVOR);
    QFile::remove(path);
    if (!still.save(path, "JPEG", jpegQuality)) {
        qCWarning(lcData) << "bool ThumbnailHelper::createPauseThumbnail(const QString&, const QString&)"
                          << "grid pause thumbnail save failed!";
        return false;
    }
    m_knownPauseThumbnails.insert(videoUrl, path);
    m_knownThumbnails.remove(videoUrl);
    Q_EMIT pauseThumbnailCreated(videoUrl, path);
    return true;
}

void ThumbnailHelper::deletePauseThumbnail(const QString &videoUrl)
{
    if (videoUrl.isEmpty())
        return;
    const QString path = ThumbnailPaths::pausePath(videoUrl, THUMBNAIL_FLAVOR);
    if (!QFile::exists(path))
        return;
    QFile::remove(path);
    m_knownPauseThumbnails.remove(videoUrl);
    // A look-up since then has remembered the still as the picture to show.
    m_knownThumbnails.remove(videoUrl);
    Q_EMIT pauseThumbnailCreated(videoUrl, QString());
}

void ThumbnailHelper::filesRemoved(const QStringList &videoUrls)
{
    QList<QUrl> urls;
    urls.reserve(videoUrls.size());
    for (const QString &videoUrl : videoUrls) {
        deletePauseThumbnail(videoUrl);
        m_knownThumbnails.remove(videoUrl);
        urls.append(QUrl::fromEncoded(videoUrl.toUtf8()));
    }
    m_thumbnailer->remove(urls);
}

// The next look-up reads from disk again.
void ThumbnailHelper::thumbnailUpdated(const QString &videoUrl)
{
    m_knownThumbnails.remove(videoUrl);
}

void ThumbnailHelper::disableThumbnailing(bool disable)
{
    m_thumbnailingDisabled = disable;
}

void ThumbnailHelper::panningStarted()
{
    m_panning = true;
    Q_EMIT panning(true);
}

void ThumbnailHelper::panningStopped()
{
    m_panning = false;
    Q_EMIT panning(false);
}

void ThumbnailHelper::resetAnimationState()
{
    m_animationRunning = false;
}

QPixmap ThumbnailHelper::thumbnailFrom(const QString &thumbPath)
{
    return QPixmap(thumbPath);
}

QStringList ThumbnailHelper::placeholderPaths() const
{
    return {PLACEHOLDER_IMAGE_PATH, QStringLiteral(":/theme/placeholder.svg")};
}

QPixmap ThumbnailHelper::placeHolder(const QSize &size)
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::black);
    QSvgRenderer image;
    const QStringList paths = placeholderPaths();
    for (const QString &path : paths) {
        if (QFile::exists(path) && image.load(path))
            break;
    }
    if (!image.isValid()) {
        qCWarning(lcData) << "QPixmap ThumbnailHelper::placeHolder(const QSize&)"
                          << "Loading SVG failed!";
        return pixmap;
    }
    QRectF target(QPointF(), QSizeF(image.defaultSize()).scaled(size, Qt::KeepAspectRatioByExpanding));
    target.moveCenter(QRectF(QPointF(), size).center());
    QPainter painter(&pixmap);
    image.render(&painter, PLACEHOLDER_ICON_ID, target);
    return pixmap;
}
