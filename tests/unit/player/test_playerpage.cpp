// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/spinner.h>

#include <QGraphicsScene>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

class TestPlayerPage : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void undefinedTypesAreRefused();
    void theBackIconFollowsTheType();
    void withoutAControllerItOnlyLogs();
    void thePictureFillsThePage();
    void signalsAndSlotsStandInTheirOrder();
    void withoutAWindowItOnlyLogs();
    void thePageHasItsTitleAndItsTimer();
    void theTabKeyReadsTheBar();
};

void TestPlayerPage::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPage::init()
{
    QVERIFY(showPage());
}

void TestPlayerPage::cleanup()
{
    removePage();
}

void TestPlayerPage::undefinedTypesAreRefused()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::setBackButtonType(PlayerPage::BackButtonType) Undefined type!");
    m_page->setBackButtonType(PlayerPage::BackButtonType(2));
    QCOMPARE(m_page->backButtonType(), PlayerPage::TvMainViewBackButton);
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::setToolbarType(PlayerPage::ToolbarType) Undefined type!");
    m_page->setToolbarType(PlayerPage::ToolbarType(1));
}

void TestPlayerPage::theBackIconFollowsTheType()
{
    QCOMPARE(m_page->navigationBar()->backButton()->iconId(), u"icon-m-toolbar-back-white"_s);
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QCOMPARE(m_page->navigationBar()->backButton()->iconId(), u"icon-l-videos-tv-main-view"_s);
    m_page->setBackButtonType(PlayerPage::NormalBackButton);
    QCOMPARE(m_page->navigationBar()->backButton()->iconId(), u"icon-m-toolbar-back-white"_s);
}

void TestPlayerPage::withoutAControllerItOnlyLogs()
{
    PlayerPage page(nullptr, nullptr);
    for (const char *slot :
         {"backButton", "handleBackButton", "playbackEnded", "playbackEndedByError", "handleMenuClick",
          "handleInfoButtonClick", "saveCurrentState", "pageMinimized", "pageMaximized", "preUnmount",
          "shareActionTriggered", "returnFromMassStorageMode", "shutdown"}) {
        QTest::ignoreMessage(
            QtWarningMsg,
            ("void PlayerPage::" + QByteArray(slot) + "() playercontroller == NULL").constData());
        QVERIFY(QMetaObject::invokeMethod(&page, slot));
    }
    QTest::ignoreMessage(QtWarningMsg, "void PlayerPage::qlbOpened(bool) playercontroller == NULL");
    page.qlbOpened(true);
    QVERIFY(page.saveAllowed());
}

void TestPlayerPage::thePictureFillsThePage()
{
    QTRY_COMPARE(f.widget->geometry(), m_page->rect());
    QVERIFY(m_page->rect().height() > 100);
    QCOMPARE(f.widget->parentItem(), m_page.get());
    const QRectF spinner = PlayerPageProbe::spinner(*m_page)->geometry();
    QVERIFY((spinner.center() - m_page->rect().center()).manhattanLength() < 2);
    QCOMPARE(PlayerPageProbe::overlay(*m_page)->geometry().width(), m_page->rect().width());
}

void TestPlayerPage::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = PlayerPage::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    QCOMPARE(signatures.join('\n'),
             QByteArrayList({"goBack()",
                             "showDetailsPage()",
                             "savingReady()",
                             "playerError(QString)",
                             "deleteFile(QString)",
                             "shareVideo(QString)",
                             "notify(QString)",
                             "enableIndexedActions(bool)",
                             "pageMinimized()",
                             "pageMaximized()",
                             "keyEvent(QKeyEvent*)",
                             "controlsVisibilityChanged(bool)",
                             "massStorageModeChanged(bool)",
                             "returnFromMassStorageMode()",
                             "preUnmount()",
                             "deleteCurrent()",
                             "deleteDone(bool)",
                             "prepareDeletion()",
                             "playTimeSaved()",
                             "showBufferIcon()",
                             "backButton()",
                             "hideBufferIcon()",
                             "deleteBufferStatusLabel()",
                             "shareActionTriggered()",
                             "editCurrent()",
                             "editOrSaveAsDone()",
                             "backButtonError()",
                             "saveCurrentState()",
                             "handleInfoButtonClick()",
                             "buffering(float)",
                             "playerPageNotOnTop()",
                             "playerPageOnTop()",
                             "handleMenuClick()",
                             "playbackEnded()",
                             "playbackEndedByError()",
                             "shutdown()",
                             "playbackIsStarted()",
                             "handleBackButton()",
                             "saveAsCurrent()",
                             "qlbOpened(bool)"})
                 .join('\n'));
}

void TestPlayerPage::withoutAWindowItOnlyLogs()
{
    removePage();
    m_window.reset();
    f.start();
    StagedPlayerPage page(f.widget, f.controller.get());
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::handleMenuClick() Kestrel: Unable to get active window.");
    page.handleMenuClick();
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::resetSavedState() Kestrel: Unable to get active window.");
    page.resetSavedState();
    QSignalSpy back(&page, &PlayerPage::goBack);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
    page.keyEvent(&key);
    QCOMPARE(back.size(), 0);
    f.stop(false);
    // A window for the other tests.
    QVERIFY(openWindow());
    QVERIFY(showPage());
}

void TestPlayerPage::thePageHasItsTitleAndItsTimer()
{
    QCOMPARE(m_page->title(), qtTrId("qtn_vide_player"));
    QVERIFY(PlayerPageProbe::guard(*m_page)->isSingleShot());
    QCOMPARE(PlayerPageProbe::guard(*m_page)->interval(), 2000);
}

// Back, the details, the menu: as they stand.
void TestPlayerPage::theTabKeyReadsTheBar()
{
    connect(m_page.get(), &PlayerPage::showDetailsPage, this, [] {}); // the button that leads there is shown
    PlayerPageProbe::overlay(*m_page)->setShown(true);
    m_page->setControlsEnabled(true);
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QGraphicsScene *scene = m_page->scene();
    scene->setFocusItem(nullptr);
    QStringList names;
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        const auto *button = dynamic_cast<toolkit::IconButton *>(scene->focusItem());
        names.append(button ? button->accessibleName() : u"something else"_s);
    }
    QCOMPARE(names,
             QStringList({m_page->navigationBar()->backButton()->accessibleName(),
                          PlayerPageProbe::overlay(*m_page)->infoButton()->accessibleName(),
                          m_page->navigationBar()->menuButton()->accessibleName()}));
    QVERIFY(!names.contains(QString()));
}

QTEST_MAIN(TestPlayerPage)
#include "test_playerpage.moc"
