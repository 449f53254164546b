// SPDX-License-Identifier: GPL-3.0-or-later
#include "list_p.h"

#include "painthelpers.h"
#include "pannableviewport.h"

#include <QAbstractItemModel>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QMetaMethod>
#include <QPainter>
#include <QWidget>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

// Cells kept ready above and below what is seen, in cell heights.
constexpr qreal cellMargin = 1.5;

// Qt bounds a graphics widget at 16.7 million pixels. What of a longer list has no room in its geometry is
// folded away, and the rows move inside the list; the rest is for what stands above and below it.
constexpr qreal greatestHeight = 16e6;

} // namespace

void FocusMark::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    drawFocus(painter, m_rect, m_radius, m_color);
}

void FocusMark::show(const QRectF &rect, const Style &style)
{
    prepareGeometryChange();
    m_rect = rect;
    m_radius = style.radius;
    m_color = style.color(u"focus"_s);
    setVisible(true);
}

List::List(QGraphicsItem *parent)
    : Widget(parent),
      d(std::make_unique<Private>(this, [this](Widget *cell) { adoptCell(cell); }))
{
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setFiltersChildEvents(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    d->focusMark = new FocusMark(this);
    d->syncTimer.setSingleShot(true);
    d->syncTimer.setInterval(0);
    connect(&d->syncTimer, &QTimer::timeout, this, &List::syncNow);
    connect(&d->tap, &TapTracker::tapped, this, [this] {
        const QPersistentModelIndex index = d->pressed;
        setPressedRow(-1);
        pointAt(index.row());
        if (index.isValid())
            Q_EMIT itemClicked(index);
    });
    connect(&d->tap, &TapTracker::longTapped, this, [this](const QPointF &point) {
        const QPersistentModelIndex index = d->pressed;
        setPressedRow(-1);
        pointAt(index.row());
        if (index.isValid())
            Q_EMIT itemLongTapped(index, point);
    });
    connect(&d->tap, &TapTracker::cancelled, this, [this] { setPressedRow(-1); });
    connect(this, &Widget::displayEntered, this, [this] {
        attachViewport();
        syncNow();
    });
    setStyleName(u"KestrelList"_s);
}

List::~List()
{
    blockSignals(true); // only destroyed() still goes out
    if (d->model != nullptr)
        d->model->disconnect(this);
}

void List::setCellCreator(CellCreator *creator)
{
    d->creator = creator;
    d->cells.setCreator(creator);
    structureChanged();
}

void List::setItemModel(QAbstractItemModel *model)
{
    if (d->model == model)
        return;
    if (d->model != nullptr)
        d->model->disconnect(this);
    d->model = model;
    d->cells.clear();
    if (model != nullptr)
        connectModel(model);
    setCurrentIndex({});
    structureChanged();
    Q_EMIT modelChanged();
}

void List::connectModel(QAbstractItemModel *model)
{
    const auto changed = [this] { structureChanged(); };
    connect(model, &QAbstractItemModel::rowsInserted, this, changed);
    connect(model, &QAbstractItemModel::rowsRemoved, this, changed);
    connect(model, &QAbstractItemModel::rowsMoved, this, changed);
    connect(model, &QAbstractItemModel::layoutChanged, this, changed);
    connect(model, &QAbstractItemModel::modelReset, this, [this] {
        d->cells.clear();
        structureChanged();
    });
    connect(
        model, &QAbstractItemModel::dataChanged, this,
        [this](const QModelIndex &from, const QModelIndex &to) { d->cells.update(from.row(), to.row()); });
    connect(model, &QObject::destroyed, this, [this] {
        d->model = nullptr;
        d->cells.clear();
        structureChanged();
    });
}

QAbstractItemModel *List::itemModel() const
{
    return d->model;
}

void List::setColumns(int columns)
{
    d->layouter.setColumns(columns);
    structureChanged();
}

void List::setShowGroups(bool show)
{
    // Groups are not drawn: no model of this program has any.
    d->showGroups = show;
}

void List::setIndexVisible(bool visible)
{
    d->indexVisible = visible;
}

void List::setSelectionMode(SelectionMode mode)
{
    d->selectionMode = mode;
}

void List::applyStyle()
{
    Widget::applyStyle();
    d->tap.setLongTapInterval(int(style().number(u"longTap"_s, 600)));
    d->layouter.setMaximumMeasure(style().number(u"maximumMeasure"_s));
    structureChanged();
}

// Rows came, went or moved, or the cells have another size. Many such changes in a row are answered once.
void List::structureChanged()
{
    d->dirty = true;
    d->syncTimer.start();
    updateGeometry();
}

void List::syncNow()
{
    d->dirty = false;
    d->syncTimer.stop();
    const int rowBefore = isMarkInSight() ? d->currentRow : -1;
    const QSizeF cellSize = d->creator != nullptr ? d->creator->cellSize() : QSizeF();
    const int rows = d->model != nullptr ? d->model->rowCount() : 0;
    const qreal before = d->layouter.height();
    d->layouter.setCellSize(cellSize);
    d->layouter.setRowCount(rows);
    d->layouter.setWidth(size().width());
    d->layouter.setMirrored(layoutDirection() == Qt::RightToLeft);
    if (!qFuzzyCompare(before + 1, d->layouter.height() + 1))
        updateGeometry();
    d->layouter.setOffset(0);
    if (d->viewport != nullptr) {
        d->viewport->setFoldedHeight(this, std::max(0.0, d->layouter.height() - greatestHeight));
        d->layouter.setOffset(d->viewport->foldedOffset(this));
    }
    const QRectF seen = seenRect();
    d->cells.sync(d->model, d->layouter, d->layouter.rows(seen.top(), seen.bottom(), cellMargin));
    if (d->tap.isPressed() && !d->pressed.isValid())
        d->tap.cancel();
    followCurrent();
    updateFocusMark();
    // A row that the keyboard is on and that goes elsewhere, as one that is renamed, takes the eye with it.
    if (rowBefore >= 0 && d->currentRow != rowBefore)
        scrollTo(d->current);
    if (d->held.isValid())
        update(); // its row may be at another place by now
}

// The part of the list that its viewport shows; of a list in no viewport, what is in the window. Never simply
// all of it: a list is as high as its model is long.
QRectF List::seenRect() const
{
    if (d->viewport != nullptr)
        return d->viewport->mapRectToItem(this, d->viewport->rect());
    const QList<QGraphicsView *> views = scene() != nullptr ? scene()->views() : QList<QGraphicsView *>();
    if (views.isEmpty())
        return {};
    const QGraphicsView *view = views.first();
    return mapRectFromScene(view->mapToScene(view->viewport()->rect()).boundingRect()).intersected(rect());
}

void List::attachViewport()
{
    PannableViewport *viewport = nullptr;
    for (QGraphicsItem *item = parentItem(); item != nullptr && viewport == nullptr;
         item = item->parentItem())
        viewport = qobject_cast<PannableViewport *>(item->toGraphicsObject());
    if (viewport == d->viewport)
        return;
    if (d->viewport != nullptr) {
        d->viewport->disconnect(this);
        d->viewport->setFoldedHeight(this, 0);
    }
    d->viewport = viewport;
    if (viewport == nullptr)
        return;
    connect(viewport, &PannableViewport::positionChanged, this, [this] { syncNow(); });
    connect(viewport, &PannableViewport::foldedOffsetChanged, this, [this] { syncNow(); });
    connect(viewport, &QGraphicsWidget::geometryChanged, this, [this] { syncNow(); });
    connect(viewport, &PannableViewport::panningStarted, this, [this] {
        cancelPress();
        Q_EMIT panningStarted();
    });
    connect(viewport, &PannableViewport::panningStopped, this, &List::panningStopped);
}

QVariant List::itemChange(GraphicsItemChange change, const QVariant &value)
{
    const QVariant result = Widget::itemChange(change, value);
    if (change == ItemParentHasChanged || change == ItemSceneHasChanged || change == ItemVisibleHasChanged) {
        attachViewport();
        if (d->syncTimer.isActive() || isVisible())
            d->syncTimer.start();
    } else if (change == ItemPositionHasChanged) {
        d->syncTimer.start();
    }
    return result;
}

void List::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    syncNow();
}

void List::changeEvent(QEvent *event)
{
    Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        structureChanged();
}

QSizeF List::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    Q_UNUSED(constraint)
    const QSizeF cell = d->creator != nullptr ? d->creator->cellSize() : QSizeF(0, 0);
    ListLayouter layouter = d->layouter;
    layouter.setCellSize(cell);
    layouter.setRowCount(d->model != nullptr ? d->model->rowCount() : 0);
    if (which == Qt::MaximumSize)
        return {QWIDGETSIZE_MAX, QWIDGETSIZE_MAX};
    return {which == Qt::MinimumSize ? 0 : cell.width() * layouter.columns(),
            std::min(layouter.height(), greatestHeight)};
}

qreal List::plateRadius() const
{
    return d->layouter.measure() < size().width() - 1 ? style().radius : 0;
}

void List::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    for (const QPersistentModelIndex &lit : {d->pressed, d->held}) {
        if (lit.isValid())
            fillRounded(painter, d->layouter.cellRect(lit.row()), plateRadius(), style().color(u"pressed"_s));
    }
}

// Cells that handle the pointer themselves say what it was.
void List::adoptCell(Widget *cell)
{
    if (cell->metaObject()->indexOfSignal("clicked()") >= 0)
        connect(cell, SIGNAL(clicked()), this, SLOT(cellClicked()));
    if (cell->metaObject()->indexOfSignal("longTapped(QPointF)") >= 0)
        connect(cell, SIGNAL(longTapped(QPointF)), this, SLOT(cellLongTapped(QPointF)));
}

void List::cellClicked()
{
    const int row = d->cells.rowOf(qobject_cast<Widget *>(sender()));
    pointAt(row);
    if (row >= 0)
        Q_EMIT itemClicked(d->model->index(row, 0));
}

void List::cellLongTapped(const QPointF &point)
{
    const int row = d->cells.rowOf(qobject_cast<Widget *>(sender()));
    pointAt(row);
    if (row >= 0)
        Q_EMIT itemLongTapped(d->model->index(row, 0), point);
}

QList<QModelIndex> List::visibleIndexes() const
{
    const_cast<List *>(this)->ensureSynced();
    const QRectF seen = seenRect();
    const RowRange range = d->layouter.rows(seen.top(), seen.bottom());
    QList<QModelIndex> indexes;
    for (int row = range.first; row <= range.last; ++row)
        indexes.append(d->model->index(row, 0));
    return indexes;
}

void List::ensureSynced()
{
    if (d->dirty)
        syncNow();
}

Widget *List::cell(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != d->model)
        return nullptr;
    const_cast<List *>(this)->ensureSynced();
    return d->cells.cell(index.row());
}

int List::cellCount() const
{
    const_cast<List *>(this)->ensureSynced();
    return d->cells.count();
}

void List::refreshCell(const QModelIndex &index)
{
    if (cell(index) != nullptr)
        d->cells.update(index.row(), index.row());
}

void List::scrollTo(const QModelIndex &index)
{
    if (!index.isValid() || index.model() != d->model)
        return;
    ensureSynced();
    attachViewport();
    if (d->viewport == nullptr || d->viewport->widget() == nullptr)
        return;
    const QRectF unfolded = d->layouter.cellRect(index.row()).translated(0, d->layouter.offset());
    d->viewport->ensureVisible(mapRectToItem(d->viewport->widget(), unfolded));
}

} // namespace toolkit
