// SPDX-License-Identifier: GPL-3.0-or-later
// What a statement lives through: a store that is late, slow, restarted, gone.
#include "platform/sparql/changenotifier.h"
#include "platform/sparql/outstandingupdates.h"
#include "platform/sparql/sparqldriver.h"
#include "support/heartbeat.h"
#include "support/storepeercontrol.h"
#include "support/storequery.h"
#include "support/storetexts.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace storequery;

namespace {

const QString allVideos = u"SELECT ?_v nie:title(?_v) WHERE { ?_v a nmm:Video }"_s;
const QString oneVideo
    = u"INSERT DATA { <urn:uuid:a> a nmm:Video, nfo:FileDataObject ; nie:url \"file:///v/a.mp4\" ; "
      "nfo:fileName \"a.mp4\" }"_s;

SparqlQuery setTitle(const QString &title)
{
    return propertyUpdate(storetexts::setProperty, title, u"urn:uuid:a"_s, u"nie:title"_s);
}

// Nobody looks at the answer; it dies with the connection.
void give(SparqlConnection &connection, const SparqlQuery &query)
{
    const SparqlResult *result = connection.exec(query);
    QVERIFY(result);
}

QString titleText()
{
    return filled(filled(storetexts::property, u"_URN_"_s, u"urn:uuid:a"_s), u"_PROPERTY_"_s, u"nie:title"_s);
}

constexpr char withoutBusVariable[] = "KESTREL_TEST_WITHOUT_BUS";

void ignoreLostStore()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the store is not there: .*"_s));
}

} // namespace

class TestTrackerDriver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        if (!qEnvironmentVariableIsSet(withoutBusVariable))
            m_peer = std::make_unique<StorePeerControl>();
    }
    void cleanup()
    {
        QVERIFY(sparqlWaitForUpdates());
        m_peer.reset();
    }

    void finishesOnceAndNeverWithinExec();
    void errorsComeWithFinished();
    void statementsWaitForALateStore();
    void addressLookUpIsAnsweredWithoutAStore();
    void addressLookUpIsAnsweredByAStalledStore();
    void storeThatComesLateIsTold();
    void restartIsToldAndStatementsGoOn();
    void killedWhileReadingGivesAllRowsOrNone();
    void killedWithUpdatesUnderWayLosesNone();
    void stalledStoreNeverBlocks();
    void longAnswerNeverBlocks();
    void whatWasWrittenIsRead();
    void updatesKeepTheirOrder();
    void updateOutlivesItsConnection();
    void quitWaitsForUpdates();
    void quitDoesNotWaitForEver();
    void deletingWithWorkOutstanding_data();
    void deletingWithWorkOutstanding();
    void deletingInTheAnswer();
    void queriesWaitWhileTheServiceHasNoDatabase();
    void directReadsTheFolder();
    void changesAreHandedOn();
    void rebuiltStoreIsTold();
    void withoutABus();

private:
    std::unique_ptr<StorePeerControl> m_peer;
};

void TestTrackerDriver::finishesOnceAndNeverWithinExec()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    for (const SparqlQuery &query :
         {SparqlQuery(allVideos), setTitle(u"x"_s),
          propertyUpdate(storetexts::setProperty, u"x"_s, QString(), u"nie:title"_s)}) {
        const std::unique_ptr<SparqlResult> result(connection.exec(query));
        QVERIFY(!result->isFinished());
        QVERIFY(!result->hasError());
        QVERIFY(!result->next());
        QSignalSpy finished(result.get(), &SparqlResult::finished);
        QVERIFY(finished.wait(TestPatience));
        QVERIFY(result->isFinished());
        // A second statement has come and gone: a second finished() would have come too.
        select(connection, allVideos);
        QCOMPARE(finished.size(), 1);
    }
}

void TestTrackerDriver::errorsComeWithFinished()
{
    SparqlConnection connection(u"QTRACKER"_s);
    const Answer parseError = select(connection, u"SELECT ?_v WHERE { nonsense"_s);
    QVERIFY2(parseError.error.contains(u"Parser error"_s), qUtf8Printable(parseError.error));
    QCOMPARE(parseError.rows.size(), 0);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the store did not take an update: .*"_s));
    QVERIFY(update(connection, u"INSERT DATA { <urn:x> no:such \"thing\" }"_s).error.contains(u"no:such"_s));
    QCOMPARE(select(connection, allVideos), Answer());
}

void TestTrackerDriver::statementsWaitForALateStore()
{
    m_peer->setDelay(2000); // longer than a busy machine takes for what follows
    const Heartbeat heartbeat;
    SparqlConnection connection(u"QTRACKER"_s);
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    SparqlResult *insert = connection.exec(SparqlQuery(oneVideo, SparqlQuery::UpdateStatement));
    SparqlResult *rows = connection.exec(SparqlQuery(titleText()));
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
    QVERIFY(!m_peer->isRunning());
    QTRY_VERIFY(rows->isFinished() && insert->isFinished());
    QVERIFY(!insert->hasError() && !rows->hasError());
    // Nothing was answered without it: nothing is stale.
    QCOMPARE(reset.size(), 0);
}

void TestTrackerDriver::addressLookUpIsAnsweredWithoutAStore()
{
    m_peer->forbidStart();
    ignoreLostStore();
    SparqlConnection connection(u"QTRACKER"_s);
    SparqlResult *other = connection.exec(SparqlQuery(allVideos));
    qint64 took = 0;
    for (int attempt = 0; attempt < 3 && (took == 0 || took >= 3000);
         ++attempt) { // of a busy machine the best
        QElapsedTimer clock;
        clock.start();
        const Answer answer = select(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///v/a.mp4"_s));
        took = clock.elapsed();
        QCOMPARE(answer, Answer());
        QVERIFY2(took >= 1900, qPrintable(QString::number(took)));
    }
    QVERIFY2(took < 3000, qPrintable(QString::number(took)));
    QVERIFY(!other->isFinished());
}

void TestTrackerDriver::addressLookUpIsAnsweredByAStalledStore()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    m_peer->stall();
    const Answer answer = select(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///v/a.mp4"_s));
    QCOMPARE(answer, Answer());
    m_peer->goOn();
    QCOMPARE(select(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///v/a.mp4"_s)).rows.size(), 1);
}

void TestTrackerDriver::storeThatComesLateIsTold()
{
    m_peer->setDelay(2500);
    SparqlConnection connection(u"QTRACKER"_s);
    ChangeNotifier notifier(u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    QSignalSpy notifierReset(&notifier, &ChangeNotifier::reset);
    QCOMPARE(select(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///v/a.mp4"_s)), Answer());
    QCOMPARE(reset.size(), 0);
    QVERIFY(reset.wait(TestPatience));
    QCOMPARE(reset.size(), 1);
    QCOMPARE(notifierReset.size(), 1);
}

void TestTrackerDriver::restartIsToldAndStatementsGoOn()
{
    SparqlConnection connection(u"QTRACKER"_s);
    ChangeNotifier notifier(u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    QSignalSpy notifierReset(&notifier, &ChangeNotifier::reset);
    QCOMPARE(update(connection, oneVideo).error, QString());
    for (int restarts = 1; restarts <= 3; ++restarts) {
        ignoreLostStore();
        m_peer->kill();
        // It is brought up again, and knows what it knew.
        QCOMPARE(select(connection, allVideos).rows.size(), 1);
        QTRY_COMPARE(reset.size(), restarts);
        QCOMPARE(notifierReset.size(), restarts);
    }
}

void TestTrackerDriver::killedWhileReadingGivesAllRowsOrNone()
{
    constexpr int videos = 3000;
    QVERIFY(m_peer->start());
    m_peer->fill(videos);
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(select(connection, allVideos).rows.size(), videos);
    for (int delay = 0; delay < 30; delay += 5) {
        const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(allVideos)));
        QSignalSpy finished(result.get(), &SparqlResult::finished);
        QTimer::singleShot(delay, this, [this] {
            ignoreLostStore();
            m_peer->kill();
        });
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 15000);
        QCOMPARE(result->errorMessage(), QString());
        QCOMPARE(result->size(), videos);
        QTRY_VERIFY(m_peer->isRunning());
        QCOMPARE(select(connection, allVideos).rows.size(), videos);
    }
}

void TestTrackerDriver::killedWithUpdatesUnderWayLosesNone()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    m_peer->stall();
    QList<SparqlResult *> results;
    for (int i = 0; i < 5; ++i)
        results.append(connection.exec(setTitle(QString::number(i))));
    ignoreLostStore();
    m_peer->kill();
    QTRY_VERIFY(results.constLast()->isFinished());
    for (const SparqlResult *result : results)
        QCOMPARE(result->errorMessage(), QString());
    QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{u"4"_s}}));
}

void TestTrackerDriver::stalledStoreNeverBlocks()
{
    constexpr int videos = 5000;
    QVERIFY(m_peer->start());
    m_peer->fill(videos);
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());

    Heartbeat heartbeat;
    // Some have their answer half way over, others are not yet begun; some are given up meanwhile.
    QList<SparqlResult *> results;
    for (int i = 0; i < 8; ++i)
        results.append(connection.exec(SparqlQuery(allVideos)));
    QTRY_VERIFY(heartbeat.beats() > 2);
    m_peer->stall();
    SparqlResult *title = connection.exec(setTitle(u"x"_s));
    results.append(connection.exec(SparqlQuery(allVideos)));
    SparqlConnection second(u"QTRACKER"_s);
    SparqlResult *elsewhere = second.exec(SparqlQuery(allVideos));
    delete results.takeAt(0);
    delete results.takeAt(5);
    const int before = heartbeat.beats();
    QTRY_VERIFY(heartbeat.beats() > before + 100);
    QVERIFY(!results.constLast()->isFinished());
    QVERIFY(!title->isFinished());
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());

    m_peer->goOn();
    // Four are read at a time: the last one asked is not the last one answered.
    QTRY_VERIFY(std::all_of(results.cbegin(), results.cend(),
                            [](const SparqlResult *result) { return result->isFinished(); }));
    QTRY_VERIFY(elsewhere->isFinished());
    for (const SparqlResult *result : results)
        QCOMPARE(result->size(), videos + 1);
}

void TestTrackerDriver::longAnswerNeverBlocks()
{
    constexpr int videos = 20000;
    QVERIFY(m_peer->start());
    m_peer->fill(videos);
    SparqlConnection connection(u"QTRACKER"_s);
    Heartbeat heartbeat;
    const QString text = storetexts::library.arg(u"<urn:equipment:x:>"_s).replace(u"_FILTER_"_s, QString());
    const std::unique_ptr<SparqlResult> result(connection.exec(SparqlQuery(text)));
    QSignalSpy finished(result.get(), &SparqlResult::finished);
    QVERIFY(finished.wait(20000));
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
    QCOMPARE(result->size(), videos);
}

// The player saves the place, and it is asked for at once.
void TestTrackerDriver::whatWasWrittenIsRead()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    for (int i = 0; i < 20; ++i) {
        const QString title = QString::number(i);
        give(connection, setTitle(title));
        QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{title}}));
    }
}

void TestTrackerDriver::updatesKeepTheirOrder()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    for (int i = 0; i <= 50; ++i)
        give(connection, setTitle(QString::number(i)));
    QVERIFY(sparqlWaitForUpdates(10000));
    QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{u"50"_s}}));
}

void TestTrackerDriver::updateOutlivesItsConnection()
{
    m_peer->setDelay(200);
    {
        SparqlConnection connection(u"QTRACKER"_s);
        give(connection, SparqlQuery(oneVideo, SparqlQuery::UpdateStatement));
        delete connection.exec(setTitle(u"kept"_s));
    }
    QVERIFY(sparqlWaitForUpdates(10000));
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{u"kept"_s}}));
}

void TestTrackerDriver::quitWaitsForUpdates()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    m_peer->stall();
    QTimer::singleShot(300, this, [this] { m_peer->goOn(); });
    give(connection, setTitle(u"last"_s));
    QCOMPARE(OutstandingUpdates::instance().count(), 1);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(sparqlWaitForUpdates());
    QVERIFY(clock.elapsed() >= 200);
    QCOMPARE(OutstandingUpdates::instance().count(), 0);
    QVERIFY(sparqlWaitForUpdates(0));
}

void TestTrackerDriver::quitDoesNotWaitForEver()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    m_peer->stall();
    give(connection, setTitle(u"last"_s));
    QTest::ignoreMessage(QtWarningMsg, "1 updates were not acknowledged within 300 ms");
    QVERIFY(!sparqlWaitForUpdates(300));
    m_peer->goOn();
    QVERIFY(sparqlWaitForUpdates(5000));
}

void TestTrackerDriver::deletingWithWorkOutstanding_data()
{
    QTest::addColumn<QString>("driver");
    QTest::addColumn<bool>("isRunning");
    QTest::addColumn<int>("events");
    for (const QString &driver : {u"QTRACKER"_s, u"QTRACKER_DIRECT"_s}) {
        for (const bool isRunning : {true, false}) {
            for (const int events : {0, 1, 3, 10}) {
                QTest::addRow("%s, %s, %d turns", qPrintable(driver), isRunning ? "running" : "starting",
                              events)
                    << driver << isRunning << events;
            }
        }
    }
}

void TestTrackerDriver::deletingWithWorkOutstanding()
{
    QFETCH(const QString, driver);
    QFETCH(const bool, isRunning);
    QFETCH(const int, events);
    if (isRunning)
        QVERIFY(m_peer->start());
    {
        SparqlConnection connection(driver);
        ChangeNotifier notifier(u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
        give(connection, SparqlQuery(oneVideo, SparqlQuery::UpdateStatement));
        QList<SparqlResult *> results;
        for (int i = 0; i < 10; ++i)
            results.append(connection.exec(i % 3 == 0 ? setTitle(u"x"_s) : SparqlQuery(allVideos)));
        for (int i = 0; i < events; ++i)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        for (int i = 0; i < 10; i += 2)
            delete results.at(i);
    }
    SparqlConnection again(driver);
    QCOMPARE(select(again, allVideos).error, QString());
}

void TestTrackerDriver::deletingInTheAnswer()
{
    auto connection = std::make_unique<SparqlConnection>(u"QTRACKER"_s);
    const QPointer<SparqlResult> first = connection->exec(SparqlQuery(allVideos));
    connect(first, &SparqlResult::finished, this, [&] { connection.reset(); });
    QTRY_VERIFY(!connection);
    QVERIFY(first.isNull());

    connection = std::make_unique<SparqlConnection>(u"QTRACKER"_s);
    const QPointer<SparqlResult> second = connection->exec(SparqlQuery(allVideos));
    connect(second, &SparqlResult::finished, this, [&] { delete second; });
    QTRY_VERIFY(second.isNull());
    QCOMPARE(select(*connection, allVideos), Answer());
    ignoreLostStore();
    connect(connection.get(), &SparqlConnection::reset, this, [&] { connection.reset(); });
    m_peer->kill();
    QTRY_VERIFY(!connection);
}

// The database is moved aside and made anew while the service goes on.
void TestTrackerDriver::queriesWaitWhileTheServiceHasNoDatabase()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    m_peer->serve(false);
    QList<SparqlResult *> results;
    for (int i = 0; i < 6; ++i)
        results.append(connection.exec(SparqlQuery(allVideos)));
    QCOMPARE(select(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///v/a.mp4"_s)), Answer());
    for (const SparqlResult *result : results)
        QVERIFY(!result->isFinished());
    m_peer->serve(true);
    QTRY_VERIFY(
        std::all_of(results.begin(), results.end(), [](const auto *result) { return result->isFinished(); }));
    for (const SparqlResult *result : results)
        QCOMPARE(result->size(), 1);
}

void TestTrackerDriver::directReadsTheFolder()
{
    // Nothing is there yet: neither a service nor a database.
    SparqlConnection connection(u"QTRACKER_DIRECT"_s);
    QCOMPARE(update(connection, oneVideo).error, QString());
    QCOMPARE(select(connection, allVideos).rows.size(), 1);
    QCOMPARE(ask(connection, setTitle(u"title"_s)).error, QString());
    QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{u"title"_s}}));
    const QString text = storetexts::library.arg(u"<urn:equipment:x:>"_s).replace(u"_FILTER_"_s, QString());
    QCOMPARE(select(connection, text).rows, QList<QStringList>({{u"urn:uuid:a"_s}}));
    // Reading needs no service.
    m_peer->stall();
    give(connection, SparqlQuery(allVideos));
    QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{u"title"_s}}));
    m_peer->goOn();
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    m_peer->emitReset();
    QVERIFY(reset.wait(TestPatience));
    QCOMPARE(select(connection, titleText()).rows, QList<QStringList>({{u"title"_s}}));
}

void TestTrackerDriver::changesAreHandedOn()
{
    SparqlConnection connection(u"QTRACKER"_s);
    ChangeNotifier notifier(u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
    QSignalSpy changed(&notifier, &ChangeNotifier::changed);
    select(connection, allVideos);
    m_peer->emitChanged({{0, 5, 6, -1}, {1, 2, 3, 4}}, {{0, 5, 6, -1}});
    QTRY_COMPARE(changed.size(), 1);
    const auto deletes = changed[0][0].value<QList<ChangeNotifier::Quad>>();
    const auto inserts = changed[0][1].value<QList<ChangeNotifier::Quad>>();
    QCOMPARE(deletes.size(), 2);
    QVERIFY((deletes[0] == ChangeNotifier::Quad{0, 5, 6, -1})
            && (deletes[1] == ChangeNotifier::Quad{1, 2, 3, 4}));
    QCOMPARE(inserts.size(), 1);
    QVERIFY((inserts[0] == ChangeNotifier::Quad{0, 5, 6, -1}));

    QTest::ignoreMessage(QtWarningMsg, "the store tells no changes of urn:some:Class");
    ChangeNotifier other(u"urn:some:Class"_s);
    QSignalSpy otherChanged(&other, &ChangeNotifier::changed);
    m_peer->emitChanged({{1, 2, 3, 4}}, {});
    QTRY_COMPARE(changed.size(), 2);
    QCOMPARE(otherChanged.size(), 0);
}

void TestTrackerDriver::rebuiltStoreIsTold()
{
    SparqlConnection connection(u"QTRACKER"_s);
    ChangeNotifier notifier(u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    QSignalSpy notifierReset(&notifier, &ChangeNotifier::reset);
    select(connection, allVideos);
    m_peer->emitReset();
    QTRY_COMPARE(reset.size(), 1);
    QTRY_COMPARE(notifierReset.size(), 1);
}

// Where there is no session bus at all, which only another process can see: a file is played all the same.
void TestTrackerDriver::withoutABus()
{
    if (!qEnvironmentVariableIsSet(withoutBusVariable)) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent/bus"_s);
        environment.insert(QString::fromLatin1(withoutBusVariable), u"1"_s);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {u"withoutABus"_s});
        QVERIFY(process.waitForFinished());
        QVERIFY2(process.exitCode() == 0, process.readAllStandardOutput().constData());
        return;
    }
    QTest::ignoreMessage(QtWarningMsg, "the store is not there: there is no session bus");
    SparqlConnection connection(u"QTRACKER"_s);
    const SparqlResult *other = connection.exec(SparqlQuery(allVideos));
    QCOMPARE(select(connection, filled(storetexts::byUrl, u"_URL_"_s, u"file:///v/a.mp4"_s)), Answer());
    QVERIFY(!other->isFinished());
    QVERIFY(sparqlWaitForUpdates());
}

QTEST_GUILESS_MAIN(TestTrackerDriver)
#include "test_trackerdriver.moc"
