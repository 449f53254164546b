// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "applicationwindow.h"

#include <QSizeF>
#include <QTransform>

namespace toolkit {

// How a scene lies in a window: pure geometry, sizes in the window's own pixels, angles in degrees clockwise.
struct WindowGeometry
{
    int rotation = 0; // of the scene in the window: 0, 90, 180 or 270
    qreal scale = 1; // window pixels for a logical one
    QSizeF logicalSize; // of the scene, turned

    [[nodiscard]] bool operator==(const WindowGeometry &other) const = default;
    [[nodiscard]] Qt::Orientation orientation() const
    {
        return logicalSize.width() > logicalSize.height() ? Qt::Horizontal : Qt::Vertical;
    }
};

// Brings any angle to 0, 90, 180 or 270.
[[nodiscard]] int normalizedAngle(int degrees);

// A screen as small as a handset's is one: narrow and high, or that screen turned by its compositor.
[[nodiscard]] ApplicationWindow::Profile profileForScreen(const QSize &screen);

// The orientation angle whose scene stands upright on this screen: 270 on a portrait screen, 0 on a landscape
// one.
[[nodiscard]] int uprightAngle(const QSize &screen);

[[nodiscard]] WindowGeometry windowGeometry(ApplicationWindow::Profile profile, const QSize &screen,
                                            const QSize &window, int angle);

// Logical to window coordinates, the scene's centre on the window's, turned by any angle. While it turns
// between two places the scene is as large as fits whole.
[[nodiscard]] QTransform sceneTransform(const WindowGeometry &geometry, const QSize &window, qreal rotation);

// The same rotation, but at most half a turn away from `from`.
[[nodiscard]] qreal nearestRotation(qreal from, int to);

} // namespace toolkit
