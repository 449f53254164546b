// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessiblewidget.h"

#include <QAccessible>
#include <QList>
#include <QRectF>
#include <QString>

namespace toolkit {

// A part of a widget that is no widget itself, such as a row of a menu.
struct AccessiblePart
{
    QAccessible::Role role = QAccessible::NoRole;
    QString name;
    QRectF rect; // in the widget's coordinates
    bool enabled = true;
};

// A widget that draws parts itself.
class PartedWidget
{
public:
    virtual ~PartedWidget();
    [[nodiscard]] virtual int accessiblePartCount() const = 0;
    [[nodiscard]] virtual AccessiblePart accessiblePart(int index) const = 0;
    // The part that the keyboard is on; -1 for none.
    [[nodiscard]] virtual int currentAccessiblePart() const { return -1; }
    // The keys reach it though the focus stays elsewhere.
    [[nodiscard]] virtual bool borrowsKeys() const { return false; }
    virtual void activateAccessiblePart(int index) = 0;
};

// Its parts come after the widgets in it.
class AccessibleParted : public AccessibleWidget
{
public:
    AccessibleParted(Widget *widget, PartedWidget *parts);

    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;

protected:
    ~AccessibleParted() override;

private:
    [[nodiscard]] QAccessibleInterface *part(int index) const;

    PartedWidget *m_parts;
    mutable QList<QAccessible::Id> m_ids; // by index, of those that were asked for
};

} // namespace toolkit
