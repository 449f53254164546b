// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/filechapters.h>
#include <platform/media/gst/gstmediabackend.h>
#include <platform/media/trackchoice.h>

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <QtEndian>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine

void write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
}

const QByteArray English = "1\n00:00:01,000 --> 00:00:03,000\nHello <i>one</i>\n\n"
                           "2\n00:00:04,000 --> 00:00:06,000\nSecond line\n";

} // namespace

class MediaTracksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theTracksAreKnown();
    void theFirstSoundFollowsTheUser_data();
    void theFirstSoundFollowsTheUser();
    void anotherSoundIsHeardWithoutLosingThePlace();
    void aSoundThatWasChosenBeforeTheFirstFrame();
    void subtitlesOfTheVideo_data();
    void subtitlesOfTheVideo();
    void streamsThatBeginLateDoNotHoldUpTheVideo();
    void anotherSubtitleIsThereAtOnce();
    void subtitlesComeLater();
    void filesBesideTheVideo();
    void aFileThatIsNoSubtitleIsNotOffered();
    void aRemovedTrackIsNoTrack();
    void chaptersAreListed();
    void chaptersOfAnMp4AreListed();
    void damagedChaptersAreNone_data();
    void damagedChaptersAreNone();
    void playsASectionAgainAndAgain();
    void aSectionUpToTheEnd();
    void aSeekOutEndsTheLoop();
    void theNextVideoKnowsNothingOfIt();
    void choosesSubtitles_data();
    void choosesSubtitles();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_clips.filePath(name); }
    void playFrom(const QString &name, uint second);
    [[nodiscard]] QString soundId(const QString &language) const;
    [[nodiscard]] QString subtitleId(const QString &language) const;
    [[nodiscard]] QString read() const;
    void pauseAt(MediaTime place);

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    std::unique_ptr<GstMediaBackend> m_backend;
};

void MediaTracksTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    using namespace testclips;
    write(path(u"en.srt"_s), English);
    write(path(u"de.ass"_s),
          "[Script Info]\nScriptType: v4.00+\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize, Bold, Italic, "
          "Alignment\n"
          "Style: Default,Arial,20,0,0,2\n[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, "
          "MarginR, MarginV, "
          "Effect, Text\nDialogue: 0,0:00:01.00,0:00:03.00,Default,,0,0,0,,Hallo {\\i1}eins{\\i0}\n"
          "Dialogue: 0,0:00:04.00,0:00:06.00,Default,,0,0,0,,{\\an8}Zweite, Zeile\n");
    write(path(u"chapters.txt"_s),
          ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=4000\ntitle=Opening\n"
          "[CHAPTER]\nTIMEBASE=1/1000\nSTART=4000\nEND=8000\ntitle=The rest\n");
    const QStringList sounds{u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=440:duration=8"_s,
                             u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=frequency=880:duration=8"_s};
    const QStringList named{u"-metadata:s:a:0"_s,  u"language=eng"_s,
                            u"-metadata:s:a:1"_s,  u"language=ger"_s,
                            u"-metadata:s:a:1"_s,  u"title=Kommentar"_s,
                            u"-metadata:s:s:0"_s,  u"language=eng"_s,
                            u"-metadata:s:s:1"_s,  u"language=ger"_s,
                            u"-disposition:s:0"_s, u"0"_s,
                            u"-disposition:s:1"_s, u"0"_s};
    QVERIFY(run(numberedPicture(8, 160, 90) + sounds
                + QStringList{u"-i"_s,
                              path(u"en.srt"_s),
                              u"-i"_s,
                              path(u"de.ass"_s),
                              u"-i"_s,
                              path(u"chapters.txt"_s),
                              u"-map"_s,
                              u"0"_s,
                              u"-map"_s,
                              u"1"_s,
                              u"-map"_s,
                              u"2"_s,
                              u"-map"_s,
                              u"3"_s,
                              u"-map"_s,
                              u"4"_s,
                              u"-map_metadata"_s,
                              u"5"_s,
                              u"-c:a"_s,
                              u"aac"_s,
                              u"-c:s:0"_s,
                              u"srt"_s,
                              u"-c:s:1"_s,
                              u"ass"_s}
                + named + h264() + QStringList{path(u"film.mkv"_s)}));
    QVERIFY(run({u"-i"_s, path(u"film.mkv"_s), u"-map"_s, u"0:v"_s, u"-map"_s, u"0:a"_s, u"-map"_s, u"0:s"_s,
                 u"-c:v"_s, u"copy"_s, u"-c:a"_s, u"copy"_s, u"-c:s"_s, u"mov_text"_s, path(u"film.mp4"_s)}));
    QVERIFY(run({u"-i"_s, path(u"film.mkv"_s), u"-map"_s, u"0:v"_s, u"-map"_s, u"0:s"_s, u"-c:v"_s,
                 u"libvpx"_s, u"-deadline"_s, u"realtime"_s, u"-b:v"_s, u"1M"_s, u"-c:s"_s, u"webvtt"_s,
                 path(u"film.webm"_s)}));
    QVERIFY(run(numberedPicture(8, 160, 90) + h264() + QStringList{path(u"plain.mp4"_s)}));
    write(path(u"plain.srt"_s), English);
    write(path(u"plain.fr.srt"_s),
          "1\n00:00:01,000 --> 00:00:03,000\n\xc7"
          "a va\n"); // of Windows
    write(path(u"plain.page.srt"_s), "<html>Not found</html>");
}

void MediaTracksTest::init()
{
    QLocale::setDefault(QLocale(u"en_GB"_s));
    m_backend = std::make_unique<GstMediaBackend>();
}

void MediaTracksTest::cleanup()
{
    m_backend.reset();
}

void MediaTracksTest::playFrom(const QString &name, uint second)
{
    QSignalSpy begun(m_backend.get(), &MediaBackend::begun);
    m_backend->play(testclips::address(path(name)), second);
    QVERIFY(begun.wait(Patience));
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
}

QString MediaTracksTest::soundId(const QString &language) const
{
    const QList<MediaTrack> tracks = m_backend->audioTracks();
    for (const MediaTrack &track : tracks) {
        if (track.language == language)
            return track.id;
    }
    return {};
}

QString MediaTracksTest::subtitleId(const QString &language) const
{
    const QList<MediaTrack> tracks = m_backend->subtitleTracks();
    for (const MediaTrack &track : tracks) {
        if (track.language == language)
            return track.id;
    }
    return {};
}

QString MediaTracksTest::read() const
{
    QStringList words;
    const QList<SubtitleText> texts = m_backend->subtitles();
    for (const SubtitleText &text : texts)
        words.append((text.above ? u"^"_s : QString()) + text.words);
    return words.join(u'|');
}

void MediaTracksTest::pauseAt(MediaTime place)
{
    QSignalSpy paused(m_backend.get(), &MediaBackend::paused);
    m_backend->pause();
    QVERIFY(paused.wait(Patience));
    m_backend->seek(place, MediaBackend::SeekPrecision::Exact);
    QVERIFY(paused.wait(Patience));
}

void MediaTracksTest::theTracksAreKnown()
{
    QSignalSpy changed(m_backend.get(), &MediaBackend::tracksChanged);
    playFrom(u"film.mkv"_s, 0);
    QVERIFY(!changed.isEmpty());
    const QList<MediaTrack> sounds = m_backend->audioTracks();
    QCOMPARE(sounds.size(), 2);
    QCOMPARE(sounds.at(0).language, u"en"_s);
    QCOMPARE(sounds.at(1).language, u"de"_s);
    QCOMPARE(sounds.at(1).title, u"Kommentar"_s);
    QVERIFY(!sounds.at(0).codec.isEmpty());
    QCOMPARE(m_backend->audioTrack(), sounds.at(0).id);
    const QList<MediaTrack> subtitles = m_backend->subtitleTracks();
    QCOMPARE(subtitles.size(), 2);
    QCOMPARE(subtitles.at(1).language, u"de"_s);
    QVERIFY(!subtitles.at(1).external);
    QCOMPARE(m_backend->subtitleTrack(), QString());
    QStringList ids;
    for (const MediaTrack &track : sounds + subtitles)
        ids.append(track.id);
    // The same wherever the file lies, and whenever it is played.
    QVERIFY(QFile::copy(path(u"film.mkv"_s), path(u"copy.mkv"_s)));
    playFrom(u"copy.mkv"_s, 0);
    QTRY_COMPARE(m_backend->subtitleTracks().size(), 2);
    QStringList again;
    for (const MediaTrack &track : m_backend->audioTracks() + m_backend->subtitleTracks())
        again.append(track.id);
    QCOMPARE(again, ids);
}

void MediaTracksTest::theFirstSoundFollowsTheUser_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<uint>("second");
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << u"en_GB"_s << 0U << u"en"_s;
    QTest::newRow("German") << u"de_DE"_s << 0U << u"de"_s;
    QTest::newRow("German, from a place") << u"de_DE"_s << 3U << u"de"_s;
    QTest::newRow("neither") << u"fi_FI"_s << 0U << u"en"_s;
}

void MediaTracksTest::theFirstSoundFollowsTheUser()
{
    QFETCH(QString, locale);
    QFETCH(uint, second);
    QFETCH(QString, language);
    QLocale::setDefault(QLocale(locale));
    QList<int> numbers;
    connect(m_backend.get(), &MediaBackend::frameChanged, this,
            [&] { numbers.append(testclips::frameNumber(m_backend->frame().image)); });
    playFrom(u"film.mkv"_s, second);
    QTRY_COMPARE(m_backend->audioTrack(), soundId(language));
    QVERIFY(!m_backend->audioTrack().isEmpty());
    // In this clip the pictures lie 23 ms later, as the sound does.
    QCOMPARE(numbers.first(), second == 0 ? 0 : int(second) * testclips::FramesPerSecond - 1);
}

void MediaTracksTest::anotherSoundIsHeardWithoutLosingThePlace()
{
    playFrom(u"film.mkv"_s, 1);
    QTRY_VERIFY(m_backend->position() > 1500ms);
    const MediaTime before = m_backend->position();
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    QElapsedTimer clock;
    clock.start();
    m_backend->selectAudioTrack(soundId(u"de"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->audioTrack(), soundId(u"de"_s), Patience);
    if (sought.isEmpty())
        QVERIFY(sought.wait(Patience));
    const qint64 took = clock.elapsed();
    const MediaTime after = m_backend->position();
    QVERIFY2(after >= before - 40ms && after < before + 40ms + took * 1ms,
             qPrintable(u"%1 -> %2 in %3 ms"_s.arg(before / 1ms).arg(after / 1ms).arg(took)));
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
    QTRY_VERIFY(m_backend->position() > after + 500ms);
    m_backend->selectAudioTrack(u"no such track"_s);
    QTRY_VERIFY(m_backend->position() > after + 800ms);
    QCOMPARE(m_backend->audioTrack(), soundId(u"de"_s));
}

void MediaTracksTest::aSoundThatWasChosenBeforeTheFirstFrame()
{
    playFrom(u"film.mkv"_s, 0);
    const QString german = soundId(u"de"_s);
    m_backend->play(testclips::address(path(u"film.mkv"_s)), 2);
    m_backend->selectAudioTrack(german);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    QTRY_COMPARE(m_backend->audioTrack(), german);
    QVERIFY(m_backend->position() >= 2s);
}

void MediaTracksTest::subtitlesOfTheVideo_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("german");
    QTest::newRow("Matroska: SubRip and ASS") << u"film.mkv"_s << u"^Zweite, Zeile"_s;
    QTest::newRow("MP4: timed text") << u"film.mp4"_s << u"Zweite, Zeile"_s;
    QTest::newRow("WebM: WebVTT") << u"film.webm"_s << u"Zweite, Zeile"_s;
}

void MediaTracksTest::subtitlesOfTheVideo()
{
    QFETCH(QString, name);
    QFETCH(QString, german);
    QSignalSpy changed(m_backend.get(), &MediaBackend::subtitlesChanged);
    playFrom(name, 0);
    m_backend->setRate(4);
    QTRY_VERIFY(!subtitleId(u"en"_s).isEmpty());
    m_backend->selectSubtitleTrack(subtitleId(u"en"_s));
    QTRY_COMPARE_WITH_TIMEOUT(read(), u"Hello one"_s, Patience);
    QVERIFY(m_backend->position() >= 1s);
    QVERIFY(!changed.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(read(), QString(), Patience);
    QVERIFY(m_backend->position() >= 3s);
    m_backend->selectSubtitleTrack(subtitleId(u"de"_s));
    QTRY_COMPARE_WITH_TIMEOUT(read(), german, Patience);
    m_backend->selectSubtitleTrack(QString());
    QCOMPARE(read(), QString());
}

// The first words come after a second, by which time all that waits for them is full; it is by chance whether
// the decoders have seen them before.
void MediaTracksTest::streamsThatBeginLateDoNotHoldUpTheVideo()
{
    for (int i = 0; i < 20; ++i) {
        playFrom(u"film.mp4"_s, 0);
        if (QTest::currentTestFailed())
            return;
        m_backend = std::make_unique<GstMediaBackend>();
    }
}

void MediaTracksTest::anotherSubtitleIsThereAtOnce()
{
    playFrom(u"film.mkv"_s, 0);
    m_backend->selectSubtitleTrack(subtitleId(u"en"_s));
    QTRY_COMPARE_WITH_TIMEOUT(read(), u"Hello one"_s, Patience);
    pauseAt(2s);
    QCOMPARE(read(), u"Hello one"_s);
    m_backend->selectSubtitleTrack(subtitleId(u"de"_s));
    QCOMPARE(read(), u"Hallo eins"_s); // paused, in the middle of it
    QCOMPARE(m_backend->subtitles().first().spans.size(), 1);
    QCOMPARE(m_backend->position(), MediaTime(2s));
}

void MediaTracksTest::subtitlesComeLater()
{
    playFrom(u"plain.mp4"_s, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->subtitleTrack(), u"file:plain.srt"_s, Patience);
    pauseAt(2900ms);
    QTRY_COMPARE(read(), u"Hello one"_s);
    m_backend->setSubtitleDelay(-500ms);
    QCOMPARE(read(), QString());
    m_backend->setSubtitleDelay(2s);
    QCOMPARE(read(), QString());
    m_backend->setSubtitleDelay(1800ms);
    QCOMPARE(read(), u"Hello one"_s);
    QCOMPARE(m_backend->subtitleDelay(), MediaTime(1800ms));
}

void MediaTracksTest::filesBesideTheVideo()
{
    playFrom(u"plain.mp4"_s, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->subtitleTracks().size(), 2, Patience);
    QVERIFY(m_backend->subtitleTracks().first().external);
    QTRY_COMPARE(m_backend->subtitleTrack(), u"file:plain.srt"_s); // named as the video is
    m_backend->pause();
    m_backend->seek(2s, MediaBackend::SeekPrecision::Exact);
    m_backend->selectSubtitleTrack(subtitleId(u"fr"_s));
    QTRY_COMPARE_WITH_TIMEOUT(read(), u"Ça va"_s, Patience);
}

void MediaTracksTest::aFileThatIsNoSubtitleIsNotOffered()
{
    playFrom(u"plain.mp4"_s, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->subtitleTracks().size(), 2, Patience);
    const QList<MediaTrack> tracks = m_backend->subtitleTracks();
    for (const MediaTrack &track : tracks)
        QVERIFY(!track.id.contains(u"page"));
}

void MediaTracksTest::aRemovedTrackIsNoTrack()
{
    m_backend->play(testclips::address(path(u"plain.mp4"_s)), 0);
    m_backend->selectSubtitleTrack(u"file:plain.it.srt"_s); // chosen long ago, and deleted
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->subtitleTrack(), u"file:plain.srt"_s, Patience);
    m_backend->selectSubtitleTrack(u"file:plain.it.srt"_s);
    QCOMPARE(m_backend->subtitleTrack(), u"file:plain.srt"_s);
}

void MediaTracksTest::chaptersOfAnMp4AreListed()
{
    QVERIFY(testclips::run({u"-i"_s, path(u"film.mkv"_s), u"-map"_s, u"0:v"_s, u"-map"_s, u"0:a"_s, u"-c"_s,
                            u"copy"_s, path(u"film #1.mp4"_s)}));
    playFrom(u"film #1.mp4"_s, 0);
    QTRY_COMPARE(m_backend->chapters(),
                 QList<MediaChapter>({{0s, 4s, u"Opening"_s}, {4s, 0s, u"The rest"_s}}));
}

void MediaTracksTest::damagedChaptersAreNone_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<int>("chapters");
    const QByteArray start = QByteArray::fromHex("0000000000000000");
    const QByteArray head = QByteArray::fromHex("0100000000000000");
    QTest::newRow("one") << head + '\x01' + start
            + "\x01"
              "A" << 1;
    QTest::newRow("of the first version") << QByteArray::fromHex("00000000") + '\x01' + start
            + "\x01"
              "A" << 1;
    QTest::newRow("without a title") << head + '\x01' + start + '\0' << 1;
    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("no number") << head << 0;
    QTest::newRow("more than there are") << head + '\xff' + start
            + "\x01"
              "A" << 0;
    QTest::newRow("a title that is cut off") << head + '\x01' + start
            + "\x09"
              "A" << 0;
    QTest::newRow("a time that is none") << head + '\x01' + QByteArray(8, '\xff')
            + "\x01"
              "A" << 0;
}

void MediaTracksTest::damagedChaptersAreNone()
{
    QFETCH(QByteArray, list);
    QFETCH(int, chapters);
    const auto box = [](const QByteArray &type, const QByteArray &content) {
        QByteArray size(4, '\0');
        qToBigEndian(quint32(content.size() + 8), size.data());
        return size + type + content;
    };
    const QByteArray before = box("ftyp", "isom") + box("free", QByteArray(100, 'x'));
    const QByteArray file = before + box("moov", box("mvhd", "") + box("udta", box("chpl", list)));
    write(path(u"list.mp4"_s), file);
    const QString uri = QUrl::fromLocalFile(path(u"list.mp4"_s)).toString();
    QCOMPARE(fileChapters(uri).size(), chapters);
    // Cut off anywhere, and with boxes that say to be of any size.
    for (qsizetype length = 0; length < file.size(); ++length) {
        write(path(u"list.mp4"_s), file.first(length));
        QCOMPARE(fileChapters(uri).size(), 0);
    }
    for (const quint32 size : {0U, 1U, 7U, 8U, 0x7fffffffU, 0xffffffffU}) {
        QByteArray strange = file;
        qToBigEndian(size, strange.data() + before.size());
        write(path(u"list.mp4"_s), strange);
        QVERIFY(fileChapters(uri).size() <= chapters);
    }
}

void MediaTracksTest::chaptersAreListed()
{
    playFrom(u"film.mkv"_s, 0);
    QTRY_COMPARE(m_backend->chapters().size(), 2);
    const QList<MediaChapter> chapters = m_backend->chapters();
    QCOMPARE(chapters.at(0), (MediaChapter{0s, 4s, u"Opening"_s}));
    QCOMPARE(chapters.at(1), (MediaChapter{4s, 8s, u"The rest"_s}));
}

void MediaTracksTest::playsASectionAgainAndAgain()
{
    playFrom(u"plain.mp4"_s, 1);
    int returns = 0;
    MediaTime last{0};
    MediaTime latest{0};
    connect(m_backend.get(), &MediaBackend::frameChanged, this, [&] {
        const MediaTime time = m_backend->frame().time;
        latest = std::max(latest, time);
        returns += time < last ? 1 : 0;
        if (time < last)
            QCOMPARE(time, MediaTime(1s));
        last = time;
    });
    QSignalSpy changed(m_backend.get(), &MediaBackend::loopChanged);
    m_backend->setLoop(MediaSection{1s, 2s});
    QTRY_COMPARE(changed.size(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(returns, 2, Patience);
    QVERIFY2(latest < 2500ms, qPrintable(QString::number(latest / 1ms)));
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
    m_backend->setLoop({});
    QTRY_VERIFY_WITH_TIMEOUT(m_backend->position() > 2500ms, Patience);
}

void MediaTracksTest::aSectionUpToTheEnd()
{
    playFrom(u"plain.mp4"_s, 6);
    m_backend->setRate(2);
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    m_backend->setLoop(MediaSection{6s, 8s});
    QVERIFY(sought.wait(Patience));
    QVERIFY(m_backend->position() < 7s);
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
}

void MediaTracksTest::aSeekOutEndsTheLoop()
{
    playFrom(u"plain.mp4"_s, 1);
    m_backend->setLoop(MediaSection{1s, 3s});
    m_backend->seek(1500ms, MediaBackend::SeekPrecision::Exact);
    QVERIFY(m_backend->loop().has_value());
    m_backend->seek(5s, MediaBackend::SeekPrecision::Exact);
    QVERIFY(!m_backend->loop().has_value());
    m_backend->setLoop(MediaSection{5s, 5100ms}); // too short for anything
    QVERIFY(!m_backend->loop().has_value());
}

void MediaTracksTest::theNextVideoKnowsNothingOfIt()
{
    playFrom(u"film.mkv"_s, 1);
    m_backend->selectSubtitleTrack(subtitleId(u"en"_s));
    m_backend->setSubtitleDelay(1s);
    m_backend->setLoop(MediaSection{1s, 3s});
    QSignalSpy begun(m_backend.get(), &MediaBackend::begun);
    m_backend->play(testclips::address(path(u"film.webm"_s)), 0);
    QVERIFY(m_backend->chapters().isEmpty());
    QVERIFY(m_backend->audioTracks().isEmpty());
    QVERIFY(!m_backend->loop().has_value());
    QCOMPARE(m_backend->subtitleTrack(), QString());
    QCOMPARE(m_backend->subtitleDelay(), MediaTime(0));
    QVERIFY(begun.isEmpty());
    QTRY_COMPARE(begun.size(), 1);
}

void MediaTracksTest::choosesSubtitles_data()
{
    QTest::addColumn<QString>("sound");
    QTest::addColumn<QStringList>("user");
    QTest::addColumn<QStringList>("tracks"); // language and marks
    QTest::addColumn<int>("expected");
    const QStringList both{u"en"_s, u"de"_s};
    QTest::newRow("sound that is understood: none") << u"en"_s << QStringList{u"en"_s} << both << -1;
    QTest::newRow("foreign sound") << u"ja"_s << QStringList{u"de"_s} << both << 1;
    QTest::newRow("foreign sound, the better language")
        << u"ja"_s << QStringList{u"de"_s, u"en"_s} << both << 1;
    QTest::newRow("foreign sound, no known language, the file's default")
        << u"ja"_s << QStringList{u"fi"_s} << QStringList{u"en"_s, u"de default"_s} << 1;
    QTest::newRow("foreign sound, nothing") << u"ja"_s << QStringList{u"fi"_s} << both << -1;
    QTest::newRow("unknown sound: none") << QString() << QStringList{u"en"_s} << both << -1;
    QTest::newRow("forced ones belong to the sound")
        << u"en"_s << QStringList{u"en"_s, u"de"_s} << QStringList{u"de forced"_s, u"en forced"_s} << 1;
    QTest::newRow("forced ones are no translation")
        << u"ja"_s << QStringList{u"de"_s} << QStringList{u"de forced"_s, u"de"_s} << 1;
    QTest::newRow("a file of the same name")
        << u"en"_s << QStringList{u"en"_s} << QStringList{u"de"_s, u" bare"_s} << 1;
}

void MediaTracksTest::choosesSubtitles()
{
    QFETCH(QString, sound);
    QFETCH(QStringList, user);
    QFETCH(QStringList, tracks);
    QFETCH(int, expected);
    QList<trackchoice::Candidate> candidates;
    for (const QString &words : tracks) {
        trackchoice::Candidate candidate;
        candidate.track.id = QString::number(candidates.size());
        candidate.track.language = words.section(u' ', 0, 0);
        candidate.forced = words.contains(u"forced"_s);
        candidate.isDefault = words.contains(u"default"_s);
        candidate.bare = words.contains(u"bare"_s);
        candidates.append(candidate);
    }
    QCOMPARE(trackchoice::subtitle(candidates, sound, user),
             expected < 0 ? QString() : QString::number(expected));
}

QTEST_MAIN(MediaTracksTest)
#include "tst_mediatracks.moc"
