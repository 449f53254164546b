// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/widget.h>

// A plate over the knob of the seek line while a finger holds it: the time that it has come to, and the
// chapter there.
class TimeBubble : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit TimeBubble(QGraphicsItem *parent = nullptr);
    ~TimeBubble() override;

    // Above `knob`, inside a width from 0 to `room`, in the parent.
    void show(const QString &time, const QString &chapter, const QPointF &knob, qreal room);
    [[nodiscard]] QString time() const { return m_time; }
    [[nodiscard]] QString chapter() const { return m_chapter; }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    QString m_time;
    QString m_chapter;
};
