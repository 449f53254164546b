// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/endpointdriver.h"
#include "platform/servers/endpointlink.h"
#include "platform/sparql/outstandingupdates.h"
#include "platform/sparql/sparqlresult.h"
#include "support/webserver.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using Request = WebServer::Request;

namespace {

const SparqlQuery anyRead(u"SELECT ?_v WHERE { ?_v a nmm:Video . }"_s);
const SparqlQuery
    anyUpdate(u"DELETE { <urn:a> nie:title ?_insert } WHERE { <urn:a> nie:title ?_insert .} INSERT { "
              "<urn:a> nie:title \"T\" }"_s,
              SparqlQuery::UpdateStatement);

QByteArray rows(const QList<QByteArray> &values)
{
    QByteArray bindings;
    for (const QByteArray &value : values)
        bindings += (bindings.isEmpty() ? "" : ",") + QByteArray(R"({"v":{"type":"uri","value":")") + value
            + "\"}}";
    return R"({"head":{"vars":["v"]},"results":{"bindings":[)" + bindings + "]}}";
}

const QByteArray one = rows({"urn:a"});
const QByteArray json = "Content-Type: application/sparql-results+json\r\n";

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = ~0U;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

QByteArray gzipped(const QByteArray &bytes)
{
    const auto word = [](quint32 value) {
        QByteArray text;
        for (unsigned shift = 0; shift < 32; shift += 8)
            text.append(char(value >> shift));
        return text;
    };
    const QByteArray deflated = qCompress(bytes).sliced(6).chopped(4);
    return QByteArray("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03", 10) + deflated + word(crc32(bytes))
        + word(quint32(bytes.size()));
}

ServerPatience impatient()
{
    ServerPatience patience;
    patience.mostAttempts = 3;
    patience.firstRetry = 1ms;
    patience.firstProbe = 1h;
    return patience;
}

QString formValue(const Request &request, const QString &name)
{
    QString form = QString::fromLatin1(request.body);
    return QUrlQuery(form).queryItemValue(name, QUrl::FullyDecoded);
}

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

class TestEndpointDriver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void queriesAndUpdatesAreForms();
    void answersInPieces();
    void gzip();
    void failures_data();
    void failures();
    void aBusyServerIsAskedAgain();
    void aServerThatGoesAwayIsAskedAgain_data();
    void aServerThatGoesAwayIsAskedAgain();
    void anUpdateGoesOutOnce();
    void anUpdateWaitsForAServerThatIsNotThere();
    void silence();
    void slowButNotSilent();
    void redirects_data();
    void redirects();
    void logins_data();
    void logins();
    void manyRequestsLogInAtOnce();
    void aPasswordThatWasChanged();
    void passwordsStayOffTheNetwork();
    void nobodyWantsTheAnswer();
    void anAnswerThatIsCutOffIsPaged();
    void aCutThatCannotBePagedIsAnError();
    void aServerThatTakesTooLongIsAskedForParts();
    void aServerThatReadsAddressesOnly();
    void tls();
    void aLargeAnswerDoesNotBlock();
    void theConnectionGoesWithItsAnswer();

private:
    [[nodiscard]] SparqlResult *exec(const SparqlQuery &query)
    {
        return m_driver->exec(query, m_owner.get());
    }
    // The error, or the first column.
    [[nodiscard]] QString outcome(SparqlResult *result);
    void connectTo(const ServerSettings &settings);
    [[nodiscard]] QUrl address(const QString &scheme = u"http"_s) const;
    void storeLogin(const QString &password);

    std::unique_ptr<WebServer> m_server;
    std::unique_ptr<QTemporaryDir> m_folder;
    ServerSettings m_settings;
    std::unique_ptr<EndpointDriver> m_driver;
    std::unique_ptr<QObject> m_owner;
};

void TestEndpointDriver::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<WebServer>();
    QVERIFY(m_server->start());
    m_owner = std::make_unique<QObject>();
    m_settings = {};
    m_settings.queryAddress = address();
    connectTo(m_settings);
}

void TestEndpointDriver::cleanup()
{
    m_owner.reset();
    m_driver.reset();
    m_server.reset();
    QCOMPARE(OutstandingUpdates::instance().count(), 0);
}

QUrl TestEndpointDriver::address(const QString &scheme) const
{
    return QUrl(u"%1://127.0.0.1:%2/sparql"_s.arg(scheme).arg(m_server->serverPort()));
}

void TestEndpointDriver::connectTo(const ServerSettings &settings)
{
    m_driver = std::make_unique<EndpointDriver>(
        settings, impatient(),
        std::make_unique<Credentials>(QDBusConnection(u"nobody"_s), m_folder->filePath(u"credentials"_s)));
}

void TestEndpointDriver::storeLogin(const QString &password)
{
    QFile file(m_folder->filePath(u"credentials"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        u"[127.0.0.1:%1]\nuser = anna\npassword = %2\n"_s.arg(m_server->serverPort()).arg(password).toUtf8());
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
}

QString TestEndpointDriver::outcome(SparqlResult *result)
{
    if (!QTest::qWaitFor([&] { return result->isFinished(); }, 60000))
        return u"never finished"_s;
    if (result->hasError())
        return result->errorMessage();
    QStringList values;
    while (result->next())
        values.append(result->stringValue(0));
    return values.join(u' ');
}

void TestEndpointDriver::queriesAndUpdatesAreForms()
{
    m_settings.updateAddress = address().resolved(QUrl(u"/update"_s));
    connectTo(m_settings);
    m_server->answer = [](const Request &request) { WebServer::reply(request, "200 OK", one, json); };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(outcome(exec(anyUpdate)), QString());
    QCOMPARE(m_server->requests.size(), 2);
    const Request &query = m_server->requests[0];
    QCOMPARE(query.method + ' ' + query.target, "POST /sparql");
    QCOMPARE(query.header("accept"), "application/sparql-results+json");
    QCOMPARE(query.header("content-type"), "application/x-www-form-urlencoded");
    QVERIFY(formValue(query, u"query"_s).contains(u"nmm:Video"_s));
    const Request &update = m_server->requests[1];
    QCOMPARE(update.method + ' ' + update.target, "POST /update");
    QVERIFY(formValue(update, u"update"_s).contains(u"\"T\""_s));
}

void TestEndpointDriver::answersInPieces()
{
    m_server->answer = [](const Request &request) {
        request.socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/sparql-results+json\r\n"
                              "Transfer-Encoding: chunked\r\n\r\n");
        for (const char c : one) {
            request.socket->write(QByteArray("1\r\n") + c + "\r\n");
            request.socket->flush();
        }
        request.socket->write("0\r\n\r\n");
    };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
}

void TestEndpointDriver::gzip()
{
    // 40 MB of one row, which is 1,000 times what is sent.
    QList<QByteArray> many(400000, "urn:the-same-long-name");
    const QByteArray packed = gzipped(rows(many));
    m_server->answer = [&](const Request &request) {
        WebServer::reply(request, "200 OK", packed, json + "Content-Encoding: gzip\r\n");
    };
    SparqlResult *result = exec(anyRead);
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), 60000);
    QCOMPARE(result->errorMessage(), QString());
    QCOMPARE(result->size(), 400000);
    QVERIFY(m_server->requests[0].header("accept-encoding").contains("gzip"));
}

void TestEndpointDriver::failures_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("error");
    QTest::newRow("syntax") << QByteArray("400 Bad Request") << QByteArray("text/plain")
                            << QByteArray("Virtuoso 37000 Error\r\n\x1b[31mline 2\x07\t ")
            + QByteArray(5000, 'x')
                            << u"the server answers 400: Virtuoso 37000 Error [31mline 2 x"_s;
    QTest::newRow("page") << QByteArray("500 Oh no") << QByteArray("text/html") << QByteArray("<html>")
                          << u"the server answers 500: Oh no"_s;
    QTest::newRow("not found") << QByteArray("404 Not Found") << QByteArray("text/plain") << QByteArray()
                               << u"the server answers 404: Not Found"_s;
    QTest::newRow("garbage") << QByteArray("200 OK") << QByteArray("text/html") << QByteArray("<html>")
                             << u"the answer is broken at byte 1: a character out of place"_s;
    QTest::newRow("other JSON") << QByteArray("200 OK") << QByteArray("application/json") << QByteArray("{}")
                                << u"the answer names no columns"_s;
}

void TestEndpointDriver::failures()
{
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, body);
    QFETCH(QString, error);
    m_server->answer = [&](const Request &request) {
        WebServer::reply(request, status, body, "Content-Type: " + type + "\r\n");
    };
    const QString text = outcome(exec(anyRead));
    QVERIFY2(text.startsWith(error), qUtf8Printable(text));
    QVERIFY(text.size() < 400);
    QCOMPARE(m_server->requests.size(), 1);
}

void TestEndpointDriver::aBusyServerIsAskedAgain()
{
    m_server->answer = [this](const Request &request) {
        if (m_server->requests.size() < 3)
            WebServer::reply(request, "503 Busy", "later", "Retry-After: 0\r\n");
        else
            WebServer::reply(request, "200 OK", one, json);
    };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(m_server->requests.size(), 3);
}

void TestEndpointDriver::aServerThatGoesAwayIsAskedAgain_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::newRow("at once") << QByteArray();
    QTest::newRow("in the head") << QByteArray("HTTP/1.1 200 O");
    QTest::newRow("in the body") << "HTTP/1.1 200 OK\r\nContent-Length: 500\r\n" + json + "\r\n"
            + one.first(30);
    QTest::newRow("in a body without its length")
        << "HTTP/1.1 200 OK\r\nConnection: close\r\n" + json + "\r\n" + one.first(30);
    QTest::newRow("in a chunk") << "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n" + json + "\r\n40\r\n"
            + one.first(30);
}

void TestEndpointDriver::aServerThatGoesAwayIsAskedAgain()
{
    QFETCH(QByteArray, beginning);
    bool isUp = false;
    m_server->answer = [&](const Request &request) {
        if (isUp) {
            WebServer::reply(request, "200 OK", one, json);
            return;
        }
        request.socket->write(beginning);
        request.socket->disconnectFromHost();
    };
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    QVERIFY(!outcome(exec(anyRead)).startsWith(u"urn:"_s));
    QCOMPARE(reachable.size(), 1);
    QVERIFY(m_server->requests.size() >= 3);
    isUp = true;
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(reachable.size(), 2);
}

// The server did it and went away before it could say so: doing it twice would be wrong.
void TestEndpointDriver::anUpdateGoesOutOnce()
{
    m_server->answer = [](const Request &request) { request.socket->disconnectFromHost(); };
    const QString error = outcome(exec(anyUpdate));
    QVERIFY2(error.startsWith(u"whether the update was done is not known"_s), qUtf8Printable(error));
    int updates = 0;
    for (const Request &request : std::as_const(m_server->requests))
        updates += request.body.startsWith("update=") ? 1 : 0;
    QCOMPARE(updates, 1);

    // Also on a connection that was kept.
    m_server->requests.clear();
    m_server->answer = [](const Request &request) {
        if (request.body.startsWith("query="))
            WebServer::reply(request, "200 OK", one, json);
        else
            request.socket->disconnectFromHost();
    };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QVERIFY(outcome(exec(anyUpdate)).startsWith(u"whether the update"_s));
    updates = 0;
    for (const Request &request : std::as_const(m_server->requests))
        updates += request.body.startsWith("update=") ? 1 : 0;
    QCOMPARE(updates, 1);
}

void TestEndpointDriver::anUpdateWaitsForAServerThatIsNotThere()
{
    const quint16 port = m_server->serverPort();
    m_server->close();
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    SparqlResult *update = exec(anyUpdate);
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, 30000);
    QVERIFY(!update->isFinished());
    QVERIFY(m_server->start(nullptr, port));
    m_server->answer = [](const Request &request) { WebServer::reply(request, "200 OK", one, json); };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(outcome(update), QString());
}

void TestEndpointDriver::silence()
{
    m_settings.timeout = 4s;
    connectTo(m_settings);
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    QCOMPARE(outcome(exec(SparqlQuery(u"ASK { ?_v a nmm:Video }"_s))), u"the server said nothing for 4 s"_s);
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, 30000); // nor does it say that it is there
}

void TestEndpointDriver::slowButNotSilent()
{
    m_settings.timeout = 6s;
    connectTo(m_settings);
    // A second between the pieces, altogether longer than the limit.
    m_server->answer = [](const Request &request) {
        request.socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(one.size()) + "\r\n"
                              + json + "\r\n");
        auto *timer = new QTimer(request.socket);
        connect(timer, &QTimer::timeout, request.socket,
                [timer, socket = request.socket.data(), at = 0]() mutable {
                    const qsizetype size = std::min<qsizetype>(one.size() / 8, one.size() - at);
                    socket->write(one.sliced(at, size));
                    at += int(size);
                    if (at == one.size())
                        timer->stop();
                });
        timer->start(900ms);
    };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
}

void TestEndpointDriver::redirects_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("location"); // %1: this server's port
    QTest::addColumn<bool>("isFollowed");
    QTest::newRow("moved") << QByteArray("301 Moved") << QByteArray("/there") << true;
    QTest::newRow("found") << QByteArray("302 Found") << QByteArray("http://127.0.0.1:%1/there") << true;
    QTest::newRow("temporary") << QByteArray("307 T") << QByteArray("there") << true;
    QTest::newRow("permanent") << QByteArray("308 P") << QByteArray("/there") << true;
    QTest::newRow("see other") << QByteArray("303 S") << QByteArray("/there") << false;
    QTest::newRow("another host") << QByteArray("308 P") << QByteArray("http://localhost:%1/there") << false;
    QTest::newRow("another scheme") << QByteArray("308 P") << QByteArray("file:///etc/passwd") << false;
    QTest::newRow("with a name") << QByteArray("308 P") << QByteArray("http://a:b@127.0.0.1:%1/there")
                                 << false;
    QTest::newRow("in a circle") << QByteArray("308 P") << QByteArray("/sparql") << false;
    QTest::newRow("nowhere") << QByteArray("308 P") << QByteArray() << false;
}

void TestEndpointDriver::redirects()
{
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, location);
    QFETCH(bool, isFollowed);
    location.replace("%1", QByteArray::number(m_server->serverPort()));
    m_server->answer = [&](const Request &request) {
        if (request.target == "/there")
            WebServer::reply(request, "200 OK", one, json);
        else
            WebServer::reply(request, status, {}, "Location: " + location + "\r\n");
    };
    const QString text = outcome(exec(anyRead));
    if (!isFollowed) {
        QVERIFY2(text.startsWith(u"the server sends us elsewhere"_s), qUtf8Printable(text));
        return;
    }
    QCOMPARE(text, u"urn:a"_s);
    QCOMPARE(m_server->requests.size(), 2);
    QVERIFY(m_server->requests[1].body.startsWith("query="));
    QCOMPARE(outcome(exec(anyUpdate)), QString());
    QCOMPARE(m_server->requests.size(), 3); // it is remembered
    QCOMPARE(m_server->requests[2].target, "/there");
    QVERIFY(m_server->requests[2].body.startsWith("update="));
}

void TestEndpointDriver::logins_data()
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

void TestEndpointDriver::logins()
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

void TestEndpointDriver::manyRequestsLogInAtOnce()
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
void TestEndpointDriver::aPasswordThatWasChanged()
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

void TestEndpointDriver::passwordsStayOffTheNetwork()
{
    for (const QString &address : {u"https://archive.example/sparql"_s, u"http://localhost:8890/sparql"_s,
                                   u"http://127.0.0.1/sparql"_s, u"http://[::1]/sparql"_s})
        QVERIFY2(EndpointLink::mayLogIn(QUrl(address)), qUtf8Printable(address));
    for (const QString &address :
         {u"http://archive.example/sparql"_s, u"http://192.168.1.2/sparql"_s,
          u"http://127.0.0.1.example/sparql"_s, u"http://localhost.example/sparql"_s})
        QVERIFY2(!EndpointLink::mayLogIn(QUrl(address)), qUtf8Printable(address));
}

void TestEndpointDriver::nobodyWantsTheAnswer()
{
    QPointer<QTcpSocket> socket;
    m_server->answer = [&](const Request &request) { socket = request.socket; };
    SparqlResult *result = exec(anyRead);
    QTRY_VERIFY_WITH_TIMEOUT(socket, 30000);
    QSignalSpy closed(socket, &QTcpSocket::disconnected);
    delete result;
    QTRY_VERIFY_WITH_TIMEOUT(!closed.isEmpty() || !socket, 30000);
}

void TestEndpointDriver::anAnswerThatIsCutOffIsPaged()
{
    const QList<QByteArray> all = {"urn:a", "urn:b", "urn:c", "urn:d", "urn:e"};
    m_server->answer = [&](const Request &request) {
        const QString query = formValue(request, u"query"_s);
        QList<QByteArray> page;
        for (const QByteArray &value : all) {
            const qsizetype at = query.indexOf(u") > \""_s);
            const bool isBehind = at < 0 || query.mid(at + 5, 5).toUtf8() < value;
            if (isBehind && page.size() < 2)
                page.append(value);
        }
        WebServer::reply(request, "200 OK", rows(page),
                         json + (page.size() == 2 ? "X-SPARQL-MaxRows: 2\r\n" : ""));
    };
    const SparqlQuery list(u"SELECT ?_v tracker:id(?_v) WHERE { ?_v a nmm:Video . }"_s);
    QCOMPARE(outcome(exec(list)), u"urn:a urn:b urn:c urn:d urn:e"_s);
    QCOMPARE(m_server->requests.size(), 4); // what was cut off, and three pages
    QCOMPARE(outcome(exec(list)), u"urn:a urn:b urn:c urn:d urn:e"_s);
    QCOMPARE(m_server->requests.size(), 7); // it is known by now
}

void TestEndpointDriver::aCutThatCannotBePagedIsAnError()
{
    m_server->answer = [&](const Request &request) {
        WebServer::reply(request, "200 OK", one, json + "X-SPARQL-MaxRows: 1\r\n");
    };
    QCOMPARE(outcome(exec(SparqlQuery(u"SELECT ?_v WHERE { ?_v a nmm:Video } LIMIT 7"_s))),
             u"the server gives no more than 1 rows of an answer"_s);
}

void TestEndpointDriver::aServerThatTakesTooLongIsAskedForParts()
{
    m_settings.timeout = 5s;
    connectTo(m_settings);
    m_server->answer = [&](const Request &request) {
        if (formValue(request, u"query"_s).contains(u"LIMIT"_s))
            WebServer::reply(request, "200 OK", one, json);
    };
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
}

// What the store library serves reads queries from the address, and answers everything else with a
// description of itself.
void TestEndpointDriver::aServerThatReadsAddressesOnly()
{
    const QByteArray description
        = R"({"head":{"vars":["subject","predicate","object"]},"results":{"bindings":[{"subject":{"type":"bnode","value":"1"},)"
          R"("predicate":{"type":"uri","value":"http://www.w3.org/ns/sparql-service-description#feature"}}]}})";
    m_server->answer = [&](const Request &request) {
        const QString query = QUrlQuery(QUrl(QString::fromLatin1(request.target)))
                                  .queryItemValue(u"query"_s, QUrl::FullyDecoded);
        WebServer::reply(request, "200 OK", query.contains(u"nmm:Video"_s) ? one : description, json);
    };
    QVERIFY(outcome(exec(anyUpdate)).contains(u"takes no updates"_s));
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(m_server->requests.constLast().method, "GET");
    QCOMPARE(outcome(exec(anyRead)), u"urn:a"_s);
    QCOMPARE(m_server->requests.size(), 4); // it is remembered
}

void TestEndpointDriver::tls()
{
    const QString folder = m_folder->path();
    QVERIFY(openssl(folder,
                    {u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                     u"-subj"_s, u"/CN=Test"_s, u"-addext"_s, u"subjectAltName=IP:127.0.0.1"_s, u"-keyout"_s,
                     u"key.pem"_s, u"-out"_s, u"certificate.pem"_s}));
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

void TestEndpointDriver::aLargeAnswerDoesNotBlock()
{
    QList<QByteArray> many;
    for (int i = 0; i < 200000; ++i)
        many.append("urn:uuid:00000000-0000-0000-0000-" + QByteArray::number(i));
    const QByteArray body = rows(many);
    m_server->answer = [&](const Request &request) { WebServer::reply(request, "200 OK", body, json); };
    int turns = 0;
    QTimer beats;
    connect(&beats, &QTimer::timeout, this, [&] { ++turns; });
    SparqlResult *result = exec(anyRead);
    QTRY_VERIFY_WITH_TIMEOUT(!m_server->requests.isEmpty(), 30000);
    beats.start(0);
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), 60000);
    QCOMPARE(result->size(), 200000);
    QVERIFY2(turns > 10, qPrintable(QString::number(turns))); // other events came between
}

void TestEndpointDriver::theConnectionGoesWithItsAnswer()
{
    m_server->answer = [](const Request &request) { WebServer::reply(request, "200 OK", one, json); };
    for (const SparqlQuery &statement : {anyRead, anyUpdate}) {
        connectTo(m_settings);
        SparqlResult *result = exec(statement);
        connect(result, &SparqlResult::finished, this, [this] { m_driver.reset(); });
        QTRY_VERIFY_WITH_TIMEOUT(!m_driver, 30000);
        QVERIFY(result->isFinished());
    }
}

QTEST_GUILESS_MAIN(TestEndpointDriver)
#include "test_endpointdriver.moc"
