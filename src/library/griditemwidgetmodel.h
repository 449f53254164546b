// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widgetcontroller.h"

// State of a cell that its view paints.
class GridItemWidgetModel : public toolkit::WidgetModel
{
    Q_OBJECT

public:
    using toolkit::WidgetModel::WidgetModel;

    [[nodiscard]] bool isDown() const { return m_down; }
    void setDown(bool down)
    {
        if (m_down == down)
            return;
        m_down = down;
        Q_EMIT changed();
    }

Q_SIGNALS:
    void changed();

private:
    bool m_down = false;
};
