// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_windowfixture.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;
using Profile = ApplicationWindow::Profile;

class WindowPresenceTest : public QObject, private WindowFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void displayAndSwitcher();
    void hiddenByTheProgramIsInNoSwitcher();
    void coveredWindowIsNotOnTheDisplay();
    void closedWindowLeavesTheDisplayAtOnce();
    void desktopPageStaysActiveWithoutFocus();
    void handsetPageIsLeftWithTheFocus();
};

void WindowPresenceTest::displayAndSwitcher()
{
    show(Profile::Desktop);
    QVERIFY(!m_window->isInSwitcher());
    QSignalSpy left(m_window.get(), &ApplicationWindow::displayExited);
    QSignalSpy entered(m_window.get(), &ApplicationWindow::displayEntered);
    QSignalSpy minimized(m_window.get(), &ApplicationWindow::switcherEntered);
    QSignalSpy restored(m_window.get(), &ApplicationWindow::switcherExited);
    m_page->events.clear();
    m_window->showMinimized();
    QTRY_COMPARE(minimized.size(), 1);
    QTRY_VERIFY(!m_window->windowHandle()->isExposed()); // the window manager is done with it
    QCOMPARE(left.size(), 1);
    QVERIFY(m_window->isInSwitcher());
    QVERIFY(!m_window->isOnDisplay());
    QVERIFY(!m_page->isOnDisplay());
    QCOMPARE(m_page->events.last(), QEvent::WindowDeactivate);
    m_window->raiseToFront();
    QTRY_COMPARE(restored.size(), 1);
    QTRY_COMPARE(entered.size(), 1);
    QVERIFY(m_page->isOnDisplay());
    QTRY_COMPARE(m_page->events.last(), QEvent::WindowActivate);
    QCOMPARE(left.size() + minimized.size(), 2);
}

void WindowPresenceTest::hiddenByTheProgramIsInNoSwitcher()
{
    show(Profile::Desktop);
    QSignalSpy minimized(m_window.get(), &ApplicationWindow::switcherEntered);
    m_window->hide();
    QVERIFY(!m_window->isOnDisplay());
    QVERIFY(!m_window->isInSwitcher());
    QCOMPARE(minimized.size(), 0);
}

void WindowPresenceTest::coveredWindowIsNotOnTheDisplay()
{
    if (QGuiApplication::platformName() != "xcb"_L1)
        return; // only X11 tells
    show(Profile::Desktop);
    QWidget cover;
    cover.setGeometry(m_window->screen()->geometry());
    cover.showFullScreen();
    QVERIFY(QTest::qWaitForWindowExposed(&cover));
    cover.raise();
    QTRY_VERIFY(!m_window->isOnDisplay());
    QVERIFY(m_window->isInSwitcher());
    cover.hide();
    QTRY_VERIFY(m_window->isOnDisplay());
    QVERIFY(!m_window->isInSwitcher());
}

void WindowPresenceTest::closedWindowLeavesTheDisplayAtOnce()
{
    show(Profile::Desktop);
    QSignalSpy left(m_window.get(), &ApplicationWindow::displayExited);
    m_window->close();
    QCOMPARE(left.size(), 1);
}

void WindowPresenceTest::desktopPageStaysActiveWithoutFocus()
{
    show(Profile::Desktop);
    m_window->raiseToFront();
    QTRY_VERIFY(m_window->isActiveWindow());
    m_page->events.clear();
    QWidget other;
    other.setGeometry(0, 0, 100, 100);
    other.show();
    other.activateWindow();
    QTRY_VERIFY(other.isActiveWindow());
    QTRY_VERIFY(!m_window->isActiveWindow());
    QVERIFY(m_window->isOnDisplay());
    QVERIFY(!m_page->events.contains(QEvent::WindowDeactivate));
    m_window->activateWindow();
    QTRY_COMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowActivate});
}

void WindowPresenceTest::handsetPageIsLeftWithTheFocus()
{
    show(Profile::Handset);
    m_window->raiseToFront();
    QTRY_VERIFY(m_window->isActiveWindow());
    m_page->events.clear();
    QWidget other;
    other.setWindowFlag(Qt::WindowStaysOnTopHint);
    other.setGeometry(0, 0, 100, 100);
    other.show();
    other.activateWindow();
    QTRY_COMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowDeactivate});
    other.hide();
    m_window->activateWindow();
    QTRY_COMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowDeactivate, QEvent::WindowActivate}));
}

KESTREL_TOOLKIT_TEST_MAIN(WindowPresenceTest)
#include "core_windowpresencetest.moc"
