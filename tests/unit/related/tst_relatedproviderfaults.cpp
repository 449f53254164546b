// SPDX-License-Identifier: GPL-3.0-or-later
#include "localserver.h"
#include "provider.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using Answer = LocalServer::Answer;

Q_DECLARE_METATYPE(LocalServer::Answer)

namespace {

const QByteArray walk = R"({"videos":[{"title":"A walk","address":"walk.mp4"}]})";
constexpr int briefPatience = 300; // ms; for what would go on for ever

RelatedVideo film()
{
    RelatedVideo video;
    video.title = u"Film"_s;
    return video;
}

QByteArray head(const QByteArray &headers)
{
    return "HTTP/1.1 200 OK\r\nConnection: close\r\n" + headers + "\r\n";
}

// As a server packs it that was not asked to.
QByteArray packed(const QByteArray &body)
{
    return LocalServer::ok(qCompress(body, 9).mid(4), "Content-Encoding: deflate\r\n");
}

} // namespace

// A server that does what servers do when they fail, or mean ill: there is nothing from it, for a reason that
// stands in the log, soon; and it is asked about the next video as if nothing had been.
class TestRelatedProviderFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void answers_data();
    void answers();
    void redirects_data();
    void redirects();
    void nobodyListens();
    void hugeAnswersAreNotTakenWhole_data();
    void hugeAnswersAreNotTakenWhole();
    void aServerThatWantsToRestIsLeftAlone_data();
    void aServerThatWantsToRestIsLeftAlone();
    void encryptedItIsBelievedWhenItIsVouchedFor();
    void fromEncryptedToPlainIsNoWay();

private:
    // The reason why there is nothing.
    [[nodiscard]] QString fails(const QUrl &address);
    void asksAgain();

    QTemporaryDir m_folder;
    QSslConfiguration m_tls; // of a server
    std::unique_ptr<LocalServer> m_server;
    std::unique_ptr<Provider> m_provider;
};

void TestRelatedProviderFaults::initTestCase()
{
    QProcess openssl;
    openssl.setWorkingDirectory(m_folder.path());
    openssl.start(u"openssl"_s,
                  {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                   u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-keyout"_s, u"key"_s, u"-out"_s,
                   u"certificate"_s, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=Test"_s, u"-addext"_s,
                   u"subjectAltName=IP:127.0.0.1"_s});
    QVERIFY(openssl.waitForFinished() && openssl.exitCode() == 0);
    QFile key(m_folder.filePath(u"key"_s));
    QVERIFY(key.open(QIODevice::ReadOnly));
    m_tls = QSslConfiguration::defaultConfiguration();
    m_tls.setPrivateKey(QSslKey(&key, QSsl::Ec));
    m_tls.setLocalCertificateChain(QSslCertificate::fromPath(m_folder.filePath(u"certificate"_s)));
    QVERIFY(!m_tls.localCertificate().isNull());
}

void TestRelatedProviderFaults::init()
{
    m_server = std::make_unique<LocalServer>();
    m_server->answers.insert("/good", {LocalServer::ok(walk)});
    m_provider = std::make_unique<Provider>();
}

QString TestRelatedProviderFaults::fails(const QUrl &address)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^nothing from the provider: "_s));
    const QSignalSpy changed(m_provider.get(), &Provider::changed);
    QSignalSpy failed(m_provider.get(), &Provider::failed);
    m_provider->setAddress(address);
    m_provider->look(film());
    if (failed.isEmpty() && !failed.wait(20'000))
        return u"it did not fail"_s;
    if (!changed.isEmpty() || !m_provider->videos().isEmpty() || m_provider->isAsking()
        || !m_provider->hasFailed())
        return u"it failed, and something came of it"_s;
    return failed.constFirst().constFirst().toString();
}

void TestRelatedProviderFaults::asksAgain()
{
    m_provider->setPatience(10'000);
    m_provider->setAddress(m_server->url(u"/good"_s));
    m_provider->look(film());
    QTRY_COMPARE(m_provider->videos().size(), 1);
    QVERIFY(!m_provider->hasFailed());
}

void TestRelatedProviderFaults::answers_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<int>("patience");
    QTest::addColumn<QString>("reason"); // empty: one or another
    const auto row = [](const char *name, const Answer &answer, const QString &reason,
                        int patience = 10'000) { QTest::newRow(name) << answer << patience << reason; };
    const QString late = u"the answer does not come"_s;
    const QString cut = u"Connection closed"_s;
    const QString strange = u"the answer is not understood"_s;
    row("says nothing", {QByteArray(), Answer::End::StayOpen}, late, briefPatience);
    row("drips", {LocalServer::ok(walk), Answer::End::Close, 20}, late, briefPatience);
    row("stops half-way", {LocalServer::ok(walk).chopped(9), Answer::End::StayOpen}, late, briefPatience);
    row("headers without an end",
        {"HTTP/1.1 200 OK\r\n" + ("X-Header: " + QByteArray(1000, 'x') + "\r\n").repeated(1000),
         Answer::End::StayOpen},
        late, briefPatience);
    row("closes at once", {QByteArray()}, cut);
    row("resets at once", {QByteArray(), Answer::End::Reset}, cut);
    row("closes half-way", {LocalServer::ok(walk).chopped(9)}, cut);
    row("closes in the headers", {"HTTP/1.1 200 OK\r\nContent-Le"}, cut);
    row("closes in a chunk", {head("Transfer-Encoding: chunked\r\n") + "ff\r\n" + walk.chopped(9)},
        QString());
    row("closes half-way without a length", {head({}) + walk.chopped(9)}, strange);
    row("bad chunks", {head("Transfer-Encoding: chunked\r\n") + "zz\r\n" + walk + "\r\n0\r\n\r\n"}, strange);
    row("no HTTP", {"hello\r\n\r\n"}, cut);
    row("too large", {LocalServer::ok(QByteArray(2'000'000, ' ') + walk)}, u"the answer is too large"_s);
    row("packed", {packed(walk)}, strange);
    row("packed, and huge", {packed(QByteArray(20'000'000, ' ') + walk)}, strange);
    row("said to be packed", {LocalServer::ok(walk.chopped(1), "Content-Encoding: gzip\r\n")}, strange);
    row("nothing", {LocalServer::ok({})}, strange);
    row("a page", {LocalServer::ok("<html>Please log in</html>", "Content-Type: text/html\r\n")}, strange);
    for (const int code : {400, 401, 403, 404, 407, 410, 418, 429, 500, 502, 503, 599})
        row(QByteArray::number(code), {LocalServer::status(code)}, u"the server says %1"_s.arg(code));
    for (const int code : {201, 206, 300, 304, 999})
        row(QByteArray::number(code), {LocalServer::status(code)},
            code == 999 ? u"the server says 999"_s : strange);
    row("404 with a list", {"HTTP/1.1 404 No\r\nConnection: close\r\n\r\n" + walk}, u"the server says 404"_s);
}

void TestRelatedProviderFaults::answers()
{
    QFETCH(Answer, answer);
    QFETCH(int, patience);
    QFETCH(QString, reason);
    m_server->answers.insert("/related", answer);
    m_provider->setPatience(patience);
    const QString said = fails(m_server->url(u"/related"_s));
    QVERIFY2(!said.startsWith(u"it "_s), qPrintable(said));
    if (!reason.isEmpty())
        QCOMPARE(said, reason);
    asksAgain();
}

void TestRelatedProviderFaults::redirects_data()
{
    QTest::addColumn<QByteArray>("to");
    for (const QByteArray to :
         {"/related", "/four", "file:///etc/passwd", "file:related", "data:application/json,{}",
          "javascript:alert(1)", "ftp://127.0.0.1/", "qrc:/x", "http:///", "//", "http://127.0.0.1:1/", ""})
        QTest::newRow(to.isEmpty() ? "nowhere" : to.constData()) << to;
}

void TestRelatedProviderFaults::redirects()
{
    QFETCH(QByteArray, to);
    m_server->answers.insert("/related", {LocalServer::redirect(to)});
    m_server->answers.insert("/four", {LocalServer::redirect("/three")});
    m_server->answers.insert("/three", {LocalServer::redirect("/two")});
    m_server->answers.insert("/two", {LocalServer::redirect("/good")});
    const QString reason = fails(m_server->url(u"/related"_s));
    QVERIFY2(!reason.startsWith(u"it "_s), qPrintable(reason));
    // Each may go out twice, when its connection is just being closed.
    QVERIFY(m_server->requests.size() <= 2 * 4);
    asksAgain();
}

void TestRelatedProviderFaults::nobodyListens()
{
    const QUrl address = m_server->url(u"/related"_s);
    m_server->close();
    QCOMPARE(fails(address), u"Connection refused"_s);
    m_server = std::make_unique<LocalServer>();
    m_server->answers.insert("/good", {LocalServer::ok(walk)});
    asksAgain();
}

void TestRelatedProviderFaults::hugeAnswersAreNotTakenWhole_data()
{
    QTest::addColumn<QByteArray>("headers");
    QTest::addColumn<QByteArray>("piece");
    const QByteArray spaces(100'000, ' ');
    QTest::newRow("said to be") << QByteArray("Content-Length: 5000000000\r\n") << spaces;
    QTest::newRow("without a length") << QByteArray() << spaces;
    QTest::newRow("in chunks") << QByteArray("Transfer-Encoding: chunked\r\n")
                               << "186a0\r\n" + spaces + "\r\n";
}

void TestRelatedProviderFaults::hugeAnswersAreNotTakenWhole()
{
    QFETCH(QByteArray, headers);
    QFETCH(QByteArray, piece);
    m_server->answers.insert("/related", {head(headers), {}, 0, piece});
    QCOMPARE(fails(m_server->url(u"/related"_s)), u"the answer is too large"_s);
    QTRY_COMPARE(m_server->left, 1);
    // What the two ends of the connection keep comes on top.
    QVERIFY2(m_server->bytesSent < 30'000'000, qPrintable(QString::number(m_server->bytesSent)));
    asksAgain();
}

void TestRelatedProviderFaults::aServerThatWantsToRestIsLeftAlone_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<bool>("isLeftAlone");
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto date = [](const QDateTime &time) {
        return QLocale::c().toString(time, u"ddd, dd MMM yyyy HH:mm:ss 'GMT'"_s).toLatin1();
    };
    const auto row = [](const char *name, int status, const QByteArray &after, bool isLeftAlone) {
        QTest::newRow(name) << status << after << isLeftAlone;
    };
    row("seconds", 429, "120", true);
    row("seconds, overloaded", 503, "120", true);
    row("a date", 429, date(now.addSecs(120)), true);
    row("a date that is over", 429, date(now.addSecs(-120)), false);
    row("for ever", 429, "99999999999999999", true);
    row("too many digits", 429, "99999999999999999999999", false);
    row("now", 429, "0", false);
    row("negative", 429, "-5", false);
    row("nonsense", 429, "tomorrow", false);
    row("nothing", 429, "", false);
    row("not there", 404, "120", false);
}

void TestRelatedProviderFaults::aServerThatWantsToRestIsLeftAlone()
{
    QFETCH(int, status);
    QFETCH(QByteArray, after);
    QFETCH(bool, isLeftAlone);
    m_server->answers.insert("/related", {LocalServer::status(status, "Retry-After: " + after + "\r\n")});
    QCOMPARE(fails(m_server->url(u"/related"_s)), u"the server says %1"_s.arg(status));
    m_server->answers.insert("/related", {LocalServer::ok(walk)});
    m_provider->look(film());
    QCOMPARE(m_provider->isAsking(), !isLeftAlone);
    QCOMPARE(m_provider->hasFailed(), isLeftAlone); // so that it is asked later
    // Another server did not ask for it.
    asksAgain();
}

void TestRelatedProviderFaults::encryptedItIsBelievedWhenItIsVouchedFor()
{
    LocalServer encrypted(m_tls);
    encrypted.answers.insert("/related", {LocalServer::ok(walk)});
    m_server->answers.insert("/upwards", {LocalServer::redirect(encrypted.url(u"/related"_s).toEncoded())});
    const QString reason = fails(encrypted.url(u"/related"_s));
    QVERIFY2(reason.startsWith(u"SSL handshake failed"_s), qPrintable(reason));
    QCOMPARE(encrypted.requests.size(), 0);

    m_provider = std::make_unique<Provider>(); // which has no connection to it
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    trusting.addCaCertificate(m_tls.localCertificate());
    QSslConfiguration::setDefaultConfiguration(trusting);
    m_provider->setAddress(m_server->url(u"/upwards"_s));
    m_provider->look(film());
    QTRY_COMPARE(m_provider->videos().size(), 1);
    QCOMPARE(m_provider->videos().constFirst().url, encrypted.url(u"/walk.mp4"_s).toString());
    QVERIFY(encrypted.requests.constFirst().startsWith("GET /related HTTP/1.1\r\n"));
    QCOMPARE(encrypted.header(0, "user-agent"), QByteArray("Kestrel"));
    QSslConfiguration::setDefaultConfiguration(before);
}

void TestRelatedProviderFaults::fromEncryptedToPlainIsNoWay()
{
    LocalServer encrypted(m_tls);
    encrypted.answers.insert("/related", {LocalServer::redirect(m_server->url(u"/good"_s).toEncoded())});
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    QSslConfiguration trusting = before;
    trusting.addCaCertificate(m_tls.localCertificate());
    QSslConfiguration::setDefaultConfiguration(trusting);
    QCOMPARE(fails(encrypted.url(u"/related"_s)), u"Insecure redirect"_s);
    QSslConfiguration::setDefaultConfiguration(before);
    QCOMPARE(encrypted.requests.size(), 1);
    QCOMPARE(m_server->requests.size(), 0);
    asksAgain();
}

QTEST_GUILESS_MAIN(TestRelatedProviderFaults)
#include "tst_relatedproviderfaults.moc"
