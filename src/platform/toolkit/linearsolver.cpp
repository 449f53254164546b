// SPDX-License-Identifier: GPL-3.0-or-later
#include "linearsolver.h"

#include <algorithm>
#include <functional>

namespace toolkit {

namespace {

using Weight = std::function<qreal(const LinearItem &)>;

// Gives `spare` to the items by weight until it is used up or they are full; returns what is left.
qreal grow(const QList<LinearItem> &items, QList<qreal> &sizes, qreal spare, const Weight &weight)
{
    constexpr qreal enough = 0.001;
    while (spare > enough) {
        qreal weights = 0;
        for (qsizetype i = 0; i < items.size(); ++i)
            weights += sizes.at(i) < items.at(i).maximum ? weight(items.at(i)) : 0;
        if (weights <= 0)
            return spare;
        qreal given = 0;
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (sizes.at(i) >= items.at(i).maximum)
                continue;
            const qreal share = spare * weight(items.at(i)) / weights;
            const qreal taken = std::min(share, items.at(i).maximum - sizes.at(i));
            sizes[i] += taken;
            given += taken;
        }
        spare -= given;
    }
    return 0;
}

} // namespace

QList<qreal> distribute(const QList<LinearItem> &items, qreal available)
{
    QList<qreal> sizes;
    qreal preferred = 0;
    qreal shrinkable = 0;
    for (const LinearItem &item : items) {
        sizes.append(item.preferred);
        preferred += item.preferred;
        shrinkable += item.preferred - item.minimum;
    }
    if (preferred > available) {
        const qreal share = shrinkable > 0 ? std::min<qreal>(1, (preferred - available) / shrinkable) : 0;
        for (qsizetype i = 0; i < items.size(); ++i)
            sizes[i] -= (items.at(i).preferred - items.at(i).minimum) * share;
        return sizes;
    }
    qreal spare = available - preferred;
    spare = grow(items, sizes, spare, [](const LinearItem &item) { return qreal(item.stretch); });
    spare = grow(items, sizes, spare, [](const LinearItem &item) { return item.grows ? 1.0 : 0.0; });
    grow(items, sizes, spare, [](const LinearItem &) { return 1.0; });
    return sizes;
}

} // namespace toolkit
