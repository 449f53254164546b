// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessiblewidget.h"

#include <QString>

namespace toolkit {

// A widget that stands for a number, and says it in words.
class ValueControl
{
public:
    virtual ~ValueControl();
    [[nodiscard]] virtual qreal currentValue() const = 0;
    [[nodiscard]] virtual qreal minimumValue() const { return 0; }
    [[nodiscard]] virtual qreal maximumValue() const = 0;
    [[nodiscard]] virtual qreal valueStep() const = 0;
    // As a person reads it, such as a time.
    [[nodiscard]] virtual QString valueText() const = 0;
    // As by the person.
    virtual void changeValue(qreal value) = 0;
};

class AccessibleValue : public AccessibleWidget, public QAccessibleValueInterface
{
public:
    AccessibleValue(Widget *widget, ValueControl *control);

    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    void *interface_cast(QAccessible::InterfaceType type) override;
    [[nodiscard]] QStringList actionNames() const override;
    void doAction(const QString &action) override;

    [[nodiscard]] QVariant currentValue() const override;
    void setCurrentValue(const QVariant &value) override;
    [[nodiscard]] QVariant maximumValue() const override;
    [[nodiscard]] QVariant minimumValue() const override;
    [[nodiscard]] QVariant minimumStepSize() const override;

    // The value, or its text, of this widget is another: for the widget to say.
    static void valueChanged(Widget *widget, qreal value);

private:
    ValueControl *m_control;
};

} // namespace toolkit
