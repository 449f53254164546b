// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_windowfixture.h"

#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/windowgeometry.h"

#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <utility>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;
using Profile = ApplicationWindow::Profile;
using Transition = ApplicationWindow::Transition;

class WindowTurnTest : public QObject, private WindowFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void handsetTurnsToTheAngle();
    void desktopRecordsTheAngleAndDoesNotTurn();
    void everyStartHasAFinish_data();
    void everyStartHasAFinish();
    void turnStartedByTheStartOfATurn();
    void pagesDoNotSlideInATurningScene();
    void hiddenWindowTurnsAtOnce();
    void lockedAngleIsRecorded();
    void textFieldWithTheFocusStandsUpright();
    void angleThatIsWantedMeanwhileWaitsForTheKeyboard();
    void fingerThatIsDownHoldsTheTurn();
    void focusThatIsHandedOnTurnsNothing();
    void windowThatLosesTheFocusForAMomentTurnsNothing();
    void sheetWithAFieldStandsUprightUntilItGoes_data();
    void sheetWithAFieldStandsUprightUntilItGoes();
    void desktopDoesNotTurnForAKeyboard();

private:
    // A field on a page that lies on its side.
    void showTurned(Profile profile)
    {
        show(profile);
        m_upright = uprightAngle(m_window->screen()->size());
        m_window->setOrientationAngle((m_upright + 270) % 360, Transition::Immediate);
        m_turned = m_window->logicalSize();
        m_field = new TextEdit(m_page->centralWidget());
        m_field->setGeometry(QRectF(16, 100, 300, 60));
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    [[nodiscard]] QSizeF upright() const
    {
        return windowGeometry(Profile::Handset, m_window->screen()->size(), m_window->size(), m_upright)
            .logicalSize;
    }

    int m_upright = 0;
    QSizeF m_turned;
    TextEdit *m_field = nullptr;
};

void WindowTurnTest::handsetTurnsToTheAngle()
{
    show(Profile::Handset);
    const QSize screen = m_window->screen()->size();
    for (const int angle : {0, 90, 180, 270}) {
        m_window->setOrientationAngle(angle, Transition::Immediate);
        const WindowGeometry expected = windowGeometry(Profile::Handset, screen, m_window->size(), angle);
        QCOMPARE(m_window->orientationAngle(), angle);
        QCOMPARE(m_window->logicalSize(), expected.logicalSize);
        QCOMPARE(m_page->size(), expected.logicalSize);
        // The corner of the page lies in the right corner of the window, to the pixel.
        const QTransform transform = sceneTransform(expected, m_window->size(), expected.rotation);
        const QPointF corner = m_window->viewportTransform().map(QPointF());
        QVERIFY(QLineF(corner, transform.map(QPointF())).length() < 0.01);
        const QPointF end(expected.logicalSize.width(), expected.logicalSize.height());
        QVERIFY(QLineF(m_window->viewportTransform().map(end), transform.map(end)).length() < 0.01);
    }
}

void WindowTurnTest::desktopRecordsTheAngleAndDoesNotTurn()
{
    show(Profile::Desktop);
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    QSignalSpy finished(m_window.get(), &ApplicationWindow::orientationChangeFinished);
    const QSizeF before = m_window->logicalSize();
    m_window->setOrientationAngle(0);
    QCOMPARE(m_window->orientationAngle(), 0);
    QCOMPARE(m_window->logicalSize(), before);
    QCOMPARE(started.size(), 1);
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_window->viewportTransform().map(QPointF()), QPointF());
}

void WindowTurnTest::everyStartHasAFinish_data()
{
    QTest::addColumn<bool>("reduced");
    QTest::addColumn<QList<int>>("angles");
    QTest::addColumn<bool>("lastAtOnce");
    QTest::newRow("one") << false << QList<int>{0} << false;
    QTest::newRow("interrupted") << false << QList<int>{0, 90, 180} << false;
    QTest::newRow("there and back") << false << QList<int>{0, 270} << false;
    QTest::newRow("interrupted by one at once") << false << QList<int>{0, 270} << true;
    QTest::newRow("the same again") << false << QList<int>{0, 0} << false;
    QTest::newRow("the same again, at once") << false << QList<int>{0, 0} << true;
    QTest::newRow("reduced motion") << true << QList<int>{0, 90} << false;
}

void WindowTurnTest::everyStartHasAFinish()
{
    QFETCH(const bool, reduced);
    QFETCH(const QList<int>, angles);
    QFETCH(const bool, lastAtOnce);
    setReducedMotion(reduced);
    show(Profile::Handset);
    m_window->setOrientationAngle(270, Transition::Immediate);
    QString log;
    connect(m_window.get(), &ApplicationWindow::orientationChangeStarted, m_page.get(),
            [&log] { log += u'('; });
    connect(m_window.get(), &ApplicationWindow::orientationChangeFinished, m_page.get(),
            [&log] { log += u')'; });
    int changes = 0;
    int angle = 270;
    for (qsizetype index = 0; index < angles.size(); ++index) {
        changes += angles.at(index) != angle ? 1 : 0;
        angle = angles.at(index);
        const bool atOnce = lastAtOnce && index == angles.size() - 1;
        m_window->setOrientationAngle(angle, atOnce ? Transition::Immediate : Transition::Animated);
        if (atOnce || reduced)
            QVERIFY(!m_window->isTurning());
    }
    QTRY_COMPARE(log, u"()"_s.repeated(changes));
    QVERIFY(!m_window->isTurning());
    const WindowGeometry end
        = windowGeometry(Profile::Handset, m_window->screen()->size(), m_window->size(), angle);
    const QTransform transform = sceneTransform(end, m_window->size(), end.rotation);
    QVERIFY(QLineF(m_window->viewportTransform().map(QPointF()), transform.map(QPointF())).length() < 0.01);
}

void WindowTurnTest::turnStartedByTheStartOfATurn()
{
    show(Profile::Handset);
    m_window->setOrientationAngle(270, Transition::Immediate);
    QString log;
    bool once = false;
    connect(m_window.get(), &ApplicationWindow::orientationChangeStarted, m_page.get(), [&] {
        log += u'(';
        if (!std::exchange(once, true))
            m_window->setOrientationAngle(90, Transition::Immediate);
    });
    connect(m_window.get(), &ApplicationWindow::orientationChangeFinished, m_page.get(),
            [&log] { log += u')'; });
    m_window->setOrientationAngle(0);
    QTRY_COMPARE(log, u"()()"_s);
    QCOMPARE(m_window->orientationAngle(), 90);
}

// Leaving the player: the scene turns back and shows the list at once, in either order of the calls.
void WindowTurnTest::pagesDoNotSlideInATurningScene()
{
    show(Profile::Handset);
    m_window->setOrientationAngle(0, Transition::Immediate);
    Page player;
    player.appear(m_window.get(), Appearance::Immediate);
    m_window->setOrientationAngle(270);
    QVERIFY(m_window->isTurning());
    player.dismiss();
    QVERIFY(!m_window->sceneManager()->isInTransition());
    QVERIFY(!player.isVisible());
    QCOMPARE(m_page->pos(), QPointF());
    QTRY_VERIFY(!m_window->isTurning());

    player.appear(m_window.get());
    QVERIFY(m_window->sceneManager()->isInTransition());
    m_window->setOrientationAngle(0);
    QVERIFY(!m_window->sceneManager()->isInTransition());
    QCOMPARE(player.pos(), QPointF());
}

void WindowTurnTest::hiddenWindowTurnsAtOnce()
{
    ApplicationWindow window;
    window.setProfile(Profile::Handset);
    window.setPortraitOrientation();
    window.setLandscapeOrientation();
    QCOMPARE(window.orientationAngle(), 0);
    QVERIFY(!window.isTurning());
}

void WindowTurnTest::lockedAngleIsRecorded()
{
    ApplicationWindow window;
    QVERIFY(!window.isOrientationAngleLocked());
    window.lockOrientationAngle();
    QVERIFY(window.isOrientationAngleLocked());
    // The program itself may still turn.
    window.setOrientationAngle(0);
    QCOMPARE(window.orientationAngle(), 0);
    window.unlockOrientationAngle();
    QVERIFY(!window.isOrientationAngleLocked());
}

// The player lies on its side; its video is renamed: the keyboard of the compositor comes upright.
void WindowTurnTest::textFieldWithTheFocusStandsUpright()
{
    showTurned(Profile::Handset);
    const int asked = m_window->orientationAngle();
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    QSignalSpy finished(m_window.get(), &ApplicationWindow::orientationChangeFinished);
    QVERIFY(m_turned != upright());
    m_field->setFocus();
    QTRY_COMPARE(m_window->logicalSize(), upright());
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(m_window->orientationAngle(), asked); // what was asked for is not forgotten
    m_field->clearFocus();
    QTRY_COMPARE(m_window->logicalSize(), m_turned);
    QTRY_COMPARE(finished.count(), 2);
    QCOMPARE(started.count(), 2);
}

void WindowTurnTest::angleThatIsWantedMeanwhileWaitsForTheKeyboard()
{
    showTurned(Profile::Handset);
    m_field->setFocus();
    QTRY_COMPARE(m_window->logicalSize(), upright());
    QTRY_VERIFY(!m_window->isTurning());
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    QSignalSpy finished(m_window.get(), &ApplicationWindow::orientationChangeFinished);
    m_window->setOrientationAngle(m_upright + 90, Transition::Immediate);
    QCOMPARE(m_window->orientationAngle(), (m_upright + 90) % 360);
    QCOMPARE(m_window->logicalSize(), upright());
    QCOMPARE(started.count(), 1);
    QCOMPARE(finished.count(), 1); // a start has its finish
    m_window->setOrientationAngle(m_upright, Transition::Immediate);
    m_field->clearFocus();
    QCoreApplication::processEvents();
    QCOMPARE(m_window->logicalSize(), upright());
    QCOMPARE(started.count(), 2); // nothing is left to turn
}

void WindowTurnTest::fingerThatIsDownHoldsTheTurn()
{
    showTurned(Profile::Handset);
    const QPoint at = m_window->mapFromScene(m_field->sceneBoundingRect().center());
    QTest::mousePress(m_window->viewport(), Qt::LeftButton, {}, at);
    QVERIFY(m_field->hasFocus());
    QCoreApplication::processEvents();
    QCOMPARE(m_window->logicalSize(), m_turned); // the field stays under the finger
    QTest::mouseRelease(m_window->viewport(), Qt::LeftButton, {}, at);
    QTRY_COMPARE(m_window->logicalSize(), upright());
}

void WindowTurnTest::focusThatIsHandedOnTurnsNothing()
{
    showTurned(Profile::Handset);
    m_field->setFocus();
    QTRY_COMPARE(m_window->logicalSize(), upright());
    QTRY_VERIFY(!m_window->isTurning());
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    m_field->clearFocus(); // the clear button was pressed, which gives the focus back
    m_field->setFocus();
    QCoreApplication::processEvents();
    QCOMPARE(started.count(), 0);
}

void WindowTurnTest::sheetWithAFieldStandsUprightUntilItGoes_data()
{
    QTest::addColumn<bool>("withoutFocus");
    QTest::newRow("as it is") << false;
    QTest::newRow("nothing has the focus any more") << true;
}

// A copy's name is typed; the one that is taken is asked about, and then it is copied.
void WindowTurnTest::sheetWithAFieldStandsUprightUntilItGoes()
{
    QFETCH(bool, withoutFocus);
    showTurned(Profile::Handset);
    toolkit::Sheet sheet(toolkit::Sheet::Extent::Full);
    auto *field = new toolkit::TextEdit;
    sheet.setCentralWidget(field);
    sheet.appear(m_window.get());
    field->setFocus();
    QTRY_COMPARE(m_window->logicalSize(), upright());
    QTRY_VERIFY(!m_window->isTurning());
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    toolkit::QueryDialog question;
    question.appear(m_window.get());
    QVERIFY(!field->hasFocus());
    QCoreApplication::processEvents();
    question.reject();
    QTRY_VERIFY(!question.isDisplayed());
    if (withoutFocus)
        field->clearFocus();
    else
        sheet.setFocus();
    QCoreApplication::processEvents();
    QCOMPARE(started.count(), 0);
    QCOMPARE(m_window->logicalSize(), upright());
    sheet.reject();
    QTRY_COMPARE(m_window->logicalSize(), m_turned);
}

void WindowTurnTest::windowThatLosesTheFocusForAMomentTurnsNothing()
{
    showTurned(Profile::Handset);
    m_field->setFocus();
    QTRY_COMPARE(m_window->logicalSize(), upright());
    QTRY_VERIFY(!m_window->isTurning());
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(m_window->scene(), &out);
    QCoreApplication::processEvents();
    QVERIFY(!m_field->hasFocus());
    QCOMPARE(started.count(), 0);
    QFocusEvent in(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(m_window->scene(), &in);
    QCoreApplication::processEvents();
    QVERIFY(m_field->hasFocus());
    QCOMPARE(started.count(), 0);
}

void WindowTurnTest::desktopDoesNotTurnForAKeyboard()
{
    showTurned(Profile::Desktop);
    QSignalSpy started(m_window.get(), &ApplicationWindow::orientationChangeStarted);
    m_field->setFocus();
    QCoreApplication::processEvents();
    m_field->clearFocus();
    QCoreApplication::processEvents();
    QCOMPARE(started.count(), 0);
    QCOMPARE(m_window->logicalSize(), m_turned);
}

KESTREL_TOOLKIT_TEST_MAIN(WindowTurnTest)
#include "core_windowturntest.moc"
