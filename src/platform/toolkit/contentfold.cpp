// SPDX-License-Identifier: GPL-3.0-or-later
#include "contentfold.h"

#include <algorithm>

namespace toolkit {

bool ContentFold::set(QGraphicsWidget *widget, qreal height)
{
    if (height == 0 ? !isOf(widget) : isOf(widget) && height == m_height)
        return false;
    m_widget = height > 0 ? widget : nullptr;
    m_height = height;
    return true;
}

qreal ContentFold::height(const QGraphicsItem *content) const
{
    const bool inside = m_widget != nullptr && content != nullptr
        && (m_widget == content || content->isAncestorOf(m_widget)) && m_widget->isVisibleTo(content);
    return inside ? m_height : 0;
}

qreal ContentFold::offset(const QGraphicsItem *content, qreal scrolled) const
{
    const qreal folded = height(content);
    if (folded == 0)
        return 0;
    const qreal fold = content->mapFromItem(m_widget, m_widget->rect().center()).y();
    return std::clamp(scrolled - fold, 0.0, folded);
}

} // namespace toolkit
