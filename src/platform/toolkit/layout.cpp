// SPDX-License-Identifier: GPL-3.0-or-later
#include "layout.h"

#include "linearlayoutpolicy_p.h"
#include "widget.h"

#include <QGraphicsItem>

#include <algorithm>

namespace toolkit {

class Layout::Private
{
public:
    QList<QGraphicsLayoutItem *> items; // of all policies, each once
    QList<LinearLayoutPolicy *> policies; // owned
    LinearLayoutPolicy *portrait = nullptr;
    LinearLayoutPolicy *landscape = nullptr;
    QList<QGraphicsItem *> hidden; // that the policy in force does not have and that were hidden for that
};

Layout::Layout(QGraphicsLayoutItem *parent) : QGraphicsLayout(parent), d(std::make_unique<Private>())
{
    // The margins are the policies'.
    setContentsMargins(0, 0, 0, 0);
}

Layout::~Layout()
{
    for (QGraphicsLayoutItem *item : std::as_const(d->items)) {
        item->setParentLayoutItem(nullptr);
        if (item->ownedByLayout())
            delete item;
    }
    d->items.clear();
    const QList<LinearLayoutPolicy *> policies = std::exchange(d->policies, {});
    for (LinearLayoutPolicy *policy : policies)
        delete policy;
}

void Layout::registerPolicy(LinearLayoutPolicy *policy)
{
    d->policies.append(policy);
    if (d->portrait == nullptr)
        d->portrait = policy;
    if (d->landscape == nullptr)
        d->landscape = policy;
}

void Layout::unregisterPolicy(LinearLayoutPolicy *policy)
{
    if (!d->policies.removeOne(policy))
        return;
    const auto instead = [&](LinearLayoutPolicy *now) { return now == policy ? d->policies.value(0) : now; };
    d->portrait = instead(d->portrait);
    d->landscape = instead(d->landscape);
    dropUnused();
}

void Layout::setPolicy(LinearLayoutPolicy *policy)
{
    d->portrait = policy;
    d->landscape = policy;
    invalidate();
}

void Layout::setPortraitPolicy(LinearLayoutPolicy *policy)
{
    d->portrait = policy;
    invalidate();
}

void Layout::setLandscapePolicy(LinearLayoutPolicy *policy)
{
    d->landscape = policy;
    invalidate();
}

Widget *Layout::parentWidget() const
{
    QGraphicsLayoutItem *parent = parentLayoutItem();
    while (parent != nullptr && parent->isLayout())
        parent = parent->parentLayoutItem();
    QGraphicsItem *item = parent != nullptr ? parent->graphicsItem() : nullptr;
    return item != nullptr ? qobject_cast<Widget *>(item->toGraphicsObject()) : nullptr;
}

Qt::LayoutDirection Layout::direction() const
{
    QGraphicsLayoutItem *parent = parentLayoutItem();
    while (parent != nullptr && parent->isLayout())
        parent = parent->parentLayoutItem();
    QGraphicsItem *item = parent != nullptr ? parent->graphicsItem() : nullptr;
    return item != nullptr && item->isWidget() ? static_cast<QGraphicsWidget *>(item)->layoutDirection()
                                               : Qt::LeftToRight;
}

LinearLayoutPolicy *Layout::policy() const
{
    const Widget *widget = parentWidget();
    return widget != nullptr && widget->screenOrientation() == Qt::Horizontal ? d->landscape : d->portrait;
}

int Layout::count() const
{
    return int(d->items.size());
}

QGraphicsLayoutItem *Layout::itemAt(int index) const
{
    return d->items.value(index);
}

void Layout::removeAt(int index)
{
    QGraphicsLayoutItem *item = d->items.value(index);
    if (item == nullptr)
        return;
    for (LinearLayoutPolicy *policy : std::as_const(d->policies))
        policy->d->forget(item);
    drop(item);
}

void Layout::adopt(QGraphicsLayoutItem *item)
{
    if (d->items.contains(item))
        return;
    addChildLayoutItem(item);
    d->items.append(item);
}

void Layout::drop(QGraphicsLayoutItem *item)
{
    if (!d->items.removeOne(item))
        return;
    d->hidden.removeOne(item->graphicsItem());
    item->setParentLayoutItem(nullptr);
    invalidate();
}

// Items that no policy has any more.
void Layout::dropUnused()
{
    const QList<QGraphicsLayoutItem *> items = d->items;
    for (QGraphicsLayoutItem *item : items) {
        const bool used
            = std::any_of(d->policies.begin(), d->policies.end(),
                          [item](LinearLayoutPolicy *policy) { return policy->indexOf(item) >= 0; });
        if (!used)
            drop(item);
    }
}

// What only the other orientation's policy has is not shown meanwhile.
void Layout::showItemsOfPolicy(const LinearLayoutPolicy *policy)
{
    for (QGraphicsLayoutItem *item : std::as_const(d->items)) {
        QGraphicsItem *graphics = item->graphicsItem();
        if (graphics == nullptr)
            continue;
        if (policy->indexOf(item) >= 0) {
            if (d->hidden.removeOne(graphics))
                graphics->setVisible(true);
        } else if (isShown(item)) {
            d->hidden.append(graphics);
            graphics->setVisible(false);
        }
    }
}

bool Layout::isShown(const QGraphicsLayoutItem *item)
{
    // Hidden itself, not merely on a page that is covered.
    const QGraphicsItem *graphics = item->graphicsItem();
    return graphics == nullptr || graphics->parentItem() == nullptr
        ? graphics == nullptr || graphics->isVisible()
        : graphics->isVisibleTo(graphics->parentItem());
}

void Layout::setGeometry(const QRectF &rect)
{
    QGraphicsLayout::setGeometry(rect);
    LinearLayoutPolicy *current = policy();
    if (current == nullptr)
        return;
    showItemsOfPolicy(current);
    current->d->arrange(geometry(), direction());
}

void Layout::invalidate()
{
    QGraphicsLayout::invalidate();
}

QSizeF Layout::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    const LinearLayoutPolicy *current = policy();
    return current != nullptr ? current->d->sizeHint(which, constraint, direction()) : QSizeF(0, 0);
}

} // namespace toolkit
