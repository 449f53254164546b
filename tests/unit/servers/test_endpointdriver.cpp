// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointtest.h"
#include "flood.h"

#include "platform/servers/resourceids.h"
#include "support/loglines.h"

#include <QSignalSpy>
#include <QTest>
#include <QUrlQuery>

using namespace endpointtest;
using Request = WebServer::Request;

namespace {

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

QString formValue(const Request &request, const QString &name)
{
    QString form = QString::fromLatin1(request.body);
    return QUrlQuery(form).queryItemValue(name, QUrl::FullyDecoded);
}

} // namespace

class TestEndpointDriver : public EndpointTest
{
    Q_OBJECT

private Q_SLOTS:
    void queriesAndUpdatesAreForms();
    void answersInPieces();
    void gzip();
    void failures_data();
    void failures();
    void anErrorWithoutAnEnd();
    void aBusyServerIsAskedAgain();
    void aServerThatGoesAwayIsAskedAgain_data();
    void aServerThatGoesAwayIsAskedAgain();
    void anUpdateGoesOutOnce();
    void anUpdateWaitsForAServerThatIsNotThere();
    void anAnswerToAnUpdateMayHaveNoEnd_data();
    void anAnswerToAnUpdateMayHaveNoEnd();
    void silence();
    void slowButNotSilent();
    void redirects_data();
    void redirects();
    void nobodyWantsTheAnswer();
    void anAnswerThatIsCutOffIsPaged();
    void aCutThatCannotBePagedIsAnError();
    void aLimitThatIsNoneIsIgnored_data();
    void aLimitThatIsNoneIsIgnored();
    void aServerThatTakesTooLongIsAskedForParts();
    void aServerThatReadsAddressesOnly();
    void aLargeAnswerDoesNotBlock();
    void aServerThatIsFasterWaits();
    void theConnectionGoesWithItsAnswer();
};

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

// Nobody waits for the rest of what is of no use.
void TestEndpointDriver::anErrorWithoutAnEnd()
{
    m_server->answer = [](const Request &request) {
        request.socket->write("HTTP/1.1 500 Oh no\r\nContent-Type: text/plain\r\n"
                              "Transfer-Encoding: chunked\r\n\r\n5000\r\n"
                              + QByteArray(0x5000, 'x') + "\r\n");
    };
    for (const SparqlQuery &statement : {anyRead, anyUpdate}) {
        const QString text = outcome(exec(statement));
        QVERIFY2(text.startsWith(u"the server answers 500: xxx"_s), qUtf8Printable(text));
    }
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

void TestEndpointDriver::anAnswerToAnUpdateMayHaveNoEnd_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("goesOn"); // a byte now and then
    QTest::addColumn<bool>("isCut");
    QTest::newRow("nothing follows") << QByteArray() << false << false;
    QTest::newRow("much, and nothing more") << "5000\r\n" + QByteArray(0x5000, 'x') + "\r\n"
                                            << false << false;
    QTest::newRow("byte by byte for ever") << QByteArray() << true << false;
    QTest::newRow("cut off") << QByteArray("50\r\nhalf") << false << true;
}

// The server has said that the update is done: what it goes on to say holds up nothing that comes after.
void TestEndpointDriver::anAnswerToAnUpdateMayHaveNoEnd()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, goesOn);
    QFETCH(bool, isCut);
    m_settings.timeout = 3s;
    connectTo(m_settings);
    m_server->answer = [&](const Request &request) {
        if (m_server->requests.size() > 1) {
            WebServer::reply(request, "200 OK");
            return;
        }
        request.socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n"
                              "Transfer-Encoding: chunked\r\n\r\n"
                              + body);
        if (isCut)
            request.socket->disconnectFromHost();
        if (!goesOn)
            return;
        auto *drops = new QTimer(request.socket);
        connect(drops, &QTimer::timeout, request.socket,
                [socket = request.socket.data()] { socket->write("1\r\nx\r\n"); });
        drops->start(50ms);
    };
    SparqlResult *first = exec(anyUpdate);
    SparqlResult *second = exec(anyUpdate);
    QCOMPARE(outcome(first), QString());
    QCOMPARE(outcome(second), QString());
    QCOMPARE(m_server->requests.size(), 2);
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

void TestEndpointDriver::aLimitThatIsNoneIsIgnored_data()
{
    QTest::addColumn<QByteArray>("limit");
    for (const char *limit : {"0", "-1", "many", "99999999999999999999", "0x10"})
        QTest::newRow(limit) << QByteArray(limit);
}

void TestEndpointDriver::aLimitThatIsNoneIsIgnored()
{
    QFETCH(QByteArray, limit);
    m_server->answer = [&](const Request &request) {
        WebServer::reply(request, "200 OK", one, json + "X-SPARQL-MaxRows: " + limit + "\r\n");
    };
    const LogLines log("kestrel.servers");
    for (int trial = 0; trial < 3; ++trial)
        QCOMPARE(outcome(exec(SparqlQuery(u"SELECT ?_v WHERE { ?_v a nmm:Video } LIMIT 7"_s))), u"urn:a"_s);
    QCOMPARE(m_server->requests.size(), 3);
    QCOMPARE(log.all().size(), 1);
    QVERIFY2(log.all().constFirst().contains(QString::fromLatin1(limit)),
             qUtf8Printable(log.all().constFirst()));
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
    // It answers again: a list comes in one piece.
    m_server->answer = [](const Request &request) { WebServer::reply(request, "200 OK", one, json); };
    QCOMPARE(outcome(exec(SparqlQuery(u"SELECT ?_v tracker:id(?_v) WHERE { ?_v a nmm:Video . }"_s))),
             u"urn:a"_s);
    QVERIFY(!formValue(m_server->requests.constLast(), u"query"_s).contains(u"LIMIT"_s));
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

// What is not read yet does not fill the memory.
void TestEndpointDriver::aServerThatIsFasterWaits()
{
    Flood flood(
        "HTTP/1.1 200 OK\r\n" + json
        + "\r\n"
          R"({"head":{"vars":["v","i"]},"results":{"bindings":[{"i":{"type":"uri","value":"urn:flood"}},)");
    QVERIFY(flood.port() > 0);
    m_settings.queryAddress = QUrl(u"http://127.0.0.1:%1/sparql"_s.arg(flood.port()));
    connectTo(m_settings);
    const int numbers = ResourceIds::shared().count();
    SparqlResult *result = exec(SparqlQuery(u"SELECT ?_v tracker:id(?_v) WHERE { ?_v a nmm:Video . }"_s));
    QTRY_VERIFY_WITH_TIMEOUT(ResourceIds::shared().count() > numbers, 30000); // the beginning is read
    // Nothing is read here while this waits.
    QVERIFY(flood.taken() < Flood::most);
    delete result;
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
