// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedcolumn.h"

#include "touchrow.h"

#include <QEvent>

#include <algorithm>

RelatedColumn::RelatedColumn(QGraphicsItem *parent) : QGraphicsWidget(parent) { }

void RelatedColumn::setRows(const QList<TouchRow *> &rows)
{
    const auto focused
        = std::find_if(m_rows.cbegin(), m_rows.cend(), [](const TouchRow *row) { return row->hasFocus(); });
    const qsizetype place = focused == m_rows.cend() ? -1 : std::distance(m_rows.cbegin(), focused);
    const bool wasMarked = place >= 0 && (*focused)->isMarked();
    const QString spoken = place >= 0 ? (*focused)->spoken() : QString();
    if (place >= 0)
        (*focused)->clearFocus(); // hidden with it, a row would hand it to whatever comes next
    for (TouchRow *old : std::as_const(m_rows)) {
        old->hide();
        old->deleteLater(); // it may be the one that was tapped
    }
    m_rows = rows;
    for (TouchRow *row : rows)
        row->setParentItem(this);
    placeRows();
    updateGeometry();
    if (place < 0 || rows.isEmpty())
        return;
    const auto again = std::find_if(rows.cbegin(), rows.cend(), [&spoken](const TouchRow *row) {
        return row->canBeTapped() && row->spoken() == spoken;
    });
    TouchRow *next = again != rows.cend() ? *again : rows.at(std::min(place, rows.size() - 1));
    if (!next->canBeTapped())
        return;
    // The page stays where it is: nobody has moved.
    if (wasMarked)
        next->mark();
    else
        next->setFocus(Qt::OtherFocusReason);
}

bool RelatedColumn::isSeen() const
{
    return scene() != nullptr && isVisible();
}

qreal RelatedColumn::heightAt(qreal width) const
{
    qreal height = 0;
    for (const TouchRow *row : m_rows)
        height += row->heightAt(std::min(width, Measure));
    return height;
}

void RelatedColumn::placeRows()
{
    const qreal width = std::min(size().width(), Measure);
    const qreal left = layoutDirection() == Qt::RightToLeft ? size().width() - width : 0;
    qreal top = 0;
    for (TouchRow *row : std::as_const(m_rows)) {
        const qreal height = row->heightAt(width);
        row->setGeometry(left, top, width, height);
        top += height;
    }
}

QSizeF RelatedColumn::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which == Qt::MaximumSize)
        return QGraphicsWidget::sizeHint(which, constraint);
    const qreal asked = constraint.width() >= 0 ? constraint.width() : size().width();
    const qreal width = asked > 0 ? asked : 480;
    return {which == Qt::MinimumSize ? 0 : width, heightAt(width)};
}

void RelatedColumn::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    QGraphicsWidget::resizeEvent(event);
    placeRows();
    updateGeometry(); // words wrap otherwise now
}

void RelatedColumn::changeEvent(QEvent *event)
{
    QGraphicsWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutDirectionChange) {
        placeRows();
        updateGeometry();
    }
}

QVariant RelatedColumn::itemChange(GraphicsItemChange change, const QVariant &value)
{
    if (change == ItemVisibleHasChanged || change == ItemSceneHasChanged)
        Q_EMIT seenChanged();
    return QGraphicsWidget::itemChange(change, value);
}
