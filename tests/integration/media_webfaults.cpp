// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mediaserver.h"
#include "support/playback.h"
#include "support/testclips.h"

#include <QProcess>
#include <QTcpServer>

#include <map>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 90000; // ms; a loaded machine

struct Fault
{
    const char *name;
    QString address;
    int code;
    int orCode = code;
};

} // namespace

// What can be wrong between here and a web server, and what the player says to it. All of it goes wrong side
// by side, since nearly all of the time is waiting.
class WebFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void faults_data();
    void faults();
    void nothingIsAskedAgainAndAgain();
    void theNextVideoPlays();

private:
    [[nodiscard]] QString web(const QString &path) const { return m_server.address(path); }
    void makeList();
    void prepare();

    QTemporaryDir m_folder;
    MediaServer m_server;
    MediaServer m_untrusted; // nobody vouches for it
    QList<Fault> m_faults;
    std::map<QByteArray, std::unique_ptr<Playback>> m_playbacks;
};

void WebFaultsTest::initTestCase()
{
    TestClips::Clip clip;
    clip.width = 160;
    clip.height = 120;
    clip.options = {u"-movflags"_s, u"faststart"_s};
    QCOMPARE(TestClips::make(m_folder.filePath(u"clip.mp4"_s), clip), QString());
    clip.options = {};
    QCOMPARE(TestClips::make(m_folder.filePath(u"clip.webm"_s), clip), QString());
    clip.seconds = 60;
    clip.options
        = {u"-movflags"_s, u"faststart"_s, u"-preset"_s,      u"ultrafast"_s,   u"-b:v"_s,     u"1500k"_s,
           u"-minrate"_s,  u"1500k"_s,     u"-x264-params"_s, u"nal-hrd=cbr"_s, u"-bufsize"_s, u"1500k"_s};
    QCOMPARE(TestClips::make(m_folder.filePath(u"long.mp4"_s), clip), QString());
    QFile page(m_folder.filePath(u"page.mp4"_s));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write("<!DOCTYPE html><html><head><title>Sign in</title></head><body>"
               + QByteArray("<p>Accept our terms.</p>").repeated(200) + "</body></html>");
    page.close();
    makeList();
    QVERIFY(m_server.startWeb(m_folder.path()));
    const QString certificate = m_folder.filePath(u"certificate.pem"_s);
    QCOMPARE(
        QProcess::execute(u"openssl"_s,
                          {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                           u"-subj"_s, u"/CN=127.0.0.1"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s,
                           u"-keyout"_s, certificate, u"-out"_s, certificate + u".part"_s}),
        0);
    QFile part(certificate + u".part"_s);
    QFile whole(certificate);
    QVERIFY(part.open(QIODevice::ReadOnly) && whole.open(QIODevice::Append));
    whole.write(part.readAll());
    whole.close();
    QVERIFY(m_untrusted.startWeb(m_folder.path(), certificate));
    prepare();
}

// Of addresses at which there is nothing.
void WebFaultsTest::makeList()
{
    QFile list(m_folder.filePath(u"parts.m3u8"_s));
    QVERIFY(list.open(QIODevice::WriteOnly));
    list.write("#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXT-X-PLAYLIST-TYPE:VOD\n"
               "#EXTINF:2,\nnothing0.ts\n#EXTINF:2,\nnothing1.ts\n#EXT-X-ENDLIST\n");
}

void WebFaultsTest::prepare()
{
    QTcpServer closed; // a port that nobody listens on
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QString refused = QString::number(closed.serverPort());
    closed.close();
    m_faults = {
        {"no such address", web(u"status=404/clip.mp4"_s), 300},
        {"no such file", web(u"plain/nothing.mp4"_s), 300},
        {"gone for good", web(u"status=410/clip.mp4"_s), 300},
        {"not without a name", web(u"status=401/clip.mp4"_s), 330},
        {"wrong password", m_server.address(u"auth/clip.mp4"_s, u"guest:wrong"_s), 330},
        {"forbidden", web(u"status=403/clip.mp4"_s), 330},
        {"broken server", web(u"status=500/clip.mp4"_s), 301},
        {"overloaded server", web(u"status=503/clip.mp4"_s), 301},
        {"bad request", web(u"status=400/clip.mp4"_s), 301},
        {"refused", u"http://127.0.0.1:%1/clip.mp4"_s.arg(refused), 301},
        {"no such host", u"http://video.invalid/clip.mp4"_s, 301},
        {"no host", u"http:///clip.mp4"_s, 302},
        {"a port that is none", u"http://127.0.0.1:99999/clip.mp4"_s, 302},
        {"a certificate that nobody vouches for", m_untrusted.address(u"plain/clip.mp4"_s), 301},
        {"never answers", web(u"mute/clip.mp4"_s), 301},
        {"circle of redirects", web(u"circle/clip.mp4"_s), 301},
        {"a web page", web(u"type=text_html/page.mp4"_s), 308},
        {"cut for good", web(u"rate=400000+cut=0.1/long.mp4"_s), 304},
        {"cut and no ranges", web(u"norange+cut=0.1/long.mp4"_s), 304},
        {"cut in the head", web(u"cut=0.0005/clip.mp4"_s), 301},
        {"stalls for ever", web(u"stall=0.1/long.mp4"_s), 304},
        {"stalls and no ranges", web(u"norange+stall=0.1/long.mp4"_s), 304},
        {"stalls in the head", web(u"stall=0.0005/clip.mp4"_s), 301},
        {"a list of parts that are not there", web(u"plain/parts.m3u8"_s), 300},
        // Whether a picture comes before the end of it is found is a race of two threads.
        {"shorter than it says", web(u"longer=500000/clip.webm"_s), 301, 304},
    };
    for (const Fault &fault : m_faults)
        m_playbacks[fault.name] = std::make_unique<Playback>(fault.address);
}

void WebFaultsTest::faults_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("orCode");
    for (const Fault &fault : std::as_const(m_faults))
        QTest::newRow(fault.name) << fault.code << fault.orCode;
}

void WebFaultsTest::faults()
{
    QFETCH(int, code);
    QFETCH(int, orCode);
    Playback &playback = *m_playbacks.at(QTest::currentDataTag());
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    qInfo("%s", qPrintable(playback.story()));
    QVERIFY2(playback.code == code || playback.code == orCode, qPrintable(playback.story()));
}

// A server that is down is not helped by those who hammer at it.
void WebFaultsTest::nothingIsAskedAgainAndAgain()
{
    QHash<QString, int> asked;
    for (const QString &request : m_server.requests())
        ++asked[request.section(u' ', 1, 1)];
    for (auto it = asked.cbegin(); it != asked.cend(); ++it)
        QVERIFY2(it.value() <= 25, qPrintable(u"%1: %2 times"_s.arg(it.key()).arg(it.value())));
}

void WebFaultsTest::theNextVideoPlays()
{
    Playback &playback = *m_playbacks.at("refused");
    playback.events.clear();
    playback.backend.play(web(u"plain/clip.mp4"_s), 0);
    QTRY_COMPARE_WITH_TIMEOUT(playback.events.join(u' '), u"playing end"_s, Patience);
}

QTEST_MAIN(WebFaultsTest)
#include "media_webfaults.moc"
