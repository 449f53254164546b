// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>

class Thumbnailer;

// What stands behind org.freedesktop.thumbnails.Cache1: thumbnails follow their files.
class ThumbnailCache : public QObject
{
    Q_OBJECT

public:
    explicit ThumbnailCache(Thumbnailer &thumbnailer, QObject *parent = nullptr);

public Q_SLOTS:
    void Delete(const QStringList &uris);
    // Lists of different length are an error of the caller; the pairs that there are count.
    void Copy(const QStringList &fromUris, const QStringList &toUris);
    void Move(const QStringList &fromUris, const QStringList &toUris);
    void Cleanup(const QStringList &baseUris, uint since);

private:
    Thumbnailer &m_thumbnailer;
};
