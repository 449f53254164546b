// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/mediaserver.h"
#include "support/playback.h"

#include <QSignalSpy>

#include <map>
#include <memory>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 60000; // ms; a loaded machine

} // namespace

// Films and cameras of an RTSP server that is real.
class RtspTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aFilmPlaysToItsEnd();
    void whoMayWatch_data();
    void whoMayWatch();
    void aCameraIsPausedAndGoesOn();
    void aServerThatGoes_data();
    void aServerThatGoes();

private:
    struct Broken
    {
        MediaServer server;
        QString how;
        std::unique_ptr<Playback> playback;
    };

    void breakServers();

    QTemporaryDir m_folder;
    MediaServer m_server;
    std::map<QString, Broken> m_broken;
};

void RtspTest::initTestCase()
{
    QCOMPARE(TestClips::make(m_folder.filePath(u"film.mkv"_s), streamclips::small(streamclips::h264(), 20)),
             QString());
    QCOMPARE(TestClips::make(m_folder.filePath(u"brief.mkv"_s), streamclips::small(streamclips::h264(), 3)),
             QString());
    QVERIFY(m_server.startRtsp(m_folder.filePath(u"film.mkv"_s)));
    breakServers();
}

void RtspTest::aFilmPlaysToItsEnd()
{
    MediaServer server;
    QVERIFY(server.startRtsp(m_folder.filePath(u"brief.mkv"_s)));
    Playback playback(server.address(u"film"_s));
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.events == QStringList({u"playing"_s, u"end"_s}) && playback.frames > 40,
             qPrintable(playback.story()));
}

void RtspTest::whoMayWatch_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("user");
    QTest::addColumn<int>("code");
    for (const QString &kind : {u"guarded"_s, u"digest"_s}) {
        const auto row = [&kind](const char *name, const QString &user, int code) {
            QTest::addRow("%s, %s", qPrintable(kind), name) << kind << user << code;
        };
        row("the guest", u"guest:secret"_s, 0);
        row("a wrong password", u"guest:wrong"_s, 330);
        row("a stranger", u"somebody:secret"_s, 330);
        row("nobody", QString(), 330);
    }
}

void RtspTest::whoMayWatch()
{
    QFETCH(QString, kind);
    QFETCH(QString, user);
    QFETCH(int, code);
    Playback playback(m_server.guardedAddress(user, kind));
    QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > 25 || playback.isOver(), qPrintable(playback.story()),
                              Patience);
    QVERIFY2(playback.code == code && playback.hasPlayed() == (code == 0), qPrintable(playback.story()));
}

void RtspTest::aCameraIsPausedAndGoesOn()
{
    Playback playback(m_server.address(u"live"_s));
    QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > 25, qPrintable(playback.story()), Patience);
    QVERIFY(!playback.backend.isSeekable());
    QSignalSpy paused(&playback.backend, &MediaBackend::paused);
    playback.backend.pause();
    QVERIFY(paused.wait(Patience));
    playback.backend.resume();
    const int then = playback.frames;
    QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > then + 25, qPrintable(playback.story()), Patience);
    QVERIFY2(!playback.isOver(), qPrintable(playback.story()));
}

// They stand and fall side by side: nearly all of it is waiting.
void RtspTest::breakServers()
{
    for (const QString &path : {u"live"_s, u"film"_s}) {
        for (const QString &how : {u"says so"_s, u"is killed"_s, u"hangs"_s}) {
            Broken &broken = m_broken[path + u", "_s + how];
            QVERIFY(broken.server.startRtsp(m_folder.filePath(u"film.mkv"_s)));
            broken.how = how;
            broken.playback = std::make_unique<Playback>(broken.server.address(path));
        }
    }
    for (auto &[name, broken] : m_broken) {
        Playback &playback = *broken.playback;
        QTRY_VERIFY2_WITH_TIMEOUT(playback.frames > 25, qPrintable(playback.story()), Patience);
        if (broken.how == u"says so"_s)
            QVERIFY(broken.server.command(u"drop"_s));
        else if (broken.how == u"is killed"_s)
            broken.server.stop();
        else
            broken.server.freeze();
    }
}

void RtspTest::aServerThatGoes_data()
{
    QTest::addColumn<QString>("name");
    for (const auto &[name, broken] : m_broken)
        QTest::newRow(qPrintable(name)) << name;
}

void RtspTest::aServerThatGoes()
{
    QFETCH(QString, name);
    Playback &playback = *m_broken.at(name).playback;
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.code == 304 && playback.hasPlayed(), qPrintable(playback.story()));
}

QTEST_MAIN(RtspTest)
#include "media_rtsp.moc"
