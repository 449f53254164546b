// SPDX-License-Identifier: GPL-3.0-or-later
// What comes to the video widget from the person: fingers, the pointer, keys.
#include "videokeys.h"
#include "videowidget_p.h"

#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/scenemanager.h>
#include <platform/toolkit/scenepress.h>

#include <QAccessible>
#include <QEvent>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>

namespace {

constexpr qreal VolumeStep = 0.05;

bool isDesktop(const toolkit::ApplicationWindow *window)
{
    return window && window->profile() == toolkit::ApplicationWindow::Profile::Desktop;
}

bool isBlocked(const toolkit::ApplicationWindow *window)
{
    return window && (window->isMenuOpen() || window->sceneManager()->isBlocked());
}

} // namespace

void VideoWidget::Private::changeControls(bool visible)
{
    q->setControlsVisible(visible);
    Q_EMIT q->controlsVisibilityChangeRequested(visible);
}

// A click where the pointer's way there had brought the controls does not take them away.
void VideoWidget::Private::toggleControls()
{
    if (q->controlsVisible() && std::exchange(shownByPointer, false))
        driver.keepShown();
    else
        changeControls(!q->controlsVisible());
}

// When a tap turns out to be half of a double tap, the controls stay to show what it did.
void VideoWidget::Private::connectGestures()
{
    QObject::connect(&gestures, &VideoGestures::tapped, q, [this] { toggleControls(); });
    QObject::connect(&gestures, &VideoGestures::doubleTapped, q, [this] {
        Q_EMIT q->doubleClick();
        if (!q->controlsVisible())
            changeControls(true);
    });
    QObject::connect(&gestureDriver, &GestureDriver::brightnessChanged, q, [this] { q->update(); });
    driver.setNeed([this] { return needsControls(); });
}

void VideoWidget::Private::connectWindow()
{
    QObject::connect(q, &Widget::displayEntered, q, [this] {
        watch.follow(q->window());
        showFullScreenState();
    });
    QObject::connect(q, &Widget::displayExited, q, [this] { gestures.cancel(); });
    QObject::connect(&watch, &WindowWatch::pointerMoved, q, [this] { pointerMoved(); });
    QObject::connect(&watch, &WindowWatch::secondFinger, q, [this] { gestures.cancel(); });
    QObject::connect(&watch, &WindowWatch::focusLost, q, [this] { gestures.cancel(); });
    QObject::connect(&watch, &WindowWatch::stateChanged, q, [this] { showFullScreenState(); });
    QObject::connect(controls, &PlayerControls::fullScreenRequested, q, [this] { toggleFullScreen(); });
}

void VideoWidget::Private::pointerMoved()
{
    if (!q->isOnDisplay() || !isDesktop(watch.window()) || isBlocked(watch.window()))
        return;
    if (q->controlsVisible()) {
        driver.keepShown();
        return;
    }
    changeControls(true);
    shownByPointer = true;
}

bool VideoWidget::Private::isPointerOnControl() const
{
    if (!watch.pointer() || !q->scene())
        return false;
    for (const QGraphicsItem *item : q->scene()->items(*watch.pointer())) {
        if (item == q)
            return false;
        if (item->isWidget() && item->isEnabled() && item->acceptedMouseButtons() != Qt::NoButton)
            return true;
    }
    return false;
}

bool VideoWidget::Private::needsControls() const
{
    // Whoever is read to stays where the focus is; for others the focus goes with what has it.
    const bool isRead = QAccessible::isActive() && q->scene() && q->scene()->focusItem();
    return isRead || gestures.gesture() != VideoGestures::Gesture::None || isPointerOnControl()
        || isBlocked(watch.window());
}

// The window of a handset always fills the screen.
void VideoWidget::Private::showFullScreenState()
{
    using State = PlayerControls::FullScreen;
    if (!isDesktop(watch.window()))
        controls->setFullScreen(State::NotOffered);
    else
        controls->setFullScreen(watch.window()->isFullScreen() ? State::On : State::Off);
}

void VideoWidget::Private::toggleFullScreen()
{
    if (isDesktop(watch.window()))
        watch.window()->setFullScreen(!watch.window()->isFullScreen());
}

void VideoWidget::keyEvent(const QKeyEvent *event)
{
    const VideoKey key = videoKey(event);
    if (event->type() != QEvent::KeyPress || key == VideoKey::Silent || !isOnDisplay()
        || isBlocked(d->watch.window()))
        return;
    if (controlsVisible())
        d->driver.keepShown();
    else
        d->changeControls(true);
    switch (key) {
    case VideoKey::Louder:
        d->driver.changeVolume(VolumeStep);
        break;
    case VideoKey::Quieter:
        d->driver.changeVolume(-VolumeStep);
        break;
    case VideoKey::Mute:
        d->controls->toggleMute();
        break;
    case VideoKey::FullScreen:
        d->toggleFullScreen();
        break;
    case VideoKey::Start:
        if (d->backend())
            d->backend()->seek(MediaTime::zero(), MediaBackend::SeekPrecision::Exact);
        break;
    case VideoKey::None:
    case VideoKey::Silent:
        break;
    }
}

void VideoWidget::accessibleTap()
{
    d->changeControls(!controlsVisible());
}

void VideoWidget::changeEvent(QEvent *event)
{
    Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        d->gestures.cancel();
}

void VideoWidget::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    d->gestures.press(event->pos(), event->timestamp(), false);
}

void VideoWidget::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    d->gestures.press(event->pos(), event->timestamp(), true);
}

void VideoWidget::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    d->gestures.move(event->pos());
}

void VideoWidget::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    if (toolkit::isCancellingScenePress())
        d->gestures.cancel();
    else
        d->gestures.release(event->pos(), event->timestamp());
}

void VideoWidget::ungrabMouseEvent(QEvent *event)
{
    Widget::ungrabMouseEvent(event);
    d->gestures.cancel();
}
