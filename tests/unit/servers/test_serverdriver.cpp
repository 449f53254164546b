// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/serverdriver.h"
#include "platform/servers/standarddialect.h"
#include "platform/sparql/outstandingupdates.h"
#include "platform/sparql/sparqlresult.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

// A driver whose server is the test.
class OwnDriver : public ServerDriver
{
public:
    struct Sent
    {
        StatementId id;
        QString text;
        bool isUpdate;
    };

    explicit OwnDriver(const ServerPatience &patience, const ServerSettings &settings = {})
        : ServerDriver(settings, patience)
    {
    }

    void answerRows(int index, const QStringList &texts, int columns = 1)
    {
        Answer answer;
        answer.table = RowTable(columns);
        for (const QString &text : texts)
            QVERIFY(answer.table.append(RowTable::Type::Text, text.toUtf8()));
        answered(sent[index].id, std::move(answer));
    }
    void end(int index, Ending ending, std::chrono::milliseconds retryAfter = 0ms)
    {
        answered(sent[index].id, {ending, {}, u"it says no"_s, retryAfter});
    }
    using ServerDriver::Ending;

    QList<Sent> sent;
    QList<StatementId> cancelled;

protected:
    void send(StatementId id, const StandardStatement &statement, bool isUpdate) override
    {
        sent.append({id, statement.text, isUpdate});
    }
    void cancel(StatementId id) override { cancelled.append(id); }
};

using Ending = OwnDriver::Ending;

const SparqlQuery anyRead(u"SELECT ?_v WHERE { ?_v a nmm:Video }"_s);

SparqlQuery titleOf(const QString &iri)
{
    return SparqlQuery(u"SELECT ?_prop WHERE {     <%1> nie:title ?_prop . }"_s.arg(iri));
}

SparqlQuery setTitle(const QString &iri, const QString &title)
{
    return SparqlQuery(u"DELETE { <%1> nie:title ?_insert } WHERE { <%1> nie:title ?_insert .} INSERT { <%1> "
                       "nie:title \"%2\" }"_s.arg(iri, title),
                       SparqlQuery::UpdateStatement);
}

ServerPatience impatient()
{
    ServerPatience patience;
    patience.mostAttempts = 3;
    patience.firstRetry = 1ms;
    patience.firstProbe = 1ms;
    patience.lastProbe = 4ms;
    return patience;
}

} // namespace

class TestServerDriver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void readsGoSideBySideUpToALimit();
    void updatesGoOneByOneInOrder();
    void aReadWaitsForWhatIsBeingWritten();
    void aReadIsRepeatedAndThenFails_data();
    void aReadIsRepeatedAndThenFails();
    void aRefusedReadIsNotRepeated();
    void aBusyServerIsWaitedForOnlySoLong();
    void anUpdateThatMayHaveBeenDoneIsNotRepeated_data();
    void anUpdateThatMayHaveBeenDoneIsNotRepeated();
    void anUpdateThatWasNotSeenWaitsForTheServer();
    void aServerForUpdatesThatIsAwayIsNoLostLibrary();
    void aSilentStatementAloneIsNoLostServer();
    void aSilentServerIsLost();
    void aLookUpIsAnsweredWithoutTheServer();
    void nobodyWantsTheAnswer();
    void updatesAreOutstandingUntilTheyAreThrough();
    void partsMakeOneAnswer();
    void aVideoWithSeveralTitlesHasOneRow();
    void theConnectionGoesWithItsAnswer();

private:
    void waitForSent(qsizetype count) { QTRY_COMPARE_WITH_TIMEOUT(m_driver->sent.size(), count, 30000); }

    std::unique_ptr<OwnDriver> m_driver;
    std::unique_ptr<QObject> m_owner;
};

void TestServerDriver::init()
{
    m_driver = std::make_unique<OwnDriver>(impatient());
    m_owner = std::make_unique<QObject>();
}

void TestServerDriver::cleanup()
{
    m_owner.reset();
    m_driver.reset();
    QCOMPARE(OutstandingUpdates::instance().count(), 0);
}

void TestServerDriver::readsGoSideBySideUpToALimit()
{
    QList<SparqlResult *> results;
    for (int i = 0; i < 6; ++i)
        results.append(m_driver->exec(anyRead, m_owner.get()));
    QCOMPARE(m_driver->sent.size(), 4);
    m_driver->answerRows(2, {u"a"_s, u"b"_s});
    QVERIFY(results[2]->isFinished());
    QCOMPARE(results[2]->size(), 2);
    QVERIFY(results[2]->next());
    QCOMPARE(results[2]->value(0).toString(), u"a"_s);
    QCOMPARE(m_driver->sent.size(), 5);
}

void TestServerDriver::updatesGoOneByOneInOrder()
{
    for (const QString &title : {u"one"_s, u"two"_s, u"three"_s})
        QVERIFY(!m_driver->exec(setTitle(u"urn:a"_s, title), m_owner.get())->hasError());
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(m_driver->sent.size(), i + 1);
        m_driver->end(i, Ending::Answered);
    }
    QVERIFY(m_driver->sent[0].text.contains(u"one"_s) && m_driver->sent[1].text.contains(u"two"_s)
            && m_driver->sent[2].text.contains(u"three"_s));
}

void TestServerDriver::aReadWaitsForWhatIsBeingWritten()
{
    QVERIFY(!m_driver->exec(setTitle(u"urn:a"_s, u"x"_s), m_owner.get())->hasError());
    QVERIFY(!m_driver->exec(titleOf(u"urn:a"_s), m_owner.get())->hasError());
    QVERIFY(!m_driver->exec(titleOf(u"urn:b"_s), m_owner.get())->hasError());
    QCOMPARE(m_driver->sent.size(), 2);
    QVERIFY(m_driver->sent[1].text.contains(u"urn:b"_s));
    m_driver->end(0, Ending::Answered);
    QCOMPARE(m_driver->sent.size(), 3);
    QVERIFY(m_driver->sent[2].text.contains(u"urn:a"_s));
}

void TestServerDriver::aReadIsRepeatedAndThenFails_data()
{
    QTest::addColumn<Ending>("ending");
    QTest::addColumn<bool>("isReachable");
    QTest::newRow("not reached") << Ending::NotReached << false;
    QTest::newRow("lost") << Ending::Lost << false;
    QTest::newRow("busy") << Ending::Busy << true;
}

void TestServerDriver::aReadIsRepeatedAndThenFails()
{
    QFETCH(Ending, ending);
    QFETCH(bool, isReachable);
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    SparqlResult *result = m_driver->exec(anyRead, m_owner.get());
    for (int i = 0; i < 3; ++i) {
        QVERIFY(!result->isFinished());
        waitForSent(i + 1);
        m_driver->end(i, ending);
    }
    QVERIFY(result->isFinished());
    QCOMPARE(result->errorMessage(), u"it says no"_s);
    QCOMPARE(reachable.isEmpty(), isReachable);

    result = m_driver->exec(anyRead, m_owner.get());
    const auto last = m_driver->sent.size() - 1;
    m_driver->end(int(last), Ending::Lost);
    QCOMPARE(result->isFinished(), !isReachable); // one attempt is enough while it is known to be away
}

void TestServerDriver::aRefusedReadIsNotRepeated()
{
    SparqlResult *result = m_driver->exec(anyRead, m_owner.get());
    m_driver->end(0, Ending::Refused);
    QCOMPARE(result->errorMessage(), u"it says no"_s);
    QCOMPARE(m_driver->sent.size(), 1);
}

void TestServerDriver::aBusyServerIsWaitedForOnlySoLong()
{
    SparqlResult *result = m_driver->exec(anyRead, m_owner.get());
    m_driver->end(0, Ending::Busy, 2ms);
    waitForSent(2);
    m_driver->end(1, Ending::Busy, 24h);
    QVERIFY(result->hasError());
}

void TestServerDriver::anUpdateThatMayHaveBeenDoneIsNotRepeated_data()
{
    QTest::addColumn<Ending>("ending");
    QTest::newRow("lost") << Ending::Lost;
    QTest::newRow("silent") << Ending::Silent;
    QTest::newRow("refused") << Ending::Refused;
}

void TestServerDriver::anUpdateThatMayHaveBeenDoneIsNotRepeated()
{
    QFETCH(Ending, ending);
    SparqlResult *result = m_driver->exec(setTitle(u"urn:a"_s, u"one"_s), m_owner.get());
    SparqlResult *next = m_driver->exec(setTitle(u"urn:a"_s, u"two"_s), m_owner.get());
    m_driver->end(0, ending);
    QVERIFY(result->hasError());
    QVERIFY(!next->isFinished());
    int updates = 0;
    for (const auto &sent : std::as_const(m_driver->sent))
        updates += sent.isUpdate ? 1 : 0;
    QCOMPARE(updates, 2);
    QVERIFY(m_driver->sent.constLast().text.contains(u"two"_s));
    m_driver->end(int(m_driver->sent.size()) - 1, Ending::Answered);
    QVERIFY(!next->hasError() && next->isFinished());
}

// A title is edited on the train; the server has it when the tunnel ends.
void TestServerDriver::anUpdateThatWasNotSeenWaitsForTheServer()
{
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    SparqlResult *update = m_driver->exec(setTitle(u"urn:a"_s, u"one"_s), m_owner.get());
    for (int i = 0; i < 3; ++i) {
        waitForSent(i + 1);
        m_driver->end(i, Ending::NotReached);
    }
    QCOMPARE(reachable.size(), 1);
    QVERIFY(!update->isFinished());

    // Reading does not wait for it meanwhile.
    SparqlResult *read = m_driver->exec(titleOf(u"urn:a"_s), m_owner.get());
    QCOMPARE(m_driver->sent.size(), 4);
    m_driver->end(3, Ending::NotReached);
    QVERIFY(read->hasError());

    waitForSent(5);
    QSignalSpy reset(m_driver.get(), &SparqlDriver::reset);
    m_driver->answerRows(4, {}); // the probe
    QCOMPARE(reachable.size(), 2);
    QCOMPARE(reachable[1][0].toBool(), true);
    QCOMPARE(reset.size(), 1); // the read that failed
    QCOMPARE(m_driver->sent.size(), 6);
    QVERIFY(m_driver->sent[5].isUpdate);
    m_driver->end(5, Ending::Answered);
    QVERIFY(update->isFinished() && !update->hasError());
}

// The library is browsed as before, and what was written goes out when its server is back.
void TestServerDriver::aServerForUpdatesThatIsAwayIsNoLostLibrary()
{
    ServerSettings settings;
    settings.queryAddress = QUrl(u"http://replicas.example/sparql"_s);
    settings.updateAddress = QUrl(u"http://primary.example/sparql"_s);
    m_driver = std::make_unique<OwnDriver>(impatient(), settings);
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    SparqlResult *update = m_driver->exec(setTitle(u"urn:a"_s, u"one"_s), m_owner.get());
    SparqlResult *read = m_driver->exec(titleOf(u"urn:a"_s), m_owner.get());
    for (int i = 0; i < 4; ++i) {
        waitForSent(i + 1);
        QVERIFY(m_driver->sent[i].isUpdate);
        m_driver->end(i, Ending::NotReached);
    }
    QCOMPARE(m_driver->sent.size(), 5); // the read waits no longer
    QVERIFY(!m_driver->sent[4].isUpdate);
    m_driver->answerRows(4, {u"before"_s});
    QVERIFY(read->isFinished() && !read->hasError());
    waitForSent(6);
    QVERIFY(m_driver->sent[5].isUpdate && !update->isFinished());
    m_driver->end(5, Ending::Answered);
    QVERIFY(update->isFinished() && !update->hasError());
    QCOMPARE(reachable.size(), 0);
}

void TestServerDriver::aSilentStatementAloneIsNoLostServer()
{
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    QSignalSpy reset(m_driver.get(), &SparqlDriver::reset);
    SparqlResult *result = m_driver->exec(anyRead, m_owner.get());
    m_driver->end(0, Ending::Silent);
    QVERIFY(result->hasError());
    QCOMPARE(m_driver->sent.size(), 2); // is it there?
    m_driver->answerRows(1, {});
    QCOMPARE(reachable.size() + reset.size(), 0);
}

void TestServerDriver::aSilentServerIsLost()
{
    QSignalSpy reachable(m_driver.get(), &SparqlDriver::reachableChanged);
    QSignalSpy reset(m_driver.get(), &SparqlDriver::reset);
    SparqlResult *result = m_driver->exec(anyRead, m_owner.get());
    m_driver->end(0, Ending::Silent);
    QVERIFY(result->hasError());
    for (int probe = 1; probe < 5; ++probe) {
        waitForSent(probe + 1);
        m_driver->end(probe, Ending::Silent);
        QCOMPARE(reachable.size(), 1);
    }
    // Any answer says that it is back.
    waitForSent(6);
    SparqlResult *next = m_driver->exec(anyRead, m_owner.get());
    m_driver->answerRows(int(m_driver->sent.size()) - 1, {u"a"_s});
    QCOMPARE(next->size(), 1);
    QCOMPARE(reachable.size(), 2);
    QCOMPARE(reset.size(), 1);
}

void TestServerDriver::aLookUpIsAnsweredWithoutTheServer()
{
    ServerPatience patience = impatient();
    patience.addressLookup = 20ms;
    m_driver = std::make_unique<OwnDriver>(patience);
    SparqlResult *result = m_driver->exec(
        SparqlQuery(u"SELECT ?_urn WHERE {  ?_urn a nmm:Video .  ?_urn nie:url \"file:///a.mp4\" . }"_s),
        m_owner.get());
    QTRY_VERIFY_WITH_TIMEOUT(result->isFinished(), 30000);
    QVERIFY(!result->hasError());
    QCOMPARE(result->size(), 0);
    QCOMPARE(m_driver->cancelled, QList<quint64>{m_driver->sent[0].id});
    m_driver->answerRows(0, {u"late"_s});
    QCOMPARE(result->size(), 0);
}

void TestServerDriver::nobodyWantsTheAnswer()
{
    for (int i = 0; i < 5; ++i)
        QVERIFY(m_driver->exec(anyRead, m_owner.get()));
    QCOMPARE(m_driver->sent.size(), 4);
    const QList<SparqlResult *> results = m_owner->findChildren<SparqlResult *>(Qt::FindDirectChildrenOnly);
    delete results[1];
    QCOMPARE(m_driver->cancelled, QList<quint64>{m_driver->sent[1].id});
    QCOMPARE(m_driver->sent.size(), 5); // its place is free
    m_driver->answerRows(1, {u"late"_s});
}

void TestServerDriver::updatesAreOutstandingUntilTheyAreThrough()
{
    delete m_driver->exec(setTitle(u"urn:a"_s, u"one"_s), m_owner.get());
    QCOMPARE(OutstandingUpdates::instance().count(), 1);
    QVERIFY(m_driver->cancelled.isEmpty()); // it goes out also when everybody who asked for it is gone
    m_driver->end(0, Ending::Answered);
    QCOMPARE(OutstandingUpdates::instance().count(), 0);
}

void TestServerDriver::partsMakeOneAnswer()
{
    QStringList ids;
    for (int i = 0; i <= idsPerText; ++i)
        ids.append(QString::number(ResourceIds::shared().idOf(u"urn:part:%1"_s.arg(i))));
    SparqlResult *result = m_driver->exec(
        SparqlQuery(u"SELECT ?_urn WHERE { ?_urn a nmm:Video . FILTER(tracker:id(?_urn) IN (%1))}"_s.arg(
            ids.join(u','))),
        m_owner.get());
    QCOMPARE(m_driver->sent.size(), 1);
    m_driver->answerRows(0, {u"a"_s, u"b"_s});
    QVERIFY(!result->isFinished());
    QCOMPARE(m_driver->sent.size(), 2);
    m_driver->end(1, Ending::Lost); // a part is repeated for itself
    waitForSent(3);
    QCOMPARE(m_driver->sent[2].text, m_driver->sent[1].text);
    m_driver->answerRows(2, {u"c"_s});
    QCOMPARE(result->size(), 3);
    QVERIFY(result->next() && result->next() && result->next());
    QCOMPARE(result->value(0).toString(), u"c"_s);
}

void TestServerDriver::aVideoWithSeveralTitlesHasOneRow()
{
    const QStringList cells
        = {u"urn:a"_s, u"Eins"_s, u"1"_s, u"urn:a"_s, u"One"_s, u"1"_s, u"urn:b"_s, u"Two"_s, u"2"_s};
    const SparqlQuery list(u"SELECT ?_v ?_t tracker:id(?_v) WHERE { ?_v nie:title ?_t }"_s);
    const SparqlQuery count(u"SELECT ?_w ?_t tracker:id(?_v) WHERE { ?_v nie:title ?_t }"_s);
    for (const auto &[query, rows] : {std::pair(list, 2), std::pair(count, 3)}) {
        SparqlResult *result = m_driver->exec(query, m_owner.get());
        m_driver->answerRows(int(m_driver->sent.size()) - 1, cells, 3);
        QVERIFY(result->isFinished());
        QCOMPARE(result->size(), rows);
        QVERIFY(result->next());
        QCOMPARE(result->stringValue(1), u"Eins"_s);
    }
}

void TestServerDriver::theConnectionGoesWithItsAnswer()
{
    SparqlResult *result = m_driver->exec(anyRead, m_owner.get());
    connect(result, &SparqlResult::finished, this, [this] { m_driver.reset(); });
    m_driver->answerRows(0, {u"a"_s});
    QVERIFY(!m_driver);
}

QTEST_GUILESS_MAIN(TestServerDriver)
#include "test_serverdriver.moc"
