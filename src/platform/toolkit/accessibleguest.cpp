// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibleguest.h"

#include "accessibility.h"
#include "widget.h"

#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QKeyEvent>
#include <QMetaProperty>
#include <QPointer>

#include <utility>

namespace toolkit {

namespace {

constexpr char nameProperty[] = "accessibleName";
constexpr char descriptionProperty[] = "accessibleDescription";
constexpr char roleProperty[] = "accessibleRole";

// Those that need nothing but a name: of a table, say, readers would ask for its cells.
constexpr QAccessible::Role possibleRoles[]
    = {QAccessible::Heading, QAccessible::StaticText, QAccessible::Button,   QAccessible::Link,
       QAccessible::Graphic, QAccessible::List,       QAccessible::ListItem, QAccessible::Grouping};

// Hears of guests by their signals, which are known by name only.
class GuestWatch : public QObject
{
    Q_OBJECT

public:
    static GuestWatch *instance()
    {
        static GuestWatch watch;
        return &watch;
    }

    void follow(QGraphicsWidget *guest)
    {
        connect(guest, &QGraphicsObject::childrenChanged, this, &GuestWatch::childrenChanged,
                Qt::UniqueConnection);
    }

    void followTold(QGraphicsWidget *guest)
    {
        follow(guest);
        connect(guest, &QGraphicsObject::visibleChanged, this, &GuestWatch::visibleChanged,
                Qt::UniqueConnection);
        connect(guest, &QGraphicsObject::enabledChanged, this, &GuestWatch::enabledChanged,
                Qt::UniqueConnection);
        followProperty(guest, nameProperty, "nameChanged()");
        followProperty(guest, descriptionProperty, "descriptionChanged()");
    }

private Q_SLOTS:
    void nameChanged() { tell(QAccessible::NameChanged); }
    void descriptionChanged() { tell(QAccessible::DescriptionChanged); }
    void visibleChanged()
    {
        const auto *guest = static_cast<QGraphicsObject *>(sender());
        tell(guest->isVisible() ? QAccessible::ObjectShow : QAccessible::ObjectHide);
    }
    void enabledChanged()
    {
        if (!QAccessible::isActive())
            return;
        QAccessible::State changed;
        changed.disabled = true;
        QAccessibleStateChangeEvent event(sender(), changed);
        QAccessible::updateAccessibility(&event);
    }
    // Many at once come and go: what is there then is told in a turn of its own.
    void childrenChanged()
    {
        if (m_changed.isEmpty())
            QMetaObject::invokeMethod(this, &GuestWatch::tellChanged, Qt::QueuedConnection);
        if (auto *guest = static_cast<QGraphicsObject *>(sender()); !m_changed.contains(guest))
            m_changed.append(guest);
    }

private:
    void followProperty(QGraphicsWidget *guest, const char *name, const char *slot)
    {
        const QMetaObject *meta = guest->metaObject();
        const QMetaProperty property = meta->property(meta->indexOfProperty(name));
        if (property.hasNotifySignal())
            connect(guest, property.notifySignal(), this,
                    metaObject()->method(metaObject()->indexOfSlot(slot)), Qt::UniqueConnection);
    }

    void tell(QAccessible::Event type)
    {
        if (!QAccessible::isActive())
            return;
        QAccessibleEvent event(sender(), type);
        QAccessible::updateAccessibility(&event);
    }

    void tellChanged()
    {
        const QList<QPointer<QGraphicsObject>> changed = std::exchange(m_changed, {});
        for (const QPointer<QGraphicsObject> &guest : changed) {
            QGraphicsWidget *told = guest != nullptr ? accessibility::toldAncestor(guest) : nullptr;
            if (told == nullptr || !QAccessible::isActive())
                continue;
            QAccessibleEvent event(told, QAccessible::ObjectReorder);
            QAccessible::updateAccessibility(&event);
        }
    }

    QList<QPointer<QGraphicsObject>> m_changed;
};

} // namespace

AccessibleGuest::AccessibleGuest(QGraphicsWidget *guest) : AccessibleItem(guest)
{
    GuestWatch::instance()->followTold(guest);
}

bool AccessibleGuest::isTold(const QGraphicsWidget *guest)
{
    return !guest->property(nameProperty).toString().isEmpty();
}

QAccessible::Role AccessibleGuest::roleOf(const QGraphicsWidget *guest)
{
    const int wanted = guest->property(roleProperty).toInt(); // any number at all
    for (const QAccessible::Role role : possibleRoles) {
        if (int(role) == wanted)
            return role;
    }
    return guest->focusPolicy() != Qt::NoFocus ? QAccessible::Button : QAccessible::StaticText;
}

void AccessibleGuest::follow(QGraphicsWidget *guest)
{
    GuestWatch::instance()->follow(guest);
}

QString AccessibleGuest::text(QAccessible::Text kind) const
{
    switch (kind) {
    case QAccessible::Name:
        return accessibility::spoken(item()->property(nameProperty).toString());
    case QAccessible::Description:
        return accessibility::spoken(item()->property(descriptionProperty).toString());
    default:
        return {};
    }
}

QAccessible::State AccessibleGuest::state() const
{
    QAccessible::State state;
    const QGraphicsWidget *guest = item();
    state.invisible = !guest->isVisible() || guest->scene() == nullptr;
    state.offscreen = !accessibility::isOnDisplay(guest);
    state.disabled = !guest->isEnabled();
    state.focusable = takesFocus();
    state.focused = guest->hasFocus();
    return state;
}

QStringList AccessibleGuest::actionNames() const
{
    return takesFocus() ? QStringList{pressAction(), setFocusAction()} : QStringList();
}

void AccessibleGuest::doAction(const QString &action)
{
    if (!actionNames().contains(action) || !accessibility::isReachable(item()))
        return;
    if (action == setFocusAction())
        item()->setFocus(Qt::TabFocusReason); // as the keyboard does, which shows where it is
    else
        press();
}

void AccessibleGuest::press()
{
    const QPointer<QGraphicsWidget> guest = item();
    guest->setFocus(Qt::TabFocusReason);
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        if (guest == nullptr || guest->scene() == nullptr)
            return;
        QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
        guest->scene()->sendEvent(guest, &event);
    }
}

} // namespace toolkit

#include "accessibleguest.moc"
