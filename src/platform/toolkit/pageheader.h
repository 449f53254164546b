// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessibleparts.h"
#include "widget.h"

namespace toolkit {

// The head of a page: its title, behind a back mark where the page has one.
class PageHeader : public Widget, public PartedWidget
{
    Q_OBJECT

public:
    explicit PageHeader(QGraphicsItem *parent = nullptr);

    void setTitle(const QString &title);
    [[nodiscard]] QString title() const { return m_title; }
    void setBackVisible(bool visible);
    // As the page's style gives it; 0 for pages without a header.
    void setBarHeight(qreal height) { m_barHeight = height; }
    // 0 also while there is nothing to show.
    [[nodiscard]] qreal barHeight() const { return m_title.isEmpty() && !m_backVisible ? 0 : m_barHeight; }

    [[nodiscard]] QString accessibleName() const override { return m_title; }
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::Heading; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;
    // The back mark.
    [[nodiscard]] int accessiblePartCount() const override { return m_backVisible ? 1 : 0; }
    [[nodiscard]] AccessiblePart accessiblePart(int index) const override;
    void activateAccessiblePart(int index) override;

Q_SIGNALS:
    void backClicked();

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;

private:
    [[nodiscard]] QRectF backRect() const;
    void setPressed(bool pressed);

    QString m_title;
    qreal m_barHeight = 0;
    bool m_backVisible = false;
    bool m_pressed = false;
};

} // namespace toolkit
