// SPDX-License-Identifier: GPL-3.0-or-later
#include "widget.h"

#include "accessibility.h"
#include "accessiblewidget.h"
#include "applicationwindow.h"
#include "theme.h"

#include <QEvent>
#include <QGraphicsScene>
#include <QGraphicsView>

namespace toolkit {

namespace {

Widget *ancestorOf(const QGraphicsItem *item)
{
    for (QGraphicsItem *parent = item->parentItem(); parent != nullptr; parent = parent->parentItem()) {
        if (auto *widget = qobject_cast<Widget *>(parent->toGraphicsObject()))
            return widget;
    }
    return nullptr;
}

// The nearest widgets below an item, through items that are none.
void collectWidgets(const QGraphicsItem *item, QList<Widget *> &widgets)
{
    for (QGraphicsItem *child : item->childItems()) {
        if (auto *widget = qobject_cast<Widget *>(child->toGraphicsObject()))
            widgets.append(widget);
        else
            collectWidgets(child, widgets);
    }
}

} // namespace

Widget::Widget(QGraphicsItem *parent) : QGraphicsWidget(parent)
{
    const Widget *ancestor = ancestorOf(this);
    m_onInverted = ancestor != nullptr && ancestor->isInverted();
    connect(Theme::instance(), &Theme::stylesChanged, this, [this] { reloadStyle(); });
}

Widget::~Widget() = default;

void Widget::setStyleName(const QString &styleName)
{
    if (m_styleName == styleName && !m_styleName.isEmpty())
        return;
    m_styleName = styleName;
    reloadStyle();
}

ApplicationWindow *Widget::window() const
{
    if (scene() == nullptr)
        return nullptr;
    for (QGraphicsView *view : scene()->views()) {
        if (auto *window = qobject_cast<ApplicationWindow *>(view))
            return window;
    }
    return nullptr;
}

void Widget::reloadStyles(QGraphicsScene *scene)
{
    for (QGraphicsItem *item : scene->items()) {
        if (auto *widget = qobject_cast<Widget *>(item->toGraphicsObject())) {
            widget->followWindow();
            widget->reloadStyle();
        }
    }
}

void Widget::reloadStyle()
{
    const bool wasInverted = isInverted();
    m_style = Theme::instance()->style(m_styleName, m_orientation, m_onInverted);
    applyStyle();
    updateGeometry();
    update();
    if (isInverted() == wasInverted)
        return;
    QList<Widget *> children;
    collectWidgets(this, children);
    for (Widget *child : std::as_const(children))
        child->followGround();
}

void Widget::setOnInverted(bool on)
{
    m_toldInverted = on;
    followGround();
}

void Widget::followGround()
{
    const Widget *ancestor = ancestorOf(this);
    const bool on = m_toldInverted || (ancestor != nullptr && ancestor->isInverted());
    if (on == m_onInverted)
        return;
    m_onInverted = on;
    reloadStyle();
}

void Widget::applyStyle()
{
    if (m_styleName.isEmpty())
        return;
    setMinimumSize(m_style.minimumSize);
    setPreferredSize(m_style.preferredSize);
    setMaximumSize(m_style.maximumSize);
    // The theme writes margins for left-to-right; the sides change places in the other direction.
    const QMarginsF m = m_style.margins;
    if (layoutDirection() == Qt::RightToLeft)
        setContentsMargins(m.right(), m.top(), m.left(), m.bottom());
    else
        setContentsMargins(m.left(), m.top(), m.right(), m.bottom());
    if (font() != m_style.font)
        setFont(m_style.font);
}

void Widget::changeEvent(QEvent *event)
{
    QGraphicsWidget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange && !m_styleName.isEmpty())
        applyStyle();
}

// Reads the orientation of its window, and sees to it that the window's turns reach the widgets of its scene.
void Widget::followWindow()
{
    ApplicationWindow *window = this->window();
    if (window == nullptr)
        return;
    m_orientation = window->orientation();
    const char *followed = "kestrelStylesFollowed";
    if (window->property(followed).toBool())
        return;
    window->setProperty(followed, true);
    connect(window, &ApplicationWindow::orientationChanged, window,
            [window] { reloadStyles(window->scene()); });
}

QVariant Widget::itemChange(GraphicsItemChange change, const QVariant &value)
{
    switch (change) {
    case ItemSceneHasChanged: {
        const Qt::Orientation before = m_orientation;
        followWindow();
        if (parentItem() != nullptr)
            followGround();
        if (m_orientation != before)
            reloadStyle();
        updateOnDisplay();
        if (isVisible())
            accessibility::visibilityChanged(this);
        break;
    }
    case ItemVisibleHasChanged:
        // A hidden item takes no room in its layout.
        if (parentLayoutItem() != nullptr)
            updateGeometry();
        updateOnDisplay();
        accessibility::visibilityChanged(this);
        break;
    case ItemParentHasChanged:
        // What is taken out keeps its look until it stands somewhere else.
        if (parentItem() != nullptr)
            followGround();
        updateOnDisplay();
        break;
    case ItemEnabledHasChanged:
        accessibility::enabledChanged(this);
        break;
    default:
        break;
    }
    return QGraphicsWidget::itemChange(change, value);
}

void Widget::setAccessibleName(const QString &name)
{
    if (m_accessibleName == name)
        return;
    m_accessibleName = name;
    Q_EMIT accessibleNameChanged();
}

QAccessible::Role Widget::accessibleRole() const
{
    return accessibleName().isEmpty() ? QAccessible::NoRole : QAccessible::Grouping;
}

QAccessibleInterface *Widget::createAccessible()
{
    return new AccessibleWidget(this);
}

void Widget::setOnDisplay(bool on)
{
    m_displayRoot = on;
    updateOnDisplay();
}

void Widget::updateOnDisplay()
{
    const Widget *ancestor = ancestorOf(this);
    const bool on = scene() != nullptr && isVisible()
        && (m_displayRoot || (ancestor != nullptr && ancestor->m_onDisplay));
    if (on == m_onDisplay)
        return;
    m_onDisplay = on;
    QList<Widget *> children;
    collectWidgets(this, children);
    if (on)
        Q_EMIT displayEntered();
    for (Widget *child : children)
        child->updateOnDisplay();
    if (!on)
        Q_EMIT displayExited();
}

} // namespace toolkit
