// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessiblewidget.h"

#include "accessibility.h"
#include "applicationpage.h"
#include "applicationwindow.h"
#include "banner.h"
#include "button.h"
#include "popup.h"
#include "sheet.h"
#include "spinner.h"

namespace toolkit {

namespace {

bool canBePressed(const QObject *object)
{
    return qobject_cast<const Button *>(object) != nullptr || qobject_cast<const Banner *>(object) != nullptr
        || dynamic_cast<const TappedWidget *>(object) != nullptr;
}

bool hasMenu(const Widget *widget)
{
    const auto *page = qobject_cast<const ApplicationPage *>(widget);
    return page != nullptr && page->offersMenu();
}

} // namespace

TappedWidget::~TappedWidget() = default;

AccessibleWidget::AccessibleWidget(Widget *widget) : AccessibleItem(widget)
{
    QObject::connect(widget, &Widget::accessibleNameChanged, context(), [widget] {
        QAccessibleEvent event(widget, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&event);
    });
}

AccessibleWidget::~AccessibleWidget() = default;

Widget *AccessibleWidget::widget() const
{
    return static_cast<Widget *>(object());
}

QString AccessibleWidget::text(QAccessible::Text kind) const
{
    if (kind != QAccessible::Name)
        return {};
    QString name = widget()->accessibleName();
    if (const auto *sheet = qobject_cast<const Sheet *>(widget()); sheet != nullptr && name.isEmpty())
        name = sheet->title();
    return accessibility::spoken(name);
}

QAccessible::State AccessibleWidget::state() const
{
    QAccessible::State state;
    const Widget *told = widget();
    state.invisible = !told->isVisible() || told->scene() == nullptr;
    state.offscreen = !told->isOnDisplay();
    state.disabled = !told->isEnabled();
    state.focusable = takesFocus();
    state.focused = told->hasFocus();
    state.modal = qobject_cast<const Popup *>(told) != nullptr;
    state.busy = qobject_cast<const Spinner *>(told) != nullptr;
    if (const auto *button = qobject_cast<const Button *>(told))
        state.pressed = button->isDown();
    return state;
}

QStringList AccessibleWidget::actionNames() const
{
    QStringList names;
    if (canBePressed(widget()))
        names.append(pressAction());
    if (hasMenu(widget()))
        names.append(showMenuAction());
    if (takesFocus())
        names.append(setFocusAction());
    return names;
}

void AccessibleWidget::doAction(const QString &action)
{
    if (!actionNames().contains(action) || !accessibility::isReachable(widget()))
        return;
    if (action == setFocusAction())
        widget()->setFocus(Qt::OtherFocusReason);
    else if (action == showMenuAction())
        static_cast<ApplicationPage *>(widget())->requestMenu();
    else if (auto *button = qobject_cast<Button *>(widget()))
        button->click();
    else if (auto *banner = qobject_cast<Banner *>(widget()))
        banner->dismiss();
    else if (auto *tapped = dynamic_cast<TappedWidget *>(widget()))
        tapped->accessibleTap();
}

} // namespace toolkit
