// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <data/thumbnailhelper.h>

#include "support/driventimer.h"
#include "support/fakethumbnailerclient.h"

#include <QImage>
#include <QTemporaryDir>

#include <memory>

struct ThumbnailHelperProbe
{
    static QTimer *timer(ThumbnailHelper &thumbnails) { return thumbnails.m_queueTimer; }
    static QStringList queue(const ThumbnailHelper &thumbnails)
    {
        QStringList urls;
        for (const QUrl &url : thumbnails.m_requestQueue)
            urls.append(QString::fromUtf8(url.toEncoded()));
        return urls;
    }
    static bool panning(const ThumbnailHelper &thumbnails) { return thumbnails.m_panning; }
};

// A helper of the test's own, in a home of its own, with a thumbnailer whose every answer the test gives.
class ThumbnailHelperFixture : public QObject
{
protected:
    class Thumbnails : public ThumbnailHelper
    {
    public:
        QStringList placeholders = ThumbnailHelper::placeholderPaths();

    protected:
        QStringList placeholderPaths() const override { return placeholders; }
    };

    void start()
    {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("HOME", m_home->path().toUtf8());
        FakeThumbnailerClient::install();
        m_thumbnails = std::make_unique<Thumbnails>();
    }

    static QString urlOf(int number) { return QStringLiteral("file:///v/%1.mp4").arg(number); }

    static QStringList urls(const QList<int> &numbers)
    {
        QStringList list;
        for (const int number : numbers)
            list.append(urlOf(number));
        return list;
    }

    static QStringList texts(const QList<QUrl> &list)
    {
        QStringList result;
        for (const QUrl &url : list)
            result.append(QString::fromUtf8(url.toEncoded()));
        return result;
    }

    static FakeThumbnailerClient *client() { return FakeThumbnailerClient::last(); }

    static QStringList requested()
    {
        return client()->requests.isEmpty() ? QStringList() : texts(client()->requests.last().urls);
    }

    // A picture file of one colour in the home folder; empty when it could not be written.
    QString image(const QString &name, Qt::GlobalColor color) const
    {
        QImage picture(32, 18, QImage::Format_RGB32);
        picture.fill(color);
        const QString path = m_home->filePath(name);
        return picture.save(path) ? path : QString();
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<Thumbnails> m_thumbnails;
};
