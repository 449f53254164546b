// SPDX-License-Identifier: GPL-3.0-or-later
#include "previewimage.h"

#include <QWidget>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal screenWidth = 480; // where nobody says how wide it may be

} // namespace

PreviewImage::PreviewImage(QGraphicsItem *parent) : toolkit::ImageWidget(parent)
{
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setStyleName(u"KestrelDetailsPicture"_s);
}

void PreviewImage::setOwnWidth(qreal width)
{
    if (qFuzzyCompare(m_ownWidth + 1, width + 1))
        return;
    m_ownWidth = width;
    updateGeometry();
}

qreal PreviewImage::heightFor(qreal width)
{
    return std::floor(width * 9 / 16);
}

QSizeF PreviewImage::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (m_ownWidth > 0)
        return {m_ownWidth, heightFor(m_ownWidth)};
    if (which == Qt::MaximumSize)
        return {QWIDGETSIZE_MAX, QWIDGETSIZE_MAX};
    const qreal width = constraint.width() >= 0 ? constraint.width() : screenWidth;
    return {width, heightFor(width)};
}
