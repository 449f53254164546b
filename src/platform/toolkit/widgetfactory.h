// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <QString>

#include <functional>

namespace toolkit {

// Widget types by catalogue and name, so that a theme or a test can make them without their header.
class WidgetFactory
{
public:
    using Creator = std::function<Widget *()>;
    static void registerType(const QString &catalogue, const QString &typeName, Creator creator);
    [[nodiscard]] static Widget *create(const QString &catalogue, const QString &typeName); // null: unknown
    [[nodiscard]] static bool isRegistered(const QString &catalogue, const QString &typeName);
};

} // namespace toolkit
