// SPDX-License-Identifier: GPL-3.0-or-later
#include "mmcinfopage.h"

#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"

using namespace Qt::Literals::StringLiterals;

MmcInfoPage::MmcInfoPage()
{
    setStyleName(u"CommonApplicationPageInverted"_s);
    setComponentsDisplay(AllComponents, ComponentDisplay::Hide);
    setPannable(false);
}

void MmcInfoPage::createContent()
{
    toolkit::ApplicationPage::createContent();
    auto *layout = new toolkit::Layout;
    auto *policy = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    policy->setStyleName(u"KestrelPolicy"_s);
    layout->setPolicy(policy);
    auto *label = new toolkit::Label(centralWidget());
    toolkit::keepTranslated(label, [label] { label->setText(qtTrId("qtn_vide_mass_storage")); });
    label->setAlignment(Qt::AlignCenter);
    label->setStyleName(u"CommonEmptyStateTitleKeyword"_s);
    label->setWordWrap(true);
    policy->addItem(label);
    centralWidget()->setLayout(layout);
}
