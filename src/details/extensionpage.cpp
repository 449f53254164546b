// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionpage.h"

#include <platform/extensions/extensionframe.h>
#include <platform/toolkit/focussight.h>
#include <platform/toolkit/layout.h>
#include <platform/toolkit/pannableviewport.h>

#include <QGraphicsWidget>
#include <QKeyEvent>

using namespace Qt::Literals::StringLiterals;

ExtensionPage::ExtensionPage(QGraphicsWidget *content, const QString &title)
    : m_content(content),
      m_focusSight(new toolkit::FocusSight(pannableViewport()))
{
    setTitle(title);
    setPannable(true);
    setEscapeMode(EscapeMode::Back);
    if (content)
        connect(content, &QObject::destroyed, this, &ExtensionPage::leaveWhenEmpty, Qt::QueuedConnection);
    connect(this, &ExtensionPage::appeared, this, &ExtensionPage::leaveWhenEmpty, Qt::QueuedConnection);
}

// An extension that is turned off or fails takes its widget away, also from a page that is covered just now.
void ExtensionPage::leaveWhenEmpty()
{
    if (!m_content && isShown())
        Q_EMIT backButtonClicked();
}

ExtensionPage::~ExtensionPage()
{
    delete m_frame; // lets go of the widget
}

void ExtensionPage::keyPressEvent(QKeyEvent *event)
{
    if (m_focusSight->moveByKey(event) || pannableViewport()->scrollByKey(event))
        event->accept();
    else
        toolkit::ApplicationPage::keyPressEvent(event);
}

void ExtensionPage::createContent()
{
    toolkit::ApplicationPage::createContent();
    if (!m_content)
        return;
    m_frame = new ExtensionFrame(m_content, ExtensionFrame::Place::OwnPage);
    m_frame->setParentItem(centralWidget());
    auto *layout = new toolkit::Layout;
    auto *policy = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    policy->setStyleName(u"KestrelPolicy"_s);
    layout->setPolicy(policy);
    policy->addItem(m_frame);
    centralWidget()->setLayout(layout);
}
