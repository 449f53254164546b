// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "layout.h"
#include "linearsolver.h"

#include <QMarginsF>

#include <optional>

namespace toolkit {

// The arithmetic of one row or column.
class LinearLayoutPolicy::Private
{
public:
    struct Entry
    {
        QGraphicsLayoutItem *item = nullptr; // null: an empty stretch
        int stretch = 0;
        Qt::Alignment alignment;
    };

    Layout *layout = nullptr;
    Qt::Orientation orientation = Qt::Vertical;
    QString styleName;
    std::optional<qreal> spacing; // over the style's
    std::optional<QMarginsF> margins;
    QList<Entry> entries;

    void forget(const QGraphicsLayoutItem *item);
    [[nodiscard]] qsizetype find(const QGraphicsLayoutItem *item) const;
    // The items' place in the list of entries, which also has the stretches.
    [[nodiscard]] qsizetype entryOfItem(int itemIndex) const;
    void arrange(const QRectF &rect, Qt::LayoutDirection direction) const;
    [[nodiscard]] QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint,
                                  Qt::LayoutDirection direction) const;

private:
    [[nodiscard]] QMarginsF marginsFor(Qt::LayoutDirection direction) const;
    [[nodiscard]] qreal spacingNow() const;
    [[nodiscard]] QList<Entry> shownEntries() const;
    [[nodiscard]] qreal spacingsOf(const QList<Entry> &shown) const;
    [[nodiscard]] LinearItem itemFor(const Entry &entry, qreal across) const;
    [[nodiscard]] qreal along(const QSizeF &size) const
    {
        return orientation == Qt::Vertical ? size.height() : size.width();
    }
    [[nodiscard]] qreal acrossOf(const QSizeF &size) const
    {
        return orientation == Qt::Vertical ? size.width() : size.height();
    }
    [[nodiscard]] QSizeF constraintFor(qreal across) const
    {
        return orientation == Qt::Vertical ? QSizeF(across, -1) : QSizeF(-1, across);
    }
};

} // namespace toolkit
