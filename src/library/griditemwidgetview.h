// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widgetcontroller.h"

class GridItemWidget;

// Paints what lies under the picture and the texts of a cell.
class GridItemWidgetView : public toolkit::WidgetView
{
    Q_OBJECT

public:
    explicit GridItemWidgetView(GridItemWidget *cell);

    void drawBackground(QPainter *painter, const QRectF &rect) const override;

private:
    GridItemWidget *m_cell;
};
