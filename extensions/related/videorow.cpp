// SPDX-License-Identifier: GPL-3.0-or-later
#include "videorow.h"

#include "pictures.h"
#include "relatedtexts.h"
#include "shownlines.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSizeF pictureSize(206, 116);
constexpr qreal lowestRow = 136;
constexpr qreal gap = 16;
constexpr qreal radius = 8;
constexpr int highestTime = 26; // text that covers no more of the picture

QFont titleFont(const QFont &font)
{
    return scaledFont(font, 1.1, QFont::Medium);
}

// Large text gets a line more.
int titleLines(const QFont &font)
{
    return QFontMetricsF(font).height() > 36 ? 3 : 2;
}

} // namespace

VideoRow::VideoRow(const RelatedVideo &video, const RelatedTexts &texts, Pictures &pictures,
                   QGraphicsItem *parent)
    : TouchRow(true, parent),
      m_video(video),
      m_texts(texts),
      m_pictures(pictures)
{
    connect(&pictures, &Pictures::arrived, this, [this](const QString &url) {
        if (url == m_video.url)
            update();
    });
}

bool VideoRow::isBegun() const
{
    return m_video.position > 0 && m_video.position < m_video.duration;
}

QString VideoRow::remark() const
{
    return isBegun() ? m_texts.text("related_left").arg(timeText(m_video.duration - m_video.position))
                     : QString();
}

qreal VideoRow::heightAt(qreal) const
{
    const QFont title = titleFont(font());
    const qreal text = titleLines(title) * QFontMetricsF(title).lineSpacing()
        + (isBegun() ? QFontMetricsF(font()).lineSpacing() : 0);
    // Large text keeps clear of the rows around it.
    const qreal space = std::max(lowestRow - pictureSize.height(), 0.7 * QFontMetricsF(title).lineSpacing());
    return std::max(lowestRow, text + space);
}

QString VideoRow::spoken() const
{
    QStringList parts{shownTitle(m_video)};
    if (m_video.duration > 0)
        parts.append(m_texts.text("related_duration").arg(timeText(m_video.duration)));
    if (isBegun())
        parts.append(remark());
    return parts.join(u", "_s);
}

void VideoRow::paintContent(QPainter *painter, const QRectF &rect)
{
    const qreal top = (rect.height() - pictureSize.height()) / 2;
    paintPicture(painter, mirrored({{rect.left(), top}, pictureSize}));
    const QFont title = titleFont(font());
    const qreal left = rect.left() + pictureSize.width() + gap;
    const qreal width = rect.right() - left;
    const ShownLines lines(shownTitle(m_video), title, width, titleLines(title));
    const ShownLines below(remark(), font(), width, 1);
    const qreal titleHeight = lines.count() * QFontMetricsF(title).lineSpacing();
    const qreal height = titleHeight + below.count() * QFontMetricsF(font()).lineSpacing();
    const QRectF text = mirrored({left, (rect.height() - height) / 2, width, height});
    painter->setPen(palette().color(QPalette::WindowText));
    lines.paint(painter, text, layoutDirection());
    painter->setPen(palette().color(QPalette::PlaceholderText));
    below.paint(painter, text.adjusted(0, titleHeight, 0, 0), layoutDirection());
}

void VideoRow::paintPicture(QPainter *painter, const QRectF &place)
{
    QPainterPath shape;
    shape.addRoundedRect(place, radius, radius);
    painter->save();
    painter->setClipPath(shape, Qt::IntersectClip); // and not over what lies around the list
    painter->fillRect(place, palette().color(QPalette::Base));
    const QPixmap picture = m_pictures.picture(m_video);
    if (picture.isNull()) {
        const QPointF middle = place.center();
        const QPolygonF mark(
            {middle + QPointF(-12, -18), middle + QPointF(18, 0), middle + QPointF(-12, 18)});
        painter->setPen(QPen(palette().color(QPalette::Mid), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->setBrush(Qt::NoBrush);
        painter->drawPolygon(mark);
    } else {
        // The middle of it, so that the place is filled.
        const QSizeF part = pictureSize.scaled(picture.size(), Qt::KeepAspectRatio);
        const QRectF source(
            QPointF((picture.width() - part.width()) / 2, (picture.height() - part.height()) / 2), part);
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawPixmap(place, picture, source);
    }
    if (isBegun())
        paintProgress(painter, place);
    painter->restore();
    if (m_video.duration > 0)
        paintTime(painter, place);
}

void VideoRow::paintProgress(QPainter *painter, const QRectF &place) const
{
    QRectF bar(place.left(), place.bottom() - 4, place.width(), 4);
    painter->fillRect(bar, QColor(0, 0, 0, 184));
    bar.setWidth(place.width() * m_video.position / m_video.duration);
    if (layoutDirection() == Qt::RightToLeft)
        bar.moveRight(place.right());
    painter->fillRect(bar, palette().color(QPalette::Highlight));
}

void VideoRow::paintTime(QPainter *painter, const QRectF &place) const
{
    const QString time = timeText(m_video.duration);
    QFont font = scaledFont(this->font(), 0.85, QFont::DemiBold);
    if (font.pixelSize() > highestTime)
        font.setPixelSize(highestTime);
    const QFontMetricsF metrics(font);
    const QSizeF size(metrics.horizontalAdvance(time) + 16, metrics.height() + 4);
    QRectF pill(place.bottomRight() - QPointF(size.width() + 6, size.height() + 8), size);
    if (layoutDirection() == Qt::RightToLeft)
        pill.moveLeft(place.left() + 6);
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(0, 0, 0, 184)); // on a picture of any colours, in both schemes
    painter->drawRoundedRect(pill, 6, 6);
    painter->setPen(Qt::white);
    painter->setFont(font);
    painter->drawText(pill, Qt::AlignCenter, time);
}
