// SPDX-License-Identifier: GPL-3.0-or-later
// What others change in a library on a real server, told to whoever listens for changes, through both
// drivers.
#include "platform/servers/changepoll.h"
#include "platform/servers/endpointdriver.h"
#include "platform/servers/resourceids.h"
#include "platform/servers/virtuosodriver.h"
#include "support/driventimer.h"
#include "support/fakesparqldriver.h"
#include "support/storequery.h"
#include "support/storetexts.h"
#include "support/virtuososerver.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using namespace storequery;
using Quad = ChangeNotifier::Quad;

namespace {

constexpr int Wait = 60000; // ms
constexpr int Videos = 300;
constexpr int VideoClass = 101;
constexpr int TitleId = 102;
constexpr int PositionId = 103;
constexpr int FileNameId = 104;
constexpr int TypeId = 105;
const QString graph = u"urn:kestrel:videos"_s;
const QString odbc = u"QVIRTUOSO"_s;
const QString endpoint = u"QSPARQL_ENDPOINT"_s;

QString prefixed(const QString &statement)
{
    return u"SPARQL PREFIX nmm: <http://tracker.api.gnome.org/ontology/v3/nmm#> "
           "PREFIX nie: <http://tracker.api.gnome.org/ontology/v3/nie#> "
           "PREFIX nfo: <http://tracker.api.gnome.org/ontology/v3/nfo#> "
           "PREFIX nrl: <http://tracker.api.gnome.org/ontology/v3/nrl#> "_s
        + statement;
}

int idOf(int video)
{
    return ResourceIds::shared().idOf(virtuosoVideo(video));
}

// "+3 -4 7:t": videos by their number in the server, sorted: new, gone, and whose title (p: position, f: file
// name) is another.
QString textOf(const QList<Quad> &deletes, const QList<Quad> &inserts)
{
    QHash<int, int> videos;
    for (int video = 0; video <= Videos; ++video)
        videos.insert(idOf(video), video);
    const auto word = [&videos](const Quad &quad, const QString &sign) {
        const QString video = QString::number(videos.value(quad.subject, -1));
        if (quad.predicate == TypeId)
            return sign + video;
        static const QHash<int, QString> letters{
            {TitleId, u"t"_s}, {PositionId, u"p"_s}, {FileNameId, u"f"_s}};
        return video + u':' + letters.value(quad.predicate, u"?"_s);
    };
    QStringList words;
    for (const Quad &quad : deletes)
        words.append(word(quad, u"-"_s));
    for (const Quad &quad : inserts)
        words.append(word(quad, u"+"_s));
    words.removeDuplicates();
    words.sort();
    return words.join(u' ');
}

} // namespace

class TestServerChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void init();
    void cleanup();
    void othersChanges_data();
    void othersChanges();
    void changesWhileTheListWasLoaded();
    void stampsOfTheServerAreUsed();
    void aServerThatIsAwayTakesNothingAway();

private:
    void startPoll();
    void pollOnce();
    void change(const QString &statement) { m_server.sql(prefixed(u"WITH <%1> "_s.arg(graph) + statement)); }
    // The library as the program loads it.
    LibrarySnapshot list();
    [[nodiscard]] QTimer *timer() const { return m_poll->findChild<QTimer *>(u"pollTimer"_s); }
    QString takeTold();

    QString m_driver;
    VirtuosoServer m_server;
    QTemporaryDir m_folder;
    std::unique_ptr<FakeSparqlStore> m_ownStore;
    std::unique_ptr<ChangePoll> m_poll;
    std::unique_ptr<ChangeNotifier> m_notifier;
    QList<Quad> m_deletes;
    QList<Quad> m_inserts;
    bool m_wasReset = false;
};

void TestServerChanges::initTestCase_data()
{
    QTest::addColumn<QString>("driver");
    QTest::newRow("odbc") << odbc;
    QTest::newRow("endpoint") << endpoint;
}

void TestServerChanges::initTestCase()
{
    QVERIFY(m_server.start());
    QFile file(m_folder.filePath(u"credentials"_s));
    QVERIFY(file.open(QIODevice::WriteOnly, QFile::ReadOwner | QFile::WriteOwner));
    file.write(
        u"[%1]\nuser = %2\npassword = %3\n"_s.arg(m_server.sqlAddress(), m_server.user(), m_server.password())
            .toUtf8());
}

void TestServerChanges::init()
{
    QFETCH_GLOBAL(const QString, driver);
    m_driver = driver;
    QVERIFY(m_server.fill(graph, Videos));
    ServerSettings settings;
    settings.odbcServer = m_server.sqlAddress();
    settings.graph = graph;
    ServerPatience patience;
    patience.firstRetry = 20ms;
    patience.firstProbe = 50ms;
    patience.lastProbe = 100ms;
    settings.queryAddress = QUrl(u"http://%1/sparql"_s.arg(m_server.httpAddress()));
    const auto credentials = [this] {
        return std::make_unique<Credentials>(QDBusConnection(u"none"_s), m_folder.filePath(u"credentials"_s));
    };
    SparqlDriverRegistry::registerDriver(odbc, [=](const SparqlConnectionOptions &) {
        return std::make_unique<VirtuosoDriver>(settings, patience, credentials(),
                                                QStringLiteral(KESTREL_BIN_DIR "/kestrel-odbc"));
    });
    SparqlDriverRegistry::registerDriver(endpoint, [=](const SparqlConnectionOptions &) {
        return std::make_unique<EndpointDriver>(settings, patience, credentials());
    });
    m_ownStore = std::make_unique<FakeSparqlStore>();
    m_ownStore->answerWith({{VideoClass, TitleId, PositionId, FileNameId, TypeId}});
}

void TestServerChanges::cleanup()
{
    m_poll.reset();
    m_notifier.reset();
    ChangeNotifier::setSource({});
    m_ownStore.reset();
    SparqlDriverRegistry::unregisterDriver(odbc);
    SparqlDriverRegistry::unregisterDriver(endpoint);
}

LibrarySnapshot TestServerChanges::list()
{
    const QString text
        = filled(filled(storetexts::library, u"%1"_s, u"<urn:equipment:own:M:>"_s), u"_FILTER_"_s, QString());
    SparqlConnection connection(m_driver);
    LibrarySnapshot snapshot;
    for (const QStringList &row : ask(connection, SparqlQuery(text), 8, Wait).rows)
        snapshot.add({row.at(7).toInt(), row.at(1), row.at(4), row.at(2)});
    return snapshot;
}

void TestServerChanges::startPoll()
{
    ChangePoll::Options options;
    options.driver = m_driver;
    options.interval = [] { return std::chrono::hours(1); };
    options.mostRows = 100;
    options.mostChanges = 50;
    m_poll = std::make_unique<ChangePoll>(options);
    ChangeNotifier::setSource([this](ChangeNotifier *notifier) { m_poll->attach(notifier); });
    m_notifier = std::make_unique<ChangeNotifier>(u"http://example.org/nmm#Video"_s);
    connect(m_notifier.get(), &ChangeNotifier::changed, this,
            [this](const QList<Quad> &deletes, const QList<Quad> &inserts) {
                m_deletes += deletes;
                m_inserts += inserts;
            });
    connect(m_notifier.get(), &ChangeNotifier::reset, this, [this] { m_wasReset = true; });
    QTRY_COMPARE_WITH_TIMEOUT(m_ownStore->open(), 0, Wait); // the numbers are read
    m_poll->setVisible(true);
}

void TestServerChanges::pollOnce()
{
    QVERIFY(runOut(timer()));
    QTRY_VERIFY_WITH_TIMEOUT(timer()->isActive(), Wait);
}

QString TestServerChanges::takeTold()
{
    const QString changes = textOf(std::exchange(m_deletes, {}), std::exchange(m_inserts, {}));
    return std::exchange(m_wasReset, false) ? u"reset"_s : changes;
}

void TestServerChanges::othersChanges_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QString>("told");
    const QString video = u'<' + virtuosoVideo(7) + u'>';
    QTest::newRow("title of the same length")
        << u"DELETE { %1 nie:title ?t } INSERT { %1 nie:title \"Vidoe 7\" } WHERE { %1 nie:title ?t }"_s.arg(
               video)
        << u"7:t"_s;
    QTest::newRow("title in another script")
        << u"DELETE { %1 nie:title ?t } INSERT { %1 nie:title \"日本 🎬\" } WHERE { %1 nie:title ?t }"_s.arg(
               video)
        << u"7:t"_s;
    QTest::newRow("title gone") << u"DELETE { %1 nie:title ?t } WHERE { %1 nie:title ?t }"_s.arg(video)
                                << u"7:t"_s;
    QTest::newRow("position")
        << u"DELETE { %1 nmm:runTime ?p } INSERT { %1 nmm:runTime 41 } WHERE { %1 nmm:runTime ?p }"_s.arg(
               video)
        << u"7:p"_s;
    QTest::newRow("file name")
        << u"DELETE { %1 nfo:fileName ?f } INSERT { %1 nfo:fileName \"x.mp4\" } WHERE { %1 nfo:fileName ?f }"_s
               .arg(video)
        << u"7:f"_s;
    QTest::newRow("gone") << u"DELETE { %1 ?p ?o } WHERE { %1 ?p ?o }"_s.arg(video) << u"-7"_s;
    QTest::newRow("new") << u"INSERT { <%1> ?p ?o } WHERE { %2 ?p ?o }"_s.arg(virtuosoVideo(Videos), video)
                         << u"+300"_s;
    QTest::newRow("what the list does not show")
        << u"DELETE { %1 nie:usageCounter ?c } INSERT { %1 nie:usageCounter 99 } WHERE { %1 nie:usageCounter ?c }"_s
               .arg(video)
        << QString();
    QTest::newRow("a third of the library")
        << u"DELETE { ?v nmm:runTime ?p } INSERT { ?v nmm:runTime 77 } WHERE { ?v nmm:runTime ?p . "
           "FILTER(?p < 30) }"_s
        << u"reset"_s;
}

void TestServerChanges::othersChanges()
{
    QFETCH(const QString, statement);
    startPoll();
    m_poll->setList(list());
    QCOMPARE(m_poll->snapshot().count(), Videos);
    pollOnce();
    QCOMPARE(takeTold(), QString());
    change(statement);
    pollOnce();
    QTEST(takeTold(), "told");
}

void TestServerChanges::changesWhileTheListWasLoaded()
{
    const LibrarySnapshot before = list();
    change(u"DELETE { <%1> ?p ?o } WHERE { <%1> ?p ?o }"_s.arg(virtuosoVideo(8)));
    change(
        u"DELETE { <%1> nie:title ?t } INSERT { <%1> nie:title \"Other\" } WHERE { <%1> nie:title ?t }"_s.arg(
            virtuosoVideo(9)));
    startPoll();
    m_poll->setList(before);
    pollOnce();
    QCOMPARE(takeTold(), u"-8 9:t"_s);
}

void TestServerChanges::stampsOfTheServerAreUsed()
{
    change(u"INSERT { ?v nrl:modified 5 } WHERE { ?v a nmm:Video }"_s);
    startPoll();
    m_poll->setList(list());
    pollOnce();
    const QString changeTitle
        = u"DELETE { <%1> nie:title ?t } INSERT { <%1> nie:title \"Other\" } WHERE { <%1> nie:title ?t }"_s;
    change(changeTitle.arg(virtuosoVideo(9)));
    pollOnce();
    QCOMPARE(takeTold(), QString()); // by nobody who sets stamps
    change(u"DELETE { <%1> nrl:modified 5 } INSERT { <%1> nrl:modified 6 } WHERE {}"_s.arg(virtuosoVideo(9)));
    pollOnce();
    QCOMPARE(takeTold(), u"9:t"_s);
}

void TestServerChanges::aServerThatIsAwayTakesNothingAway()
{
    startPoll();
    m_poll->setList(list());
    pollOnce();
    m_server.kill();
    pollOnce();
    QCOMPARE(takeTold(), QString());
    QVERIFY(!m_poll->isReachable());
    QVERIFY(m_server.restart());
    QTRY_VERIFY_WITH_TIMEOUT(m_poll->isReachable(), Wait);
    change(u"DELETE { <%1> ?p ?o } WHERE { <%1> ?p ?o }"_s.arg(virtuosoVideo(8)));
    QTRY_VERIFY_WITH_TIMEOUT(timer()->isActive(), Wait);
    pollOnce();
    QCOMPARE(takeTold(), u"-8"_s);
    QCOMPARE(m_poll->snapshot().count(), Videos - 1);
}

QTEST_GUILESS_MAIN(TestServerChanges)
#include "servers_changes.moc"
