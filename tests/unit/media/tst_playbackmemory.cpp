// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/media/nullmediabackend.h>
#include <platform/media/playbackmemory.h>

#include "support/driventimer.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

const QString First = u"file:///first.mkv"_s;
const QString Second = u"file:///second.mkv"_s;

NullMediaBackend::Media film()
{
    NullMediaBackend::Media media;
    media.sounds = {{u"a1"_s, u"en"_s, {}, {}, false}, {u"a2"_s, u"de"_s, {}, {}, false}};
    media.subtitles = {{u"s1"_s, u"en"_s, {}, {}, false}, {u"s2"_s, u"ar"_s, {}, {}, false}};
    return media;
}

} // namespace

class PlaybackMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void whatWasChosenIsThereNextTime();
    void aChoiceIsWrittenAtOnce();
    void aBrokenMemoryIsNone_data();
    void aBrokenMemoryIsNone();
    void theMemoryIsBounded();

private:
    QTemporaryDir m_home;
    NullMediaBackend m_backend;
};

void PlaybackMemoryTest::initTestCase()
{
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    m_backend.setMedia(First, film());
    m_backend.play(First, 0);
    QTRY_COMPARE(m_backend.state(), AvloRenderer::Playing);
}

void PlaybackMemoryTest::whatWasChosenIsThereNextTime()
{
    const QString file = m_home.filePath(u"choices/kept.json"_s);
    {
        PlaybackMemory memory(file);
        memory.setBackend(&m_backend);
        memory.chooseSubtitle(u"s2"_s);
        memory.chooseSound(u"a2"_s);
        memory.chooseRate(1.5);
        memory.chooseDelay(700ms);
        memory.chooseSubtitleScale(2);
        m_backend.setLoop(MediaSection{1s, 5s});
    } // the program ends
    QVERIFY(QFile::exists(file));
    m_backend.play(Second, 0);
    QTRY_COMPARE(m_backend.rate(), 1.0);
    PlaybackMemory memory(file);
    memory.setBackend(&m_backend);
    QTRY_COMPARE(m_backend.subtitleScale(), 2.0);
    m_backend.play(First, 0);
    QTRY_COMPARE(m_backend.subtitleTrack(), u"s2"_s);
    QCOMPARE(m_backend.audioTrack(), u"a2"_s);
    QCOMPARE(m_backend.rate(), 1.5);
    QCOMPARE(m_backend.subtitleDelay(), MediaTime(700ms));
    QVERIFY(!m_backend.loop().has_value());
    NullMediaBackend::Media other = film(); // the file was made anew, with fewer tracks
    other.subtitles.clear();
    m_backend.setMedia(First, other);
    m_backend.play(First, 0);
    QTRY_COMPARE(m_backend.rate(), 1.5);
    QCOMPARE(m_backend.subtitleTrack(), QString());
}

// A program that is killed right after it has lost nothing, and one whose user tries them all writes little.
void PlaybackMemoryTest::aChoiceIsWrittenAtOnce()
{
    const QString file = m_home.filePath(u"choices/at-once.json"_s);
    const auto written = [&file] { return PlaybackChoices(file).subtitleScale(); };
    PlaybackMemory memory(file);
    memory.setBackend(&m_backend);
    auto *interval = memory.findChild<QTimer *>();
    QVERIFY(interval);
    memory.chooseSubtitleScale(2);
    QTRY_COMPARE(written(), 2.0);
    memory.chooseSubtitleScale(1.5);
    memory.chooseSubtitleScale(1.25);
    QVERIFY(interval->isActive());
    QVERIFY(runOut(interval));
    QTRY_COMPARE(written(), 1.25);
    QVERIFY(interval->isActive());
    QVERIFY(runOut(interval)); // and nothing more is to be written
    QVERIFY(!interval->isActive());
    memory.chooseSubtitleScale(3);
    QTRY_COMPARE(written(), 3.0);
}

void PlaybackMemoryTest::aBrokenMemoryIsNone_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("{\"videos\": [");
    QTest::newRow("other kinds") << QByteArray(
        "{\"subtitleScale\": \"x\", \"videos\": [1, {\"uri\": 3}, {}]}");
    QTest::newRow("too large") << QByteArray(2 * 1024 * 1024, ' ') + "{\"subtitleScale\": 3}";
}

void PlaybackMemoryTest::aBrokenMemoryIsNone()
{
    QFETCH(QByteArray, text);
    const QString path = m_home.filePath(u"broken.json"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    const PlaybackChoices choices(path);
    QCOMPARE(choices.subtitleScale(), 1.0);
    QVERIFY(choices.of(QString()).isNothing());
}

void PlaybackMemoryTest::theMemoryIsBounded()
{
    const QString path = m_home.filePath(u"many.json"_s);
    PlaybackChoices choices;
    for (int i = 0; i < 1000; ++i)
        QVERIFY(choices.set(u"file:///%1"_s.arg(i), {QString::number(i), {}, 1, 0s}));
    QVERIFY(choices.of(u"file:///743"_s).isNothing());
    QVERIFY(!choices.of(u"file:///744"_s).isNothing());
    QVERIFY(choices.set(u"file:///999"_s, {})); // as the video is: nothing is kept
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(choices.serialized());
    file.close();
    QVERIFY(QFileInfo(path).size() < 64 * 1024);
    const PlaybackChoices read(path);
    QCOMPARE(read.of(u"file:///998"_s), choices.of(u"file:///998"_s));
    QVERIFY(read.of(u"file:///999"_s).isNothing());
}

QTEST_GUILESS_MAIN(PlaybackMemoryTest)
#include "tst_playbackmemory.moc"
