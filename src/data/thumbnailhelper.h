// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMap>
#include <QObject>
#include <QPixmap>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>

class QTimer;
class ThumbnailerClient;

// The one place that knows where pictures of videos lie on disk. Asks the thumbnailer for missing ones at the
// pace of a scrolling list, draws the placeholder, and writes and deletes the stills of paused videos.
class ThumbnailHelper : public QObject
{
    Q_OBJECT

public:
    // Of a picture of the flavour that it asks for, of a video as wide as a screen.
    static constexpr QSize pictureSize{960, 540};

    // Created on the first call, never deleted.
    [[nodiscard]] static ThumbnailHelper *instance();
    ~ThumbnailHelper() override;

    // The picture to show in a cell; empty while there is none, and then one is asked for.
    QString thumbnail(const QString &url, const QString &mimeType);

    // Requests that a full queue dropped since it was last given up.
    [[nodiscard]] int droppedRequests() const { return m_droppedRequests; }

Q_SIGNALS:
    void newThumbnailReady(QString resourceUrl, QString thumbnailPath);
    void newThumbnailError(QString resourceUrl, QString error);
    // `filePath` is empty when the still was deleted.
    void pauseThumbnailCreated(QString videoUrl, QString filePath);
    void panning(bool value);

public Q_SLOTS:
    // Keeps the image at `thumbPath` as the still of the video. False when there is nothing to keep or it
    // failed.
    bool createPauseThumbnail(const QString &videoUrl, const QString &thumbPath);
    void deletePauseThumbnail(const QString &videoUrl);
    void filesRemoved(const QStringList &videoUrls);
    void thumbnailUpdated(const QString &videoUrl);
    void cancel(bool emptyQueue);
    // While held (the list is flicked) missing pictures are queued but not asked for.
    void setHoldRequests(bool hold);
    // The file to show for the video: the still, else the picture, else empty.
    QString thumbnailPath(const QString &url, const QString &flavor);
    // Each path is filled only when that file exists.
    void setThumbnailPaths(const QString &url, QString &defaultThumbnailUrl, QString &pauseThumbnailUrl);
    QPixmap placeHolder(const QSize &size);
    QPixmap thumbnailFrom(const QString &thumbPath);
    void disableThumbnailing(bool disable);
    void panningStarted();
    void panningStopped();
    void thumbnailerReady(const QUrl &resourceUrl, const QUrl &thumbnailUrl);
    void thumbnailerError(const QString &error, const QUrl &resourceUrl);
    void queueTimeOut();
    void resetAnimationState();

protected:
    ThumbnailHelper();
    // Where the placeholder's picture is looked for, the installed theme's first.
    [[nodiscard]] virtual QStringList placeholderPaths() const;

private:
    friend struct ThumbnailHelperProbe;

    void queueRequest(const QString &url, const QString &mimeType);
    void processQueue();
    void takeFromQueue(const QUrl &url);

    std::unique_ptr<ThumbnailerClient> m_thumbnailer;
    int m_queueLimit = 4;
    QList<QUrl> m_requestQueue; // newest first
    QMap<QUrl, QString> m_mimeTypes;
    QTimer *m_queueTimer;
    QMap<QString, QString> m_knownPauseThumbnails;
    QMap<QString, QString> m_knownThumbnails;
    bool m_holdRequests = false;
    bool m_thumbnailingDisabled = false;
    bool m_panning = false;
    bool m_animationRunning = false;
    int m_droppedRequests = 0;
};
