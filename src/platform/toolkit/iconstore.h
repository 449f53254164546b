// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCache>
#include <QColor>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace toolkit {

// The project's own SVG icons by id, drawn once for each size and colour.
class IconStore
{
public:
    // Icons in this folder are taken before the program's own; empty for none. Forgets what was drawn.
    void setFolder(const QString &folder);
    [[nodiscard]] bool contains(const QString &iconId) const;
    // Null for an unknown id. The icon keeps its proportions and is centred in `size`.
    [[nodiscard]] QPixmap pixmap(const QString &iconId, const QSize &size, const QColor &color);

private:
    [[nodiscard]] QString pathOf(const QString &iconId) const;

    QString m_folder;
    QCache<QString, QPixmap> m_cache{16 * 1024}; // in KiB of pixels
};

} // namespace toolkit
