// SPDX-License-Identifier: GPL-3.0-or-later
#include "picturecache.h"

#include <QImageReader>

namespace {

constexpr int CapacityKiB = 32 * 1024;

QPixmap decode(const QString &path, const QSize &size)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    // JPEG is scaled while it is decoded, in a fraction of the time.
    const QSize natural = reader.size();
    if (natural.isValid() && !size.isEmpty()) {
        const QSize covering = natural.scaled(size, Qt::KeepAspectRatioByExpanding);
        if (covering.width() < natural.width())
            reader.setScaledSize(covering);
    }
    return QPixmap::fromImage(reader.read());
}

} // namespace

PictureCache::PictureCache() : m_entries(CapacityKiB) { }

QPixmap PictureCache::picture(const QString &path, const QSize &size)
{
    if (const Entry *entry = m_entries.object(path); entry && entry->size == size)
        return entry->pixmap;
    const QPixmap pixmap = decode(path, size);
    if (pixmap.isNull())
        return pixmap; // it may be written right now
    const qsizetype cost = qMax(1, pixmap.width() * pixmap.height() / 256);
    m_entries.insert(path, new Entry{pixmap, size}, cost);
    return pixmap;
}

void PictureCache::forget(const QString &path)
{
    m_entries.remove(path);
}
