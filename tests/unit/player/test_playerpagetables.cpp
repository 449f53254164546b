// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

#include <data/videoconstants.h>

using namespace Qt::Literals::StringLiterals;

namespace {

using State = AvloRenderer::State;
constexpr State states[]
    = {AvloRenderer::Stopped, AvloRenderer::Playing, AvloRenderer::Paused, AvloRenderer::Transitioning};

// The marks of the page, and what the player knows, around one event of the window.
struct Marks
{
    State state = AvloRenderer::Stopped;
    State saved = AvloRenderer::Stopped;
    bool wasPlaying = false;
    bool shareOpened = false;
    bool dialogOpen = false;
    bool picture = false;
    bool displayOn = false;
    bool enabled = false; // the bar

    [[nodiscard]] QString text() const
    {
        return u"state %1, remembered %2, was playing %3, share %4, dialog %5, picture %6, display %7, bar %8"_s
            .arg(state)
            .arg(saved)
            .arg(wasPlaying)
            .arg(shareOpened)
            .arg(dialogOpen)
            .arg(picture)
            .arg(displayOn)
            .arg(enabled);
    }
};

} // namespace

// Each event in each state with each mark, without a turn of the event loop in between.
class TestPlayerPageTables : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void windowEvents_data();
    void windowEvents();
    void backInEachState_data();
    void backInEachState();
    void keys_data();
    void keys();
    void returningInEachState_data();
    void returningInEachState();

private:
    void enter(State state, VideoInfo video);
    void set(const Marks &marks);
    [[nodiscard]] QString outcome(const Marks &marks) const;
};

void TestPlayerPageTables::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageTables::init()
{
    begin();
}

void TestPlayerPageTables::cleanup()
{
    end();
}

void TestPlayerPageTables::enter(State state, VideoInfo video)
{
    f.controller->play(video);
    f.controller->rendererStateChanged(state);
    f.backend->clearCommands();
}

void TestPlayerPageTables::set(const Marks &marks)
{
    f.controller->displayStatusChanged(true); // what plays with the display off is paused at once
    enter(marks.state, PlayerFixture::video(u"urn:1"_s, 60, 20));
    if (marks.picture)
        f.controller->handleMetadataChange(u"res-x"_s, {320});
    f.controller->displayStatusChanged(marks.displayOn);
    PlayerPageProbe::setSavedState(*m_page, marks.saved);
    PlayerPageProbe::setWasPlaying(*m_page, marks.wasPlaying);
    PlayerPageProbe::setShareOpened(*m_page, marks.shareOpened);
    PlayerPageProbe::setDialogOpen(*m_page, marks.dialogOpen);
    m_page->setControlsEnabled(marks.enabled);
}

QString TestPlayerPageTables::outcome(const Marks &marks) const
{
    Marks now = marks;
    now.saved = PlayerPageProbe::savedState(*m_page);
    now.wasPlaying = PlayerPageProbe::wasPlaying(*m_page);
    now.shareOpened = PlayerPageProbe::shareOpened(*m_page);
    now.enabled = m_page->navigationBar()->isEnabled();
    return now.text() + u" -> "_s + f.backend->commands().join(u' ');
}

void TestPlayerPageTables::windowEvents_data()
{
    QTest::addColumn<int>("event");
    QTest::newRow("blocked") << int(QEvent::WindowBlocked);
    QTest::newRow("unblocked") << int(QEvent::WindowUnblocked);
    QTest::newRow("activated") << int(QEvent::WindowActivate);
    QTest::newRow("deactivated") << int(QEvent::WindowDeactivate);
}

void TestPlayerPageTables::windowEvents()
{
    QFETCH(int, event);
    QCOMPARE(int(QEvent::WindowBlocked), 103);
    QCOMPARE(int(QEvent::WindowUnblocked), 104);
    QCOMPARE(int(QEvent::WindowActivate), 24);
    QCOMPARE(int(QEvent::WindowDeactivate), 25);
    for (const State state : states) {
        for (int bits = 0; bits < 128; ++bits) {
            Marks before;
            before.state = state;
            before.saved = (bits & 1) != 0 ? AvloRenderer::Playing : AvloRenderer::Stopped;
            before.wasPlaying = bits & 2;
            before.shareOpened = bits & 4;
            before.dialogOpen = bits & 8;
            before.picture = bits & 16;
            before.displayOn = bits & 32;
            before.enabled = bits & 64;
            set(before);
            Marks after = before;
            QString command;
            if (event == QEvent::WindowBlocked) {
                after.saved = before.wasPlaying ? before.saved : state;
                after.enabled = false;
            } else if (event == QEvent::WindowUnblocked) {
                if (state == AvloRenderer::Paused && before.wasPlaying && !before.shareOpened
                    && !before.dialogOpen && before.saved == AvloRenderer::Playing && before.displayOn) {
                    command = u"resume"_s;
                    after.wasPlaying = false;
                }
                after.shareOpened = false;
                after.enabled = true;
            } else if (event == QEvent::WindowActivate) {
                after.shareOpened = false;
                after.enabled = true;
            } else if (state == AvloRenderer::Playing && before.displayOn && before.picture) {
                command = u"pause"_s;
                after.wasPlaying = true;
            }
            send(QEvent::Type(event));
            QCOMPARE(outcome(before), after.text() + u" -> "_s + command);
        }
    }
}

void TestPlayerPageTables::backInEachState_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("story");
    const auto row = [](const char *what, State state, const char *story) {
        for (const int type : {PlayerPage::NormalBackButton, PlayerPage::TvMainViewBackButton}) {
            QTest::addRow("%s, state %d, button %d", what, int(state), type)
                << type << QString::fromLatin1(what) << int(state) << QString::fromLatin1(story);
        }
    };
    row("stored", AvloRenderer::Stopped, "back ready");
    row("stored", AvloRenderer::Playing, "back pause waits");
    row("stored", AvloRenderer::Paused, "back saved ready");
    row("stored", AvloRenderer::Transitioning, "back saved ready");
    row("on the card", AvloRenderer::Stopped, "back ready");
    row("on the card", AvloRenderer::Playing, "back pause waits");
    row("on the card", AvloRenderer::Paused, "back ready");
    row("on the card", AvloRenderer::Transitioning, "back ready");
    row("stream", AvloRenderer::Stopped, "stop back ready");
    row("stream", AvloRenderer::Playing, "stop back pause done");
    row("stream", AvloRenderer::Paused, "stop back ready");
    row("stream", AvloRenderer::Transitioning, "stop back ready");
}

void TestPlayerPageTables::backInEachState()
{
    QFETCH(int, type);
    QFETCH(QString, what);
    QFETCH(int, state);
    VideoInfo video = PlayerFixture::video(what == u"stored"_s ? u"urn:1"_s : QString(), 60, 20);
    if (what == u"on the card"_s)
        video.url = MYDOCS_URL + u"/a.mp4"_s;
    else if (what == u"stream"_s)
        video.url = u"http://h/a.mp4"_s;
    m_page->setBackButtonType(PlayerPage::BackButtonType(type));
    enter(State(state), video);
    PlayerPageProbe::setSavingDone(*m_page, false);
    QStringList story;
    const auto flush = [&] {
        story += f.backend->commands();
        f.backend->clearCommands();
    };
    connect(m_page.get(), &PlayerPage::goBack, m_page.get(), [&] {
        flush();
        story.append(u"back"_s);
    });
    connect(m_page.get(), &PlayerPage::savingReady, m_page.get(), [&] {
        flush();
        if (!f.savedPositions().isEmpty())
            story.append(u"saved"_s);
        story.append(u"ready"_s);
    });
    m_page->backButton();
    flush();
    if (PlayerPageProbe::guard(*m_page)->isActive())
        story.append(u"waits"_s);
    else if (!story.contains(u"ready"_s))
        story.append(m_page->isSavingDone() ? u"done"_s : u"stuck"_s);
    QTEST(story.join(u' '), "story");
    QVERIFY(f.controller->stopAtEnd());
    QVERIFY(!m_page->navigationBar()->isEnabled());
    // Once more changes nothing.
    const QStringList before = story;
    m_page->backButton();
    flush();
    if (PlayerPageProbe::guard(*m_page)->isActive())
        QVERIFY(before.contains(u"waits"_s));
    QCOMPARE(story, before);
}

void TestPlayerPageTables::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("press");
    QTest::addColumn<bool>("repeated");
    QTest::addColumn<QString>("outcome"); // the commands, or back
    const auto row = [](const char *name, int key, bool press, bool repeated, const QString &outcome) {
        QTest::addRow("%s, %s%s", name, press ? "pressed" : "released", repeated ? ", held" : "")
            << key << press << repeated << outcome;
    };
    for (const bool repeated : {false, true}) {
        row("Backspace", Qt::Key_Backspace, true, repeated, u"back"_s);
        row("Backspace", Qt::Key_Backspace, false, repeated, u"back"_s);
        row("Space", Qt::Key_Space, true, repeated, QString());
        row("Space", Qt::Key_Space, false, repeated, repeated ? QString() : u"pause"_s);
        row("Left", Qt::Key_Left, true, repeated, u"seek 20000"_s);
        row("Left", Qt::Key_Left, false, repeated, QString());
        row("Right", Qt::Key_Right, true, repeated, u"seek 40000"_s);
        row("Right", Qt::Key_Right, false, repeated, QString());
        row("A", Qt::Key_A, true, repeated, QString());
        row("A", Qt::Key_A, false, repeated, QString());
    }
}

void TestPlayerPageTables::keys()
{
    QFETCH(int, key);
    QFETCH(bool, press);
    QFETCH(bool, repeated);
    QFETCH(QString, outcome);
    QVERIFY(play(PlayerFixture::video(u"urn:1"_s, 60, 30)));
    QStringList done;
    const auto connection = connect(m_page.get(), &PlayerPage::goBack, m_page.get(), [&] {
        done.append(u"back"_s);
        m_page->disconnect(m_page.get());
    });
    const auto strike = [&] {
        f.backend->clearCommands();
        QKeyEvent event(press ? QEvent::KeyPress : QEvent::KeyRelease, key, Qt::NoModifier, QString(),
                        repeated);
        m_page->keyEvent(&event);
        if (done.isEmpty())
            done = f.backend->commands();
        return std::exchange(done, {}).join(u' ');
    };
    PlayerPageProbe::setDialogOpen(*m_page, true);
    QCOMPARE(strike(), QString());
    PlayerPageProbe::setDialogOpen(*m_page, false);
    m_window->openMenu();
    QVERIFY(m_window->isMenuOpen());
    QCOMPARE(strike(), QString());
    m_window->closeMenu();
    QTRY_VERIFY(!m_window->isMenuOpen());
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(strike(), outcome);
}

void TestPlayerPageTables::returningInEachState_data()
{
    QTest::addColumn<int>("remembered");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("outcome");
    for (const State remembered : states) {
        for (const State state : states) {
            QString outcome;
            if (remembered == AvloRenderer::Playing && state == AvloRenderer::Stopped)
                outcome = u"play file:///v/urn-1.mp4 20"_s;
            else if (remembered == AvloRenderer::Playing && state == AvloRenderer::Paused)
                outcome = u"resume"_s;
            else if (remembered == AvloRenderer::Playing)
                outcome = u"Can't resume!"_s;
            QTest::addRow("remembered %d, state %d", int(remembered), int(state))
                << int(remembered) << int(state) << outcome;
        }
    }
}

void TestPlayerPageTables::returningInEachState()
{
    QFETCH(int, remembered);
    QFETCH(int, state);
    QFETCH(QString, outcome);
    enter(State(state), PlayerFixture::video(u"urn:1"_s, 60, 20));
    PlayerPageProbe::setSavedState(*m_page, State(remembered));
    PlayerPageProbe::setWasPlaying(*m_page, true);
    f.controller->setStopAtEnd(true);
    m_page->controlsVisibilityChanged(true);
    LogLines lines("kestrel.player");
    m_page->resetSavedState();
    QStringList done = f.backend->commands();
    if (!lines.all().filter(u"void PlayerPage::resetSavedState() Can't resume!"_s).isEmpty())
        done.append(u"Can't resume!"_s);
    QCOMPARE(done.join(u' '), outcome);
    QCOMPARE(PlayerPageProbe::wasPlaying(*m_page), outcome != u"resume"_s);
    QVERIFY(!f.controller->stopAtEnd());
    QVERIFY(!PlayerPageProbe::overlay(*m_page)->isShown());
}

QTEST_MAIN(TestPlayerPageTables)
#include "test_playerpagetables.moc"
