// SPDX-License-Identifier: GPL-3.0-or-later
#include <player/windoweventlistener.h>

#include <QAbstractEventDispatcher>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

#include <xcb/xproto.h>

// On a window system that is none of X11's the listener never tells anything.
class TestWindowEventListenerElsewhere : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsTold();
};

void TestWindowEventListenerElsewhere::nothingIsTold()
{
    QVERIFY(!qGuiApp->nativeInterface<QNativeInterface::QX11Application>());
    WindowEventListener listener;
    QSignalSpy told(&listener, &WindowEventListener::QLBOpens);
    // Not even when an event looks like one.
    for (xcb_atom_t atom = 0; atom < 600; ++atom) {
        xcb_property_notify_event_t event = {};
        event.response_type = XCB_PROPERTY_NOTIFY;
        event.atom = atom;
        QVERIFY(
            !QAbstractEventDispatcher::instance()->filterNativeEvent("xcb_generic_event_t", &event, nullptr));
    }
    QCOMPARE(told.count(), 0);
}

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "minimal");
    QGuiApplication application(argc, argv);
    TestWindowEventListenerElsewhere test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_windoweventlistenerelsewhere.moc"
