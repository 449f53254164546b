// SPDX-License-Identifier: GPL-3.0-or-later
#include "imagewidget.h"

#include "painthelpers.h"

#include <QPainter>
#include <QPainterPath>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

// `source` scaled to cover `size`, the middle of it, with rounded corners; all in device pixels.
QPixmap covered(const QPixmap &source, const QSize &size, qreal radius)
{
    QImage result(size, QImage::Format_ARGB32_Premultiplied);
    result.fill(Qt::transparent);
    const QSize scaledSize = source.size().scaled(size, Qt::KeepAspectRatioByExpanding);
    QImage scaled = source.toImage();
    if (scaledSize != source.size())
        scaled = scaled.scaled(scaledSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&result);
    const QPoint offset((size.width() - scaledSize.width()) / 2, (size.height() - scaledSize.height()) / 2);
    if (radius > 0) {
        painter.setRenderHint(QPainter::Antialiasing);
        QBrush brush(scaled);
        brush.setTransform(QTransform::fromTranslate(offset.x(), offset.y()));
        painter.setBrush(brush);
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(QRectF(QPointF(), size), radius, radius);
    } else {
        painter.drawImage(offset, scaled);
    }
    painter.end();
    return QPixmap::fromImage(result);
}

} // namespace

ImageWidget::ImageWidget(QGraphicsItem *parent) : Widget(parent) { }

ImageWidget::ImageWidget(const QString &imageId, QGraphicsItem *parent) : Widget(parent), m_imageId(imageId)
{
}

ImageWidget::~ImageWidget() = default;

void ImageWidget::setPixmap(const QPixmap &pixmap)
{
    if (m_pixmap.cacheKey() == pixmap.cacheKey())
        return;
    m_pixmap = pixmap;
    m_shown = QPixmap();
    updateGeometry();
    update();
}

void ImageWidget::setImage(const QString &imageId)
{
    m_imageId = imageId;
    setPixmap(QPixmap());
    updateGeometry();
    update();
}

void ImageWidget::applyStyle()
{
    Widget::applyStyle();
    m_shown = QPixmap();
}

void ImageWidget::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const QRectF content = contentsRect();
    if (m_pixmap.isNull()) {
        fillRounded(painter, content, style().radius, style().color(u"background"_s));
        if (!m_imageId.isEmpty())
            drawIcon(painter, m_imageId, content, style().color(u"icon"_s), layoutDirection());
        return;
    }
    const qreal scale = pixelScale(painter);
    const QSize pixels = (content.size() * scale).toSize();
    if (pixels.isEmpty())
        return;
    if (m_shown.size() != pixels)
        m_shown = covered(m_pixmap, pixels, style().radius * scale);
    painter->drawPixmap(content, m_shown, QRectF(m_shown.rect()));
}

QSizeF ImageWidget::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which == Qt::PreferredSize && !m_pixmap.isNull())
        return m_pixmap.deviceIndependentSize();
    if (which == Qt::PreferredSize && !m_imageId.isEmpty())
        return {32, 32};
    if (which == Qt::MinimumSize)
        return {0, 0};
    return Widget::sizeHint(which, constraint);
}

} // namespace toolkit
