// SPDX-License-Identifier: GPL-3.0-or-later
#include "windowgeometry.h"

#include <QtMath>

#include <cmath>

namespace toolkit {

namespace {

constexpr qreal logicalWidth = 480; // of a screen in portrait
constexpr int widestHandset = 600;
constexpr int highestTurnedHandset = 480;

qreal handsetScale(const QSize &screen, const QSize &window)
{
    // An on-screen keyboard may take a part of the height; the scale stays that of the screen.
    const bool portrait = screen.height() >= screen.width();
    const int side = portrait ? window.width() : qMin(screen.height(), window.width());
    return qMax(1, side) / logicalWidth;
}

qreal desktopScale(const QSize &window)
{
    return qMin(1.0, qMax(1, qMin(window.width(), window.height())) / logicalWidth);
}

} // namespace

int normalizedAngle(int degrees)
{
    const int quarters = qRound(degrees / 90.0) % 4;
    return (quarters < 0 ? quarters + 4 : quarters) * 90;
}

ApplicationWindow::Profile profileForScreen(const QSize &screen)
{
    const bool portrait = screen.height() > screen.width();
    const bool handset = portrait ? screen.width() <= widestHandset : screen.height() <= highestTurnedHandset;
    return handset ? ApplicationWindow::Profile::Handset : ApplicationWindow::Profile::Desktop;
}

int uprightAngle(const QSize &screen)
{
    return screen.height() >= screen.width() ? 270 : 0;
}

WindowGeometry windowGeometry(ApplicationWindow::Profile profile, const QSize &screen, const QSize &window,
                              int angle)
{
    WindowGeometry geometry;
    if (profile == ApplicationWindow::Profile::Desktop) {
        geometry.scale = desktopScale(window);
        geometry.logicalSize = QSizeF(window) / geometry.scale;
        return geometry;
    }
    geometry.rotation = normalizedAngle(angle - uprightAngle(screen));
    geometry.scale = handsetScale(screen, window);
    geometry.logicalSize = QSizeF(window) / geometry.scale;
    if (geometry.rotation % 180 != 0)
        geometry.logicalSize.transpose();
    return geometry;
}

QTransform sceneTransform(const WindowGeometry &geometry, const QSize &window, qreal rotation)
{
    const qreal turned = qDegreesToRadians(rotation);
    const qreal cosine = std::abs(std::cos(turned));
    const qreal sine = std::abs(std::sin(turned));
    const QSizeF size = geometry.logicalSize;
    qreal scale = geometry.scale;
    if (!qFuzzyCompare(rotation + 1, geometry.rotation + 1.0)) {
        const QSizeF box(size.width() * cosine + size.height() * sine,
                         size.width() * sine + size.height() * cosine);
        if (!box.isEmpty())
            scale = qMin(window.width() / box.width(), window.height() / box.height());
    }
    QTransform transform;
    transform.translate(window.width() / 2.0, window.height() / 2.0);
    transform.rotate(rotation); // exact for multiples of 90 degrees
    transform.scale(scale, scale);
    transform.translate(-size.width() / 2, -size.height() / 2);
    return transform;
}

qreal nearestRotation(qreal from, int to)
{
    qreal nearest = to;
    while (nearest - from > 180)
        nearest -= 360;
    while (nearest - from < -180)
        nearest += 360;
    return nearest;
}

} // namespace toolkit
