// SPDX-License-Identifier: GPL-3.0-or-later
#include "bannerroom.h"

#include <algorithm>

namespace toolkit {

namespace {

constexpr qreal margin = 16;
constexpr qreal leastMargin = 7; // where room is scarce
constexpr qreal foot = 24; // of the scene

} // namespace

BannerRoom::BannerRoom(const QSizeF &scene, const QList<QRectF> &keptFree) : m_area(QPointF(), scene)
{
    for (const QRectF &area : keptFree) {
        if (area.isEmpty())
            continue;
        if (area.height() < scene.height()) {
            m_keptFree.append(area);
            continue;
        }
        // As high as the scene: beside it, where there is more.
        if (area.left() - m_area.left() >= m_area.right() - area.right())
            m_area.setRight(std::min(m_area.right(), area.left()));
        else
            m_area.setLeft(std::max(m_area.left(), area.right()));
    }
    std::sort(m_keptFree.begin(), m_keptFree.end(),
              [](const QRectF &a, const QRectF &b) { return a.bottom() > b.bottom(); });
}

qreal BannerRoom::widest() const
{
    return m_area.width() - 2 * margin;
}

QList<BannerRoom::Gap> BannerRoom::gaps() const
{
    QList<Gap> found;
    qreal bottom = m_area.bottom();
    for (const QRectF &area : m_keptFree) {
        if (area.bottom() < bottom)
            found.append({area.bottom(), bottom});
        bottom = std::min(bottom, area.top());
    }
    if (bottom > m_area.top() || found.isEmpty())
        found.append({m_area.top(), bottom});
    return found;
}

QRectF BannerRoom::place(const QSizeF &size) const
{
    const QList<Gap> all = gaps();
    const auto height = [](const Gap &gap) { return gap.bottom - gap.top; };
    const auto fits = [&](const Gap &gap) { return height(gap) >= size.height() + 2 * leastMargin; };
    auto gap = std::find_if(all.begin(), all.end(), fits);
    if (gap == all.end())
        gap = std::max_element(all.begin(), all.end(),
                               [&](const Gap &a, const Gap &b) { return height(a) < height(b); });
    const qreal below = gap->bottom >= m_area.bottom() ? foot : margin;
    const qreal middle = (gap->top + gap->bottom - size.height()) / 2;
    // Above its foot; where that would be too near to what is above it, in the middle of the gap.
    qreal y = gap->bottom - below - size.height();
    if (y < gap->top + leastMargin)
        y = middle;
    y = std::clamp(y, m_area.top() + margin,
                   std::max(m_area.top() + margin, m_area.bottom() - size.height()));
    return {QPointF(m_area.center().x() - size.width() / 2, y), size};
}

} // namespace toolkit
