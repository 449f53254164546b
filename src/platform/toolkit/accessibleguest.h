// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessibleitem.h"

namespace toolkit {

// A widget that is none of the toolkit's, such as one of an extension, which says by properties what it is:
//
//     accessibleName         what is read; without it only what is in it is told
//     accessibleDescription  what is read after it
//     accessibleRole         a QAccessible::Role; else a button where it takes the focus, or a text
//
// A press comes to it as the key Return, since it has no other way that is sure to be there.
class AccessibleGuest : public AccessibleItem
{
public:
    explicit AccessibleGuest(QGraphicsWidget *guest);

    [[nodiscard]] static bool isTold(const QGraphicsWidget *guest);
    [[nodiscard]] static QAccessible::Role roleOf(const QGraphicsWidget *guest);
    // Tells when something comes into a guest that is not told of itself, or leaves it.
    static void follow(QGraphicsWidget *guest);

    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    [[nodiscard]] QAccessible::State state() const override;
    [[nodiscard]] QStringList actionNames() const override;
    void doAction(const QString &action) override;

private:
    void press();
};

} // namespace toolkit
