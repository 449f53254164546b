// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QtGlobal>

namespace toolkit {

// One item along the axis of a row or column.
struct LinearItem
{
    qreal minimum = 0;
    qreal preferred = 0;
    qreal maximum = 0;
    int stretch = 0; // takes spare room before items without one
    bool grows = false; // wants spare room (without a stretch)
};

// Sizes that fill `available` as far as the limits of the items allow. With too little room every item gives
// up the same share of what it has above its minimum.
[[nodiscard]] QList<qreal> distribute(const QList<LinearItem> &items, qreal available);

} // namespace toolkit
