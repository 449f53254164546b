// SPDX-License-Identifier: GPL-3.0-or-later
#include "griditemwidgetview.h"

#include "griditemwidget.h"
#include "griditemwidgetmodel.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/painthelpers.h"

#include <QPainter>

using namespace Qt::Literals::StringLiterals;

GridItemWidgetView::GridItemWidgetView(GridItemWidget *cell) : m_cell(cell) { }

void GridItemWidgetView::drawBackground(QPainter *painter, const QRectF &rect) const
{
    if (!m_cell->model()->isDown())
        return;
    const auto *list = qobject_cast<toolkit::List *>(m_cell->parentObject());
    toolkit::fillRounded(painter, rect, list ? list->plateRadius() : 0, m_cell->style().color(u"pressed"_s));
}
