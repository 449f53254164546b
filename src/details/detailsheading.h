// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/label.h>

// A label that begins a part of the page, which readers of the screen jump to.
class DetailsHeading : public toolkit::Label
{
    Q_OBJECT

public:
    using Label::Label;
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::Heading; }
};
