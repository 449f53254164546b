// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine

} // namespace

class GstMediaBackendTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void playsToTheEnd();
    void theFirstFrameShownIsTheOneAtTheStart_data();
    void theFirstFrameShownIsTheOneAtTheStart();
    void aStartBeyondTheEndBeginsAnew();
    void theStillIsTheShownFrame();
    void goesOnAtTheVeryFrame_data();
    void goesOnAtTheVeryFrame();
    void aSeekWhilePausedEndsInAnotherPause();
    void aSeekBeforeTheFirstFrameIsKept();
    void aPauseBeforeTheFirstFrameIsKept();
    void manySeeksEndAtTheNewest();
    void framesComeInTheSizeOfTheOutput();
    void framesFollowTheOutputWhilePlaying();
    void portraitByTag();
    void turnedOutput();
    void soundWithoutPicture();
    void anotherVideoInBetween();
    void stopsAtOnce();
    void faults_data();
    void faults();
    void aServerThatSaysNoSuchThing();
    void aStreamIsBufferedAndPlayed();

private:
    [[nodiscard]] QString clip(const QString &name) const
    {
        return testclips::address(m_clips.filePath(name));
    }
    void playUntilPlaying(const QString &uri, uint second);
    void pauseAndWait();

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    std::unique_ptr<GstMediaBackend> m_backend;
    QList<int> m_numbers; // of the frames shown
    QStringList m_events;
};

void GstMediaBackendTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    using namespace testclips;
    QVERIFY(run(numberedPicture(8) + tone(8) + h264() + QStringList{m_clips.filePath(u"clip.mp4"_s)}));
    QVERIFY(run(numberedPicture(8) + h264() + QStringList{m_clips.filePath(u"clip.mkv"_s)}));
    QVERIFY(run(numberedPicture(8)
                + QStringList{u"-c:v"_s, u"libvpx"_s, u"-deadline"_s, u"realtime"_s, u"-b:v"_s, u"1M"_s,
                              m_clips.filePath(u"clip.webm"_s)}));
    QVERIFY(run(numberedPicture(2) + h264() + QStringList{m_clips.filePath(u"short.mp4"_s)}));
    QVERIFY(run(numberedPicture(2, 180, 320) + h264() + QStringList{m_clips.filePath(u"upright.mp4"_s)}));
    QVERIFY(run(QStringList{u"-i"_s, m_clips.filePath(u"short.mp4"_s), u"-c"_s, u"copy"_s,
                            u"-metadata:s:v:0"_s, u"rotate=90"_s, m_clips.filePath(u"portrait.mp4"_s)}));
    QVERIFY(run(tone(2) + QStringList{m_clips.filePath(u"sound.ogg"_s)}));
}

void GstMediaBackendTest::init()
{
    m_numbers.clear();
    m_events.clear();
    m_backend = std::make_unique<GstMediaBackend>();
    connect(m_backend.get(), &MediaBackend::frameChanged, this, [this] {
        const int number = testclips::frameNumber(m_backend->frame().image);
        if (m_numbers.isEmpty() || m_numbers.last() != number)
            m_numbers.append(number);
    });
    connect(m_backend.get(), &MediaBackend::stateChanged, this, [this](AvloRenderer::State state) {
        static const QStringList names{u"stopped"_s, u"playing"_s, u"pausedState"_s, u"transitioning"_s};
        m_events.append(names.at(state));
    });
    connect(m_backend.get(), &MediaBackend::paused, this, [this] { m_events.append(u"paused"_s); });
    connect(m_backend.get(), &MediaBackend::stillWritten, this, [this] { m_events.append(u"still"_s); });
    connect(m_backend.get(), &MediaBackend::endReached, this, [this] { m_events.append(u"end"_s); });
    connect(m_backend.get(), &MediaBackend::failed, this,
            [this](const AvloError &error) { m_events.append(u"error%1"_s.arg(error.code)); });
}

void GstMediaBackendTest::cleanup()
{
    m_backend.reset();
}

void GstMediaBackendTest::playUntilPlaying(const QString &uri, uint second)
{
    m_backend->play(uri, second);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
}

void GstMediaBackendTest::pauseAndWait()
{
    QSignalSpy paused(m_backend.get(), &MediaBackend::paused);
    m_backend->pause();
    QVERIFY(paused.wait(Patience));
}

void GstMediaBackendTest::playsToTheEnd()
{
    QSize picture;
    connect(m_backend.get(), &MediaBackend::videoSizeChanged, this,
            [&](const QSize &size) { picture = size; });
    m_backend->play(clip(u"short.mp4"_s), 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"transitioning playing stopped end"_s, Patience);
    QCOMPARE(picture, QSize(320, 180));
    QCOMPARE(m_backend->duration(), MediaTime(2s));
    QCOMPARE(m_numbers.first(), 0);
    QVERIFY2(m_numbers.size() > 25, qPrintable(QString::number(m_numbers.size())));
}

void GstMediaBackendTest::theFirstFrameShownIsTheOneAtTheStart_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("mp4") << u"clip.mp4"_s;
    QTest::addRow("mkv") << u"clip.mkv"_s;
    QTest::addRow("webm") << u"clip.webm"_s;
}

// The user taps a video that was left at 0:05 and sees that place, with no flash of the beginning.
void GstMediaBackendTest::theFirstFrameShownIsTheOneAtTheStart()
{
    QFETCH(QString, name);
    playUntilPlaying(clip(name), 5);
    QTRY_VERIFY(m_numbers.size() > 5);
    QCOMPARE(m_numbers.first(), 5 * testclips::FramesPerSecond);
    QVERIFY(std::is_sorted(m_numbers.begin(), m_numbers.end()));
}

void GstMediaBackendTest::aStartBeyondTheEndBeginsAnew()
{
    playUntilPlaying(clip(u"short.mp4"_s), 100);
    QTRY_VERIFY(!m_numbers.isEmpty());
    QCOMPARE(m_numbers.first(), 0);
}

void GstMediaBackendTest::theStillIsTheShownFrame()
{
    QSignalSpy still(m_backend.get(), &MediaBackend::stillWritten);
    m_backend->setStillOnPause(true);
    playUntilPlaying(clip(u"clip.mp4"_s), 2);
    QTRY_VERIFY(m_numbers.size() > 7);
    pauseAndWait();
    QCOMPARE(m_events.join(u' '), u"transitioning playing pausedState still paused"_s);
    QCOMPARE(still.first().at(0).toString(), clip(u"clip.mp4"_s));
    const int shown = testclips::frameNumber(m_backend->frame().image);
    QCOMPARE(testclips::frameNumber(QImage(still.first().at(1).toString())), shown);
    QCOMPARE(m_backend->position() / 40ms, shown);
}

void GstMediaBackendTest::goesOnAtTheVeryFrame_data()
{
    theFirstFrameShownIsTheOneAtTheStart_data();
}

// Paused somewhere within a second, left, and played again later from that whole second; time and again.
void GstMediaBackendTest::goesOnAtTheVeryFrame()
{
    QFETCH(QString, name);
    playUntilPlaying(clip(name), 3);
    QTRY_VERIFY(m_numbers.size() > 10);
    pauseAndWait();
    const int left = testclips::frameNumber(m_backend->frame().image);
    const uint second = uint(m_backend->position() / 1s);
    for (int round = 0; round < 3; ++round) {
        m_backend = nullptr;
        init();
        m_backend->play(clip(name), second);
        m_backend->pause();
        QTRY_VERIFY_WITH_TIMEOUT(m_events.contains(u"paused"_s), Patience);
        QCOMPARE(m_numbers, QList<int>{left});
    }
}

void GstMediaBackendTest::aSeekWhilePausedEndsInAnotherPause()
{
    m_backend->setStillOnPause(true);
    playUntilPlaying(clip(u"clip.mp4"_s), 0);
    pauseAndWait();
    m_events.clear();
    QSignalSpy still(m_backend.get(), &MediaBackend::stillWritten);
    m_backend->seek(6s, MediaBackend::SeekPrecision::Exact);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"still paused"_s, Patience);
    QCOMPARE(testclips::frameNumber(m_backend->frame().image), 150);
    QCOMPARE(testclips::frameNumber(QImage(still.first().at(1).toString())), 150);
    QCOMPARE(m_backend->position(), MediaTime(6s));
    m_backend->resume();
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.last() > 152, Patience);
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
}

void GstMediaBackendTest::aSeekBeforeTheFirstFrameIsKept()
{
    m_backend->play(clip(u"clip.mp4"_s), 1);
    m_backend->seek(4s, MediaBackend::SeekPrecision::Exact);
    QCOMPARE(m_backend->heading(), MediaTime(4s));
    QTRY_VERIFY_WITH_TIMEOUT(!m_numbers.isEmpty(), Patience);
    QCOMPARE(m_numbers.first(), 100);
}

void GstMediaBackendTest::aPauseBeforeTheFirstFrameIsKept()
{
    m_backend->play(clip(u"clip.mp4"_s), 1);
    m_backend->pause();
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"transitioning pausedState paused"_s, Patience);
    QCOMPARE(m_numbers, QList<int>{25});
}

void GstMediaBackendTest::manySeeksEndAtTheNewest()
{
    playUntilPlaying(clip(u"clip.mp4"_s), 0);
    pauseAndWait();
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    for (int i = 0; i < 20; ++i)
        m_backend->seek(i * 200ms, MediaBackend::SeekPrecision::KeyFrame);
    m_backend->seek(7s, MediaBackend::SeekPrecision::Exact);
    QVERIFY(sought.wait(Patience));
    QTRY_COMPARE_WITH_TIMEOUT(testclips::frameNumber(m_backend->frame().image), 175, Patience);
    QCOMPARE(sought.count(), 1);
}

void GstMediaBackendTest::framesComeInTheSizeOfTheOutput()
{
    m_backend->setOutput(QSize(640, 640), false, 0);
    playUntilPlaying(clip(u"clip.mp4"_s), 0);
    QTRY_VERIFY(!m_backend->frame().isNull());
    QCOMPARE(m_backend->frame().image.size(), QSize(640, 360));
    QCOMPARE(m_backend->frame().image.format(), QImage::Format_RGB32);
}

void GstMediaBackendTest::framesFollowTheOutputWhilePlaying()
{
    m_backend->setOutput(QSize(160, 160), false, 0);
    playUntilPlaying(clip(u"clip.mp4"_s), 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->frame().image.size(), QSize(160, 90), Patience);
    m_backend->setOutput(QSize(480, 480), true, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->frame().image.height(), 480, Patience);
    QVERIFY(m_backend->frame().image.width() >= 852);
}

// A telephone held upright writes its pictures lying, with a tag that says so.
void GstMediaBackendTest::portraitByTag()
{
    QSize picture;
    connect(m_backend.get(), &MediaBackend::videoSizeChanged, this,
            [&](const QSize &size) { picture = size; });
    m_backend->setOutput(QSize(360, 640), false, 0);
    playUntilPlaying(clip(u"portrait.mp4"_s), 1);
    QTRY_VERIFY(!m_backend->frame().isNull());
    QCOMPARE(picture, QSize(180, 320));
    const QImage image = m_backend->frame().image;
    QCOMPARE(image.size(), QSize(360, 640));
    const int number = testclips::frameNumber(image.transformed(QTransform().rotate(90)));
    QVERIFY2(number >= 25 && number < 50, qPrintable(QString::number(number)));
}

void GstMediaBackendTest::turnedOutput()
{
    QSignalSpy still(m_backend.get(), &MediaBackend::stillWritten);
    m_backend->setStillOnPause(true);
    m_backend->setOutput(QSize(360, 640), false, 90);
    playUntilPlaying(clip(u"clip.mp4"_s), 1);
    pauseAndWait();
    const VideoFrame frame = m_backend->frame();
    QCOMPARE(frame.rotation, 90);
    QCOMPARE(frame.image.size(), QSize(360, 640));
    const int number = testclips::frameNumber(frame.image.transformed(QTransform().rotate(-90)));
    QVERIFY2(number >= 25 && number < 60, qPrintable(QString::number(number)));
    QCOMPARE(testclips::frameNumber(QImage(still.first().at(1).toString())), number);
}

void GstMediaBackendTest::soundWithoutPicture()
{
    QSize picture(1, 1);
    connect(m_backend.get(), &MediaBackend::videoSizeChanged, this,
            [&](const QSize &size) { picture = size; });
    m_backend->setStillOnPause(true);
    playUntilPlaying(clip(u"sound.ogg"_s), 0);
    QCOMPARE(picture, QSize());
    QTRY_VERIFY_WITH_TIMEOUT(m_backend->position() > 200ms, Patience);
    pauseAndWait();
    QVERIFY(!m_events.contains(u"still"_s));
    m_backend->resume();
    QTRY_VERIFY_WITH_TIMEOUT(m_events.contains(u"end"_s), Patience);
    QVERIFY(m_numbers.isEmpty());
}

void GstMediaBackendTest::anotherVideoInBetween()
{
    playUntilPlaying(clip(u"clip.mp4"_s), 6);
    m_events.clear();
    m_numbers.clear();
    m_backend->pause();
    m_backend->play(clip(u"clip.mkv"_s), 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"transitioning playing"_s, Patience);
    QTRY_VERIFY(!m_numbers.isEmpty());
    QCOMPARE(m_numbers.first(), 25);
}

void GstMediaBackendTest::stopsAtOnce()
{
    playUntilPlaying(clip(u"clip.mp4"_s), 2);
    QTRY_VERIFY(m_numbers.size() > 3);
    m_backend->stop();
    m_numbers.clear();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Stopped);
    QVERIFY(m_numbers.isEmpty());
    QVERIFY(m_backend->position() >= 2s);
}

void GstMediaBackendTest::faults_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QList<int>>("codes"); // any of them
    const auto write = [this](const QString &name, const QByteArray &contents) {
        QFile file(m_clips.filePath(name));
        const bool written = file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
        return written ? clip(name) : QString();
    };
    QFile whole(m_clips.filePath(u"clip.mp4"_s));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QTcpServer closed; // a port that nobody listens on
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QString port = QString::number(closed.serverPort());
    closed.close();

    QTest::newRow("missing") << clip(u"no such file.mp4"_s) << QList<int>{300};
    QTest::newRow("directory") << testclips::address(m_clips.path()) << QList<int>{300, 303};
    QTest::newRow("empty") << write(u"empty.mp4"_s, {}) << QList<int>{308, 315};
    QTest::newRow("text") << write(u"text.mp4"_s, QByteArray("Dear diary, ").repeated(500))
                          << QList<int>{308, 315};
    QTest::newRow("noise") << write(u"noise.mp4"_s, QByteArray::fromHex("0badcafe5eed").repeated(900))
                           << QList<int>{308, 315};
    QTest::newRow("truncated") << write(u"truncated.mp4"_s, whole.read(2000)) << QList<int>{308, 315};
    QTest::newRow("scheme") << u"gopher7://nowhere/film.mp4"_s << QList<int>{302};
    QTest::newRow("no address") << u"film.mp4"_s << QList<int>{302};
    QTest::newRow("nothing") << QString() << QList<int>{302};
    QTest::newRow("control characters") << u"file:///tmp/\x01\x02\"<>%#?.mp4"_s << QList<int>{300};
    QTest::newRow("very long") << QString(u"file:///"_s + QString(4096, u'x')) << QList<int>{300, 303};
    QTest::newRow("closed port") << QString(u"http://127.0.0.1:"_s + port + u"/film.mp4"_s)
                                 << QList<int>{301, 304};
    QTest::newRow("unknown host") << u"http://film.invalid/film.mp4"_s << QList<int>{301, 304};
    QTest::newRow("rtsp") << QString(u"rtsp://127.0.0.1:"_s + port + u"/film"_s) << QList<int>{301, 304};
}

void GstMediaBackendTest::faults()
{
    QFETCH(QString, uri);
    QFETCH(QList<int>, codes);
    QSignalSpy failed(m_backend.get(), &MediaBackend::failed);
    m_backend->play(uri, 3);
    QVERIFY(failed.wait(Patience));
    const auto error = failed.first().first().value<AvloError>();
    QVERIFY2(codes.contains(error.code), qPrintable(u"%1 %2"_s.arg(error.code).arg(error.message)));
    QTRY_COMPARE(m_events.last(), u"stopped"_s);
    // The next video plays as if nothing had been.
    playUntilPlaying(clip(u"short.mp4"_s), 0);
    QCOMPARE(failed.count(), 1);
}

void GstMediaBackendTest::aServerThatSaysNoSuchThing()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    connect(&server, &QTcpServer::newConnection, this, [&server] {
        QTcpSocket *socket = server.nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, socket, [socket] {
            socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            socket->disconnectFromHost();
        });
    });
    QSignalSpy failed(m_backend.get(), &MediaBackend::failed);
    m_backend->play(u"http://127.0.0.1:%1/film.mp4"_s.arg(server.serverPort()), 0);
    QVERIFY(failed.wait(Patience));
    QCOMPARE(failed.first().first().value<AvloError>().code, 300);
}

void GstMediaBackendTest::aStreamIsBufferedAndPlayed()
{
    QFile file(m_clips.filePath(u"clip.webm"_s));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray contents = file.readAll();
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    connect(&server, &QTcpServer::newConnection, this, [&server, contents] {
        QTcpSocket *socket = server.nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, socket, [socket, contents] {
            if (!socket->readAll().contains("\r\n\r\n"))
                return;
            socket->write("HTTP/1.1 200 OK\r\nContent-Type: video/webm\r\nContent-Length: "
                          + QByteArray::number(contents.size()) + "\r\nConnection: close\r\n\r\n" + contents);
            socket->disconnectFromHost();
        });
    });
    QList<float> percents;
    connect(m_backend.get(), &MediaBackend::bufferingChanged, this,
            [&](float percent) { percents.append(percent); });
    playUntilPlaying(u"http://127.0.0.1:%1/film.webm"_s.arg(server.serverPort()), 0);
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.size() > 10, Patience);
    QVERIFY(!percents.isEmpty());
    QCOMPARE(percents.last(), 100.0F);
}

QTEST_MAIN(GstMediaBackendTest)
#include "tst_gstmediabackend.moc"
