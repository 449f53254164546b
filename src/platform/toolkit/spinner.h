// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <QElapsedTimer>

namespace toolkit {

// Progress of unknown duration. Turns only while it is visible and on the display.
class Spinner : public Widget
{
    Q_OBJECT

public:
    explicit Spinner(QGraphicsItem *parent = nullptr);
    ~Spinner() override;

    void setUnknownDuration(bool unknown);
    [[nodiscard]] bool unknownDuration() const { return m_unknownDuration; }
    void reset();
    [[nodiscard]] bool isTurning() const { return m_timer != 0; }
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::ProgressBar; }

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void timerEvent(QTimerEvent *event) override;

    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;

private:
    void updateTimer();

    bool m_unknownDuration = false;
    qreal m_angle = 0; // degrees
    int m_timer = 0;
    QElapsedTimer m_clock;
};

} // namespace toolkit
