// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

#include <platform/toolkit/widget.h>

#include <QPropertyAnimation>
#include <QTimer>

// A small plate over the picture that tells what a gesture does: a mark, a bar, a value. It goes by itself
// when the gesture is over.
class GestureOverlay : public toolkit::Widget
{
    Q_OBJECT

public:
    enum class Level { Brightness, Volume };

    explicit GestureOverlay(QGraphicsItem *parent = nullptr);
    ~GestureOverlay() override;

    // The picture's, in which it stands.
    void setArea(const QRectF &area);
    [[nodiscard]] QRectF area() const { return m_area; }

    void showLevel(Level level, qreal value); // 0 to 1
    // `way`: from where the gesture began.
    void showTime(MediaTime target, MediaTime way, MediaTime duration);
    void showSpeed(qreal rate);
    void leave();

    [[nodiscard]] bool isShown() const { return m_shown; }
    // What it says: "65%", "12:34 +01:20", "2×".
    [[nodiscard]] QString text() const;

protected:
    void applyStyle() override;
    void changeEvent(QEvent *event) override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    void showContent();
    void fade(bool in);
    void layOut();
    void paintBar(QPainter *painter, const QRectF &bar) const;

    QPropertyAnimation m_fade;
    QTimer m_leaving;
    QRectF m_area;
    QFont m_timeFont;
    QString m_iconId; // empty: a time, over its bar
    QString m_value;
    QString m_detail;
    qreal m_fraction = -1; // of the bar; negative: no bar
    bool m_shown = false;
};
