// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibility.h"

#include "accessibleguest.h"
#include "accessiblewindow.h"
#include "applicationpage.h"
#include "applicationwindow.h"
#include "list.h"
#include "popup.h"
#include "scenemanager.h"

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QWindow>

#include <algorithm>
#include <tuple>

namespace toolkit::accessibility {

namespace {

QAccessibleInterface *make(const QString &, QObject *object)
{
    if (auto *window = qobject_cast<ApplicationWindow *>(object))
        return new AccessibleWindow(window);
    if (auto *widget = qobject_cast<Widget *>(object))
        return widget->createAccessible();
    if (auto *guest = qobject_cast<QGraphicsWidget *>(object); guest != nullptr && isTold(guest))
        return new AccessibleGuest(guest);
    return nullptr;
}

QGraphicsWidget *asWidget(QGraphicsItem *item)
{
    return item->isWidget() ? static_cast<QGraphicsWidget *>(item) : nullptr;
}

void collect(const QGraphicsItem *item, QList<QGraphicsWidget *> &told)
{
    for (QGraphicsItem *child : item->childItems()) {
        if (!child->isVisible())
            continue;
        QGraphicsWidget *widget = asWidget(child);
        if (widget != nullptr && isTold(widget)) {
            told.append(widget);
            continue;
        }
        if (widget != nullptr && qobject_cast<Widget *>(widget) == nullptr)
            AccessibleGuest::follow(widget);
        collect(child, told);
    }
}

const QGraphicsView *viewOf(const QGraphicsItem *item)
{
    const QList<QGraphicsView *> views
        = item->scene() != nullptr ? item->scene()->views() : QList<QGraphicsView *>();
    return views.isEmpty() ? nullptr : views.first();
}

void send(QObject *object, QAccessible::Event type)
{
    QAccessibleEvent event(object, type);
    QAccessible::updateAccessibility(&event);
}

// What a widget of this kind says of itself when it comes, beside that it is there.
QAccessible::Event arrival(QAccessible::Role role)
{
    switch (role) {
    case QAccessible::Dialog:
        return QAccessible::DialogStart;
    case QAccessible::PopupMenu:
        return QAccessible::PopupMenuStart;
    case QAccessible::AlertMessage:
        return QAccessible::Alert;
    default:
        return QAccessible::InvalidEvent;
    }
}

// The rows of a list are told of whether they have a cell or not.
bool isInCell(const QGraphicsWidget *widget)
{
    return qobject_cast<const List *>(toldAncestor(widget)) != nullptr;
}

// What has the focus within it.
void tellFocus(QObject *whole)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleInterface *told = QAccessible::queryAccessibleInterface(whole);
    QAccessibleInterface *focus = told != nullptr ? told->focusChild() : nullptr;
    if (focus == nullptr)
        return;
    QAccessibleEvent event(focus, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

} // namespace

void install()
{
    static const bool installed = [] {
        QAccessible::installFactory(make);
        return true;
    }();
    Q_UNUSED(installed)
}

void follow(ApplicationWindow *window)
{
    install();
    QObject::connect(window->scene(), &QGraphicsScene::focusItemChanged, window,
                     [window] { tellFocus(window); });
    QObject::connect(window, &ApplicationWindow::pageChanged, window, [window] {
        if (QAccessible::isActive())
            send(window, QAccessible::ObjectReorder);
    });
}

bool isTold(const QGraphicsWidget *widget)
{
    return qobject_cast<const Widget *>(widget) != nullptr ? roleOf(widget) != QAccessible::NoRole
                                                           : AccessibleGuest::isTold(widget);
}

QAccessible::Role roleOf(const QGraphicsWidget *widget)
{
    const auto *own = qobject_cast<const Widget *>(widget);
    if (own == nullptr)
        return AccessibleGuest::roleOf(widget);
    const QAccessible::Role role = own->accessibleRole();
    const bool isGeneral = role == QAccessible::NoRole || role == QAccessible::Grouping;
    return isGeneral && qobject_cast<const Popup *>(own) != nullptr ? QAccessible::Dialog : role;
}

QList<QGraphicsWidget *> toldWidgets(const QGraphicsItem *item)
{
    QList<QGraphicsWidget *> told;
    collect(item, told);
    const bool mirrored = item->isWidget()
        && static_cast<const QGraphicsWidget *>(item)->layoutDirection() == Qt::RightToLeft;
    using Place = std::tuple<qreal, int, qreal, QGraphicsWidget *>;
    QList<Place> places; // measured once each: an extension may show hundreds of rows
    places.reserve(told.size());
    for (QGraphicsWidget *widget : std::as_const(told)) {
        constexpr qreal sameLine = 24; // what begins nearly at one height is read along the line
        const QPointF begin = item->mapFromItem(widget, widget->rect()).boundingRect().topLeft();
        const qreal layer = widget->zValue() >= int(SceneManager::PopupLayer) ? widget->zValue() : 0;
        places.emplaceBack(layer, int(begin.y() / sameLine), mirrored ? -begin.x() : begin.x(), widget);
    }
    std::stable_sort(places.begin(), places.end(), [](const Place &a, const Place &b) {
        return std::tie(std::get<0>(a), std::get<1>(a), std::get<2>(a))
            < std::tie(std::get<0>(b), std::get<1>(b), std::get<2>(b));
    });
    std::transform(places.cbegin(), places.cend(), told.begin(),
                   [](const Place &place) { return std::get<3>(place); });
    return told;
}

QGraphicsWidget *toldAncestor(const QGraphicsItem *item)
{
    for (QGraphicsItem *parent = item->parentItem(); parent != nullptr; parent = parent->parentItem()) {
        if (QGraphicsWidget *widget = asWidget(parent); widget != nullptr && isTold(widget))
            return widget;
    }
    return nullptr;
}

QAccessibleInterface *parentOf(const QGraphicsItem *item)
{
    if (QGraphicsWidget *ancestor = toldAncestor(item))
        return QAccessible::queryAccessibleInterface(ancestor);
    QGraphicsView *view = const_cast<QGraphicsView *>(viewOf(item));
    return view != nullptr ? QAccessible::queryAccessibleInterface(view) : nullptr;
}

bool isReachable(const QGraphicsWidget *widget)
{
    const auto *window = qobject_cast<const ApplicationWindow *>(viewOf(widget));
    if (!widget->isVisible() || !widget->isEnabled())
        return false;
    if (window == nullptr || !window->sceneManager()->isBlocked())
        return true;
    for (const QGraphicsItem *item = widget; item != nullptr; item = item->parentItem()) {
        if (qobject_cast<const ApplicationPage *>(item->toGraphicsObject()) != nullptr)
            return false;
    }
    return true;
}

bool isOnDisplay(const QGraphicsWidget *widget)
{
    for (const QGraphicsItem *item = widget; item != nullptr; item = item->parentItem()) {
        if (const auto *own = qobject_cast<const Widget *>(item->toGraphicsObject()))
            return own->isOnDisplay();
    }
    return false;
}

QRect screenRect(const QGraphicsItem *item, const QRectF &rect)
{
    const QGraphicsView *view = viewOf(item);
    if (view == nullptr)
        return {};
    const QRect inView = view->viewportTransform().mapRect(item->mapRectToScene(rect)).toAlignedRect();
    return {view->viewport()->mapToGlobal(inView.topLeft()), inView.size()};
}

QWindow *nativeWindow(const QGraphicsItem *item)
{
    const QGraphicsView *view = viewOf(item);
    return view != nullptr ? view->window()->windowHandle() : nullptr;
}

QString spoken(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator
            || character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return text.trimmed();
}

void visibilityChanged(Widget *widget)
{
    if (!QAccessible::isActive() || widget->scene() == nullptr || !isTold(widget) || isInCell(widget))
        return;
    const bool shown = widget->isVisible();
    send(widget, shown ? QAccessible::ObjectShow : QAccessible::ObjectHide);
    const QAccessible::Event more = arrival(roleOf(widget));
    if (shown && more != QAccessible::InvalidEvent)
        send(widget, more);
    if (toldAncestor(widget) == nullptr) {
        if (const QAccessibleInterface *top = parentOf(widget); top != nullptr && top->object() != nullptr)
            send(top->object(), QAccessible::ObjectReorder);
    }
}

void enabledChanged(Widget *widget)
{
    if (!QAccessible::isActive() || widget->scene() == nullptr || !isTold(widget) || isInCell(widget))
        return;
    QAccessible::State changed;
    changed.disabled = true;
    QAccessibleStateChangeEvent event(widget, changed);
    QAccessible::updateAccessibility(&event);
}

QAccessibleInterface *partAt(const QAccessibleInterface *whole, int x, int y)
{
    for (int index = whole->childCount() - 1; index >= 0; --index) {
        QAccessibleInterface *part = whole->child(index);
        if (part == nullptr || !part->rect().contains(x, y))
            continue;
        QAccessibleInterface *deeper = part->childAt(x, y);
        return deeper != nullptr ? deeper : part;
    }
    return nullptr;
}

void focusMoved(Widget *widget)
{
    if (!QAccessible::isActive() || !widget->hasFocus())
        return;
    if (ApplicationWindow *window = widget->window())
        tellFocus(window);
    else
        tellFocus(widget);
}

} // namespace toolkit::accessibility
