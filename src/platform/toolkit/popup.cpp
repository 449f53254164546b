// SPDX-License-Identifier: GPL-3.0-or-later
// The way of a popup in and out, and the page that it blocks meanwhile.
#include "popup_p.h"

#include "theme.h"

#include <QGraphicsScene>
#include <QPainter>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

Popup::Private::Private(Popup *popup) : q(popup)
{
    motion.setParent(popup);
    motion.setObjectName(u"motion"_s);
    motion.setEndValue(1.0);
    connect(&motion, &QVariantAnimation::valueChanged, popup, [this](const QVariant &value) {
        if (motion.state() != QAbstractAnimation::Running)
            return;
        progress = value.toReal();
        q->place();
    });
    connect(&motion, &QVariantAnimation::finished, popup, [this] { arrived(); });
}

void Popup::Private::moveTo(qreal target, Appearance appearance)
{
    motion.stop();
    const int whole = appearance == Appearance::Immediate ? 0 : q->motionMilliseconds();
    const int time = Theme::instance()->motion(qRound(whole * std::abs(target - progress)));
    if (time == 0) {
        progress = target;
        q->place();
        arrived();
        return;
    }
    motion.setEasingCurve(target > progress ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
    motion.setStartValue(progress);
    motion.setEndValue(target);
    motion.setDuration(time);
    motion.start();
}

void Popup::Private::arrived()
{
    if (state == State::Coming) {
        progress = 1;
        q->place();
        state = State::Up;
        Q_EMIT q->appeared();
    } else if (state == State::Going) {
        removeFromScene();
        Q_EMIT q->disappeared();
    }
}

void Popup::Private::removeFromScene()
{
    state = State::Hidden;
    progress = 0;
    q->hide();
    setTakesKeys(false);
    if (window != nullptr)
        window->sceneManager()->removePopup(q);
}

// The page is free again.
void Popup::Private::release()
{
    if (!blocking || state == State::Coming || state == State::Up)
        return;
    blocking = false;
    if (window != nullptr)
        window->sceneManager()->unblock();
}

Popup::Popup(QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>(this))
{
    setVisible(false);
    setFocusPolicy(Qt::ClickFocus); // a tap on it does not leave the keys to the page
    setAcceptedMouseButtons(Qt::AllButtons);
}

Popup::~Popup()
{
    d->motion.disconnect(this);
    d->motion.stop();
    if (d->window == nullptr)
        return;
    if (d->state != Private::State::Hidden) {
        giveFocusBack();
        d->removeFromScene();
    }
    d->release();
}

void Popup::appear(ApplicationWindow *window)
{
    if (window == nullptr || (window == d->window && isActive()))
        return;
    if (d->window != nullptr && d->window != window && isDisplayed()) {
        d->removeFromScene();
        d->release();
    }
    d->window = window;
    d->setTakesKeys(true);
    if (!d->blocking) {
        d->blocking = true;
        window->sceneManager()->block();
    }
    d->state = Private::State::Coming;
    setLeaving(false);
    QGraphicsItem *focus = window->scene()->focusItem();
    if (focus != nullptr && focus != this && !isAncestorOf(focus))
        d->focusBefore = focus->toGraphicsObject();
    window->sceneManager()->addPopup(this);
    arrange();
    show();
    setFocus(Qt::PopupFocusReason);
    d->moveTo(1);
}

bool Popup::isDisplayed() const
{
    return d->state != Private::State::Hidden;
}

bool Popup::isOpen() const
{
    return d->state == Private::State::Up;
}

bool Popup::isActive() const
{
    return d->state == Private::State::Coming || d->state == Private::State::Up;
}

void Popup::dismiss()
{
    close(nullptr);
}

void Popup::close(const std::function<void()> &result, Free free, Appearance appearance)
{
    if (!isActive())
        return;
    d->state = Private::State::Going;
    setLeaving(true);
    if (d->window != nullptr)
        d->window->sceneManager()->popupChanged();
    const QPointer<Popup> alive(this);
    if (result)
        result();
    if (alive == nullptr || d->state != Private::State::Going)
        return; // its owner deleted it, or lets it appear again
    giveFocusBack();
    if (free == Free::Now)
        d->release();
    else
        QMetaObject::invokeMethod(
            this, [this] { d->release(); }, Qt::QueuedConnection);
    if (alive != nullptr && d->state == Private::State::Going)
        d->moveTo(0, appearance);
}

void Popup::abandoned()
{
    const bool wasDisplayed = isDisplayed();
    d->motion.stop();
    d->state = Private::State::Hidden;
    d->progress = 0;
    d->blocking = false;
    d->window = nullptr;
    hide();
    if (wasDisplayed)
        Q_EMIT disappeared();
}

int Popup::motionMilliseconds() const
{
    return int(style().number(u"motion"_s, 240));
}

ApplicationWindow *Popup::popupWindow() const
{
    return isDisplayed() ? d->window.data() : nullptr;
}

qreal Popup::progress() const
{
    return d->progress;
}

void Popup::setProgress(qreal progress)
{
    if (!isActive())
        return;
    d->motion.stop();
    d->progress = progress;
    place();
}

void Popup::settle()
{
    if (!isActive())
        return;
    d->state = Private::State::Coming;
    d->moveTo(1);
}

void Popup::giveFocusBack()
{
    QGraphicsItem *focus = scene() != nullptr ? scene()->focusItem() : nullptr;
    if (focus != nullptr && focus != this && !isAncestorOf(focus))
        return; // somebody else has it by now
    if (d->focusBefore != nullptr && d->focusBefore->isVisible())
        d->focusBefore->setFocus(Qt::PopupFocusReason);
    else if (focus != nullptr)
        focus->clearFocus();
    d->focusBefore = nullptr;
}

void Popup::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    QColor dim = style().color(u"dim"_s, QColor(0, 0, 0, 128));
    dim.setAlphaF(dim.alphaF() * float(std::clamp(d->progress, 0.0, 1.0)));
    painter->fillRect(rect(), dim);
}

void Popup::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    arrange();
}

} // namespace toolkit
