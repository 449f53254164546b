// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widget.h"

#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QImage>
#include <QPainter>
#include <QTest>

// A scene in a shown raster view of the handset's size, one logical pixel a device pixel.
class Stage
{
public:
    explicit Stage(const QSize &size = QSize(480, 854)) : view(&scene)
    {
        scene.setSceneRect(QRectF(QPointF(), size));
        scene.setBackgroundBrush(QColor(0x0C, 0x0E, 0x12));
        view.setFrameShape(QFrame::NoFrame);
        view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.resize(size);
        view.show();
        view.activateWindow();
        QVERIFY2(QTest::qWaitForWindowActive(&view, TestPatience), "the view did not come up");
    }

    [[nodiscard]] QImage picture()
    {
        QImage image(view.viewport()->size(), QImage::Format_RGB32);
        QPainter painter(&image);
        view.render(&painter, QRectF(image.rect()), view.viewport()->rect());
        return image;
    }

    void move(Qt::MouseButton button, const QPoint &at)
    {
        QMouseEvent event(QEvent::MouseMove, at, view.viewport()->mapToGlobal(at), Qt::NoButton, button,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(view.viewport(), &event);
    }

    QGraphicsScene scene;
    QGraphicsView view;
};

// Pixels in `area` that are near `color`.
inline int pixelsLike(const QImage &image, const QRect &area, const QColor &color, int tolerance = 40)
{
    int count = 0;
    const QRect inside = area.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - color.red()) < tolerance
                && std::abs(pixel.green() - color.green()) < tolerance
                && std::abs(pixel.blue() - color.blue()) < tolerance)
                ++count;
        }
    }
    return count;
}

// Tells a widget that its page is on the screen, as the scene manager does.
class ShownPage : public toolkit::Widget
{
public:
    using toolkit::Widget::setOnDisplay;
    using toolkit::Widget::Widget;
};
