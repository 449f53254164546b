// SPDX-License-Identifier: GPL-3.0-or-later
#include "iconstore.h"

#include "datafile.h"
#include "toolkitlog.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

QPixmap drawn(const QString &path, const QSize &size, const QColor &color)
{
    QSvgRenderer renderer(path);
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(QPointF(), size));
    if (color.isValid()) {
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
    }
    painter.end();
    return QPixmap::fromImage(image);
}

} // namespace

void IconStore::setFolder(const QString &folder)
{
    m_folder = folder;
    m_cache.clear();
}

// Ids are plain words: anything else is no icon, and never a path out of the folder.
QString IconStore::pathOf(const QString &iconId) const
{
    if (iconId.isEmpty() || iconId.contains(u'/') || iconId.contains(u'.'))
        return {};
    const QString file = u"%1.svg"_s.arg(iconId);
    if (!m_folder.isEmpty() && QFile::exists(m_folder + u'/' + file))
        return m_folder + u'/' + file;
    return dataFile(u"theme/icons/"_s + file);
}

bool IconStore::contains(const QString &iconId) const
{
    const QString path = pathOf(iconId);
    return !path.isEmpty() && QFile::exists(path);
}

QPixmap IconStore::pixmap(const QString &iconId, const QSize &size, const QColor &color)
{
    if (size.isEmpty())
        return {};
    const QString key = u"%1 %2x%3 %4"_s.arg(iconId)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(color.isValid() ? color.rgba() : 0, 0, 16)
        + (color.isValid() ? u"c"_s : QString());
    if (const QPixmap *kept = m_cache.object(key))
        return *kept;
    if (!contains(iconId)) {
        qCWarning(lcWidgets) << "no icon" << iconId;
        return {};
    }
    const QPixmap pixmap = drawn(pathOf(iconId), size, color);
    m_cache.insert(key, new QPixmap(pixmap), 1 + pixmap.width() * pixmap.height() / 256);
    return pixmap;
}

} // namespace toolkit
