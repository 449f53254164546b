// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QAccessibleObject>

class QGraphicsWidget;

namespace toolkit {

// Where something of the scene stands in the tree that assistive technology reads, and on the screen.
class AccessibleItem : public QAccessibleObject, public QAccessibleActionInterface
{
public:
    explicit AccessibleItem(QGraphicsWidget *item);

    [[nodiscard]] QWindow *window() const override;
    [[nodiscard]] QAccessibleInterface *parent() const override;
    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override;
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;
    [[nodiscard]] QRect rect() const override;
    [[nodiscard]] QAccessible::Role role() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] QStringList keyBindingsForAction(const QString &action) const override;

protected:
    ~AccessibleItem() override;
    [[nodiscard]] QGraphicsWidget *item() const;
    [[nodiscard]] bool takesFocus() const;
    // Ends with the interface: what it connects to is heard no longer.
    [[nodiscard]] QObject *context() { return &m_context; }

private:
    QObject m_context;
};

} // namespace toolkit
