// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsWidget>
#include <QPointer>

namespace toolkit {

// A widget inside a content that is higher than its geometry can say: the rest of it is folded away. Scrolled
// to the fold, in the middle of the widget, the content stands still while the inside of the widget moves
// past.
class ContentFold
{
public:
    // False when nothing changed.
    bool set(QGraphicsWidget *widget, qreal height);
    [[nodiscard]] bool isOf(const QGraphicsWidget *widget) const { return widget == m_widget; }
    // What is folded away of this content; nothing while the widget is hidden in it.
    [[nodiscard]] qreal height(const QGraphicsItem *content) const;
    // How far the inside of the widget has moved where so much has been scrolled.
    [[nodiscard]] qreal offset(const QGraphicsItem *content, qreal scrolled) const;

private:
    QPointer<QGraphicsWidget> m_widget;
    qreal m_height = 0;
};

} // namespace toolkit
