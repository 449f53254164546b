// SPDX-License-Identifier: GPL-3.0-or-later
// The keys, the focus and the touches beside a popup.
#include "popup_p.h"

#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsSceneWheelEvent>
#include <QKeyEvent>

#include <algorithm>

namespace toolkit {

namespace {

void collectFocusable(const QGraphicsItem *item, QList<QGraphicsWidget *> &found)
{
    for (QGraphicsItem *child : item->childItems()) {
        if (!child->isVisible() || !child->isEnabled())
            continue;
        if (child->isWidget()) {
            auto *widget = static_cast<QGraphicsWidget *>(child);
            if (widget->focusPolicy() & Qt::TabFocus)
                found.append(widget);
        }
        collectFocusable(child, found);
    }
}

} // namespace

QList<QGraphicsWidget *> Popup::focusChain() const
{
    QList<QGraphicsWidget *> chain;
    collectFocusable(this, chain);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const auto place
        = [this](const QGraphicsWidget *widget) { return mapFromItem(widget, widget->rect().center()); };
    std::stable_sort(chain.begin(), chain.end(), [&](const QGraphicsWidget *a, const QGraphicsWidget *b) {
        const QPointF first = place(a);
        const QPointF second = place(b);
        if (std::abs(first.y() - second.y()) > 8)
            return first.y() < second.y();
        return mirrored ? first.x() > second.x() : first.x() < second.x();
    });
    return chain;
}

// Whoever listens at the window acts for the page beneath: the keys come to the popup before them. Filters
// that are installed later are asked first.
void Popup::Private::setTakesKeys(bool takes)
{
    if (window == nullptr)
        return;
    for (QObject *target : {static_cast<QObject *>(window), static_cast<QObject *>(window->viewport())}) {
        target->removeEventFilter(q);
        if (takes)
            target->installEventFilter(q);
    }
    QObject::disconnect(window, &ApplicationWindow::viewportReplaced, q, nullptr);
    if (takes)
        QObject::connect(window, &ApplicationWindow::viewportReplaced, q,
                         [this] { window->viewport()->installEventFilter(q); });
}

bool Popup::Private::takeKey(const QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
        return false;
    if (!blocking || window == nullptr || (watched != window && watched != window->viewport()))
        return false;
    static_cast<QObject *>(window)->event(event); // on its way to the scene, past all the others
    return true;
}

bool Popup::eventFilter(QObject *watched, QEvent *event)
{
    return d->takeKey(watched, event) || Widget::eventFilter(watched, event);
}

void Popup::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    d->pressedBeside = event->button() == Qt::LeftButton && !panelRect().contains(event->pos());
    event->accept();
}

void Popup::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const bool tapped = std::exchange(d->pressedBeside, false) && rect().contains(event->pos())
        && !panelRect().contains(event->pos());
    if (tapped)
        tappedBeside();
}

void Popup::wheelEvent(QGraphicsSceneWheelEvent *event)
{
    event->accept(); // the page beneath does not scroll
}

void Popup::keyPressEvent(QKeyEvent *event)
{
    event->accept(); // nothing beneath a popup takes keys
    switch (event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_Back:
        if (!event->isAutoRepeat())
            escape();
        break;
    case Qt::Key_Up:
        focusNextPrevChild(false);
        break;
    case Qt::Key_Down:
        focusNextPrevChild(true);
        break;
    default:
        break;
    }
}

void Popup::keyReleaseEvent(QKeyEvent *event)
{
    event->accept();
}

// The focus stays on the popup.
bool Popup::focusNextPrevChild(bool next)
{
    const QList<QGraphicsWidget *> chain = focusChain();
    if (chain.isEmpty() || scene() == nullptr)
        return true;
    const auto has = [this](const QGraphicsWidget *widget) { return scene()->focusItem() == widget; };
    const qsizetype at = std::find_if(chain.begin(), chain.end(), has) - chain.begin();
    const qsizetype count = chain.size();
    const qsizetype to = at == count ? (next ? 0 : count - 1) : (at + (next ? 1 : count - 1)) % count;
    chain.at(to)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace toolkit
