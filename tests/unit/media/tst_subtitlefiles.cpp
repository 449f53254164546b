// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/media/subtitles/cuestore.h>
#include <platform/media/subtitles/languages.h>
#include <platform/media/subtitles/subtitlecharset.h>
#include <platform/media/subtitles/subtitlefinder.h>
#include <platform/media/subtitles/subtitleparser.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <time.h>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;
using namespace subtitles;

namespace {

constexpr qint64 Patience = 5000; // ms of the processor, under a sanitizer

// What this thread has reckoned: how busy the machine is with other things does not count.
class WorkClock
{
public:
    void start() { m_start = now(); }
    [[nodiscard]] qint64 elapsed() const { return now() - m_start; } // ms

private:
    [[nodiscard]] static qint64 now()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
    }

    qint64 m_start = 0;
};

void write(const QString &path, const QByteArray &text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
}

// "1000-3000 Hello|4000-6000 ..." with / for a line's end and ^ for what stands above.
QString told(const QList<SubtitleCue> &cues)
{
    QStringList result;
    for (const SubtitleCue &cue : cues)
        result.append(
            u"%1-%2 %3%4"_s.arg(cue.start / 1ms)
                .arg(cue.end / 1ms)
                .arg(cue.text.above ? u"^"_s : QString(), QString(cue.text.words).replace(u'\n', u'/')));
    return result.join(u'|');
}

// The words with their looks: "<i>one</i>".
QString marked(const SubtitleText &text)
{
    QString result = text.words;
    for (auto span = text.spans.crbegin(); span != text.spans.crend(); ++span) {
        const QString looks = QString(span->bold ? u"b"_s : QString()) + (span->italic ? u"i"_s : QString())
            + (span->underlined ? u"u"_s : QString());
        result.insert(span->start + span->length, u"</%1>"_s.arg(looks));
        result.insert(span->start, u"<%1>"_s.arg(looks));
    }
    return result;
}

} // namespace

class SubtitleFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryKindOfFile_data();
    void readsEveryKindOfFile();
    void takesMarkupForLooks_data();
    void takesMarkupForLooks();
    void overridesOfScripts_data();
    void overridesOfScripts();
    void stylesOfScripts();
    void charsets_data();
    void charsets();
    void findsFilesByName();
    void knowsWhatTheNameSays_data();
    void knowsWhatTheNameSays();
    void followsNoLinkOut();
    void aPipeIsNoFile();
    void bombsAreBounded_data();
    void bombsAreBounded();
    void nonsenseIsNoSubtitle();
    void whatIsToBeReadAtATime();
    void aCueThatComesTwiceIsOne();
    void endlessCuesAreBounded();
    void languageNames_data();
    void languageNames();
};

void SubtitleFilesTest::readsEveryKindOfFile_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const QString both = u"1000-3000 Hello|4000-6500 two/lines"_s;
    QTest::newRow("SubRip")
        << u"1\n00:00:01,000 --> 00:00:03,000\nHello\n\n2\n00:00:04,000 --> 00:00:06,500\ntwo\nlines\n"_s
        << both;
    QTest::newRow("SubRip, lines end as in Windows, no blank ones")
        << u"1\r\n00:00:01,000 --> 00:00:03,000\r\nHello\r\n2\r\n00:00:04.000 --> 00:00:06.5\r\ntwo\r\nlines"_s
        << both;
    QTest::newRow("SubRip, a blank line within a cue")
        << u"1\n00:00:01,000 --> 00:00:03,000\nHello\n\n2\n00:00:04,000 --> 00:00:06,500\ntwo\n\nlines\n\n"_s
        << both;
    QTest::newRow("SubRip out of order")
        << u"2\n00:00:04,000 --> 00:00:06,500\ntwo\nlines\n\n1\n00:00:01,000 --> 00:00:03,000\nHello\n"_s
        << both;
    QTest::newRow("SubRip, a cue that ends before it starts")
        << u"1\n00:00:01,000 --> 00:00:03,000\nHello\n\n2\n00:00:09,000 --> 00:00:06,500\nnever\n"_s
        << u"1000-3000 Hello"_s;
    QTest::newRow("WebVTT")
        << u"WEBVTT - title\n\nNOTE no cue\nat all\n\nSTYLE\n::cue { color: red }\n\nid\n00:01.000 --> "
           "00:03.000 align:start\nHello\n\n00:00:04.000 --> 00:00:06.500 line:10%\ntwo\nlines\n"_s
        << u"1000-3000 Hello|4000-6500 ^two/lines"_s;
    QTest::newRow("ASS")
        << u"[Script Info]\nScriptType: v4.00+\n[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, "
           u"MarginR, "
           "MarginV, Effect, Text\nDialogue: 0,0:00:01.00,0:00:03.00,Default,,0,0,0,,Hello\nComment: "
           "0,0:00:01.00,0:00:03.00,Default,,0,0,0,,No\nDialogue: "
           "0,0:00:04.00,0:00:06.50,Default,,0,0,0,,two\\Nlines\n"_s
        << both;
    QTest::newRow("MicroDVD") << u"{1}{1}25\n{25}{75}Hello\n{100}{162}two|lines\n"_s
                              << u"1000-3000 Hello|4000-6480 two/lines"_s;
    QTest::newRow("MicroDVD, pictures a second from the video")
        << u"{10}{30}{y:i}Hello\n{40}{65}two|{c:$ff00ff}lines\n"_s
        << u"1000-3000 Hello|4000-6500 two/lines"_s;
    QTest::newRow("SubViewer")
        << u"[INFORMATION]\n[AUTHOR]\n00:00:01.00,00:00:03.00\nHello\n\n00:00:04.00,00:00:06.50\ntwo[br]lines\n"_s
        << both;
    QTest::newRow("MPL2") << u"[10][30]/Hello\n[40][65]two|lines\n"_s << both;
}

void SubtitleFilesTest::readsEveryKindOfFile()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(told(parseFile(text, 10)), expected);
}

void SubtitleFilesTest::takesMarkupForLooks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("italic") << u"a <i>b</i> c"_s << u"a <i>b</i> c"_s;
    QTest::newRow("nested") << u"<b>a <I>b</I></b>"_s << u"<b>a </b><bi>b</bi>"_s;
    QTest::newRow("never closed") << u"a <u>b"_s << u"a <u>b</u>"_s;
    QTest::newRow("closed twice") << u"a</i> b</i>"_s << u"a b"_s;
    QTest::newRow("other tags")
        << u"<font color=\"#ff0000\">a</font><c.yellow> b</c> <v Ann>c <00:00:01.000>d"_s << u"a b c d"_s;
    QTest::newRow("no tags") << u"5 < 6 > 4 & 3 <3"_s << u"5 < 6 > 4 & 3 <3"_s;
    QTest::newRow("references") << u"&lt;a&gt; &amp;&amp; &#65;&#x42; &nope; &#0; &#xffffffff;"_s
                                << u"<a> && AB &nope; &#0; &#xffffffff;"_s;
    QTest::newRow("blanks") << u"\n\n  a \n\n\n  b  \n\n"_s << u"a \nb"_s;
    QTest::newRow("braces of scripts") << u"{\\an8}{\\i1}a{\\i0} b {c}"_s << u"<i>a</i> b {c}"_s;
    QTest::newRow("a script of the browser") << u"<script>alert(1)</script>"_s << u"alert(1)"_s;
}

void SubtitleFilesTest::takesMarkupForLooks()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(marked(parseTagged(text)), expected);
}

void SubtitleFilesTest::overridesOfScripts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("above");
    QTest::newRow("looks") << u"{\\i1}a{\\i0}{\\b700\\u1}b{\\b0\\u0}c"_s << u"<i>a</i><bu>b</bu>c"_s << false;
    QTest::newRow("above") << u"{\\an8\\fad(100,200)}a\\Nb\\hc"_s << u"a\nb\u00a0c"_s << true;
    QTest::newRow("above, the old way") << u"{\\a6}a"_s << u"a"_s << true;
    QTest::newRow("below") << u"{\\an2}a"_s << u"a"_s << false;
    QTest::newRow("a drawing") << u"{\\p1}m 0 0 l 100 0{\\p0}a"_s << u"a"_s << false;
    QTest::newRow("a brace that never closes") << u"a{\\i1 b"_s << u"a{\\i1 b"_s << false;
    QTest::newRow("back to the style") << u"{\\i1}a{\\r}b"_s << u"<i>a</i>b"_s << false;
}

void SubtitleFilesTest::overridesOfScripts()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QFETCH(bool, above);
    const SubtitleText parsed = parseOverrides(text);
    QCOMPARE(marked(parsed), expected);
    QCOMPARE(parsed.above, above);
}

void SubtitleFilesTest::stylesOfScripts()
{
    const ScriptStyles styles(
        u"[V4+ Styles]\nFormat: Name, Bold, Italic, Underline, Alignment\n"
        "Style: Default,0,0,0,2\nStyle: Sign,-1,-1,0,8\n[Events]\nStyle: No,-1,0,0,2\n"_s);
    const SubtitleText sign = parseEvent(u"7,0,Sign,,0,0,0,,Exit, please"_s, styles);
    QCOMPARE(marked(sign), u"<bi>Exit, please</bi>"_s);
    QVERIFY(sign.above);
    QCOMPARE(marked(parseEvent(u"8,0,*Default,,0,0,0,,Exit"_s, styles)), u"Exit"_s);
    QCOMPARE(marked(parseEvent(u"9,0,No,,0,0,0,,Exit"_s, styles)), u"Exit"_s);
    QVERIFY(parseEvent(u"too,few,fields"_s, styles).isEmpty());
}

void SubtitleFilesTest::charsets_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("expected");
    QTest::newRow("UTF-8") << QByteArray("gr\xc3\xbc\xc3\x9f \xd0\xbc\xd0\xb8\xd1\x80") << u"ru"_s
                           << u"grüß мир"_s;
    QTest::newRow("UTF-8 with its mark") << QByteArray("\xef\xbb\xbf"
                                                       "a")
                                         << u"de"_s << u"a"_s;
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe"
                                          "a\0\xfc\0",
                                          6)
                            << u"de"_s << u"aü"_s;
    QTest::newRow("UTF-16 without a mark")
        << QByteArray("H\0e\0l\0l\0o\0 \0w\0o\0r\0l\0d\0", 22) << u"de"_s << u"Hello world"_s;
    QTest::newRow("western") << QByteArray("gr\xfc\xdf \x80") << u"de"_s << u"grüß €"_s;
    QTest::newRow("Cyrillic") << QByteArray("\xec\xe8\xf0") << u"ru"_s << u"мир"_s;
    QTest::newRow("Central European") << QByteArray("\xbf\xf3\xb3w") << u"pl"_s << u"żółw"_s;
    QTest::newRow("Arabic") << QByteArray("\xd3\xe1\xc7\xe3") << u"ar"_s << u"سلام"_s;
    QTest::newRow("Japanese") << QByteArray("\x93\xfa\x96{") << u"ja"_s << u"日本"_s;
    QTest::newRow("Chinese") << QByteArray("\xd6\xd0\xce\xc4") << u"zh-CN"_s << u"中文"_s;
    QTest::newRow("Chinese, the older letters") << QByteArray("\xa4\xa4\xa4\xe5") << u"zh-TW"_s << u"中文"_s;
    QTest::newRow("broken") << QByteArray("\x93") << u"ja"_s << u"?"_s;
}

void SubtitleFilesTest::charsets()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, language);
    QFETCH(QString, expected);
    QCOMPARE(decode(bytes, language), expected);
}

void SubtitleFilesTest::findsFilesByName()
{
    const QTemporaryDir folder;
    const auto at = [&](const QString &name) { return folder.filePath(name); };
    for (const QString &name : {u"film.mkv"_s, u"film.srt"_s, u"film.de.srt"_s, u"film.en-GB.forced.ASS"_s,
                                u"film 2.srt"_s, u"film2.srt"_s, u"other.srt"_s, u"film.nfo"_s,
                                u"Subs/film.fr.vtt"_s, u"subtitles/film/2_Spanish.srt"_s, u"deep/film.srt"_s})
        write(at(name), "text");
    write(at(u"film.empty.srt"_s), "");
    QStringList found;
    const QList<FoundFile> files = findFiles(at(u"film.mkv"_s));
    for (const FoundFile &file : files)
        found.append(file.track.id);
    QCOMPARE(found,
             (QStringList{u"file:film.srt"_s, u"file:Subs/film.fr.vtt"_s, u"file:film.de.srt"_s,
                          u"file:film.en-GB.forced.ASS"_s, u"file:subtitles/film/2_Spanish.srt"_s}));
    QVERIFY(files.first().bare);
    QVERIFY(files.at(3).forced);
    QVERIFY(files.at(3).track.external);
    QCOMPARE(files.at(4).track.language, u"es"_s);
    QCOMPARE(readFile(files.first()), QByteArray("text"));
    QVERIFY(findFiles(at(u"gone/film.mkv"_s)).isEmpty());
}

void SubtitleFilesTest::knowsWhatTheNameSays_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("forced");
    QTest::newRow("nothing") << u"f.srt"_s << QString() << QString() << false;
    QTest::newRow("two letters") << u"f.de.srt"_s << u"de"_s << QString() << false;
    QTest::newRow("three letters") << u"f.ger.srt"_s << u"de"_s << QString() << false;
    QTest::newRow("a country") << u"f.pt_br.srt"_s << u"pt-BR"_s << QString() << false;
    QTest::newRow("a name") << u"f.German.srt"_s << u"de"_s << QString() << false;
    QTest::newRow("forced") << u"f.en.forced.srt"_s << u"en"_s << QString() << true;
    QTest::newRow("for the deaf") << u"f.en.sdh.srt"_s << u"en"_s << u"SDH"_s << false;
    QTest::newRow("a title") << u"f.en.Director talks.srt"_s << u"en"_s << u"Director talks"_s << false;
}

void SubtitleFilesTest::knowsWhatTheNameSays()
{
    QFETCH(QString, name);
    QFETCH(QString, language);
    QFETCH(QString, title);
    QFETCH(bool, forced);
    const QTemporaryDir folder;
    write(folder.filePath(name), "text");
    const QList<FoundFile> files = findFiles(folder.filePath(u"f.mp4"_s));
    QCOMPARE(files.size(), 1);
    QCOMPARE(files.first().track.language, language);
    QCOMPARE(files.first().track.title, title);
    QCOMPARE(files.first().forced, forced);
}

void SubtitleFilesTest::followsNoLinkOut()
{
    const QTemporaryDir folder;
    const QTemporaryDir elsewhere;
    write(elsewhere.filePath(u"secret.srt"_s), "secret");
    write(folder.filePath(u"own/real.srt"_s), "text");
    QVERIFY(QFile::link(elsewhere.filePath(u"secret.srt"_s), folder.filePath(u"film.srt"_s)));
    QVERIFY(QFile::link(folder.filePath(u"own/real.srt"_s), folder.filePath(u"film.de.srt"_s)));
    QVERIFY(QFile::link(elsewhere.path(), folder.filePath(u"Subs"_s)));
    write(elsewhere.filePath(u"film.fr.srt"_s), "secret");
    const QList<FoundFile> files = findFiles(folder.filePath(u"film.mkv"_s));
    QCOMPARE(files.size(), 1);
    QCOMPARE(files.first().track.id, u"file:film.de.srt"_s);
}

void SubtitleFilesTest::aPipeIsNoFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"film.srt"_s);
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    QVERIFY(findFiles(folder.filePath(u"film.mkv"_s)).isEmpty());
    FoundFile replaced;
    replaced.path = path; // a file when it was looked for
    QVERIFY(readFile(replaced).isEmpty());
}

void SubtitleFilesTest::bombsAreBounded_data()
{
    QTest::addColumn<QString>("text");
    const QString cue = u"00:00:01,000 --> 99:00:00,000\n"_s;
    QString many;
    for (int i = 0; i < 200'000; ++i)
        many += u"%1\n"_s.arg(i) + cue + u"line\n\n"_s;
    QTest::newRow("cues without number") << many;
    QTest::newRow("one endless line") << cue + QString(12'000'000, u'x');
    QTest::newRow("only line ends") << cue + QString(12'000'000, u'\n') + u"x"_s;
    QTest::newRow("tags that never end") << cue + u"<i"_s.repeated(4'000'000);
    QTest::newRow("tags without words") << cue + u"<i>"_s.repeated(4'000'000);
    QTest::newRow("references") << cue + u"&amp"_s.repeated(3'000'000);
    QTest::newRow("a script of overrides")
        << u"[Script Info]\nDialogue: 0,0:00:01.00,0:00:03.00,,,0,0,0,,"_s + u"{\\i1}"_s.repeated(2'000'000);
    QTest::newRow("a script of styles") << u"[Script Info]\n[V4+ Styles]\nFormat: "_s
            + u"a,"_s.repeated(3'000'000) + u"\nStyle: "_s + u"a,"_s.repeated(3'000'000)
            + u"\n[Events]\nDialogue: 0,0:00:01.00,0:00:03.00,,,0,0,0,,x"_s;
    QTest::newRow("pictures") << u"{1}{2}"_s + u"{y:i}"_s.repeated(2'000'000);
    QTest::newRow("bars") << u"{1}{2}x"_s + u"|"_s.repeated(6'000'000);
}

void SubtitleFilesTest::bombsAreBounded()
{
    QFETCH(QString, text);
    WorkClock clock;
    clock.start();
    const QList<SubtitleCue> cues = parseFile(text, 25);
    QVERIFY2(clock.elapsed() < Patience, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(cues.size() <= MostCues);
    for (const SubtitleCue &cue : cues) {
        QVERIFY(cue.text.words.size() <= LongestText);
        QVERIFY(cue.text.words.count(u'\n') < MostLines);
        QVERIFY(cue.text.spans.size() <= MostSpans);
    }
    CueStore store;
    store.set(cues);
    clock.start();
    for (int frame = 0; frame < 1000; ++frame)
        QVERIFY(store.at(1s + frame * 40ms).size() <= MostAtOnce);
    QVERIFY2(clock.elapsed() < Patience, qPrintable(QString::number(clock.elapsed())));
}

void SubtitleFilesTest::nonsenseIsNoSubtitle()
{
    QVERIFY(parseFile(QString(), 25).isEmpty());
    QVERIFY(parseFile(u"<html><body>Not found</body></html>"_s, 25).isEmpty());
    QVERIFY(parseFile(QString::fromLatin1(QByteArray("\x00\x00\x01\xba\x44\x00", 6)), 25).isEmpty());
    QVERIFY(parseFile(u"-->\n-->\n00:00:01 --> x\n"_s, 25).isEmpty());
    QVERIFY(parseFile(u"99999999999999999999:00:00,000 --> 1,000\nx"_s, 25).isEmpty());
}

void SubtitleFilesTest::whatIsToBeReadAtATime()
{
    CueStore store;
    const auto cue = [](MediaTime start, MediaTime end, const QString &words) {
        return SubtitleCue{start, end, {words, {}, false}};
    };
    store.set({cue(5s, 6s, u"b"_s), cue(1s, 20s, u"long"_s), cue(5s, 7s, u"c"_s), cue(1s, 3s, u"a"_s)});
    const auto words = [&](MediaTime time) {
        QStringList result;
        const QList<SubtitleText> texts = store.at(time);
        for (const SubtitleText &text : texts)
            result.append(text.words);
        return result.join(u' ');
    };
    QCOMPARE(words(999ms), QString());
    QCOMPARE(words(1s), u"long a"_s);
    QCOMPARE(words(3s), u"long"_s);
    QCOMPARE(words(5500ms), u"long b c"_s);
    QCOMPARE(words(6s), u"long c"_s);
    QCOMPARE(words(20s), QString());
    store.add(cue(2s, 4s, u"late"_s));
    QCOMPARE(words(2500ms), u"long a late"_s);
    QCOMPARE(words(3500ms), u"long late"_s);
}

void SubtitleFilesTest::aCueThatComesTwiceIsOne()
{
    CueStore store;
    for (int i = 0; i < 3; ++i) {
        store.add({1s, 2s, {u"a"_s, {}, false}});
        store.add({1s, 2s, {u"b"_s, {}, false}});
    }
    store.add({2s, 2s, {u"no time"_s, {}, false}});
    store.add({2s, 3s, {}});
    QCOMPARE(store.count(), 2);
}

void SubtitleFilesTest::endlessCuesAreBounded()
{
    CueStore store;
    WorkClock clock;
    clock.start();
    for (int i = 0; i < 12'000; ++i)
        store.add({MediaTime(1s) * (i % 100), 1000h, {QString::number(i), {}, false}});
    QVERIFY(store.count() <= 8'000);
    QVERIFY2(clock.elapsed() < 4 * Patience, qPrintable(QString::number(clock.elapsed())));
    clock.start();
    for (int frame = 0; frame < 1000; ++frame)
        QCOMPARE(store.at(50s + frame * 40ms).size(), MostAtOnce);
    QVERIFY2(clock.elapsed() < Patience, qPrintable(QString::number(clock.elapsed())));
}

void SubtitleFilesTest::languageNames_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("expected"); // at the head of a line
    QTest::addColumn<QString>("expectedInText");
    const auto row
        = [](const char *name, const QString &locale, const QString &language, const QString &expected,
             const QString &inText) { QTest::newRow(name) << locale << language << expected << inText; };
    row("English", u"en_GB"_s, u"ger"_s, u"German"_s, u"German"_s);
    row("German", u"de_DE"_s, u"ger"_s, u"Deutsch"_s, u"Deutsch"_s);
    row("French", u"fr_FR"_s, u"de"_s, u"Allemand"_s, u"allemand"_s);
    row("Finnish", u"fi_FI"_s, u"de"_s, u"Saksa"_s, u"saksa"_s);
    row("Arabic", u"ar_EG"_s, u"en"_s, u"الإنجليزية"_s, u"الإنجليزية"_s);
    row("with a country", u"en_GB"_s, u"pt_br"_s, u"Portuguese (Brazil)"_s, u"Portuguese (Brazil)"_s);
    row("none", u"en_GB"_s, u"und"_s, QString(), QString());
    row("nonsense", u"en_GB"_s, u"q!"_s, QString(), QString());
}

void SubtitleFilesTest::languageNames()
{
    QFETCH(QString, locale);
    QFETCH(QString, language);
    QFETCH(QString, expected);
    QFETCH(QString, expectedInText);
    QLocale::setDefault(QLocale(locale));
    QCOMPARE(languages::displayName(language), expected);
    QCOMPARE(languages::nameInText(language), expectedInText);
    QLocale::setDefault(QLocale::c());
}

QTEST_GUILESS_MAIN(SubtitleFilesTest)
#include "tst_subtitlefiles.moc"
