// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/mediaserver.h"
#include "support/playback.h"

#include <platform/media/exactpositions.h>

#include <QSignalSpy>

#include <algorithm>
#include <map>
#include <memory>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine
const QString WebUser = QStringLiteral("guest:p%3Ass%20w%25rd");

QStringList &allLines()
{
    static QStringList lines;
    return lines;
}

QtMessageHandler &handlerBefore()
{
    static QtMessageHandler handler = nullptr;
    return handler;
}

void keepLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    allLines().append(text);
    handlerBefore()(type, context, text);
}

} // namespace

// Streams that are in order, from servers that are real, side by side.
class StreamsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void goesOnForEver_data();
    void goesOnForEver();
    void aPlaceInAStream_data();
    void aPlaceInAStream();
    void aNetworkThatIsTooSlowIsWaitedFor();
    void aSilenceIsWaitedFor();
    void aTrickleIsNoFault();
    void playsToItsEnd_data();
    void playsToItsEnd();
    void endlessStreamsFillNothing();
    void aPausedStreamKeepsQuiet();
    void streamsLeaveNoPlaceBehind();
    void theServerHearsLittle();
    void aProxyOfTheEnvironmentIsAsked();
    void passwordsAreInNoLine();

private:
    [[nodiscard]] QString web(const QString &path) const { return m_web.address(path); }
    void makeClips();
    void add(const QString &name, const QString &address)
    {
        m_playbacks[name] = std::make_unique<Playback>(address);
    }

    QTemporaryDir m_folder;
    MediaServer m_web;
    MediaServer m_rtsp;
    QString m_hls;
    QString m_fragmented;
    QString m_dash;
    QStringList m_finite;
    std::map<QString, std::unique_ptr<Playback>> m_playbacks;
};

void StreamsTest::makeClips()
{
    using namespace streamclips;
    const auto make = [this](const QString &name, const QStringList &options, int seconds = 2) {
        QCOMPARE(TestClips::make(m_folder.filePath(name), small(options, seconds)), QString());
    };
    make(u"clip.mp4"_s, h264() + QStringList{u"-movflags"_s, u"faststart"_s});
    make(u"end.mp4"_s, h264()); // what it needs to begin stands at its end
    make(u"my film \u00e4.mp4"_s, h264());
    make(u"clip.webm"_s, {});
    make(u"clip.ts"_s, h264());
    make(u"clip.mkv"_s, h264());
    const QStringList steady{u"-b:v"_s,         u"1500k"_s,       u"-minrate"_s,  u"1500k"_s,
                             u"-maxrate"_s,     u"1500k"_s,       u"-bufsize"_s,  u"1500k"_s,
                             u"-x264-params"_s, u"nal-hrd=cbr"_s, u"-movflags"_s, u"faststart"_s};
    make(u"long.mp4"_s, h264() + steady, 30);
    make(u"long.ts"_s, h264() + steady, 30);
    make(u"seek.mkv"_s, h264(), 10);
    QCOMPARE(makeAdaptive(m_folder.path(), u"hls"_s, &m_hls), QString());
    QCOMPARE(makeAdaptive(m_folder.path(), u"hls-fmp4"_s, &m_fragmented), QString());
    QCOMPARE(makeAdaptive(m_folder.path(), u"dash"_s, &m_dash), QString());
}

void StreamsTest::initTestCase()
{
    handlerBefore() = qInstallMessageHandler(keepLine);
    makeClips();
    QVERIFY(m_web.startWeb(m_folder.path()));
    QVERIFY(m_rtsp.startRtsp(m_folder.filePath(u"seek.mkv"_s)));
    // Those that take longest first.
    add(u"trickle"_s, web(u"rate=3000/clip.mp4"_s));
    add(u"slow"_s, web(u"rate=120000/long.mp4"_s));
    add(u"silence"_s, web(u"hush=0.2:6/long.ts"_s));
    add(u"endless"_s, web(u"endless/long.ts"_s));
    add(u"live"_s, m_rtsp.address(u"live"_s));
    add(u"guarded"_s, m_rtsp.guardedAddress(u"guest:secret"_s));
    const QList<std::pair<QString, QString>> finite{
        {u"mp4"_s, web(u"plain/clip.mp4"_s)},
        {u"mp4 with its head at the end"_s, web(u"plain/end.mp4"_s)},
        {u"mp4 without ranges"_s, web(u"norange/clip.mp4"_s)},
        {u"mp4 in chunks"_s, web(u"chunked/clip.mp4"_s)},
        {u"mp4 of no length"_s, web(u"unsized/clip.mp4"_s)},
        {u"webm"_s, web(u"plain/clip.webm"_s)},
        {u"webm without ranges"_s, web(u"norange/clip.webm"_s)},
        {u"matroska"_s, web(u"plain/clip.mkv"_s)},
        {u"transport stream"_s, web(u"plain/clip.ts"_s)},
        {u"through redirects"_s, web(u"redirect=4/clip.mp4"_s)},
        {u"called a text"_s, web(u"type=text_plain/clip.mp4"_s)},
        {u"called nothing known"_s, web(u"type=application_octet-stream/clip.webm"_s)},
        {u"called by another's name"_s, web(u"type=video_webm/clip.mp4"_s)},
        {u"late"_s, web(u"late=3/clip.mp4"_s)},
        {u"cut once"_s, web(u"cutonce=0.5/clip.mp4"_s)},
        {u"more than it says"_s, web(u"shorter=500/clip.webm"_s)},
        {u"behind a password"_s, m_web.address(u"auth/clip.mp4"_s, WebUser)},
        {u"a name with blanks"_s, web(u"plain/my film \u00e4.mp4"_s)},
        {u"hls"_s, web(u"plain/"_s + m_hls)},
        {u"hls of mp4 fragments"_s, web(u"plain/"_s + m_fragmented)},
        {u"hls behind a password"_s, m_web.address(u"auth/"_s + m_hls, WebUser)},
        {u"hls called a text"_s, web(u"type=text_plain/"_s + m_hls)},
        {u"dash"_s, web(u"plain/"_s + m_dash)},
        {u"dash behind a password"_s, m_web.address(u"auth/"_s + m_dash, WebUser)},
        {u"rtsp"_s, m_rtsp.address(u"film"_s)},
    };
    for (const auto &[name, address] : finite) {
        add(name, address);
        m_finite.append(name);
    }
}

void StreamsTest::goesOnForEver_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : {u"live"_s, u"guarded"_s, u"endless"_s})
        QTest::newRow(qPrintable(name)) << name;
}

void StreamsTest::goesOnForEver()
{
    QFETCH(QString, name);
    Playback &playback = *m_playbacks.at(name);
    QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > 100 || playback.isOver(), qPrintable(playback.story()),
                              Patience);
    QVERIFY2(!playback.isOver(), qPrintable(playback.story()));
    if (name != u"endless"_s) // that one is known by its server alone
        QVERIFY(!playback.backend.isSeekable());
}

void StreamsTest::aPlaceInAStream_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("web") << web(u"plain/long.mp4"_s);
    QTest::newRow("hls") << web(u"plain/"_s + m_hls);
    QTest::newRow("dash") << web(u"plain/"_s + m_dash);
}

void StreamsTest::aPlaceInAStream()
{
    QFETCH(QString, address);
    Playback playback(address);
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QVERIFY(playback.backend.isSeekable());
    QVERIFY(playback.backend.duration() >= 3s);
    playback.backend.seek(2s, MediaBackend::SeekPrecision::Exact);
    QTRY_VERIFY2_WITH_TIMEOUT(playback.backend.position() >= 2s, qPrintable(playback.story()), Patience);
    QVERIFY(!playback.isOver());
    QVERIFY(playback.backend.position() < 4s);
}

// Buffering is shown, comes to its end, and playing goes on; again and again, where it must be.
void StreamsTest::aNetworkThatIsTooSlowIsWaitedFor()
{
    Playback &playback = *m_playbacks.at(u"slow"_s);
    const auto waitedAgain = [&playback] {
        const auto first = std::find(playback.percents.begin(), playback.percents.end(), 100);
        const auto fall = std::find_if(first, playback.percents.end(), [](float p) { return p < 100; });
        return std::find(fall, playback.percents.end(), 100) != playback.percents.end();
    };
    QTRY_VERIFY2_WITH_TIMEOUT(waitedAgain(), qPrintable(playback.story()), Patience);
    const int then = playback.frames;
    QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > then + 10, qPrintable(playback.story()), Patience);
    QVERIFY(!playback.isOver());
}

void StreamsTest::aSilenceIsWaitedFor()
{
    Playback &playback = *m_playbacks.at(u"silence"_s);
    QTRY_VERIFY2_WITH_TIMEOUT(playback.backend.position() > 10s || playback.isOver(),
                              qPrintable(playback.story()), Patience);
    QVERIFY2(!playback.isOver(), qPrintable(playback.story()));
    QVERIFY(playback.percents.contains(100));
}

// Longer than the limit of those that say nothing.
void StreamsTest::aTrickleIsNoFault()
{
    Playback &playback = *m_playbacks.at(u"trickle"_s);
    QVERIFY2(playback.waitUntilPlaying(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.code == 0, qPrintable(playback.story()));
}

void StreamsTest::playsToItsEnd_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : std::as_const(m_finite))
        QTest::newRow(qPrintable(name)) << name;
}

void StreamsTest::playsToItsEnd()
{
    QFETCH(QString, name);
    Playback &playback = *m_playbacks.at(name);
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.events == QStringList({u"playing"_s, u"end"_s}) && playback.frames > 0,
             qPrintable(playback.story()));
}

void StreamsTest::endlessStreamsFillNothing()
{
    for (const QString &name : {u"trickle"_s, u"slow"_s, u"silence"_s})
        m_playbacks.erase(name);
    Playback &playback = *m_playbacks.at(u"endless"_s);
    QTRY_VERIFY_WITH_TIMEOUT(playback.backend.position() > 5s, Patience);
    const qint64 before = m_web.bytesSent();
    const MediaTime then = playback.backend.position();
    QTRY_VERIFY_WITH_TIMEOUT(playback.backend.position() > then + 4s, Patience);
    const qint64 sent = m_web.bytesSent() - before;
    // 190,000 bytes a second, and what lies in the buffers of the system.
    QVERIFY2(sent < 8'000'000, qPrintable(u"%1 bytes"_s.arg(sent)));
    QVERIFY(!playback.isOver());
}

void StreamsTest::aPausedStreamKeepsQuiet()
{
    Playback &playback = *m_playbacks.at(u"endless"_s);
    QSignalSpy paused(&playback.backend, &MediaBackend::paused);
    playback.backend.pause();
    QVERIFY(paused.wait(Patience));
    const MediaTime place = playback.backend.position();
    // The buffers fill, and then nothing more is asked for.
    qint64 sent = -1;
    QTRY_VERIFY_WITH_TIMEOUT(std::exchange(sent, m_web.bytesSent()) == m_web.bytesSent(), Patience);
    QCOMPARE(playback.backend.position(), place);
    playback.backend.resume();
    QTRY_VERIFY_WITH_TIMEOUT(playback.backend.position() > place + 1s, Patience);
    QVERIFY(!playback.isOver());
}

// What was paused in a stream is not where it will be the next time.
void StreamsTest::streamsLeaveNoPlaceBehind()
{
    const auto second = uint(m_playbacks.at(u"endless"_s)->backend.position() / 1s);
    for (uint at = 0; at <= second; ++at)
        QCOMPARE(ExactPositions::shared().at(web(u"endless/long.ts"_s), at),
                 MediaTime(std::chrono::seconds(at)));
}

void StreamsTest::theServerHearsLittle()
{
    const QStringList requests = m_web.requests();
    QVERIFY(requests.size() > 20);
    for (const QString &request : requests)
        QVERIFY2(request.contains(u" agent=Kestrel range="_s), qPrintable(request));
    // A password goes into a header, never into the line of the request.
    QVERIFY(requests.filter(u"guest"_s).isEmpty());
}

void StreamsTest::aProxyOfTheEnvironmentIsAsked()
{
    qputenv("http_proxy", m_web.address(QString()).toUtf8());
    Playback playback(u"http://film.invalid/plain/clip.mp4"_s);
    const bool plays = playback.waitUntilPlaying(Patience);
    qunsetenv("http_proxy");
    QVERIFY2(plays, qPrintable(playback.story()));
    QVERIFY(!m_web.requests().filter(u"GET http://film.invalid/plain/clip.mp4 "_s).isEmpty());
}

void StreamsTest::passwordsAreInNoLine()
{
    Playback web(m_web.address(u"status=404/clip.mp4"_s, u"me:verysecret"_s));
    Playback rtsp(m_rtsp.guardedAddress(u"me:verysecret"_s));
    Playback hls(m_web.address(u"auth/nothing.m3u8"_s, u"me:verysecret"_s));
    for (Playback *playback : {&web, &rtsp, &hls}) {
        QVERIFY2(playback->waitUntilOver(Patience), qPrintable(playback->story()));
        QVERIFY2(!playback->message.contains(u"verysecret"_s), qPrintable(playback->message));
        QVERIFY(playback->code != 0);
    }
    QVERIFY(!allLines().filter(u"error"_s).isEmpty());
    for (const QString &line : std::as_const(allLines()))
        QVERIFY2(!line.contains(u"secret"_s) && !line.contains(u"p%3Ass"_s) && !line.contains(u"p:ss"_s),
                 qPrintable(line));
}

QTEST_MAIN(StreamsTest)
#include "media_streams.moc"
