// SPDX-License-Identifier: GPL-3.0-or-later
#include "copyprogress.h"

#include "platform/toolkit/painthelpers.h"

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

// Nobody but the copy moves it.
class AccessibleProgress : public toolkit::AccessibleValue
{
public:
    using AccessibleValue::AccessibleValue;
    [[nodiscard]] QStringList actionNames() const override { return AccessibleWidget::actionNames(); }
    void doAction(const QString &action) override { AccessibleWidget::doAction(action); }
};

} // namespace

CopyProgress::CopyProgress(QGraphicsItem *parent) : toolkit::Widget(parent)
{
    setStyleName(u"SaveAsProgressInverted"_s);
}

void CopyProgress::setFraction(qreal fraction)
{
    m_fraction = std::clamp(fraction, 0.0, 1.0);
    update();
    const int percent = int(m_fraction * 100);
    if (std::exchange(m_percent, percent) != percent)
        toolkit::AccessibleValue::valueChanged(this, m_percent);
}

QAccessibleInterface *CopyProgress::createAccessible()
{
    return new AccessibleProgress(this, this);
}

void CopyProgress::changeValue(qreal) { }

void CopyProgress::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const QRectF bar = contentsRect();
    toolkit::fillRounded(painter, bar, style().radius, style().color(u"track"_s));
    if (m_fraction <= 0 || bar.isEmpty())
        return;
    // Its ends stay round, also of the first bytes.
    const qreal shown = std::max(m_fraction, 2 * style().radius / bar.width());
    toolkit::fillRounded(painter, toolkit::leadingPart(bar, shown, layoutDirection()), style().radius,
                         style().color(u"accent"_s));
}
