// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"

#include <player/windoweventlistener.h>

#include <QAbstractNativeEventFilter>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

// Last: their macros are common words.
#include <X11/Xlib.h>
#include <xcb/xproto.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// Sees what the listener's filter lets go on: of two filters the one that was installed last comes first.
class LaterFilter : public QAbstractNativeEventFilter
{
public:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *) override
    {
        const auto *event = static_cast<const xcb_generic_event_t *>(message);
        if (type == "xcb_generic_event_t" && (event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY)
            seen.append(reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom);
        return false;
    }
    QList<unsigned long> seen;
};

} // namespace

// What a window manager writes on the program's window, written by another program.
class TestWindowEventListener : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void openedAndClosed();
    void zeroTellsNothingAndOnlyTheRemovalCloses();
    void otherPropertiesTellNothing();
    void anotherTypeIsNoNumber();
    void onlyTheNewestListenerIsTold();
    void aListenerThatGoesLeavesTheOneAfterItAlone();
    void withoutAListenerNothingHappens();
    void everyEventGoesOn();
    void theBarOverThePagePausesAndHoldsWhatStarts();

private:
    // Changes the window and waits until the program has seen it.
    void change(const QStringList &arguments);
    void set(const QString &value, const QString &property = u"_SORELKIT_QLB_OPEN"_s)
    {
        change({u"-f"_s, property, u"32c"_s, u"-set"_s, property, value});
    }
    void remove() { change({u"-remove"_s, u"_SORELKIT_QLB_OPEN"_s}); }
    void xprop(const QStringList &arguments);
    [[nodiscard]] static unsigned long atom(const char *name)
    {
        return XInternAtom(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->display(), name, 0);
    }

    LaterFilter m_filter;
    int m_marks = 0;
};

void TestWindowEventListener::initTestCase()
{
    qGuiApp->installNativeEventFilter(&m_filter);
    QVERIFY(openWindow());
}

void TestWindowEventListener::cleanup()
{
    remove();
}

void TestWindowEventListener::xprop(const QStringList &arguments)
{
    QProcess program;
    QSignalSpy ended(&program, &QProcess::finished);
    program.start(u"xprop"_s,
                  QStringList{u"-id"_s, QString::number(m_window->effectiveWindowId())} + arguments);
    QVERIFY(ended.wait(TestPatience));
    QVERIFY2(program.exitCode() == 0, program.readAllStandardError());
}

void TestWindowEventListener::change(const QStringList &arguments)
{
    xprop(arguments);
    // A mark, which comes after the change.
    xprop({u"-f"_s, u"_TEST_MARK"_s, u"32c"_s, u"-set"_s, u"_TEST_MARK"_s, QString::number(++m_marks)});
    QTRY_COMPARE(m_filter.seen.count(atom("_TEST_MARK")), m_marks);
}

void TestWindowEventListener::openedAndClosed()
{
    WindowEventListener listener;
    QSignalSpy told(&listener, &WindowEventListener::QLBOpens);
    set(u"1"_s);
    set(u"7"_s); // anything but 0
    remove();
    QCOMPARE(told, (QList<QVariantList>{{true}, {true}, {false}}));
}

void TestWindowEventListener::zeroTellsNothingAndOnlyTheRemovalCloses()
{
    set(u"1"_s);
    WindowEventListener listener;
    QSignalSpy told(&listener, &WindowEventListener::QLBOpens);
    set(u"0"_s);
    QCOMPARE(told.count(), 0);
    remove();
    QCOMPARE(told, (QList<QVariantList>{{false}}));
}

void TestWindowEventListener::otherPropertiesTellNothing()
{
    WindowEventListener listener;
    QSignalSpy told(&listener, &WindowEventListener::QLBOpens);
    set(u"1"_s, u"_SORELKIT_QLB_OPENED"_s);
    QCOMPARE(told.count(), 0);
}

void TestWindowEventListener::anotherTypeIsNoNumber()
{
    // Of another type there is nothing to read: as if the property were not there.
    WindowEventListener listener;
    QSignalSpy told(&listener, &WindowEventListener::QLBOpens);
    change({u"-f"_s, u"_SORELKIT_QLB_OPEN"_s, u"8s"_s, u"-set"_s, u"_SORELKIT_QLB_OPEN"_s, u"1"_s});
    QCOMPARE(told, (QList<QVariantList>{{false}}));
}

void TestWindowEventListener::onlyTheNewestListenerIsTold()
{
    WindowEventListener first;
    WindowEventListener second;
    QSignalSpy firstTold(&first, &WindowEventListener::QLBOpens);
    QSignalSpy secondTold(&second, &WindowEventListener::QLBOpens);
    set(u"1"_s);
    QCOMPARE(firstTold.count(), 0);
    QCOMPARE(secondTold.count(), 1);
}

void TestWindowEventListener::aListenerThatGoesLeavesTheOneAfterItAlone()
{
    auto first = std::make_unique<WindowEventListener>();
    WindowEventListener second;
    QSignalSpy told(&second, &WindowEventListener::QLBOpens);
    first.reset();
    set(u"1"_s);
    QCOMPARE(told.count(), 1);
}

void TestWindowEventListener::withoutAListenerNothingHappens()
{
    auto listener = std::make_unique<WindowEventListener>();
    listener.reset();
    set(u"1"_s);
    QVERIFY(m_filter.seen.contains(atom("_SORELKIT_QLB_OPEN")));
}

void TestWindowEventListener::everyEventGoesOn()
{
    WindowEventListener listener;
    m_filter.seen.removeAll(atom("_SORELKIT_QLB_OPEN"));
    set(u"1"_s);
    remove();
    QCOMPARE(m_filter.seen.count(atom("_SORELKIT_QLB_OPEN")), 2);
}

void TestWindowEventListener::theBarOverThePagePausesAndHoldsWhatStarts()
{
    QVERIFY(showPage());
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    set(u"1"_s);
    QCOMPARE(f.backend->commands(), QStringList(u"pause"_s));
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    VideoInfo another = PlayerFixture::video(u"urn:2"_s);
    f.controller->play(another);
    QVERIFY(f.waitFor(AvloRenderer::Paused)); // the bar is still open
    remove();
    QVERIFY(play(PlayerFixture::video(u"urn:3"_s)));
    QCOMPARE(f.controller->state(), AvloRenderer::Playing);
    removePage();
}

QTEST_MAIN(TestWindowEventListener)
#include "test_windoweventlistener.moc"
