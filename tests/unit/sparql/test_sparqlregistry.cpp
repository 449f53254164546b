// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/sparql/sparqlconnection.h"
#include "support/fakesparqldriver.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestSparqlRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFourNamesAreRegistered();
    void unknownNameFailsAtOnceAndStillFinishesOnce();
    void driversToComeSayWhichTheyAre_data();
    void driversToComeSayWhichTheyAre();
    void fakeRecordsExactTexts();
    void fakeAnswersRowsThroughTheEventLoop();
    void fakeAnswersLate();
    void fakeAnswersWithErrors();
    void fakeAnswersNever();
    void fakeGivesNoResult();
    void unregisteringBringsTheBuiltInDriverBack();
    void resetReachesTheConnection();
    void tellsOnceWhetherTheStoreCanBeReached();
    void resultsDieWithTheirConnection();
    void idsAreUniqueAndNotZero();
};

void TestSparqlRegistry::theFourNamesAreRegistered()
{
    const QStringList expected = {u"QSPARQL_ENDPOINT"_s, u"QTRACKER"_s, u"QTRACKER_DIRECT"_s, u"QVIRTUOSO"_s};
    QCOMPARE(SparqlDriverRegistry::driverNames(), expected);
}

void TestSparqlRegistry::unknownNameFailsAtOnceAndStillFinishesOnce()
{
    QTest::ignoreMessage(QtWarningMsg, "there is no store driver named qtracker");
    SparqlConnection connection(u"qtracker"_s);
    QVERIFY(!connection.isValid());
    SparqlResult *result = connection.exec(SparqlQuery(u"SELECT 1 {}"_s));
    QSignalSpy finished(result, &SparqlResult::finished);
    QVERIFY(result->hasError());
    QCOMPARE(result->errorMessage(), u"there is no store driver named \"qtracker\""_s);
    QVERIFY(!result->isFinished());
    QVERIFY(finished.wait(TestPatience));
    QVERIFY(result->isFinished());
    QVERIFY(!result->next());
    QCoreApplication::processEvents();
    QCOMPARE(finished.size(), 1);
}

void TestSparqlRegistry::driversToComeSayWhichTheyAre_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("endpoint") << u"QSPARQL_ENDPOINT"_s;
    QTest::newRow("virtuoso") << u"QVIRTUOSO"_s;
}

void TestSparqlRegistry::driversToComeSayWhichTheyAre()
{
    QFETCH(const QString, name);
    SparqlConnection connection(name);
    QVERIFY(connection.isValid());
    QCOMPARE(connection.driverName(), name);
    SparqlResult *result = connection.exec(SparqlQuery(u"SELECT 1 {}"_s));
    QVERIFY(result->hasError());
    QVERIFY2(result->errorMessage().startsWith(name + u": "_s), qUtf8Printable(result->errorMessage()));
    QSignalSpy finished(result, &SparqlResult::finished);
    QVERIFY(finished.wait(TestPatience));
}

void TestSparqlRegistry::fakeRecordsExactTexts()
{
    FakeSparqlStore store;
    SparqlConnection connection(u"QTRACKER"_s);
    const QString select = u"SELECT   ?_a { ?_a a nmm:Video }"_s;
    const QString update = u"INSERT DATA { <urn:a> nie:title \"x\" }"_s;
    QVERIFY(connection.exec(SparqlQuery(select)));
    QVERIFY(connection.exec(SparqlQuery(update, SparqlQuery::UpdateStatement)));
    QCOMPARE(store.texts(), QStringList({select, update}));
    QCOMPARE(store.texts(SparqlQuery::UpdateStatement), QStringList({update}));
    QCOMPARE(store.lastText(), update);
}

void TestSparqlRegistry::fakeAnswersRowsThroughTheEventLoop()
{
    FakeSparqlStore store;
    store.answerWith({{u"urn:a"_s, u"Title"_s, 17}, {u"urn:b"_s}});
    store.answerWhen(u"nmm:runTime"_s, FakeSparqlAnswer::rows({{60}}));
    SparqlConnection connection(u"QTRACKER"_s);
    SparqlResult *rows = connection.exec(SparqlQuery(u"SELECT ?a"_s));
    SparqlResult *time = connection.exec(SparqlQuery(u"SELECT nmm:runTime"_s));
    QCOMPARE(rows->parent(), &connection);
    QSignalSpy finished(rows, &SparqlResult::finished);
    QVERIFY(!rows->next());
    QVERIFY(finished.wait(TestPatience));
    QCOMPARE(rows->size(), 2);
    QVERIFY(rows->next());
    QCOMPARE(rows->stringValue(0), u"urn:a"_s);
    QCOMPARE(rows->value(2).toInt(), 17);
    QVERIFY(rows->next());
    QVERIFY(!rows->value(1).isValid());
    QVERIFY(!rows->next());
    QTRY_VERIFY(time->isFinished());
    QVERIFY(time->next());
    QCOMPARE(time->stringValue(0), u"60"_s);
}

void TestSparqlRegistry::fakeAnswersLate()
{
    FakeSparqlStore store;
    store.answer(FakeSparqlAnswer::later());
    SparqlConnection connection(u"QTRACKER"_s);
    SparqlResult *first = connection.exec(SparqlQuery(u"first"_s));
    SparqlResult *second = connection.exec(SparqlQuery(u"second"_s));
    QSignalSpy firstFinished(first, &SparqlResult::finished);
    QSignalSpy secondFinished(second, &SparqlResult::finished);
    store.finish(1, {{1}});
    QCOMPARE(secondFinished.size(), 1);
    QCOMPARE(firstFinished.size(), 0);
    store.fail(0, u"gone"_s);
    QCOMPARE(firstFinished.size(), 1);
    QCOMPARE(first->errorMessage(), u"gone"_s);
}

void TestSparqlRegistry::fakeAnswersWithErrors()
{
    FakeSparqlStore store;
    store.answer(FakeSparqlAnswer::immediateError(u"no"_s));
    store.answerWhen(u"later"_s, FakeSparqlAnswer::error(u"not now"_s));
    SparqlConnection connection(u"QTRACKER"_s);
    QVERIFY(connection.exec(SparqlQuery(u"x"_s))->hasError());
    SparqlResult *result = connection.exec(SparqlQuery(u"later"_s));
    QVERIFY(!result->hasError());
    QSignalSpy finished(result, &SparqlResult::finished);
    QVERIFY(finished.wait(TestPatience));
    QVERIFY(result->hasError());
    QCOMPARE(result->errorMessage(), u"not now"_s);
}

void TestSparqlRegistry::fakeAnswersNever()
{
    FakeSparqlStore store;
    store.answer(FakeSparqlAnswer::never());
    SparqlConnection connection(u"QTRACKER"_s);
    SparqlResult *result = connection.exec(SparqlQuery(u"x"_s));
    QSignalSpy finished(result, &SparqlResult::finished);
    QVERIFY(!finished.wait(50));
    QVERIFY(!result->isFinished());
}

void TestSparqlRegistry::fakeGivesNoResult()
{
    FakeSparqlStore store;
    store.answerBy([](const SparqlQuery &) { return FakeSparqlAnswer::null(); });
    SparqlConnection connection(u"QTRACKER"_s);
    QCOMPARE(connection.exec(SparqlQuery(u"x"_s)), nullptr);
    QCOMPARE(store.texts(), QStringList({u"x"_s}));
}

void TestSparqlRegistry::unregisteringBringsTheBuiltInDriverBack()
{
    {
        FakeSparqlStore store(u"QVIRTUOSO"_s);
        SparqlConnection connection(u"QVIRTUOSO"_s);
        QVERIFY(!connection.exec(SparqlQuery(u"x"_s))->hasError());
        QCOMPARE(store.opened(), 1);
        QCOMPARE(store.open(), 1);
    }
    SparqlConnection connection(u"QVIRTUOSO"_s);
    QVERIFY(connection.exec(SparqlQuery(u"x"_s))->hasError());
    {
        FakeSparqlStore store(u"OWN"_s);
        QVERIFY(SparqlDriverRegistry::driverNames().contains(u"OWN"_s));
    }
    QVERIFY(!SparqlDriverRegistry::driverNames().contains(u"OWN"_s));
}

void TestSparqlRegistry::resetReachesTheConnection()
{
    FakeSparqlStore store;
    SparqlConnection connection(u"QTRACKER"_s);
    QSignalSpy reset(&connection, &SparqlConnection::reset);
    store.reset();
    QCOMPARE(reset.size(), 1);
}

// The network goes away, comes back, and every statement that failed meanwhile said so again.
void TestSparqlRegistry::tellsOnceWhetherTheStoreCanBeReached()
{
    FakeSparqlStore store;
    SparqlConnection connection(u"QTRACKER"_s);
    QSignalSpy reachable(&connection, &SparqlConnection::reachableChanged);
    QVERIFY(connection.isReachable());
    QList<bool> heard;
    for (const bool now : {true, false, false, true, true, false})
        store.setReachable(now);
    for (const QList<QVariant> &told : std::as_const(reachable))
        heard.append(told.first().toBool());
    QCOMPARE(heard, QList<bool>({false, true, false}));
    QVERIFY(!connection.isReachable());
}

void TestSparqlRegistry::resultsDieWithTheirConnection()
{
    FakeSparqlStore store;
    auto connection = std::make_unique<SparqlConnection>(u"QTRACKER"_s);
    const QPointer<SparqlResult> result = connection->exec(SparqlQuery(u"x"_s));
    connection.reset();
    QVERIFY(result.isNull());
    QCOMPARE(store.open(), 0);
    QCoreApplication::processEvents();
}

void TestSparqlRegistry::idsAreUniqueAndNotZero()
{
    FakeSparqlStore store;
    SparqlConnection connection(u"QTRACKER"_s);
    QSet<int> ids;
    for (int i = 0; i < 100; ++i)
        ids.insert(connection.exec(SparqlQuery(u"x"_s))->id());
    QCOMPARE(ids.size(), 100);
    QVERIFY(!ids.contains(0));
}

QTEST_GUILESS_MAIN(TestSparqlRegistry)
#include "test_sparqlregistry.moc"
