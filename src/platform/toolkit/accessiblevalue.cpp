// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessiblevalue.h"

#include "accessibility.h"
#include "widget.h"

#include <algorithm>
#include <cmath>

namespace toolkit {

ValueControl::~ValueControl() = default;

AccessibleValue::AccessibleValue(Widget *widget, ValueControl *control)
    : AccessibleWidget(widget),
      m_control(control)
{
}

QString AccessibleValue::text(QAccessible::Text kind) const
{
    // Not every reader asks for the text of a value; all of them read descriptions.
    if (kind == QAccessible::Value || kind == QAccessible::Description)
        return accessibility::spoken(m_control->valueText());
    return AccessibleWidget::text(kind);
}

void *AccessibleValue::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface *>(this);
    return AccessibleWidget::interface_cast(type);
}

QStringList AccessibleValue::actionNames() const
{
    return QStringList{increaseAction(), decreaseAction()} + AccessibleWidget::actionNames();
}

void AccessibleValue::doAction(const QString &action)
{
    if (action == increaseAction())
        setCurrentValue(m_control->currentValue() + m_control->valueStep());
    else if (action == decreaseAction())
        setCurrentValue(m_control->currentValue() - m_control->valueStep());
    else
        AccessibleWidget::doAction(action);
}

QVariant AccessibleValue::currentValue() const
{
    return m_control->currentValue();
}

void AccessibleValue::setCurrentValue(const QVariant &value)
{
    bool isNumber = false;
    const qreal wanted = value.toReal(&isNumber);
    if (isNumber && std::isfinite(wanted) && accessibility::isReachable(widget()))
        m_control->changeValue(std::clamp(wanted, m_control->minimumValue(), m_control->maximumValue()));
}

QVariant AccessibleValue::maximumValue() const
{
    return m_control->maximumValue();
}

QVariant AccessibleValue::minimumValue() const
{
    return m_control->minimumValue();
}

QVariant AccessibleValue::minimumStepSize() const
{
    return m_control->valueStep();
}

void AccessibleValue::valueChanged(Widget *widget, qreal value)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleValueChangeEvent event(widget, value);
    QAccessible::updateAccessibility(&event);
}

} // namespace toolkit
