// SPDX-License-Identifier: GPL-3.0-or-later
// A library on a real Virtuoso server, and what a statement lives through there: a server that is frozen,
// killed and started again, a helper program that is.
#include "platform/servers/odbcprotocol.h"
#include "platform/servers/resourceids.h"
#include "platform/servers/virtuosodriver.h"
#include "support/loglines.h"
#include "support/processtable.h"
#include "support/storequery.h"
#include "support/storetexts.h"
#include "support/virtuososerver.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <csignal>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using namespace storequery;

namespace {

constexpr int s_waitMs = 60000;
constexpr int s_videos = 300;
const QString s_graph = u"urn:kestrel:videos"_s;

Answer ask(SparqlConnection &connection, const QString &text, int columns = 1)
{
    return storequery::ask(connection, SparqlQuery(text), columns, s_waitMs);
}

Answer write(SparqlConnection &connection, const QString &urn, const QString &property, const QString &value)
{
    return storequery::ask(connection, propertyUpdate(storetexts::setProperty, value, urn, property), 0,
                           s_waitMs);
}

QString library()
{
    return filled(filled(storetexts::library, u"%1"_s, u"<urn:equipment:own:M:>"_s), u"_FILTER_"_s, {});
}

QString valueText(const QString &urn, const QString &name)
{
    return filled(filled(storetexts::property, u"_URN_"_s, urn), u"_PROPERTY_"_s, name);
}

QString oneRow(const Answer &answer)
{
    return answer.error.isNull() && answer.rows.size() == 1
        ? answer.rows.first().join(u'|')
        : u"%1 rows, error: %2"_s.arg(answer.rows.size()).arg(answer.error);
}

// The helper programs of this process.
QList<pid_t> helpers()
{
    return ProcessTable::childrenNamed("kestrel-odbc");
}

// Takes longer than anybody waits.
QString endlessQuery()
{
    return u"SELECT (COUNT(*) AS ?n) WHERE { ?a ?b ?c . ?d ?e ?f . ?g ?h ?i . ?j ?k ?l FILTER(?c != ?i && ?f != ?l) }"_s;
}

// Patient as long as a server takes that starts on a machine that is busy.
ServerPatience patience()
{
    ServerPatience patience;
    patience.mostAttempts = 1000;
    patience.firstRetry = 20ms;
    patience.firstProbe = 50ms;
    patience.lastProbe = 100ms;
    return patience;
}

} // namespace

class TestVirtuoso : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void everyTextIsAnswered();
    void valuesHaveTheirTypes();
    void titlesInAnyScript_data();
    void titlesInAnyScript();
    void whatWasWrittenIsRead();
    void updatesKeepTheirOrder();
    void writesWhatWasNotThere();
    void serverSaysWhatIsWrong();
    void readerMayNotWrite();
    void wrongPassword();
    void nobodyIsToldThePassword();
    void withoutAServerOrALogin_data();
    void withoutAServerOrALogin();
    void programThatIsNotThere();
    void longListTakesNoMemoryOfTheHelper();
    void valueThatIsFarTooLong();
    void answerThatNobodyWants();
    void queryThatNobodyWantsEnds();
    void serverIsKilledWhileItAnswers();
    void readsAgainWhatTheServerLost();
    void serverIsStartedAgainWhileNobodyAsks();
    void serverThatIsAwayComesBack();
    void serverSaysNothing();
    void serverSaysNothingToAnUpdate();
    void helperIsKilled();
    void helperSaysNothing();
    void quitsAfterTheUpdates();
    void endsInTheMiddle();

private:
    [[nodiscard]] bool isAtWork();
    void useSettings(std::chrono::seconds timeout, const ServerPatience &patience = ::patience());
    void storeLogin(const QString &user, const QString &password);

    VirtuosoServer m_server;
    QTemporaryDir m_folder;
    ServerSettings m_settings;
};

void TestVirtuoso::initTestCase()
{
    QVERIFY(m_server.start());
    QVERIFY(m_server.fill(s_graph, s_videos));
}

void TestVirtuoso::init()
{
    m_settings = ServerSettings();
    m_settings.odbcServer = m_server.sqlAddress();
    m_settings.graph = s_graph;
    storeLogin(m_server.user(), m_server.password());
    useSettings(60s);
}

void TestVirtuoso::cleanup()
{
    m_server.thaw();
    SparqlDriverRegistry::unregisterDriver(u"QVIRTUOSO"_s);
    QTRY_VERIFY_WITH_TIMEOUT(helpers().isEmpty(), s_waitMs);
}

// Whether the server has more to do than to say so.
bool TestVirtuoso::isAtWork()
{
    static const QRegularExpression line(u"Currently (\\d+) threads running"_s);
    return line.match(m_server.sql(u"status()"_s)).captured(1).toInt() > 1;
}

void TestVirtuoso::useSettings(std::chrono::seconds timeout, const ServerPatience &patience)
{
    m_settings.timeout = timeout;
    SparqlDriverRegistry::registerDriver(u"QVIRTUOSO"_s, [this, patience](const SparqlConnectionOptions &) {
        auto credentials
            = std::make_unique<Credentials>(QDBusConnection(u"none"_s), m_folder.filePath(u"credentials"_s));
        return std::make_unique<VirtuosoDriver>(m_settings, patience, std::move(credentials),
                                                QStringLiteral(KESTREL_BIN_DIR "/kestrel-odbc"));
    });
}

void TestVirtuoso::storeLogin(const QString &user, const QString &password)
{
    QFile file(m_folder.filePath(u"credentials"_s));
    file.remove();
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFile::ReadOwner | QFile::WriteOwner));
    file.write(u"[%1]\nuser = %2\npassword = %3\n"_s.arg(m_server.sqlAddress(), user, password).toUtf8());
}

void TestVirtuoso::everyTextIsAnswered()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QString urn = virtuosoVideo(7);
    const QString id = QString::number(ResourceIds::shared().idOf(urn));
    const QString url = u"file:///srv/videos/0000/clip%200000007.mp4"_s;
    const QString row = urn + u"|Video 7|clip 0000007.mp4|67|7|video/mp4|"_s + url + u'|' + id;
    const QString one = filled(filled(storetexts::library, u"%1"_s, u"<urn:equipment:own:M:>"_s),
                               u"_FILTER_"_s, storetexts::oneVideo);

    const Answer all = ask(connection, library(), 8);
    QCOMPARE(all.error, QString());
    QCOMPARE(all.rows.size(), s_videos);
    QVERIFY(all.rows.contains(row.split(u'|')));
    QCOMPARE(ask(connection, library() + u" LIMIT 5"_s, 8).rows.size(), 5);
    QCOMPARE(oneRow(ask(connection, filled(one, u"_URN_"_s, urn), 8)), row);
    QCOMPARE(oneRow(ask(connection, filled(storetexts::byUrl, u"_URL_"_s, url), 8)), row);
    const QString byIds = filled(storetexts::byIds, u"%1"_s, u"<urn:equipment:own:M:>"_s);
    QCOMPARE(oneRow(ask(connection, filled(byIds, u"_ID_"_s, id), 8)), row);
    QCOMPARE(oneRow(ask(connection, filled(storetexts::iriByUrl, u"_URL_"_s, url))), urn);
    QCOMPARE(oneRow(ask(connection, valueText(urn, u"nie:url"_s))), url);
    QCOMPARE(oneRow(ask(connection, filled(storetexts::title, u"_URN_"_s, urn), 2)),
             u"Video 7|clip 0000007.mp4"_s);
    QCOMPARE(oneRow(ask(connection, filled(storetexts::details, u"_URN_"_s, urn), 12)),
             urn + u"|Video 7|67|1000007|7|2007-08-08T12:00:00Z|video/mp4|"_s + url
                 + u"||2007-08-08T12:00:00Z|7|clip 0000007.mp4"_s);
    QCOMPARE(ask(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///none.mp4"_s), 8), Answer());
}

void TestVirtuoso::valuesHaveTheirTypes()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QString text = filled(storetexts::details, u"_URN_"_s, virtuosoVideo(7));
    const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(text)));
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), s_waitMs);
    QVERIFY(result->next());
    QCOMPARE(result->value(2), QVariant(qlonglong(67)));
    QCOMPARE(result->value(3), QVariant(qlonglong(1000007)));
    QCOMPARE(result->value(5), QVariant(QDateTime(QDate(2007, 8, 8), QTime(12, 0), QTimeZone::utc())));
    QCOMPARE(result->value(6), QVariant(u"video/mp4"_s));
}

void TestVirtuoso::titlesInAnyScript_data()
{
    QTest::addColumn<QString>("title");
    for (const QString &title :
         {u"Ελληνικά"_s, u"Русский"_s, u"العربية"_s, u"עברית"_s, u"हिन्दी"_s, u"日本語"_s, u"한국어"_s,
          u"ไทย"_s, u"Überfahrt"_s, u"🎬 👨‍👩‍👧 🏳️‍🌈"_s,
          u"\"quoted\" and 'so' and \\n"_s, u"a?b {c} ;d --e # f %g"_s, u"SPARQL SELECT _URL_"_s,
          u"2001-02-03 04:05:06Z"_s, u"0042"_s, u" "_s})
        QTest::newRow(qUtf8Printable(title)) << title;
    QTest::newRow("10,000 characters") << u"Ψ🎬x"_s.repeated(3333);
    QTest::newRow("10,000 letters") << u"e"_s.repeated(10000);
    QTest::newRow("100,000 characters") << u"é日"_s.repeated(50000);
}

void TestVirtuoso::titlesInAnyScript()
{
    QFETCH(QString, title);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QString urn = virtuosoVideo(11);
    QCOMPARE(write(connection, urn, u"nie:title"_s, title), Answer());
    const Answer answer = ask(connection, valueText(urn, u"nie:title"_s));
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.rows, QList<QStringList>{{title}});
}

void TestVirtuoso::whatWasWrittenIsRead()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QString urn = virtuosoVideo(12);
    for (int trial = 0; trial < 20; ++trial) {
        const QString title = u"title %1"_s.arg(trial);
        const SparqlResult *result
            = connection.exec(propertyUpdate(storetexts::setProperty, title, urn, u"nie:title"_s));
        QVERIFY(result);
        QCOMPARE(oneRow(ask(connection, valueText(urn, u"nie:title"_s))), title);
    }
}

void TestVirtuoso::updatesKeepTheirOrder()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QString urn = virtuosoVideo(13);
    for (int position = 0; position <= 50; ++position) {
        const SparqlResult *result = connection.exec(
            propertyUpdate(storetexts::setProperty, QString::number(position), urn, u"nmm:runTime"_s));
        QVERIFY(result);
    }
    const Answer answer = ask(connection, valueText(urn, u"nmm:runTime"_s));
    QCOMPARE(oneRow(answer), u"50"_s);
}

void TestVirtuoso::writesWhatWasNotThere()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QString urn = virtuosoVideo(14);
    m_server.sql(u"SPARQL DELETE FROM <%1> { <%2> ?p ?o } WHERE { GRAPH <%1> { <%2> ?p ?o "
                 "FILTER(?p = <http://tracker.api.gnome.org/ontology/v3/nie#title>) } }"_s.arg(s_graph, urn));
    QCOMPARE(ask(connection, valueText(urn, u"nie:title"_s)), Answer());
    QCOMPARE(write(connection, urn, u"nie:title"_s, u"at last"_s), Answer());
    QCOMPARE(oneRow(ask(connection, valueText(urn, u"nie:title"_s))), u"at last"_s);
}

void TestVirtuoso::serverSaysWhatIsWrong()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const Answer answer = ask(connection, u"SELECT ?v WHERE { ?v nfo:no:such:thing }"_s);
    QVERIFY2(answer.error.contains(u"SPARQL compiler"_s), qUtf8Printable(answer.error));
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
}

void TestVirtuoso::readerMayNotWrite()
{
    storeLogin(m_server.reader(), m_server.password());
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    const Answer answer = write(connection, virtuosoVideo(15), u"nie:title"_s, u"mine"_s);
    QVERIFY(!answer.error.isEmpty());
    QCOMPARE(oneRow(ask(connection, valueText(virtuosoVideo(15), u"nie:title"_s))), u"Video 15"_s);
}

void TestVirtuoso::wrongPassword()
{
    storeLogin(m_server.user(), u"not-the-word"_s);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QSignalSpy reachable(&connection, &SparqlConnection::reachableChanged);
    const Answer answer = ask(connection, library(), 8);
    QVERIFY2(answer.error.contains(u"Bad login"_s), qUtf8Printable(answer.error));
    QVERIFY(!answer.error.contains(u"not-the-word"_s));
    // It was tried once, and the next statement tries once.
    QCOMPARE(helpers().size(), 1);
    QVERIFY(ask(connection, library(), 8).error.contains(u"Bad login"_s));
    QVERIFY(write(connection, virtuosoVideo(1), u"nie:title"_s, u"x"_s).error.contains(u"Bad login"_s));
    QCOMPARE(reachable.size(), 0);
}

void TestVirtuoso::nobodyIsToldThePassword()
{
    const LogLines log("kestrel.servers");
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    QVERIFY(!helpers().isEmpty());
    const QByteArray password = m_server.password().toUtf8();
    for (const QString &process : QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QVERIFY(!ProcessTable::contentOf(u"/proc/%1/cmdline"_s.arg(process)).contains(password));
        QVERIFY(!ProcessTable::contentOf(u"/proc/%1/environ"_s.arg(process)).contains(password));
    }
    QVERIFY(!log.all().join(u'\n').contains(m_server.password()));
}

void TestVirtuoso::withoutAServerOrALogin_data()
{
    QTest::addColumn<bool>("hasServer");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("error");
    QTest::newRow("no server") << false << u"x"_s << u"no Virtuoso server is set"_s;
    QTest::newRow("no login") << true << QString() << u"no user name and password are stored"_s;
    QTest::newRow("a password that ODBC does not take") << true << u"a;b"_s << u"semicolon"_s;
}

void TestVirtuoso::withoutAServerOrALogin()
{
    QFETCH(bool, hasServer);
    QFETCH(QString, password);
    QFETCH(QString, error);
    if (!hasServer)
        m_settings.odbcServer.clear();
    if (password.isEmpty())
        QVERIFY(QFile::remove(m_folder.filePath(u"credentials"_s)));
    else
        storeLogin(m_server.user(), password);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const Answer answer = ask(connection, library(), 8);
    QVERIFY2(answer.error.contains(error), qUtf8Printable(answer.error));
}

void TestVirtuoso::programThatIsNotThere()
{
    ServerPatience short_ = patience();
    short_.mostAttempts = 2;
    SparqlDriverRegistry::registerDriver(u"QVIRTUOSO"_s, [&](const SparqlConnectionOptions &) {
        auto credentials
            = std::make_unique<Credentials>(QDBusConnection(u"none"_s), m_folder.filePath(u"credentials"_s));
        return std::make_unique<VirtuosoDriver>(m_settings, short_, std::move(credentials),
                                                u"/no/such/program"_s);
    });
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const QSignalSpy reachable(&connection, &SparqlConnection::reachableChanged);
    const Answer answer = ask(connection, library(), 8);
    QVERIFY2(answer.error.contains(u"does not start"_s), qUtf8Printable(answer.error));
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, s_waitMs);
}

// The driver for ODBC keeps what it was given unless it is asked in a certain way.
void TestVirtuoso::longListTakesNoMemoryOfTheHelper()
{
    const QString graph = u"urn:kestrel:many"_s;
    constexpr int videos = 20000;
    QVERIFY(m_server.fill(graph, videos));
    m_settings.graph = graph;
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), videos);
    QCOMPARE(helpers().size(), 1);
    const qint64 before = ProcessTable::mostResidentKiB(helpers().first());
    QVERIFY(before > 0);
    for (int trial = 0; trial < 5; ++trial)
        QCOMPARE(ask(connection, library(), 8).rows.size(), videos);
    QCOMPARE(helpers().size(), 1);
    // Kept, the literals alone would be 17 MiB.
    const qint64 grown = ProcessTable::mostResidentKiB(helpers().first()) - before;
    QVERIFY2(grown < 8 * 1024, qPrintable(QString::number(grown)));
}

void TestVirtuoso::valueThatIsFarTooLong()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    const auto text = [](int length) {
        return u"SELECT (1 AS ?n) (bif:repeat(\"x\", %1) AS ?value) WHERE { }"_s.arg(length);
    };
    const Answer longest = ask(connection, text(int(OdbcProtocol::MaximumValueBytes)), 2);
    QCOMPARE(longest.error, QString());
    QCOMPARE(longest.rows.first().at(1).size(), qsizetype(OdbcProtocol::MaximumValueBytes));
    const QList<pid_t> before = helpers();
    QCOMPARE(ask(connection, text(int(OdbcProtocol::MaximumValueBytes) + 1), 2).error,
             u"a value in column 2 is longer than 1 MiB"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    QCOMPARE(helpers(), before);
}

void TestVirtuoso::answerThatNobodyWants()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    m_server.freeze();
    for (int trial = 0; trial < 10; ++trial)
        delete connection.exec(SparqlQuery(library()));
    m_server.thaw();
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    QVERIFY(helpers().size() <= patience().mostUnderWay + 1);
}

// The server works for nobody for as long as it would have been waited for, and not for ever.
void TestVirtuoso::queryThatNobodyWantsEnds()
{
    useSettings(20s);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    const SparqlResult *result = connection.exec(SparqlQuery(endlessQuery()));
    QTRY_VERIFY_WITH_TIMEOUT(isAtWork(), s_waitMs);
    delete result;
    QTRY_VERIFY_WITH_TIMEOUT(helpers().isEmpty(), s_waitMs); // it does not hear, and is ended
    QTRY_VERIFY_WITH_TIMEOUT(!isAtWork(), s_waitMs);
}

void TestVirtuoso::serverIsKilledWhileItAnswers()
{
    ServerPatience none = patience();
    none.mostAttempts = 1;
    useSettings(600s, none);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QSignalSpy reachable(&connection, &SparqlConnection::reachableChanged);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(endlessQuery())));
    const qint64 before = ProcessTable::processorTicks(m_server.processId());
    QTRY_VERIFY_WITH_TIMEOUT(ProcessTable::processorTicks(m_server.processId()) > before + 20, s_waitMs);
    QVERIFY(!result->isFinished());
    m_server.kill();
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), s_waitMs);
    QVERIFY2(result->errorMessage().contains(u"Lost connection"_s), qUtf8Printable(result->errorMessage()));
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, s_waitMs);
    QVERIFY(m_server.restart());
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 2, s_waitMs);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
}

void TestVirtuoso::readsAgainWhatTheServerLost()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    m_server.freeze();
    const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(library())));
    m_server.kill();
    QVERIFY(m_server.restart());
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), s_waitMs);
    QCOMPARE(result->errorMessage(), QString());
    QCOMPARE(result->size(), s_videos);
}

// A connection that broke meanwhile is noticed before it is trusted with an update.
void TestVirtuoso::serverIsStartedAgainWhileNobodyAsks()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    m_server.kill();
    QVERIFY(m_server.restart());
    QCOMPARE(write(connection, virtuosoVideo(16), u"nie:title"_s, u"after"_s), Answer());
    QCOMPARE(oneRow(ask(connection, valueText(virtuosoVideo(16), u"nie:title"_s))), u"after"_s);
}

void TestVirtuoso::serverThatIsAwayComesBack()
{
    ServerPatience little = patience();
    little.mostAttempts = 2;
    useSettings(60s, little);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QSignalSpy reachable(&connection, &SparqlConnection::reachableChanged);
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    m_server.kill();
    QVERIFY(!ask(connection, library(), 8).error.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, s_waitMs);
    QCOMPARE(reachable.first().first().toBool(), false);
    const std::unique_ptr<SparqlResult> update(connection.exec(
        propertyUpdate(storetexts::setProperty, u"kept"_s, virtuosoVideo(17), u"nie:title"_s)));
    QVERIFY(m_server.restart());
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 2, s_waitMs);
    QCOMPARE(reachable.last().first().toBool(), true);
    QTRY_COMPARE_WITH_TIMEOUT(reset.size(), 1, s_waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(update->isFinished(), s_waitMs);
    QCOMPARE(update->errorMessage(), QString());
    QCOMPARE(oneRow(ask(connection, valueText(virtuosoVideo(17), u"nie:title"_s))), u"kept"_s);
}

void TestVirtuoso::serverSaysNothing()
{
    useSettings(1s);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QVERIFY(ask(connection, valueText(virtuosoVideo(1), u"nie:url"_s)).error.isNull());
    const QList<pid_t> before = helpers();
    const Answer answer = ask(connection, endlessQuery());
    QVERIFY2(answer.error.contains(u"says nothing"_s), qUtf8Printable(answer.error));
    QTRY_VERIFY_WITH_TIMEOUT(!isAtWork(), s_waitMs);
    QCOMPARE(helpers(), before); // the server stopped it, and the connection is good
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
}

void TestVirtuoso::serverSaysNothingToAnUpdate()
{
    useSettings(1s);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QVERIFY(ask(connection, valueText(virtuosoVideo(1), u"nie:url"_s)).error.isNull());
    const QList<pid_t> before = helpers();
    QCOMPARE(before.size(), 1);
    m_server.freeze();
    const std::unique_ptr<SparqlResult> update(connection.exec(
        propertyUpdate(storetexts::setProperty, u"late"_s, virtuosoVideo(18), u"nie:title"_s)));
    // It is not even sent as long as the server does not answer, and therefore not given up.
    QTRY_VERIFY_WITH_TIMEOUT(!helpers().contains(before.first()), s_waitMs);
    QVERIFY(!update->isFinished());
    m_server.thaw();
    QTRY_VERIFY_WITH_TIMEOUT(update->isFinished(), s_waitMs);
    QCOMPARE(update->errorMessage(), QString());
    QCOMPARE(oneRow(ask(connection, valueText(virtuosoVideo(18), u"nie:title"_s))), u"late"_s);
}

void TestVirtuoso::helperIsKilled()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    m_server.freeze();
    const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(library())));
    const QList<pid_t> before = helpers();
    QCOMPARE(before.size(), 1);
    ::kill(before.first(), SIGKILL);
    m_server.thaw();
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), s_waitMs);
    QCOMPARE(result->errorMessage(), QString());
    QCOMPARE(result->size(), s_videos);
    QVERIFY(!helpers().contains(before.first()));
}

void TestVirtuoso::helperSaysNothing()
{
    useSettings(2s);
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
    const QList<pid_t> before = helpers();
    QCOMPARE(before.size(), 1);
    ::kill(before.first(), SIGSTOP);
    const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(library())));
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), s_waitMs);
    QCOMPARE(result->errorMessage(), QString());
    QCOMPARE(result->size(), s_videos);
    QVERIFY(!helpers().contains(before.first()));
}

void TestVirtuoso::quitsAfterTheUpdates()
{
    SparqlConnection connection(u"QVIRTUOSO"_s);
    for (int video = 100; video < 150; ++video) {
        const SparqlResult *result = connection.exec(
            propertyUpdate(storetexts::setProperty, u"at quit"_s, virtuosoVideo(video), u"nie:title"_s));
        QVERIFY(result);
    }
    QVERIFY(sparqlWaitForUpdates(s_waitMs));
    const QString count = m_server.sql(
        u"SPARQL SELECT (COUNT(*) AS ?n) FROM <%1> WHERE { ?v ?p \"at quit\" }"_s.arg(s_graph));
    QVERIFY2(count.contains(u"\n50\n"_s), qUtf8Printable(count));
}

void TestVirtuoso::endsInTheMiddle()
{
    {
        SparqlConnection connection(u"QVIRTUOSO"_s);
        QCOMPARE(ask(connection, library(), 8).rows.size(), s_videos);
        m_server.freeze();
        const SparqlResult *read = connection.exec(SparqlQuery(library()));
        const SparqlResult *update = connection.exec(
            propertyUpdate(storetexts::setProperty, u"lost"_s, virtuosoVideo(19), u"nie:title"_s));
        QVERIFY(read && update);
        QTRY_COMPARE_WITH_TIMEOUT(helpers().size(), 2, s_waitMs);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"1 updates were not sent.*"_s));
    }
    m_server.thaw();
    QVERIFY(helpers().isEmpty());
}

QTEST_GUILESS_MAIN(TestVirtuoso)

#include "servers_virtuoso.moc"
