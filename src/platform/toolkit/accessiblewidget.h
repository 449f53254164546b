// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessibleitem.h"

namespace toolkit {

class Widget;

// A widget that is no button and does something when it is tapped.
class TappedWidget
{
public:
    virtual ~TappedWidget();
    virtual void accessibleTap() = 0;
};

// What assistive technology is told of a widget: role, name, place and state; pressing buttons, tapping,
// taking the focus, opening the menu of a page.
class AccessibleWidget : public AccessibleItem
{
public:
    explicit AccessibleWidget(Widget *widget);

    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    [[nodiscard]] QAccessible::State state() const override;

    [[nodiscard]] QStringList actionNames() const override;
    void doAction(const QString &action) override;

protected:
    ~AccessibleWidget() override;
    [[nodiscard]] Widget *widget() const;
};

} // namespace toolkit
