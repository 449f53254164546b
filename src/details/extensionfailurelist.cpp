// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionfailurelist.h"

#include <platform/extensions/extensionfailures.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/keeptranslated.h>
#include <platform/toolkit/label.h>
#include <platform/toolkit/layout.h>

using namespace Qt::Literals::StringLiterals;

ExtensionFailureList::ExtensionFailureList(ExtensionArea *area, QGraphicsItem *parent)
    : toolkit::Widget(parent),
      m_area(area)
{
    auto *layout = new toolkit::Layout;
    m_policy = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    m_policy->setStyleName(u"KestrelDetailsNoticesPolicy"_s);
    layout->setPolicy(m_policy);
    setLayout(layout);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    // The button that is clicked may be one that goes.
    connect(m_area->failures(), &ExtensionFailures::changed, this, &ExtensionFailureList::refill,
            Qt::QueuedConnection);
    toolkit::keepTranslated(this, [this] { refill(); });
}

void ExtensionFailureList::refill()
{
    while (m_policy->count() > 0) {
        QGraphicsLayoutItem *item = m_policy->itemAt(0);
        m_policy->removeItem(item);
        delete item;
    }
    const QList<ExtensionFailure> &failures = m_area->failures()->list();
    for (const ExtensionFailure &failure : failures) {
        auto *label = new toolkit::Label(failure.text(), this);
        label->setTextFormat(Qt::PlainText);
        label->setStyleName(u"KestrelDetailsPageLabel"_s);
        m_policy->addItem(label);
        if (!failure.canBeTriedAgain())
            continue;
        auto *button = new toolkit::Button(qtTrId("qtn_extension_try_again"), this);
        button->setStyleName(u"CommonButton"_s);
        connect(button, &toolkit::Button::clicked, m_area,
                [area = m_area, file = failure.file] { area->tryAgain(file); });
        m_policy->addItem(button);
        m_policy->setAlignment(button, Qt::AlignLeft);
    }
    setVisible(!failures.isEmpty());
}
