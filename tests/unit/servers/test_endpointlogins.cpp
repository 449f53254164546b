// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointtest.h"
#include "platform/servers/endpointlink.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QSslKey>
#include <QTest>

#include <sys/stat.h>

using namespace endpointtest;
using Request = WebServer::Request;

namespace {

bool openssl(const QString &folder, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(u"openssl"_s, arguments);
    return process.waitForFinished(60000) && process.exitCode() == 0;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestEndpointLogins : public EndpointTest
{
    Q_OBJECT

private Q_SLOTS:
    void logins_data();
    void logins();
    void manyRequestsLogInAtOnce();
    void aPasswordThatWasChanged();
    void passwordsStayOffTheNetwork();
    void tls();
    void certificatesThatAreSlowToRead();

private:
    [[nodiscard]] bool makeCertificate() const;
};

// certificate.pem and key.pem in the folder, for 127.0.0.1.
bool TestEndpointLogins::makeCertificate() const
{
    return openssl(m_folder->path(),
                   {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                    u"-subj"_s, u"/CN=Test"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s, u"-keyout"_s,
                    u"key.pem"_s, u"-out"_s, u"certificate.pem"_s});
}

void TestEndpointLogins::logins_data()
{
    QTest::addColumn<QByteArray>("challenge");
    QTest::addColumn<QString>("password"); // null: nobody stored one
    QTest::addColumn<QString>("outcome");
    const QByteArray basic = R"(Basic realm="r")";
    const QByteArray digest = R"(Digest realm="r", nonce="n", qop="auth", algorithm=MD5)";
    const QString wrong = u"did not take the user name and password"_s;
    QTest::newRow("basic") << basic << u"right"_s << u"urn:a"_s;
    QTest::newRow("basic, wrong") << basic << u"wrong"_s << wrong;
    QTest::newRow("digest") << digest << u"right"_s << u"urn:a"_s;
    QTest::newRow("digest, wrong") << digest << u"wrong"_s << wrong;
    QTest::newRow("nobody") << digest << QString() << u"no user name and password are stored for"_s;
}

void TestEndpointLogins::logins()
{
    QFETCH(QByteArray, challenge);
    QFETCH(QString, password);
    QFETCH(QString, outcome);
    if (!password.isNull())
        storeLogin(password);
    const auto md5 = [](const QByteArray &text) {
        return QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex();
    };
    const auto isLoggedIn = [&](const Request &request) {
        const QByteArray sent = request.header("authorization");
        if (sent.startsWith("Basic "))
            return QByteArray::fromBase64(sent.sliced(6)) == "anna:right";
        const auto field = [&](const QByteArray &name) {
            const QByteArray text = sent.sliced(sent.indexOf(' ' + name + '=') + name.size() + 2);
            return text.startsWith('"') ? text.sliced(1, text.indexOf('"', 1) - 1)
                                        : text.first(text.indexOf(','));
        };
        return sent.startsWith("Digest ")
            && field("response")
            == md5(md5("anna:r:right") + ":n:" + field("nc") + ':' + field("cnonce")
                   + ":auth:" + md5(request.method + ':' + request.target));
    };
    m_server->answer = [&](const Request &request) {
        if (isLoggedIn(request))
            WebServer::reply(request, "200 OK", one, json);
        else
            WebServer::reply(request, "401 Who", "who?", "WWW-Authenticate: " + challenge + "\r\n");
    };
    for (const SparqlQuery &statement : {anyRead, anyUpdate, anyRead}) {
        const QString text = this->outcome(exec(statement));
        const bool isUpdate = statement.type() == SparqlQuery::UpdateStatement;
        if (isUpdate && outcome == u"urn:a"_s)
            QCOMPARE(text, QString());
        else
            QVERIFY2(text.contains(outcome), qUtf8Printable(text));
        QVERIFY(!text.contains(u"right"_s) && !text.contains(u"wrong"_s + u'"'));
    }
}

void TestEndpointLogins::manyRequestsLogInAtOnce()
{
    storeLogin(u"right"_s);
    m_server->answer = [](const Request &request) {
        if (request.header("authorization") == "Basic " + QByteArray("anna:right").toBase64())
            WebServer::reply(request, "200 OK", one, json);
        else
            WebServer::reply(request, "401 Who", {}, "WWW-Authenticate: Basic realm=\"r\"\r\n");
    };
    QList<SparqlResult *> results;
    for (int i = 0; i < 12; ++i)
        results.append(exec(i % 4 == 3 ? anyUpdate : anyRead));
    for (int i = 0; i < 12; ++i)
        QCOMPARE(outcome(results[i]), i % 4 == 3 ? QString() : u"urn:a"_s);
}

// The server's password is changed while the program runs; the person stores the new one.
void TestEndpointLogins::aPasswordThatWasChanged()
{
    QByteArray password = "first";
    m_server->answer = [&](const Request &request) {
        if (request.header("authorization") == "Basic " + ("anna:" + password).toBase64())
            WebServer::reply(request, "200 OK", one, json);
        else
            WebServer::reply(request, "401 Who", {}, "WWW-Authenticate: Basic realm=\"r\"\r\n");
    };
    storeLogin(u"first"_s);
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    password = "second";
    QVERIFY(outcome(exec(anyRead)).contains(u"did not take"_s));
    storeLogin(u"second"_s);
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(outcome(exec(anyUpdate)), QString());
}

void TestEndpointLogins::passwordsStayOffTheNetwork()
{
    for (const QString &address : {u"https://archive.example/sparql"_s, u"http://localhost:8890/sparql"_s,
                                   u"http://127.0.0.1/sparql"_s, u"http://[::1]/sparql"_s})
        QVERIFY2(EndpointLink::mayLogIn(QUrl(address)), qUtf8Printable(address));
    for (const QString &address :
         {u"http://archive.example/sparql"_s, u"http://192.168.1.2/sparql"_s,
          u"http://127.0.0.1.example/sparql"_s, u"http://localhost.example/sparql"_s})
        QVERIFY2(!EndpointLink::mayLogIn(QUrl(address)), qUtf8Printable(address));
}

void TestEndpointLogins::tls()
{
    QVERIFY(makeCertificate());
    const QString certificate = m_folder->filePath(u"certificate.pem"_s);
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(QSslCertificate(contentOf(certificate)));
    tls.setPrivateKey(QSslKey(contentOf(m_folder->filePath(u"key.pem"_s)), QSsl::Rsa));
    tls.setCaCertificates(QSslCertificate::fromPath(certificate));
    tls.setPeerVerifyMode(QSslSocket::VerifyPeer); // of the client
    m_server = std::make_unique<WebServer>();
    QVERIFY(m_server->start(&tls));
    m_server->answer = [](const Request &request) { WebServer::reply(request, "200 OK", one, json); };

    m_settings.queryAddress = address(u"https"_s);
    connectTo(m_settings);
    QVERIFY(outcome(exec(anyRead)).contains(u"certificate"_s, Qt::CaseInsensitive)); // nobody trusts it
    QCOMPARE(m_server->requests.size(), 0);

    m_settings.certificateAuthority = certificate;
    connectTo(m_settings);
    QVERIFY(!outcome(exec(anyRead)).startsWith(u"urn:"_s)); // it wants to know who we are
    QCOMPARE(m_server->requests.size(), 0);

    m_settings.clientCertificate = certificate;
    m_settings.clientKey = m_folder->filePath(u"key.pem"_s);
    connectTo(m_settings);
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);

    m_settings.certificateAuthority = m_folder->filePath(u"nothing.pem"_s);
    connectTo(m_settings);
    QVERIFY(outcome(exec(anyRead)).contains(u"no certificate authority can be read"_s));

    m_settings.certificateAuthority = certificate;
    m_settings.queryAddress.setHost(u"localhost"_s); // it is not in the certificate
    connectTo(m_settings);
    QVERIFY(!outcome(exec(anyRead)).startsWith(u"urn:"_s));
    QCOMPARE(m_server->requests.size(), 1);
}

// They lie in a folder that somebody has on another machine: nothing waits for it but what needs it.
void TestEndpointLogins::certificatesThatAreSlowToRead()
{
    m_server->answer = [](const Request &request) { WebServer::reply(request, "200 OK", one, json); };
    const QString never = m_folder->filePath(u"never.pem"_s);
    const QString file = m_folder->filePath(u"slow.pem"_s);
    for (const QString &path : {never, file})
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    m_settings.certificateAuthority = never;
    m_settings.timeout = 1s;
    connectTo(m_settings);
    const QString error = outcome(exec(anyRead));
    QVERIFY2(error.contains(u"could not be read within 1 s"_s), qUtf8Printable(error));

    m_settings.certificateAuthority = file;
    m_settings.timeout = 60s;
    connectTo(m_settings);
    SparqlResult *update = exec(anyUpdate);
    QCOMPARE(m_server->requests.size(), 0);
    QVERIFY(makeCertificate());
    QFile pipe(file);
    QVERIFY(pipe.open(QIODevice::WriteOnly | QIODevice::Unbuffered)); // somebody reads there
    const QByteArray pem = contentOf(m_folder->filePath(u"certificate.pem"_s));
    QCOMPARE(pipe.write(pem), pem.size());
    pipe.close();
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(outcome(update), QString());
}

QTEST_GUILESS_MAIN(TestEndpointLogins)
#include "test_endpointlogins.moc"
