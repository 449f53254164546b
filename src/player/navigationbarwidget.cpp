// SPDX-License-Identifier: GPL-3.0-or-later
#include "navigationbarwidget.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/keeptranslated.h>

#include <QCoreApplication>
#include <QGraphicsGridLayout>
#include <QWidget>

using namespace Qt::Literals::StringLiterals;

namespace {

enum Column { BackColumn, CentralColumn, MenuColumn };

toolkit::IconButton *makeButton(QGraphicsItem *parent)
{
    auto *button = new toolkit::IconButton(QString(), parent);
    button->setViewType(u"icon"_s);
    button->setStyleName(u"NavigationBarButton"_s);
    return button;
}

} // namespace

NavigationBarWidget::NavigationBarWidget(QGraphicsItem *parent)
    : Widget(parent),
      m_layout(new QGraphicsGridLayout),
      m_backButton(makeButton(this)),
      m_menuButton(makeButton(this))
{
    setStyleName(u"NavigationBar"_s);
    m_menuButton->setIconId(u"icon-m-toolbar-view-menu-white"_s);
    toolkit::keepTranslated(this, [this] {
        m_backButton->setAccessibleName(qtTrId("qtn_comm_back"));
        m_menuButton->setAccessibleName(qtTrId("qtn_comm_menu"));
    });

    m_layout->setSpacing(0);
    m_layout->setContentsMargins(0, 0, 0, 0);
    takeCentralWidth();
    // What the middle leaves over goes between it and the buttons at the edges.
    for (const Column column : {BackColumn, MenuColumn}) {
        m_layout->setColumnMaximumWidth(column, QWIDGETSIZE_MAX);
        m_layout->setColumnStretchFactor(column, 1);
    }
    m_layout->addItem(m_backButton, 0, BackColumn, Qt::AlignLeft | Qt::AlignVCenter);
    m_layout->addItem(m_menuButton, 0, MenuColumn, Qt::AlignRight | Qt::AlignVCenter);
    setLayout(m_layout);

    connect(m_backButton, &toolkit::Button::clicked, this, &NavigationBarWidget::backButtonClicked);
    connect(m_menuButton, &toolkit::Button::clicked, this, &NavigationBarWidget::menuButtonClicked);
}

NavigationBarWidget::~NavigationBarWidget() = default;

// Once: it does not follow the theme.
void NavigationBarWidget::takeCentralWidth()
{
    Widget measure;
    measure.setStyleName(u"NavigationBarToolbar"_s);
    m_centralWidth = qRound(measure.preferredWidth());
    layOutCentralColumn();
}

// More than its own width as far as the bar has it beside the buttons: what stands at its end stands beside
// the menu.
void NavigationBarWidget::layOutCentralColumn()
{
    const qreal free = size().width() - m_backButton->preferredWidth() - m_menuButton->preferredWidth();
    const int width = qMax(m_centralWidth, int(free));
    // Its own is the least, so that a bar that was wide can become narrow.
    m_layout->setColumnFixedWidth(CentralColumn, m_centralWidth);
    m_layout->setColumnPreferredWidth(CentralColumn, width);
    m_layout->setColumnMaximumWidth(CentralColumn, width);
}

void NavigationBarWidget::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    layOutCentralColumn();
}

void NavigationBarWidget::setBackButtonIcon(const QString &iconId)
{
    m_backButton->setIconId(iconId);
}

void NavigationBarWidget::setMenuButtonVisible(bool visible)
{
    m_menuButton->setVisible(visible);
}

QGraphicsWidget *NavigationBarWidget::setCentralWidget(QGraphicsWidget *widget)
{
    QGraphicsWidget *const previous = m_centralWidget;
    if (previous) {
        for (int i = 0; i < m_layout->count(); ++i) {
            if (m_layout->itemAt(i) == previous) {
                m_layout->removeAt(i);
                break;
            }
        }
        previous->hide();
    }
    m_centralWidget = widget;
    if (widget) {
        m_layout->addItem(widget, 0, CentralColumn, 1, 1, Qt::AlignCenter);
        widget->show();
    }
    orderKeys();
    return previous;
}

// The Tab key goes through what stands in the bar as a person reads it, whenever it was put there.
void NavigationBarWidget::orderKeys()
{
    if (!scene())
        return; // there is no order yet
    QGraphicsWidget *before = m_backButton;
    const auto follow = [&before](QGraphicsWidget *widget) {
        if (widget->focusPolicy() & Qt::TabFocus) {
            setTabOrder(before, widget);
            before = widget;
        }
    };
    if (m_centralWidget) {
        const QList<QGraphicsItem *> items = m_centralWidget->childItems();
        for (QGraphicsItem *item : items) {
            if (item->isWidget())
                follow(static_cast<QGraphicsWidget *>(item));
        }
    }
    follow(m_menuButton);
}

QVariant NavigationBarWidget::itemChange(GraphicsItemChange change, const QVariant &value)
{
    if (change == ItemSceneHasChanged)
        orderKeys();
    return Widget::itemChange(change, value);
}

void NavigationBarWidget::setMenuEnabled(bool enabled)
{
    m_menuButton->setEnabled(enabled);
    m_menuButton->setIconId(enabled ? u"icon-m-toolbar-view-menu-white"_s
                                    : u"icon-m-toolbar-view-menu-dimmed-white"_s);
}
