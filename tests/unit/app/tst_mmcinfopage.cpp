// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mmcinfopage.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/scenemanager.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationPage;

// What a person sees while the card is at a computer: one sentence and nothing to tap.
class MmcInfoPageTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isBareAndDoesNotPan()
    {
        MmcInfoPage page;
        QCOMPARE(page.styleName(), u"CommonApplicationPageInverted"_s);
        QVERIFY(!page.isPannable());
        for (const auto component :
             {ApplicationPage::NavigationBar, ApplicationPage::HomeButton, ApplicationPage::EscapeButton})
            QCOMPARE(page.componentDisplay(component), ApplicationPage::ComponentDisplay::Hide);
    }

    void saysOneSentence()
    {
        MmcInfoPage page;
        page.ensureContent();
        auto *layout = dynamic_cast<toolkit::Layout *>(page.centralWidget()->layout());
        QVERIFY(layout);
        const toolkit::LinearLayoutPolicy *policy = layout->policy();
        QCOMPARE(policy->styleName(), u"KestrelPolicy"_s);
        QCOMPARE(policy->count(), 1);
        const auto *label = dynamic_cast<toolkit::Label *>(layout->itemAt(0)->graphicsItem());
        QVERIFY(label);
        QCOMPARE(label->text(), u"qtn_vide_mass_storage"_s); // no catalogue is loaded
        QCOMPARE(label->styleName(), u"CommonEmptyStateTitleKeyword"_s);
        QCOMPARE(label->alignment(), Qt::AlignCenter);
        QVERIFY(label->wordWrap());
    }

    void coversThePageWithoutStandingInTheStack()
    {
        toolkit::ApplicationWindow window;
        window.show();
        ApplicationPage below;
        below.appear(&window, toolkit::Appearance::Immediate);
        MmcInfoPage page;
        window.sceneManager()->showOverlayPage(&page);
        QCOMPARE(window.sceneManager()->visiblePage(), &page); // at once
        QCOMPARE(window.sceneManager()->currentPage(), &below);
        QVERIFY(!below.isVisible());
        window.sceneManager()->hideOverlayPage(&page);
        QCOMPARE(window.sceneManager()->visiblePage(), &below);
        QVERIFY(below.isVisible());
    }
};

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    MmcInfoPageTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_mmcinfopage.moc"
