// SPDX-License-Identifier: GPL-3.0-or-later
#include "../media/testclips.h"
#include "playerfixture.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine

} // namespace

// The renderer that ships tells of a pause only when the still of the frame is written: what comes in between
// must not lose the place.
class TestPlayerPlaceReal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void whatComesBeforeTheStillIsWrittenLosesNoPlace_data();
    void whatComesBeforeTheStillIsWrittenLosesNoPlace();
    void aStillThatComesLateIsTheVideosOwn();

private:
    [[nodiscard]] VideoInfo clip(const QString &name) const
    {
        VideoInfo video = PlayerFixture::video(u"urn:"_s + name, 20);
        video.url = testclips::address(m_clips.filePath(name + u".mp4"_s));
        return video;
    }
    [[nodiscard]] bool playBeyond(VideoInfo video, uint second)
    {
        f.controller->play(video);
        return QTest::qWaitFor(
            [this, second] {
                return f.controller->state() == AvloRenderer::Playing && f.widget->position() >= second;
            },
            Patience);
    }

    PlayerFixture f;
    QTemporaryDir m_clips;
};

void TestPlayerPlaceReal::initTestCase()
{
    for (const QString &name : {u"first"_s, u"second"_s})
        QVERIFY(testclips::run(testclips::numberedPicture(20, 160, 90) + testclips::h264()
                               + QStringList{m_clips.filePath(name + u".mp4"_s)}));
    RendererRegistry::setBackendFactory([] { return std::make_unique<GstMediaBackend>(); });
}

void TestPlayerPlaceReal::init()
{
    QVERIFY(f.startWithRenderer());
}

void TestPlayerPlaceReal::cleanup()
{
    f.stop();
}

void TestPlayerPlaceReal::whatComesBeforeTheStillIsWrittenLosesNoPlace_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<bool>("paused");
    for (const QString &what : {u"play"_s, u"stop"_s}) {
        QTest::addRow("%s, with the pause still to come", qPrintable(what)) << what << false;
        QTest::addRow("%s, with the still to come", qPrintable(what)) << what << true;
    }
}

void TestPlayerPlaceReal::whatComesBeforeTheStillIsWrittenLosesNoPlace()
{
    QFETCH(QString, what);
    QFETCH(bool, paused);
    QVERIFY(playBeyond(clip(u"first"_s), 1));
    uint left = 0;
    const auto act = [&] {
        left = f.widget->position();
        VideoInfo next = clip(u"second"_s);
        if (what == u"play"_s)
            f.controller->play(next);
        else
            f.controller->stop();
    };
    if (paused) // in the very turn of the event loop in which it is told
        connect(
            f.widget->renderer(), &AvloRenderer::stateChanged, this,
            [&](AvloRenderer::State state) {
                if (state == AvloRenderer::Paused)
                    act();
            },
            Qt::SingleShotConnection);
    f.controller->pause();
    if (!paused)
        act();
    QTRY_VERIFY_WITH_TIMEOUT(!f.savedPositions().isEmpty(), Patience);
    const QString place = u"urn:first "_s + QString::number(left);
    QCOMPARE(f.savedPositions(), QStringList{place});
    if (what == u"stop"_s) {
        QTRY_COMPARE_WITH_TIMEOUT(f.controller->state(), AvloRenderer::Stopped, Patience);
    } else {
        QTRY_VERIFY_WITH_TIMEOUT(f.controller->state() == AvloRenderer::Playing && f.widget->position() >= 1,
                                 Patience);
        QCOMPARE(f.controller->currentVideo().urn, u"urn:second"_s);
    }
    QCOMPARE(f.savedPositions(), QStringList{place}); // nor is it written to the other one
}

void TestPlayerPlaceReal::aStillThatComesLateIsTheVideosOwn()
{
    QVERIFY(playBeyond(clip(u"first"_s), 1));
    QSignalSpy stills(f.controller.get(), &PlayerController::pauseThumbnailUpdated);
    QStringList written;
    connect(ThumbnailHelper::instance(), &ThumbnailHelper::pauseThumbnailCreated, this,
            [&](const QString &url, const QString &path) {
                if (!path.isEmpty())
                    written.append(url);
            });
    connect( // in the turn after the one in which it is told
        f.widget->renderer(), &AvloRenderer::stateChanged, f.controller.get(),
        [this](AvloRenderer::State state) {
            VideoInfo next = clip(u"second"_s);
            if (state == AvloRenderer::Paused)
                f.controller->play(next);
        },
        Qt::QueuedConnection);
    f.controller->pause();
    QTRY_COMPARE_WITH_TIMEOUT(written, QStringList{clip(u"first"_s).url}, Patience);
    QCOMPARE(stills.size(), 1);
}

QTEST_MAIN(TestPlayerPlaceReal)
#include "test_playerplacereal.moc"
