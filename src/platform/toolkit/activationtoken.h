// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

class QWidget;

namespace toolkit {

// What the launcher of a start hands on, so that the window system lets the window come to the front although
// another one has the focus.
struct ActivationToken
{
    QString token; // Wayland
    QString startupId; // X11

    [[nodiscard]] bool isEmpty() const { return token.isEmpty() && startupId.isEmpty(); }

    // Of this process. To be read before the application object is made, which takes it out.
    [[nodiscard]] static ActivationToken ofEnvironment();
    // As org.freedesktop.Application hands it on; what is no token is left out.
    [[nodiscard]] static ActivationToken ofPlatformData(const QVariantMap &data);
    [[nodiscard]] QVariantMap platformData() const;

    // When the person asked for the start, in milliseconds of the X server's clock.
    [[nodiscard]] std::optional<quint32> startupTime() const;

    friend bool operator==(const ActivationToken &, const ActivationToken &) = default;
};

// Brings a visible window to the front and gives it the focus, with the token's right where it has one.
void activate(QWidget *window, const ActivationToken &token);

} // namespace toolkit
