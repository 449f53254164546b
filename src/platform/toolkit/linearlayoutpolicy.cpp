// SPDX-License-Identifier: GPL-3.0-or-later
#include "linearlayoutpolicy_p.h"

#include "theme.h"
#include "widget.h"

#include <QWidget>

#include <algorithm>

namespace toolkit {

namespace {

constexpr qreal unlimited = QWIDGETSIZE_MAX; // the most that Qt gives a graphics widget

} // namespace

void LinearLayoutPolicy::Private::forget(const QGraphicsLayoutItem *item)
{
    entries.removeIf([item](const Entry &entry) { return entry.item == item; });
}

qsizetype LinearLayoutPolicy::Private::find(const QGraphicsLayoutItem *item) const
{
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries.at(i).item == item)
            return i;
    }
    return -1;
}

qsizetype LinearLayoutPolicy::Private::entryOfItem(int itemIndex) const
{
    int seen = 0;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries.at(i).item != nullptr && seen++ == itemIndex)
            return i;
    }
    return entries.size();
}

QMarginsF LinearLayoutPolicy::Private::marginsFor(Qt::LayoutDirection direction) const
{
    QMarginsF result;
    if (margins) {
        result = *margins;
    } else if (!styleName.isEmpty()) {
        const Widget *widget = layout->parentWidget();
        const Qt::Orientation screen = widget != nullptr ? widget->screenOrientation() : Qt::Vertical;
        result = Theme::instance()->style(styleName, screen).margins;
    }
    if (direction == Qt::RightToLeft)
        result = {result.right(), result.top(), result.left(), result.bottom()};
    return result;
}

qreal LinearLayoutPolicy::Private::spacingNow() const
{
    if (spacing)
        return *spacing;
    return styleName.isEmpty() ? 0 : Theme::instance()->style(styleName).spacing;
}

QList<LinearLayoutPolicy::Private::Entry> LinearLayoutPolicy::Private::shownEntries() const
{
    QList<Entry> shown;
    for (const Entry &entry : entries) {
        if (entry.item == nullptr || Layout::isShown(entry.item))
            shown.append(entry);
    }
    return shown;
}

// Between items; a stretch has none around it.
qreal LinearLayoutPolicy::Private::spacingsOf(const QList<Entry> &shown) const
{
    const auto items
        = std::count_if(shown.begin(), shown.end(), [](const Entry &e) { return e.item != nullptr; });
    return items > 1 ? qreal(items - 1) * spacingNow() : 0;
}

LinearItem LinearLayoutPolicy::Private::itemFor(const Entry &entry, qreal across) const
{
    LinearItem result;
    result.stretch = entry.stretch;
    if (entry.item == nullptr) {
        result.maximum = unlimited;
        return result;
    }
    const QSizeF constraint = constraintFor(across);
    const QSizePolicy policy = entry.item->sizePolicy();
    const auto direction = orientation == Qt::Vertical ? policy.verticalPolicy() : policy.horizontalPolicy();
    result.minimum = along(entry.item->effectiveSizeHint(Qt::MinimumSize, constraint));
    result.preferred
        = std::max(result.minimum, along(entry.item->effectiveSizeHint(Qt::PreferredSize, constraint)));
    result.maximum
        = std::max(result.preferred, along(entry.item->effectiveSizeHint(Qt::MaximumSize, constraint)));
    if (!(direction & QSizePolicy::GrowFlag))
        result.maximum = result.preferred;
    result.grows = direction & QSizePolicy::ExpandFlag;
    return result;
}

void LinearLayoutPolicy::Private::arrange(const QRectF &outer, Qt::LayoutDirection direction) const
{
    const QRectF rect = outer.marginsRemoved(marginsFor(direction));
    const QList<Entry> shown = shownEntries();
    QList<LinearItem> items;
    const qreal across = acrossOf(rect.size());
    for (const Entry &entry : shown) {
        const qreal itemAcross = entry.item == nullptr
            ? across
            : std::min(across, acrossOf(entry.item->effectiveSizeHint(Qt::MaximumSize)));
        items.append(itemFor(entry, itemAcross));
    }
    const QList<qreal> sizes = distribute(items, along(rect.size()) - spacingsOf(shown));
    qreal position = 0;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        const Entry &entry = shown.at(i);
        if (entry.item != nullptr) {
            QRectF place = orientation == Qt::Vertical
                ? QRectF(rect.left(), rect.top() + position, rect.width(), sizes.at(i))
                : QRectF(rect.left() + position, rect.top(), sizes.at(i), rect.height());
            const QSizeF most = entry.item->effectiveSizeHint(Qt::MaximumSize);
            QSizeF size = place.size().boundedTo(most);
            if (entry.alignment) {
                const QSizeF wanted = entry.item->effectiveSizeHint(Qt::PreferredSize, constraintFor(-1));
                if (orientation == Qt::Vertical && (entry.alignment & Qt::AlignHorizontal_Mask))
                    size.setWidth(std::min(size.width(), wanted.width()));
                if (orientation == Qt::Horizontal && (entry.alignment & Qt::AlignVertical_Mask))
                    size.setHeight(std::min(size.height(), wanted.height()));
            }
            const qreal spareX = place.width() - size.width();
            const qreal spareY = place.height() - size.height();
            QPointF corner = place.topLeft();
            if (entry.alignment & Qt::AlignHCenter)
                corner.rx() += spareX / 2;
            else if (entry.alignment & Qt::AlignRight)
                corner.rx() += spareX;
            if (entry.alignment & Qt::AlignVCenter)
                corner.ry() += spareY / 2;
            else if (entry.alignment & Qt::AlignBottom)
                corner.ry() += spareY;
            place = QRectF(corner, size);
            if (direction == Qt::RightToLeft)
                place.moveLeft(rect.left() + rect.right() - place.right());
            entry.item->setGeometry(place);
            position += spacingNow();
        }
        position += sizes.at(i);
    }
}

QSizeF LinearLayoutPolicy::Private::sizeHint(Qt::SizeHint which, const QSizeF &constraint,
                                             Qt::LayoutDirection direction) const
{
    const QMarginsF around = marginsFor(direction);
    const QSizeF frame(around.left() + around.right(), around.top() + around.bottom());
    if (which == Qt::MaximumSize)
        return {unlimited, unlimited};
    if (which == Qt::MinimumDescent)
        return {-1, -1};
    qreal across = acrossOf(constraint);
    if (across >= 0)
        across = std::max<qreal>(0, across - acrossOf(frame));
    const QList<Entry> shown = shownEntries();
    qreal length = spacingsOf(shown);
    qreal widest = 0;
    for (const Entry &entry : shown) {
        if (entry.item == nullptr)
            continue;
        const QSizeF hint = entry.item->effectiveSizeHint(which, constraintFor(across));
        length += along(hint);
        widest = std::max(widest, acrossOf(hint));
    }
    const QSizeF content = orientation == Qt::Vertical ? QSizeF(widest, length) : QSizeF(length, widest);
    return content + frame;
}

LinearLayoutPolicy::LinearLayoutPolicy(Layout *layout, Qt::Orientation orientation)
    : d(std::make_unique<Private>())
{
    d->layout = layout;
    d->orientation = orientation;
    layout->registerPolicy(this);
}

LinearLayoutPolicy::~LinearLayoutPolicy()
{
    d->layout->unregisterPolicy(this);
}

void LinearLayoutPolicy::setStyleName(const QString &styleName)
{
    d->styleName = styleName;
    d->layout->invalidate();
}

QString LinearLayoutPolicy::styleName() const
{
    return d->styleName;
}

void LinearLayoutPolicy::setSpacing(qreal spacing)
{
    d->spacing = spacing;
    d->layout->invalidate();
}

void LinearLayoutPolicy::setContentsMargins(qreal left, qreal top, qreal right, qreal bottom)
{
    d->margins = QMarginsF(left, top, right, bottom);
    d->layout->invalidate();
}

void LinearLayoutPolicy::addItem(QGraphicsLayoutItem *item)
{
    insertItem(-1, item);
}

void LinearLayoutPolicy::insertItem(int index, QGraphicsLayoutItem *item)
{
    if (item == nullptr)
        return;
    d->forget(item);
    const qsizetype entry = index < 0 ? d->entries.size() : d->entryOfItem(index);
    d->entries.insert(entry, {item, 0, {}});
    d->layout->adopt(item);
    d->layout->invalidate();
}

void LinearLayoutPolicy::removeItem(QGraphicsLayoutItem *item)
{
    if (d->find(item) < 0)
        return;
    d->forget(item);
    d->layout->dropUnused();
    d->layout->invalidate();
}

void LinearLayoutPolicy::addStretch(int stretch)
{
    d->entries.append({nullptr, stretch, {}});
    d->layout->invalidate();
}

int LinearLayoutPolicy::indexOf(const QGraphicsLayoutItem *item) const
{
    int index = 0;
    for (const Private::Entry &entry : d->entries) {
        if (entry.item == nullptr)
            continue;
        if (entry.item == item)
            return index;
        ++index;
    }
    return -1;
}

int LinearLayoutPolicy::count() const
{
    return int(std::count_if(d->entries.begin(), d->entries.end(),
                             [](const Private::Entry &entry) { return entry.item != nullptr; }));
}

QGraphicsLayoutItem *LinearLayoutPolicy::itemAt(int index) const
{
    const qsizetype entry = index < 0 ? d->entries.size() : d->entryOfItem(index);
    return entry < d->entries.size() ? d->entries.at(entry).item : nullptr;
}

void LinearLayoutPolicy::setAlignment(QGraphicsLayoutItem *item, Qt::Alignment alignment)
{
    const qsizetype entry = d->find(item);
    if (item == nullptr || entry < 0)
        return;
    d->entries[entry].alignment = alignment;
    d->layout->invalidate();
}

void LinearLayoutPolicy::setStretchFactor(QGraphicsLayoutItem *item, int stretch)
{
    const qsizetype entry = d->find(item);
    if (item == nullptr || entry < 0)
        return;
    d->entries[entry].stretch = stretch;
    d->layout->invalidate();
}

} // namespace toolkit
