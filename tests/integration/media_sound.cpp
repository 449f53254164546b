// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/playback.h"
#include "support/pulseserver.h"

#include <QSignalSpy>
#include <QUrl>

#include <memory>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 60000; // ms; a loaded machine

} // namespace

// A sound device that is not there, that goes, and that comes back; a real sound server.
class SoundTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void aPictureNeedsNoSound();
    void soundAloneIsMissed();
    void theDeviceGoesAndThePictureStays();
    void theDeviceGoesWithAllThereIs();
    void theDeviceIsBackAfterAPause();
    void theServerIsKilledAndThePictureStays();
    void theServerIsKilledWithAllThereIs();

private:
    [[nodiscard]] QString file(const QString &name) const
    {
        return QUrl::fromLocalFile(m_folder.filePath(name)).toString();
    }

    QTemporaryDir m_folder;
    std::unique_ptr<PulseServer> m_server;
};

void SoundTest::initTestCase()
{
    TestClips::Clip clip = streamclips::small(streamclips::h264(), 20);
    QCOMPARE(TestClips::make(m_folder.filePath(u"both.mp4"_s), clip), QString());
    clip.source.clear();
    clip.options = {};
    QCOMPARE(TestClips::make(m_folder.filePath(u"sound.ogg"_s), clip), QString());
}

void SoundTest::init()
{
    m_server.reset();
    m_server = std::make_unique<PulseServer>(); // which is not started
}

void SoundTest::aPictureNeedsNoSound()
{
    Playback playback(file(u"both.mp4"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QTRY_VERIFY(playback.frames > 25);
    QCOMPARE(playback.complaints, QList<int>());
}

// There is nothing to see and nothing to hear: that is told, and the clock runs.
void SoundTest::soundAloneIsMissed()
{
    Playback playback(file(u"sound.ogg"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QTRY_COMPARE(playback.complaints, QList<int>{314});
    QTRY_VERIFY(playback.backend.position() > 500ms);
    QVERIFY(!playback.isOver());
}

void SoundTest::theDeviceGoesAndThePictureStays()
{
    QVERIFY(m_server->start());
    const QString device = m_server->addSink(u"speaker"_s);
    Playback playback(file(u"both.mp4"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QTRY_VERIFY(playback.frames > 10);
    const MediaTime place = playback.backend.position();
    QVERIFY(m_server->removeModule(device));
    QTRY_COMPARE_WITH_TIMEOUT(playback.complaints, QList<int>{314}, Patience);
    const int then = playback.frames;
    QTRY_VERIFY_WITH_TIMEOUT(playback.frames > then + 25, Patience);
    QVERIFY(playback.backend.position() > place && playback.backend.position() < place + 15s);
    QVERIFY2(!playback.isOver(), qPrintable(playback.story()));
    QCOMPARE(playback.backend.state(), AvloRenderer::Playing);
}

void SoundTest::theDeviceGoesWithAllThereIs()
{
    QVERIFY(m_server->start());
    const QString device = m_server->addSink(u"speaker"_s);
    Playback playback(file(u"sound.ogg"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QTRY_VERIFY(playback.backend.position() > 500ms);
    QVERIFY(m_server->removeModule(device));
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QCOMPARE(playback.code, 314);
    QTRY_COMPARE(playback.backend.state(), AvloRenderer::Stopped);
    QVERIFY(playback.backend.position() > 300ms); // where it was left
}

void SoundTest::theDeviceIsBackAfterAPause()
{
    QVERIFY(m_server->start());
    const QString device = m_server->addSink(u"speaker"_s);
    Playback playback(file(u"both.mp4"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QVERIFY(m_server->removeModule(device));
    QTRY_COMPARE_WITH_TIMEOUT(playback.complaints, QList<int>{314}, Patience);
    QSignalSpy paused(&playback.backend, &MediaBackend::paused);
    playback.backend.pause();
    QVERIFY(paused.wait(Patience));
    QVERIFY(!m_server->addSink(u"speaker"_s).isEmpty());
    QVERIFY(!m_server->isHeard());
    playback.backend.resume();
    QTRY_VERIFY_WITH_TIMEOUT(m_server->isHeard(), Patience);
    QTRY_COMPARE(playback.backend.state(), AvloRenderer::Playing);
    QCOMPARE(playback.complaints.size(), 1);
}

void SoundTest::theServerIsKilledAndThePictureStays()
{
    QVERIFY(m_server->start());
    QVERIFY(!m_server->addSink(u"speaker"_s).isEmpty());
    Playback playback(file(u"both.mp4"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QTRY_VERIFY(playback.frames > 10);
    m_server->kill();
    QTRY_COMPARE_WITH_TIMEOUT(playback.complaints, QList<int>{314}, Patience);
    const int then = playback.frames;
    QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > then + 25, qPrintable(playback.story()), Patience);
    QVERIFY2(!playback.isOver(), qPrintable(playback.story()));
    QCOMPARE(playback.backend.state(), AvloRenderer::Playing);
}

void SoundTest::theServerIsKilledWithAllThereIs()
{
    QVERIFY(m_server->start());
    QVERIFY(!m_server->addSink(u"speaker"_s).isEmpty());
    Playback playback(file(u"sound.ogg"_s));
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QTRY_VERIFY(playback.backend.position() > 500ms);
    m_server->kill();
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QCOMPARE(playback.code, 314);
    QTRY_COMPARE(playback.backend.state(), AvloRenderer::Stopped);
}

QTEST_MAIN(SoundTest)
#include "media_sound.moc"
