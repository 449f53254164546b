// SPDX-License-Identifier: GPL-3.0-or-later
#include "focussight.h"

#include "pannableviewport.h"

#include <QGraphicsObject>
#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

namespace toolkit {

namespace {

constexpr qreal reach = 80; // beyond the edge, as far as a key scrolls

void collectStops(const QGraphicsItem *item, QList<QGraphicsWidget *> &stops)
{
    for (QGraphicsItem *child : item->childItems()) {
        if (!child->isVisible() || !child->isEnabled())
            continue;
        auto *widget = child->isWidget() ? static_cast<QGraphicsWidget *>(child) : nullptr;
        if (widget != nullptr && (widget->focusPolicy() & Qt::TabFocus) != 0)
            stops.append(widget);
        collectStops(child, stops);
    }
}

} // namespace

FocusSight::FocusSight(PannableViewport *viewport) : QObject(viewport), m_viewport(viewport)
{
    connect(viewport, &Widget::displayEntered, this, &FocusSight::follow);
    if (viewport->scene() != nullptr)
        follow();
}

void FocusSight::follow()
{
    connect(m_viewport->scene(), &QGraphicsScene::focusItemChanged, this, &FocusSight::focusMoved,
            Qt::UniqueConnection);
}

// A focus that comes back with the page or with the window is no wish to see something else.
void FocusSight::focusMoved(QGraphicsItem *item, QGraphicsItem *, Qt::FocusReason reason)
{
    const bool byKeys = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
    if (!byKeys || item == nullptr || m_viewport->widget() == nullptr
        || !m_viewport->widget()->isAncestorOf(item))
        return;
    const bool isDue = m_wanted != nullptr;
    m_wanted = item->toGraphicsObject();
    // When what is to be laid out has been.
    if (!isDue)
        QMetaObject::invokeMethod(
            this, [this] { show(std::exchange(m_wanted, nullptr)); }, Qt::QueuedConnection);
}

void FocusSight::show(const QGraphicsObject *item)
{
    const Widget *content = m_viewport->widget();
    if (item != nullptr && content != nullptr && content->isAncestorOf(item))
        m_viewport->ensureVisible(content->mapRectFromItem(item, item->boundingRect()));
}

QRectF FocusSight::inViewport(const QGraphicsWidget *stop) const
{
    return m_viewport->mapRectFromItem(stop, stop->rect());
}

bool FocusSight::isInSight(const QGraphicsWidget *stop) const
{
    const QRectF place = inViewport(stop);
    return (place & m_viewport->rect()).height() > place.height() / 2;
}

QList<QGraphicsWidget *> FocusSight::stops() const
{
    QList<QGraphicsWidget *> stops;
    if (m_viewport->widget() != nullptr)
        collectStops(m_viewport->widget(), stops);
    std::stable_sort(stops.begin(), stops.end(), [this](const QGraphicsWidget *a, const QGraphicsWidget *b) {
        return inViewport(a).center().y() < inViewport(b).center().y();
    });
    return stops;
}

bool FocusSight::moveByKey(const QKeyEvent *event)
{
    const bool down = event->key() == Qt::Key_Down;
    if (!down && event->key() != Qt::Key_Up)
        return false;
    QList<QGraphicsWidget *> stops = this->stops();
    if (!down)
        std::reverse(stops.begin(), stops.end());
    auto next = std::find_if(stops.cbegin(), stops.cend(), [this](const QGraphicsWidget *stop) {
        return stop->hasFocus() && isInSight(stop);
    });
    if (next != stops.cend())
        ++next;
    else // where the person looks
        next = std::find_if(stops.cbegin(), stops.cend(),
                            [this](const auto *stop) { return isInSight(stop); });
    // Nothing that is to be read on the way is passed over.
    if (next == stops.cend()
        || !inViewport(*next).intersects(m_viewport->rect().adjusted(0, -reach, 0, reach)))
        return false;
    (*next)->setFocus(down ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace toolkit
