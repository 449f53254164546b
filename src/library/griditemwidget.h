// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/taptracker.h"
#include "platform/toolkit/widgetcontroller.h"

#include <QPixmap>
#include <QString>

class CellProgress;
class GridItemWidgetModel;
class GridItemWidgetStyle;
class QPropertyAnimation;

namespace toolkit {
class ImageWidget;
class Label;
} // namespace toolkit

// One cell of the list of videos: picture, title, and the time in the picture's corner.
class GridItemWidget : public toolkit::WidgetController
{
    Q_OBJECT

public:
    // What the time label says; the numbers are those of setTime().
    enum TimeState { FullDuration = 0, RemainingTime = 1 };

    explicit GridItemWidget(QGraphicsItem *parent = nullptr);
    ~GridItemWidget() override;

    // The URN of the video shown. Another one than before ends the fade-in of the picture before.
    void setItemKey(const QString &key);
    [[nodiscard]] QString itemKey() const { return m_itemKey; }
    void setTitleFormat(Qt::TextFormat format);
    void setTitle(const QString &title);
    // Seconds, and a TimeState.
    void setTime(int seconds, int state);
    void updateTimeLabel();

    // How much was watched, 0 to 1, along the foot of the picture while the remaining time is shown.
    void setWatched(qreal fraction);
    // The picture of the video. Where the placeholder of the same video stood it fades in.
    void setPicture(const QPixmap &picture);
    void setPlaceHolder(const QPixmap &placeHolder);
    [[nodiscard]] bool hasPicture() const { return m_hasPicture; }

    [[nodiscard]] GridItemWidgetModel *model() const;
    [[nodiscard]] GridItemWidgetStyle *styleObject() const;
    [[nodiscard]] toolkit::ImageWidget *thumbnail() const { return m_thumbnail; }
    [[nodiscard]] toolkit::Label *titleLabel() const { return m_titleLabel; }
    [[nodiscard]] toolkit::Label *timeLabel() const { return m_timeLabel; }

Q_SIGNALS:
    void clicked();
    void longTapped(QPointF point); // scene coordinates

public Q_SLOTS:
    // The picture stands: work that waited for the animation may go on.
    void animationDone();
    void emitItemClicked();
    // The finger left the cell, or became a pan: it looks untouched again.
    void setReleaseMode();
    void setUpAnimations();
    void fadeIn();
    void fadeInDone();

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void connectTaps();
    void placeOverlays();

    toolkit::ImageWidget *m_thumbnail;
    toolkit::Label *m_titleLabel;
    toolkit::Label *m_timeLabel;
    QString m_itemKey;
    int m_time = 0;
    int m_timeState = FullDuration;
    QPropertyAnimation *m_fadeAnimation = nullptr;
    CellProgress *m_progress;
    toolkit::TapTracker m_tap;
    bool m_hasPicture = false;
    bool m_placeHolderShown = false; // of the video of m_itemKey
};
