// SPDX-License-Identifier: GPL-3.0-or-later
// A library on a real server, over HTTP: Virtuoso, which reads and writes, and the store library's own
// endpoint, which is read only.
#include "data/sparqltemplates.h"
#include "platform/servers/endpointdriver.h"
#include "platform/sparql/sparqldriver.h"
#include "support/storeendpoint.h"
#include "support/storequery.h"
#include "support/virtuososerver.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace storequery;

namespace {

const QString endpoint = u"QSPARQL_ENDPOINT"_s;
const QString graph = u"urn:graph:library"_s;
constexpr int videos = 3000;
constexpr int waitMs = 120000;

QString libraryText(const QString &filter = {})
{
    return SparqlTemplates::Library.arg(u"<urn:equipment:Own:X:>"_s).replace(u"_FILTER_"_s, filter);
}

QString oneVideo(const QString &urn)
{
    return libraryText(QString(SparqlTemplates::OneVideoFilter).replace(u"_URN_"_s, urn));
}

QString detailsOf(const QString &urn)
{
    return QString(SparqlTemplates::Details).replace(u"_URN_"_s, urn);
}

} // namespace

class ServersEndpoint : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void library();
    void detailsAndLookUps();
    void whatIsWrittenIsWhatIsRead();
    void aLoginForWriting_data();
    void aLoginForWriting();
    void aServersOwnLimitHidesNothing();
    void theServerIsKilledInMidQuery();
    void theServerIsGoneForAWhile();
    void theStoreLibrarysEndpoint();

private:
    void connectTo(const ServerSettings &settings);
    [[nodiscard]] QUrl address(const QString &path) const;
    [[nodiscard]] Answer select(const QString &text, int columns = 8)
    {
        return ask(*m_connection, SparqlQuery(text), columns, waitMs);
    }

    VirtuosoServer m_server;
    QTemporaryDir m_folder;
    ServerSettings m_settings;
    std::unique_ptr<SparqlConnection> m_connection;
};

void ServersEndpoint::initTestCase()
{
    QVERIFY(m_server.start());
    QVERIFY(m_server.fill(graph, videos));
}

void ServersEndpoint::init()
{
    m_settings = {};
    m_settings.queryAddress = address(u"/sparql"_s);
    m_settings.graph = graph;
    m_settings.timeout = std::chrono::seconds(60);
    connectTo(m_settings);
}

void ServersEndpoint::cleanup()
{
    m_connection.reset();
    SparqlDriverRegistry::unregisterDriver(endpoint);
}

void ServersEndpoint::cleanupTestCase()
{
    m_server.end();
}

QUrl ServersEndpoint::address(const QString &path) const
{
    return QUrl(u"http://"_s + m_server.httpAddress() + path);
}

void ServersEndpoint::connectTo(const ServerSettings &settings)
{
    SparqlDriverRegistry::registerDriver(endpoint, [this, settings](const SparqlConnectionOptions &) {
        return std::make_unique<EndpointDriver>(
            settings, ServerPatience{},
            std::make_unique<Credentials>(QDBusConnection(u"nobody"_s), m_folder.filePath(u"credentials"_s)));
    });
    m_connection = std::make_unique<SparqlConnection>(endpoint);
}

void ServersEndpoint::library()
{
    const Answer answer = select(libraryText());
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.rows.size(), videos);
    QSet<QString> iris;
    QSet<QString> ids;
    for (const QStringList &row : answer.rows) {
        iris.insert(row[0]);
        ids.insert(row[7]);
    }
    QCOMPARE(iris.size(), videos);
    QCOMPARE(ids.size(), videos);
    QVERIFY(iris.contains(virtuosoVideo(7)));

    QCOMPARE(select(libraryText() + u" LIMIT 5"_s).rows.size(), 5);
    const Answer one = select(oneVideo(virtuosoVideo(7)));
    QCOMPARE(one.rows.size(), 1);
    QCOMPARE(one.rows[0][0], virtuosoVideo(7));

    QString byIds = QString(SparqlTemplates::ByIds).arg(u"<urn:equipment:Own:X:>"_s);
    byIds.replace(u"_ID_"_s, one.rows[0][7] + u",2147483000"_s);
    QCOMPARE(select(byIds).rows, one.rows);
}

void ServersEndpoint::detailsAndLookUps()
{
    const Answer details = select(detailsOf(virtuosoVideo(7)), 12);
    QCOMPARE(details.error, QString());
    QCOMPARE(details.rows.size(), 1);
    QCOMPARE(details.rows[0][0], virtuosoVideo(7));
    const QString url = details.rows[0][7];
    QVERIFY(!url.isEmpty());

    const Answer found = select(QString(SparqlTemplates::ByUrl).replace(u"_URL_"_s, url));
    QCOMPARE(found.rows.size(), 1);
    QCOMPARE(found.rows[0][0], virtuosoVideo(7));
    const Answer unknown
        = select(QString(SparqlTemplates::ByUrl).replace(u"_URL_"_s, u"file:///nowhere.mp4"_s));
    QCOMPARE(unknown.error, QString());
    QCOMPARE(unknown.rows.size(), 0);
    QVERIFY(!select(u"SELECT ?_v WHERE { nonsense }"_s).error.isEmpty());
}

void ServersEndpoint::whatIsWrittenIsWhatIsRead()
{
    const QString urn = virtuosoVideo(11);
    const QString title = u"A \"title\" with \\ and Ä 😀"_s;
    // Neither is waited for.
    SparqlResult *written
        = m_connection->exec(propertyUpdate(SparqlTemplates::PropertyUpdate, title, urn, u"nie:title"_s));
    SparqlResult *placed = m_connection->exec(
        propertyUpdate(SparqlTemplates::PropertyUpdate, u"431"_s, urn, u"nmm:runTime"_s));
    const Answer answer = select(oneVideo(urn));
    QVERIFY(written->isFinished() && placed->isFinished());
    QCOMPARE(written->errorMessage() + placed->errorMessage(), QString());
    QCOMPARE(answer.rows.size(), 1);
    QCOMPARE(answer.rows[0][1], title);
    QCOMPARE(answer.rows[0][4], u"431"_s);
    QVERIFY(sparqlWaitForUpdates(0));
}

void ServersEndpoint::aLoginForWriting_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("right") << m_server.password() << true;
    QTest::newRow("wrong") << u"wrong"_s << false;
}

void ServersEndpoint::aLoginForWriting()
{
    QFETCH(QString, password);
    QFETCH(bool, isTaken);
    QFile file(m_folder.filePath(u"credentials"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(u"[%1]\nuser = %2\npassword = %3\n"_s.arg(m_server.httpAddress(), m_server.user(), password)
                   .toUtf8());
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));

    m_settings.updateAddress = address(u"/sparql-auth"_s);
    connectTo(m_settings);
    const QString urn = virtuosoVideo(12);
    const QString title = u"By "_s + password;
    const SparqlQuery update = propertyUpdate(SparqlTemplates::PropertyUpdate, title, urn, u"nie:title"_s);
    QCOMPARE(ask(*m_connection, update, 1, waitMs).error.isNull(), isTaken);
    const Answer answer = select(oneVideo(urn));
    QCOMPARE(answer.rows.size(), 1);
    QCOMPARE(answer.rows[0][1] == title, isTaken);
}

void ServersEndpoint::aServersOwnLimitHidesNothing()
{
    m_server.sql(u"cfg_write(virtuoso_ini_path(), 'SPARQL', 'ResultSetMaxRows', '700')"_s);
    m_server.kill();
    QVERIFY(m_server.restart());
    Answer answer = select(libraryText());
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.rows.size(), videos);
    QSet<QString> iris;
    for (const QStringList &row : answer.rows)
        iris.insert(row[0]);
    QCOMPARE(iris.size(), videos);

    answer = select(libraryText() + u" LIMIT 2000"_s);
    QVERIFY2(answer.error.contains(u"no more than 700 rows"_s), qUtf8Printable(answer.error));
    QCOMPARE(select(libraryText() + u" LIMIT 600"_s).rows.size(), 600);

    m_server.sql(u"cfg_write(virtuoso_ini_path(), 'SPARQL', 'ResultSetMaxRows', '2000000')"_s);
    m_server.kill();
    QVERIFY(m_server.restart());
}

void ServersEndpoint::theServerIsKilledInMidQuery()
{
    m_server.freeze(); // it has the query and does not come to the answer
    const std::unique_ptr<SparqlResult> result(m_connection->exec(SparqlQuery(libraryText())));
    QSignalSpy finished(result.get(), &SparqlResult::finished);
    QVERIFY(!finished.wait(500));
    m_server.kill();
    QVERIFY(m_server.restart());
    QVERIFY(finished.wait(waitMs));
    QCOMPARE(result->errorMessage(), QString());
    QCOMPARE(result->size(), videos);
}

void ServersEndpoint::theServerIsGoneForAWhile()
{
    QCOMPARE(select(oneVideo(virtuosoVideo(1))).rows.size(), 1);
    QSignalSpy reachable(m_connection.get(), &SparqlConnection::reachableChanged);
    QSignalSpy reset(m_connection.get(), &SparqlConnection::reset);
    m_server.kill();
    const QString title = u"Written while it was away"_s;
    const std::unique_ptr<SparqlResult> written(m_connection->exec(
        propertyUpdate(SparqlTemplates::PropertyUpdate, title, virtuosoVideo(13), u"nie:title"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, waitMs);
    QVERIFY(!select(libraryText()).error.isEmpty());
    QVERIFY(m_server.restart());
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 2, waitMs);
    QCOMPARE(reachable[1][0].toBool(), true);
    QTRY_COMPARE_WITH_TIMEOUT(reset.size(), 1, waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(written->isFinished(), waitMs);
    QCOMPARE(written->errorMessage(), QString());
    QCOMPARE(select(oneVideo(virtuosoVideo(13))).rows.value(0).value(1), title);
}

void ServersEndpoint::theStoreLibrarysEndpoint()
{
    StoreEndpoint store;
    QVERIFY(store.open());
    for (int i = 0; i < 20; ++i) {
        const QString error = store.update(
            u"INSERT DATA { <urn:video:%1> a nmm:Video, nfo:FileDataObject ; nie:url \"file:///v/%1.mp4\" ; "
            "nfo:fileName \"%1.mp4\" ; nie:title \"Title %1\" ; nfo:duration %1 ; nmm:runTime 0 }"_s.arg(i));
        QCOMPARE(error, QString());
    }
    m_settings = {};
    m_settings.queryAddress = store.address();
    connectTo(m_settings);
    const Answer library = select(libraryText());
    QCOMPARE(library.error, QString());
    QCOMPARE(library.rows.size(), 20);
    const Answer details = select(detailsOf(u"urn:video:7"_s), 12);
    QCOMPARE(details.rows.value(0).value(1), u"Title 7"_s);
    const Answer found = select(QString(SparqlTemplates::ByUrl).replace(u"_URL_"_s, u"file:///v/7.mp4"_s));
    QCOMPARE(found.rows.value(0).value(0), u"urn:video:7"_s);
    const Answer update
        = ask(*m_connection,
              propertyUpdate(SparqlTemplates::PropertyUpdate, u"New"_s, u"urn:video:7"_s, u"nie:title"_s), 1,
              waitMs);
    QVERIFY2(update.error.contains(u"takes no updates"_s), qUtf8Printable(update.error));
    QCOMPARE(select(oneVideo(u"urn:video:7"_s)).rows.value(0).value(1), u"Title 7"_s);
}

QTEST_GUILESS_MAIN(ServersEndpoint)
#include "servers_endpoint.moc"
