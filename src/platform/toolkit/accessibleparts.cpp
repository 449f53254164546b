// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibleparts.h"

#include "accessibility.h"
#include "widget.h"

#include <QPointer>

namespace toolkit {

namespace {

bool hasKeys(const Widget *widget, const PartedWidget *parts)
{
    return widget->hasFocus() || parts->borrowsKeys();
}

class PartInterface : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    PartInterface(Widget *widget, PartedWidget *parts, int index)
        : m_widget(widget),
          m_parts(parts),
          m_index(index)
    {
    }

    [[nodiscard]] int index() const { return m_index; }

    [[nodiscard]] bool isValid() const override
    {
        return m_widget != nullptr && m_index < m_parts->accessiblePartCount();
    }
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override { return accessibility::nativeWindow(m_widget); }
    [[nodiscard]] QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_widget);
    }
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    void setText(QAccessible::Text, const QString &) override { }

    [[nodiscard]] QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? accessibility::spoken(part().name) : QString();
    }
    [[nodiscard]] QRect rect() const override { return accessibility::screenRect(m_widget, part().rect); }
    [[nodiscard]] QAccessible::Role role() const override { return part().role; }
    [[nodiscard]] QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invisible = !m_widget->isVisible();
        state.disabled = !part().enabled || !m_widget->isEnabled();
        state.focusable = part().role == QAccessible::MenuItem;
        state.focused = hasKeys(m_widget, m_parts) && m_parts->currentAccessiblePart() == m_index;
        return state;
    }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                    : nullptr;
    }

    [[nodiscard]] QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString &action) override
    {
        if (action == pressAction() && isValid() && accessibility::isReachable(m_widget))
            m_parts->activateAccessiblePart(m_index);
    }
    [[nodiscard]] QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    [[nodiscard]] AccessiblePart part() const
    {
        return isValid() ? m_parts->accessiblePart(m_index) : AccessiblePart();
    }

    QPointer<Widget> m_widget;
    PartedWidget *m_parts;
    int m_index;
};

} // namespace

PartedWidget::~PartedWidget() = default;

AccessibleParted::AccessibleParted(Widget *widget, PartedWidget *parts)
    : AccessibleWidget(widget),
      m_parts(parts)
{
}

AccessibleParted::~AccessibleParted()
{
    for (const QAccessible::Id id : std::as_const(m_ids))
        QAccessible::deleteAccessibleInterface(id);
}

QAccessibleInterface *AccessibleParted::part(int index) const
{
    if (index < 0 || index >= m_parts->accessiblePartCount())
        return nullptr;
    while (m_ids.size() <= index)
        m_ids.append(QAccessible::registerAccessibleInterface(
            new PartInterface(widget(), m_parts, int(m_ids.size()))));
    return QAccessible::accessibleInterface(m_ids.at(index));
}

int AccessibleParted::childCount() const
{
    return AccessibleWidget::childCount() + m_parts->accessiblePartCount();
}

QAccessibleInterface *AccessibleParted::child(int index) const
{
    const int widgets = AccessibleWidget::childCount();
    return index < widgets ? AccessibleWidget::child(index) : part(index - widgets);
}

int AccessibleParted::indexOfChild(const QAccessibleInterface *child) const
{
    const int widgets = AccessibleWidget::childCount();
    for (int index = 0; index < m_ids.size(); ++index) {
        if (QAccessible::accessibleInterface(m_ids.at(index)) == child)
            return widgets + index;
    }
    return AccessibleWidget::indexOfChild(child);
}

QAccessibleInterface *AccessibleParted::focusChild() const
{
    QAccessibleInterface *current
        = hasKeys(widget(), m_parts) ? part(m_parts->currentAccessiblePart()) : nullptr;
    return current != nullptr ? current : AccessibleWidget::focusChild();
}

} // namespace toolkit
