// SPDX-License-Identifier: GPL-3.0-or-later
#include "videosurface.h"

#include "mediabackend.h"
#include "picturegeometry.h"

#include <platform/toolkit/viewports.h>

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QGraphicsWidget>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr qreal SoundMarkRadius = 96; // logical pixels

// The clockwise turn of an axis-aligned transform; -1 while something turns or shears.
int rightAngle(const QTransform &transform)
{
    const bool straight = qFuzzyIsNull(transform.m12()) && qFuzzyIsNull(transform.m21());
    const bool across = qFuzzyIsNull(transform.m11()) && qFuzzyIsNull(transform.m22());
    if (straight)
        return transform.m11() >= 0 ? 0 : 180;
    if (across)
        return transform.m12() >= 0 ? 90 : 270;
    return -1;
}

// A picture of `size` in the middle of `rect`, fitting in it or covering it.
QRectF placed(const QSizeF &size, const QRectF &rect, bool fill)
{
    const QSizeF scaled
        = size.scaled(rect.size(), fill ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio);
    QRectF result(QPointF(0, 0), scaled);
    result.moveCenter(rect.center());
    return result;
}

// What a picture in `target` leaves of the area.
void fillBorders(QPainter *painter, const QRectF &area, const QRectF &target)
{
    const QRectF borders[]
        = {QRectF(area.topLeft(), QPointF(area.right(), target.top())),
           QRectF(QPointF(area.left(), target.bottom()), area.bottomRight()),
           QRectF(QPointF(area.left(), target.top()), QPointF(target.left(), target.bottom())),
           QRectF(QPointF(target.right(), target.top()), QPointF(area.right(), target.bottom()))};
    for (const QRectF &border : borders) {
        if (border.width() > 0 && border.height() > 0)
            painter->fillRect(border, Qt::black);
    }
}

bool isOpenGl(const QPainter *painter)
{
    return painter->paintEngine() != nullptr && painter->paintEngine()->type() == QPaintEngine::OpenGL2;
}

} // namespace

VideoSurface::VideoSurface(QGraphicsWidget *item) : m_item(item) { }

void VideoSurface::setBackend(MediaBackend *backend)
{
    m_backend = backend;
    forgetFrame();
    sendOutput();
    m_item->update();
}

void VideoSurface::showFrame()
{
    if (!m_backend)
        return;
    m_frame = m_backend->frame();
    if (!m_frame.planes)
        m_convertedPlanes.reset(); // the decoder's memory
    m_item->update();
}

void VideoSurface::clear()
{
    m_soundOnly = false;
    forgetFrame();
    m_item->update();
}

void VideoSurface::forgetFrame()
{
    m_frame = m_converted = VideoFrame();
    m_convertedPlanes.reset();
}

void VideoSurface::setHasPicture(bool has)
{
    if (m_soundOnly == !has)
        return;
    m_soundOnly = !has;
    m_item->update();
}

void VideoSurface::setFillMode(bool fill)
{
    if (m_fill == fill)
        return;
    m_fill = fill;
    sendOutput();
    m_item->update();
}

void VideoSurface::setStill(const QString &path)
{
    m_stillPath = path;
    m_still = path.isEmpty() ? QImage() : QImage(path);
    m_turnedStill = VideoFrame();
    m_item->update();
}

void VideoSurface::setRenderRectangle(const QRectF &rectangle)
{
    m_renderRectangle = rectangle;
    m_item->update();
}

void VideoSurface::setRectangleOverride(bool on)
{
    m_override = on;
    m_item->update();
}

bool VideoSurface::isPictureHidden() const
{
    if (m_override || !m_renderRectangle.isValid() || !m_item->scene())
        return false;
    const QList<QGraphicsView *> views = m_item->scene()->views();
    return !views.isEmpty() && !m_renderRectangle.intersects(QRectF(views.first()->window()->rect()));
}

void VideoSurface::paint(QPainter *painter)
{
    followDevice(painter);
    const bool hidden = isPictureHidden();
    if (hidden || m_frame.isNull() || !m_still.isNull())
        painter->fillRect(m_item->rect(), Qt::black);
    if (hidden)
        return;
    if (!m_still.isNull())
        paintFrame(painter, turnedStill());
    else if (m_frame.planes)
        paintPlanes(painter);
    else if (!m_frame.isNull())
        paintFrame(painter, m_frame);
    else if (m_soundOnly)
        paintSoundMark(painter);
}

void VideoSurface::setMiddleCovered(bool covered)
{
    if (m_middleCovered == covered)
        return;
    m_middleCovered = covered;
    if (m_soundOnly)
        m_item->update();
}

// A quiet note in the middle: the program plays, there is nothing to see.
void VideoSurface::paintSoundMark(QPainter *painter) const
{
    painter->save();
    painter->translate(m_item->rect().center());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(0x20, 0x26, 0x2E));
    painter->drawEllipse(QPointF(0, 0), SoundMarkRadius, SoundMarkRadius);
    if (!m_middleCovered)
        paintNote(painter);
    painter->restore();
}

void VideoSurface::paintNote(QPainter *painter)
{
    painter->setBrush(QColor(0x76, 0x80, 0x8D));
    painter->drawEllipse(QPointF(-22, 30), 17, 14);
    painter->drawEllipse(QPointF(32, 22), 17, 14);
    QPainterPath stems;
    stems.addPolygon(
        QPolygonF({{-13, 30}, {-13, -38}, {49, -46}, {49, 22}, {41, 22}, {41, -22}, {-5, -16}, {-5, 30}}));
    painter->drawPath(stems);
}

// The still is painted like the frame that it was made of, to the very pixel: nothing jumps when one gives
// way to the other.
const VideoFrame &VideoSurface::turnedStill()
{
    if (m_turnedStill.isNull() || m_turnedStill.rotation != m_rotation)
        m_turnedStill = {
            m_rotation == 0 ? m_still : m_still.transformed(QTransform().rotate(m_rotation)), {}, m_rotation};
    return m_turnedStill;
}

void VideoSurface::paintFrame(QPainter *painter, const VideoFrame &frame) const
{
    const QRectF rect = m_item->rect();
    const QTransform world = painter->worldTransform();
    if (frame.rotation != rightAngle(world)) { // not yet the frame for this turn
        painter->fillRect(rect, Qt::black);
        painter->save();
        painter->translate(rect.center());
        painter->rotate(-frame.rotation);
        const QTransform back = QTransform().rotate(frame.rotation);
        const QRectF turned = back.mapRect(rect.translated(-rect.center()));
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawImage(placed(frame.image.size(), turned, m_fill), frame.image);
        painter->restore();
        return;
    }
    // In device pixels nothing is scaled or turned: rows of pixels are copied.
    const qreal ratio = painter->device()->devicePixelRatioF();
    const QRectF area = world.mapRect(rect);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setWorldTransform(QTransform());
    const QSizeF size = QSizeF(frame.image.size()) / ratio;
    QRectF target = placed(size, area, m_fill);
    if (qAbs(target.width() - size.width()) * ratio <= 2
        && qAbs(target.height() - size.height()) * ratio <= 2)
        target = picturegeometry::centred(size, area, ratio);
    else
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
    fillBorders(painter, area, target);
    if (m_fill)
        painter->setClipRect(area, Qt::IntersectClip);
    if (painter->opacity() >= 1)
        painter->setCompositionMode(QPainter::CompositionMode_Source);
    painter->drawImage(target, frame.image, QRectF(frame.image.rect()));
    painter->restore();
}

toolkit::GlViewport *VideoSurface::glViewport() const
{
    if (!m_item->scene())
        return nullptr;
    const QList<QGraphicsView *> views = m_item->scene()->views();
    return views.isEmpty() ? nullptr : qobject_cast<toolkit::GlViewport *>(views.first()->viewport());
}

void VideoSurface::paintPlanes(QPainter *painter)
{
    toolkit::GlViewport *viewport = isOpenGl(painter) ? glViewport() : nullptr;
    if (viewport != nullptr && viewport->isAlive() && GlPicture::canDraw(*m_frame.planes)) {
        if (drawPlanes(painter, viewport))
            return;
        viewport->giveUp(m_glPicture.error());
    }
    const PlanarPicture &picture = *m_frame.planes;
    const Turn turn = turnedFurther({picture.mirrored, picture.quarters}, m_rotation);
    const QSize size = picturegeometry::scaled(picture.squareSize, turned(m_deviceSize, turn), m_fill);
    if (m_convertedPlanes != m_frame.planes || m_converted.rotation != m_rotation
        || m_converted.image.size() != turned(size, turn)) {
        m_convertedPlanes = m_frame.planes;
        m_converted.image
            = PictureConverter::turned(m_converter.convert(picture, size), turn.mirrored, turn.quarters);
        m_converted.rotation = m_rotation;
    }
    paintFrame(painter, m_converted);
}

bool VideoSurface::drawPlanes(QPainter *painter, toolkit::GlViewport *viewport)
{
    const PlanarPicture &picture = *m_frame.planes;
    const Turn turn{picture.mirrored, picture.quarters};
    const QRectF rect = m_item->rect();
    const QTransform world = painter->worldTransform();
    QRectF target;
    if (rightAngle(world) >= 0) { // on the pixels of the device, as an image is painted
        const qreal ratio = painter->device()->devicePixelRatioF();
        const QRectF area = world.mapRect(rect);
        const Turn onDevice = turnedFurther(turn, rightAngle(world));
        const QSize size = picturegeometry::scaled(turned(picture.squareSize, onDevice),
                                                   (area.size() * ratio).toSize(), m_fill);
        const QRectF onArea = picturegeometry::centred(QSizeF(size) / ratio, area, ratio);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing, false);
        painter->setWorldTransform(QTransform());
        fillBorders(painter, area, onArea);
        painter->restore();
        target = world.inverted().mapRect(onArea);
    } else {
        painter->fillRect(rect, Qt::black);
        target = placed(turned(picture.squareSize, turn), rect, m_fill);
    }
    return m_glPicture.draw(painter, viewport, m_frame.planes, target, target.intersected(rect));
}

// Only what the painter meets is the truth about turn, scale and pixel ratio; what takes a picture of a
// window that OpenGL paints is another painter.
void VideoSurface::followDevice(const QPainter *painter)
{
    const bool planes = glViewport() != nullptr;
    if (planes && !isOpenGl(painter))
        return;
    if (planes != m_planesWanted) {
        m_planesWanted = planes;
        sendOutput();
    }
    const QTransform transform = painter->worldTransform();
    const int rotation = rightAngle(transform);
    if (rotation < 0)
        return;
    const QSize size
        = (transform.mapRect(m_item->rect()).size() * painter->device()->devicePixelRatioF()).toSize();
    if (size == m_deviceSize && rotation == m_rotation)
        return;
    m_deviceSize = size;
    m_rotation = rotation;
    sendOutput();
}

void VideoSurface::sendOutput()
{
    if (!m_backend)
        return;
    m_backend->setPlanesWanted(m_planesWanted);
    if (!m_deviceSize.isEmpty())
        m_backend->setOutput(m_deviceSize, m_fill, m_rotation);
}
