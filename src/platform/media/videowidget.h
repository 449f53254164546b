// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/accessiblewidget.h>
#include <platform/toolkit/widget.h>

#include <QPainterPath>
#include <QString>

#include <memory>

class AvloRenderer;
class GestureOverlay;
class MediaBackend;
class PlaybackExtras;
class PlayerControls;
class QKeyEvent;

// The video output on a page: paints the frames of its renderer as an item of the scene, the still over them,
// and the controls (seek bar with times, play/pause, volume). A tap asks for the controls, a double tap is
// reported; a swipe sideways seeks, one up or down dims the picture (left) or changes the volume (right), a
// long press plays at double speed while it lasts.
class VideoWidget : public toolkit::Widget, public toolkit::TappedWidget
{
    Q_OBJECT

public:
    explicit VideoWidget(QGraphicsItem *parent = nullptr);
    ~VideoWidget() override;

    // Null until rendererReady(), and after the renderer was lost.
    [[nodiscard]] AvloRenderer *renderer() const;

    // `startPosition` in whole seconds; the first frame shown is the one at that position.
    void play(const QString &uri, uint startPosition);
    void pause();
    void resume();
    void stop();
    // Relative seek in seconds, clamped to the video.
    void seekBy(int seconds);
    // The last position known, in whole seconds, and the duration (0 while unknown).
    [[nodiscard]] uint position() const;
    [[nodiscard]] uint duration() const;

    void setBusy(bool busy);
    [[nodiscard]] bool isBusy() const;
    // True: the picture fills the widget (cropped); false: it fits.
    void setFillMode(bool fill);
    [[nodiscard]] bool fillMode() const;
    // Back to the state before the first play: no still, no picture, controls hidden, "render-rectangle"
    // undone.
    void reset();
    // The image file shown over the output; an empty string clears it. The next frame of a playing video
    // takes it away.
    void setFrame(const QString &path);
    [[nodiscard]] QString frame() const;
    // Does not emit controlsVisibilityChangeRequested().
    void setControlsVisible(bool visible);
    [[nodiscard]] bool controlsVisible() const;
    // False at first: the controls have no options button.
    void setOptionsOffered(bool offered);
    // Keeps the picture in place while another page covers this one.
    void setOutputRectangleOverride(bool on);

    // A key that the page heard: shows the controls, and does what belongs to the video alone.
    void keyEvent(const QKeyEvent *event);

    [[nodiscard]] QPainterPath opaqueArea() const override;
    // Asks for the controls, or for the picture without them.
    void accessibleTap() override;

    [[nodiscard]] MediaBackend *backend() const;
    [[nodiscard]] PlaybackExtras *extras() const;
    [[nodiscard]] PlayerControls *controls() const;
    [[nodiscard]] GestureOverlay *gestureOverlay() const;
    // 1: the picture as it is; less: dimmed by hand, until another video is played.
    [[nodiscard]] qreal brightness() const;

Q_SIGNALS:
    void rendererReady();
    // Paused by pause(), or a seek ended while paused.
    void paused();
    void endReached();
    void doubleClick();
    void error(QString message);
    // The controls were shown or hidden by a tap, a key or the pointer or, while playing, by the auto-hide
    // timer; the page follows.
    void controlsVisibilityChangeRequested(bool visible);
    // From the options button among the controls.
    void optionsRequested();

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
