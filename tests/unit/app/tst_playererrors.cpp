// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"
#include "platform/media/videowidget.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/scenemanager.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QRegularExpression>
#include <QTest>
#include <QTranslator>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

// What a person sees when the renderer fails: the words on the screen, and the page that is there afterwards.
class PlayerErrorsTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void wordsAndPages_data();
    void wordsAndPages();
    void aVideoFromOutsideThatIsNotStoredStaysOnItsPage_data();
    void aVideoFromOutsideThatIsNotStoredStaysOnItsPage();
    void aFaultInTheMiddleLeavesThePageThere();
    void aSoundDeviceThatGoesIsToldAndTheVideoGoesOn();
    void aRendererThatIsLostComesBack();
    void anErrorDuringACallSpeaksOfTheCall();

private:
    [[nodiscard]] QString words() const { return banner() ? banner()->title() : QString(); }
    [[nodiscard]] AvloRenderer::State state() const { return m_controller->playerController()->state(); }
    [[nodiscard]] QStringList savedPlaces() const
    {
        return m_store.texts(SparqlQuery::UpdateStatement).filter(u"nmm:runTime"_s);
    }
    void failWith(int code, MediaTime position = MediaTime(-1));

    QTranslator m_catalog;
};

void PlayerErrorsTest::initTestCase()
{
    prepare();
    QVERIFY(m_catalog.load(u":/translations/video_en.qm"_s));
    QCoreApplication::installTranslator(&m_catalog);
}

void PlayerErrorsTest::init()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"PlayerController::"_s));
}

void PlayerErrorsTest::cleanup()
{
    while (banner())
        delete banner();
    clean();
}

void PlayerErrorsTest::failWith(int code, MediaTime position)
{
    m_media.fault = AvloError{code, u"a technical line"_s};
    m_media.faultPosition = position;
}

void PlayerErrorsTest::wordsAndPages_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("told");
    QTest::addColumn<bool>("stays");
    const auto rows = [](const QList<int> &codes, const QString &told, bool stays) {
        for (const int code : codes)
            QTest::addRow("%d", code) << code << told << stays;
    };
    rows({300, 303}, u"The video was not found."_s, false);
    rows({301, 304}, u"The connection to the video failed."_s, true);
    rows({302}, u"The address of the video is not valid."_s, false);
    rows({308, 315}, u"This video format is not supported."_s, false);
    rows({309}, u"The resolution of this video is not supported."_s, false);
    rows({310}, u"The frame rate of this video is not supported."_s, false);
    rows({311, 312, 313, 330}, u"This video is protected and cannot be played."_s, false);
    rows({314, 329}, u"The sound is in use by another program."_s, true);
    rows({317, 318, 319}, u"The player failed on this video."_s, false);
    rows({325, 326, 331}, QString(), true);
    rows({332}, u"This video format is not supported."_s, true);
    rows({0, 305, 307, 316, 333, 999}, u"The video cannot be played."_s, true);
}

// A tap in the list on a video that cannot be played.
void PlayerErrorsTest::wordsAndPages()
{
    QFETCH(int, code);
    QFETCH(QString, told);
    QFETCH(bool, stays);
    failWith(code);
    start();
    tap(video(1));
    QTRY_VERIFY(backend());
    QTRY_COMPARE(backend()->state(), AvloRenderer::Stopped);
    QTRY_COMPARE(words(), told);
    QTRY_COMPARE(stack(), stays ? u"library player"_s : u"library"_s);
    QTRY_VERIFY(!player()->videoWidget()->isBusy());
    QVERIFY(savedPlaces().isEmpty()); // nothing was seen, so the place is where it was
    // The next video plays.
    backend()->setDefaultMedia({});
    if (stays)
        player()->handleBackButton();
    QTRY_COMPARE(stack(), u"library"_s);
    tap(video(2));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    QCOMPARE(stack(), u"library player"_s);
}

void PlayerErrorsTest::aVideoFromOutsideThatIsNotStoredStaysOnItsPage_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {300, 301, 302, 308, 311, 317, 332})
        QTest::addRow("%d", code) << code;
}

// Another program asked for it: the page stays, with the reason on it, instead of a window that shuts at
// once.
void PlayerErrorsTest::aVideoFromOutsideThatIsNotStoredStaysOnItsPage()
{
    QFETCH(int, code);
    failWith(code);
    start({}, true);
    m_store.answerWith({});
    look(u"http://127.0.0.1/film.mp4"_s);
    QTRY_VERIFY(player() && backend());
    QTRY_VERIFY(!words().isEmpty());
    QTRY_COMPARE(state(), AvloRenderer::Stopped);
    QCOMPARE(stack(), u"player"_s);
    QTRY_VERIFY(player()->videoWidget()->controlsVisible());
    QVERIFY(savedPlaces().isEmpty());
}

void PlayerErrorsTest::aFaultInTheMiddleLeavesThePageThere()
{
    failWith(304, 20s);
    start();
    tap(video(1, 10));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    backend()->advance(15s);
    QTRY_COMPARE(words(), u"The connection to the video failed."_s);
    QTRY_COMPARE(state(), AvloRenderer::Stopped);
    QCOMPARE(stack(), u"library player"_s);
    QTRY_VERIFY(player()->videoWidget()->controlsVisible());
}

// The headset's battery is empty: who watches is told why it is silent, and goes on watching.
void PlayerErrorsTest::aSoundDeviceThatGoesIsToldAndTheVideoGoesOn()
{
    start();
    tap(video(1));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    backend()->advance(5s);
    backend()->complain({314, u"the device is gone"_s});
    QTRY_COMPARE(words(), u"The sound is in use by another program."_s);
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(state(), AvloRenderer::Playing);
    QVERIFY(!player()->videoWidget()->controlsVisible());
    backend()->advance(5s);
    QCOMPARE(player()->videoWidget()->position(), 10u);
}

void PlayerErrorsTest::aRendererThatIsLostComesBack()
{
    start();
    tap(video(1));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    const QPointer<NullMediaBackend> before = backend();
    backend()->lose();
    QTRY_COMPARE(words(), u"The video cannot be played."_s);
    QCOMPARE(stack(), u"library player"_s);
    QTRY_VERIFY(!before && backend());
    player()->handleBackButton();
    QTRY_COMPARE(stack(), u"library"_s);
    tap(video(2));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    QCOMPARE(played(), video(2).url);
}

void PlayerErrorsTest::anErrorDuringACallSpeaksOfTheCall()
{
    start();
    tap(video(1));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    FakeCalls::active = 1;
    backend()->complain({329, u"the sound is taken"_s});
    QTRY_COMPARE(words(), u"Videos cannot be played during a call."_s);
    QCOMPARE(stack(), u"library player"_s);
}

int main(int argc, char **argv)
{
    return runControllerTest<PlayerErrorsTest>(argc, argv);
}
#include "tst_playererrors.moc"
