// SPDX-License-Identifier: GPL-3.0-or-later
#include "plaintext.h"
#include "provideranswer.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What a stranger may write into an answer, and what of it comes into the list.
class TestRelatedProviderAnswer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void everyFieldOfEveryType_data();
    void everyFieldOfEveryType();
    void addresses_data();
    void addresses();
    void durations_data();
    void durations();
    void titles_data();
    void titles();
    void aTitleOfAnyLengthIsCut();
    void ofThousandsTheFirstFifty();
    void oneThatComesTwiceIsShownOnce();
};

namespace {

const QUrl base(u"http://h/a/b"_s);

QByteArray list(const QByteArray &entries)
{
    return "{\"videos\":[" + entries + "]}";
}

// "title address picture seconds" of each, or "no answer".
QString read(const QByteArray &json)
{
    const auto videos = providerVideos(json, base);
    QStringList shown;
    for (const RelatedVideo &video : videos.value_or(QList<RelatedVideo>()))
        shown.append(u"%1 %2 %3 %4"_s.arg(video.title, video.url, video.picture).arg(video.duration));
    return videos ? shown.join(u'\n') : u"no answer"_s;
}

} // namespace

void TestRelatedProviderAnswer::answers_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");
    const QByteArray walk
        = list(R"({"title":"A walk","address":"walk.mp4","thumbnail":"walk.png","duration":125})");
    const QString whole = u"A walk http://h/a/walk.mp4 http://h/a/walk.png 125"_s;
    const auto row = [](const char *name, const QByteArray &json, const QString &expected) {
        QTest::newRow(name) << json << expected;
    };
    row("whole", walk, whole);
    row("least", list(R"({"title":"T","address":"https://x/y"})"), u"T https://x/y  0"_s);
    row("empty", list(""), QString());
    row("no title", list(R"({"address":"https://x/y"})"), QString());
    row("no address", list(R"({"title":"T"})"), QString());
    row("no entries", list("7,null,true,\"x\",[],[[]],{}"), QString());
    row("one good among bad", list("7,{},{\"title\":\"T\",\"address\":\"/y\"},null"), u"T http://h/y  0"_s);
    row("keys that nobody knows", R"({"version":9,"videos":[{"title":"T","address":"/y","x":{"y":[1]}}]})",
        u"T http://h/y  0"_s);
    row("a byte order mark", "\xEF\xBB\xBF" + walk, whole);
    row("nothing", QByteArray(), u"no answer"_s);
    row("an array", "[]", u"no answer"_s);
    row("no list", R"({"videos":5})", u"no answer"_s);
    row("another list", R"({"films":[]})", u"no answer"_s);
    row("cut off", walk.chopped(3), u"no answer"_s);
    row("two answers", walk + walk, u"no answer"_s);
    row("a page", "<html></html>", u"no answer"_s);
    row("deep", QByteArray(100'000, '['), u"no answer"_s);
    row("deep in a field",
        list(R"({"title":"T","address":"/y","x":)" + QByteArray(100'000, '[') + QByteArray(100'000, ']')
             + '}'),
        u"no answer"_s);
    row("no UTF-8", list("{\"title\":\"T\xff\xfe\",\"address\":\"/y\"}"), u"no answer"_s);
    row("UTF-16", QByteArray::fromHex("fffe7b0022007600"), u"no answer"_s);
    row("zeros", QByteArray(1000, '\0'), u"no answer"_s);
}

void TestRelatedProviderAnswer::answers()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, expected);
    QCOMPARE(read(json), expected);
}

void TestRelatedProviderAnswer::everyFieldOfEveryType_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QByteArray>("value");
    for (const QByteArray field : {"title", "address", "thumbnail", "duration"}) {
        for (const QByteArray value : {"null", "true", "5", "-1.5", "[]", "{}", "[\"x\"]", "\"\""})
            QTest::newRow(field + ' ' + value) << field << value;
    }
}

// Title and address have to be there; without one of the others it is the same video.
void TestRelatedProviderAnswer::everyFieldOfEveryType()
{
    QFETCH(QByteArray, field);
    QFETCH(QByteArray, value);
    QMap<QByteArray, QByteArray> fields{{"title", "\"T\""}, {"address", "\"/y\""}};
    fields.insert(field, value);
    QByteArrayList written;
    for (auto at = fields.cbegin(); at != fields.cend(); ++at)
        written.append('"' + at.key() + "\":" + at.value());
    const bool isNeeded = field == "title" || field == "address";
    const int seconds = field == "duration" && value == "5" ? 5 : 0;
    QCOMPARE(read(list('{' + written.join(',') + '}')),
             isNeeded ? QString() : u"T http://h/y  %1"_s.arg(seconds));
}

void TestRelatedProviderAnswer::addresses_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QString>("expected"); // empty: neither played nor fetched
    const auto row = [](const QByteArray &address, const QString &expected) {
        QTest::newRow(address.left(60)) << address << expected;
    };
    row("https://x/y", u"https://x/y"_s);
    row("HTTP://x/y", u"http://x/y"_s);
    row("//other/y", u"http://other/y"_s);
    row("/a b/ü.mp4", u"http://h/a%20b/%C3%BC.mp4"_s);
    row("../../../y", u"http://h/y"_s);
    row("?film=1", u"http://h/a/b?film=1"_s);
    for (const QByteArray bad : {"file:///etc/passwd",
                                 "FILE:///etc/passwd",
                                 " file:///etc/passwd",
                                 "file:y",
                                 "javascript:alert(1)",
                                 "JavaScript:alert(1)",

                                 "data:video/mp4;base64,AAAA",
                                 "ftp://x/y",
                                 "smb://x/y",
                                 "rtsp://x/y",
                                 "appsrc://",
                                 "qrc:/x",
                                 "about:blank",
                                 "http:///y",
                                 "http://",
                                 "https:",
                                 "http://[::1",
                                 "http://x:99999/y",
                                 "view-source:http://x/y",
                                 "urn:x"})
        row(bad, QString());
    row("http://x/" + QByteArray(5000, 'a'), QString());
}

void TestRelatedProviderAnswer::addresses()
{
    QFETCH(QByteArray, address);
    QFETCH(QString, expected);
    const QString title = u"T "_s;
    QCOMPARE(read(list("{\"title\":\"T\",\"address\":\"" + address + "\"}")),
             expected.isEmpty() ? QString() : title + expected + u"  0"_s);
    // A picture that is none is left out, and the video stays.
    QCOMPARE(read(list("{\"title\":\"T\",\"address\":\"/y\",\"thumbnail\":\"" + address + "\"}")),
             title + u"http://h/y "_s + expected + u" 0"_s);
}

void TestRelatedProviderAnswer::durations_data()
{
    QTest::addColumn<QByteArray>("duration");
    QTest::addColumn<QString>("expected");
    const auto row = [](const QByteArray &duration, const QString &expected) {
        QTest::newRow(duration) << duration << expected;
    };
    row("125", u"125"_s);
    row("125.9", u"125"_s);
    row("1.2e2", u"120"_s);
    row("0", u"0"_s);
    row("0.5", u"0"_s);
    row("-5", u"0"_s);
    row("359999", u"359999"_s);
    row("360000", u"0"_s); // more than a hundred hours is none
    row("2147483648", u"0"_s);
    row("1e300", u"0"_s);
    row("-1e300", u"0"_s);
    row("\"125\"", u"0"_s);
    row("\"NaN\"", u"0"_s);
}

void TestRelatedProviderAnswer::durations()
{
    QFETCH(QByteArray, duration);
    QFETCH(QString, expected);
    QCOMPARE(read(list(R"({"title":"T","address":"/y","duration":)" + duration + '}')),
             u"T http://h/y  "_s + expected);
}

void TestRelatedProviderAnswer::titles_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &title, const QString &expected) {
        QTest::newRow(name) << title << expected;
    };
    row("plain", u"A walk"_s, u"A walk"_s);
    row("line breaks", u"\n A\r\nwalk\tin\u2028the\u2029park\u00a0"_s, u"A walk in the park"_s);
    row("control characters", u"A\u0001\u007f\u0085 w\u001b[31malk"_s, u"A w[31malk"_s);
    row("zero", u"A"_s + QChar(0) + u"b"_s, u"Ab"_s);
    row("turned round", u"film\u202E4pm.exe"_s, u"film4pm.exe"_s);
    row("isolates without an end", u"\u2066\u2067\u2068a\u202Ab\u202B\u202D"_s, u"ab"_s);
    row("its own marks stay", u"می\u200cخواهم \u200f1"_s, u"می\u200cخواهم \u200f1"_s);
    row("one sign of several", u"👩\u200d🚀 🏳️\u200d🌈"_s, u"👩\u200d🚀 🏳️\u200d🌈"_s);
    row("markup is text", u"<b>A</b> &amp; %1"_s, u"<b>A</b> &amp; %1"_s);
    row("half a character", u"A"_s + QChar(0xd83d) + u"b"_s, u"A\ufffdb"_s);
    row("no character", u"A\uffffb"_s, u"Ab"_s);
    row("blank", u" \n\t "_s, QString());
    row("nothing to see", u"\u200b\u200d\u202e\ufeff \u2060"_s, QString());
    row("marks on nothing", u"\u0301\u0301"_s, QString());
    row("empty", QString(), QString());
}

void TestRelatedProviderAnswer::titles()
{
    QFETCH(QString, title);
    QFETCH(QString, expected);
    QCOMPARE(plainText(title, 500), expected);
}

void TestRelatedProviderAnswer::aTitleOfAnyLengthIsCut()
{
    const QString title = QString(10'000, u'W');
    const auto videos
        = providerVideos(list("{\"title\":\"" + title.toUtf8() + "\",\"address\":\"/y\"}"), base);
    QCOMPARE(videos->constFirst().title, title.left(500));
    // Never in the middle of a character.
    QCOMPARE(plainText(u"🚀🚀🚀"_s, 2), u"🚀🚀"_s);
    QCOMPARE(plainText(u"ab cd"_s, 3), u"ab"_s);
}

void TestRelatedProviderAnswer::ofThousandsTheFirstFifty()
{
    QByteArrayList entries;
    for (int number = 0; number < 5000; ++number) {
        entries.append("{}"); // does not count
        entries.append(
            QByteArray(R"({"title":"T%","address":"/%"})").replace('%', QByteArray::number(number)));
    }
    const auto videos = providerVideos(list(entries.join(',')), base);
    QCOMPARE(videos->size(), 50);
    QCOMPARE(videos->constLast().title, u"T49"_s);
}

void TestRelatedProviderAnswer::oneThatComesTwiceIsShownOnce()
{
    QCOMPARE(read(list(R"({"title":"A","address":"/x y"},{"title":"B","address":"http://h/x%20y"},)"
                       R"({"title":"C","address":"/z"})")),
             u"A http://h/x%20y  0\nC http://h/z  0"_s);
}

QTEST_GUILESS_MAIN(TestRelatedProviderAnswer)
#include "tst_relatedprovideranswer.moc"
