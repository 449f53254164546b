// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedvideo.h"

#include <QCache>
#include <QDeadlineTimer>
#include <QObject>
#include <QPixmap>
#include <QSet>
#include <QStringList>

// Pictures of videos: where playing stopped, else what the thumbnailer made, which is asked when there is
// none, and started where the session does not start it. Files are read in a thread.
class Pictures : public QObject
{
    Q_OBJECT

public:
    explicit Pictures(QObject *parent = nullptr);

    // Null while there is none; arrived() tells when there is.
    [[nodiscard]] QPixmap picture(const RelatedVideo &video);
    // One that somebody else has fetched.
    void putOnline(const QString &url, const QImage &image);
    // Files may have changed: they are read again when they are asked for. What could not be fetched may be
    // there now.
    void refresh();
    // As if none had been fetched.
    void forgetOnline();

    // The file name, without its suffix, under which pictures of an address lie.
    [[nodiscard]] static QString fileName(const QString &url);

Q_SIGNALS:
    void arrived(QString url);
    // Somebody has to fetch this one.
    void wantedOnline(RelatedVideo video);

private Q_SLOTS:
    void thumbnailReady(uint handle, const QStringList &urls);

private:
    void put(const QString &url, const QImage &image);
    [[nodiscard]] QPixmap onlinePicture(const RelatedVideo &video);
    void read(const RelatedVideo &video);
    void askThumbnailer(const RelatedVideo &video);
    void queue(const RelatedVideo &video);
    void startThumbnailer();

    QCache<QString, QPixmap> m_pictures;
    QSet<QString> m_reading;
    QSet<QString> m_asked; // of the thumbnailer, once each
    QCache<QString, QPixmap> m_online;
    QSet<QString> m_askedOnline; // and not come
    QHash<QString, RelatedVideo> m_waiting;
    QDeadlineTimer m_start; // runs while a thumbnailer that was started may still come
};
