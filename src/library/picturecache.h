// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCache>
#include <QPixmap>
#include <QSize>
#include <QString>

// Pictures of cells by file, decoded to the size they are shown in. Forgets the least used ones.
class PictureCache
{
public:
    PictureCache();

    // The picture in the file, covering `size` device pixels; null when there is no picture in it.
    [[nodiscard]] QPixmap picture(const QString &path, const QSize &size);
    // The file holds another picture now.
    void forget(const QString &path);

private:
    struct Entry
    {
        QPixmap pixmap;
        QSize size;
    };
    QCache<QString, Entry> m_entries;
};
