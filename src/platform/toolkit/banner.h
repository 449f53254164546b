// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <memory>

namespace toolkit {

// A transient message over the page; goes away by itself (3 s, longer for long texts) or on a tap.
class Banner : public Widget
{
    Q_OBJECT

public:
    explicit Banner(QGraphicsItem *parent = nullptr);
    ~Banner() override;

    void setTitle(const QString &title);
    [[nodiscard]] QString title() const;
    // Through the scene manager of `window`; the banner deletes itself when done.
    void appear(ApplicationWindow *window);
    void setGeometry(const QRectF &rect) override;
    [[nodiscard]] QString accessibleName() const override { return title(); }
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::AlertMessage; }

Q_SIGNALS:
    void dismissed();

public Q_SLOTS:
    void dismiss(); // emits dismissed(), once

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;

private:
    [[nodiscard]] int duration() const; // ms on the screen

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit
