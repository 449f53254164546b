// SPDX-License-Identifier: GPL-3.0-or-later
// What the store layer says when a request fails, and that nobody is answered then.
#include "trackerinterfacefixture.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestTrackerFailures : public TrackerInterfaceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }

    void aFailedRequestReturnsZero_data();
    void aFailedRequestReturnsZero();
    void whoeverSavesHearsWhetherTheStoreTookIt();
    void theStoredPlaceIsTold();
    void aLateErrorGivesNoAnswer_data();
    void aLateErrorGivesNoAnswer();
    void anErrorLeavesTheGivenPosition();
    void noRowGivesNoAnswer_data();
    void noRowGivesNoAnswer();
    void slotsWithoutAResultWarn_data();
    void slotsWithoutAResultWarn();

private:
    void addRequests();
};

void TestTrackerFailures::aFailedRequestReturnsZero_data()
{
    QTest::addColumn<bool>("withResult");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no result") << false << u"NULL result for query"_s;
    QTest::newRow("an error at once") << true << u"Error in query: \"no such driver\""_s;
}

void TestTrackerFailures::aFailedRequestReturnsZero()
{
    QFETCH(bool, withResult);
    QFETCH(QString, reason);
    m_driver->answer(withResult ? FakeSparqlAnswer::immediateError(u"no such driver"_s)
                                : FakeSparqlAnswer::null());
    const QByteArray executing
        = ("int TrackerInterface::executeQuery(const SparqlQuery&, const char*) " + reason.toUtf8());
    QTest::ignoreMessage(QtWarningMsg, executing.constData());
    QCOMPARE(m_store->allVideos(0), 0);
    QTest::ignoreMessage(QtWarningMsg, executing.constData());
    QVERIFY(!m_store->setPlayedTime(urn, 1));
    const QByteArray changing = "void TrackerInterface::videosChanged(QList<int>) " + reason.toUtf8();
    QTest::ignoreMessage(QtWarningMsg, changing.constData());
    m_store->videosChanged(QList<int>{1});
}

void TestTrackerFailures::whoeverSavesHearsWhetherTheStoreTookIt()
{
    QStringList story;
    const auto note = [&story](bool stored) { story.append(stored ? u"stored"_s : u"refused"_s); };
    m_driver->answer(FakeSparqlAnswer::later());
    QVERIFY(m_store->setPlayedTime(urn, 12, note));
    QVERIFY(m_store->setPlayedTime(urn, 13, note));
    const int last = lastStatement();
    QCOMPARE(m_driver->statements().at(last).type, SparqlQuery::UpdateStatement);
    QCOMPARE(story, QStringList());
    m_driver->finish(last - 1);
    QCOMPARE(story, QStringList{u"stored"_s});
    m_driver->fail(last, u"the disk is full"_s);
    QCOMPARE(story, (QStringList{u"stored"_s, u"refused"_s}));
    QTRY_VERIFY(m_driver->statements().at(last).result.isNull());
    // What was not even given to it has no answer.
    m_driver->answer(FakeSparqlAnswer::null());
    QTest::ignoreMessage(QtWarningMsg,
                         "int TrackerInterface::executeQuery(const SparqlQuery&, const char*) "
                         "NULL result for query");
    QVERIFY(!m_store->setPlayedTime(urn, 14, note));
    QCOMPARE(story.size(), 2);
}

void TestTrackerFailures::theStoredPlaceIsTold()
{
    QStringList story;
    const auto ask = [this, &story] {
        return m_store->askStoredPlace(urn, [&story](const TrackerInterface::StoredPlace &place) {
            story.append(!place.answered      ? u"no answer"_s
                             : place.position ? QString::number(*place.position)
                                              : u"no such video"_s);
        });
    };
    m_driver->answer(FakeSparqlAnswer::later());
    QVERIFY(ask());
    QCOMPARE(lastText(), u"SELECT ?_prop WHERE {     <urn:uuid:1> nmm:runTime ?_prop . }"_s);
    m_driver->finish(lastStatement(), {{17}});
    QVERIFY(ask());
    m_driver->finish(lastStatement());
    QVERIFY(ask());
    m_driver->fail(lastStatement(), u"gone"_s);
    QCOMPARE(story, (QStringList{u"17"_s, u"no such video"_s, u"no answer"_s}));
    m_driver->answer(FakeSparqlAnswer::null());
    QTest::ignoreMessage(QtWarningMsg,
                         "int TrackerInterface::executeQuery(const SparqlQuery&, const char*) "
                         "NULL result for query");
    QVERIFY(!ask());
    QCOMPARE(story.size(), 3);
}

void TestTrackerFailures::aLateErrorGivesNoAnswer_data()
{
    addRequests();
    QTest::newRow("allVideosReady") << Request([](TrackerInterface &store) { return store.allVideos(0); });
    QTest::newRow("dataFromUrlReady")
        << Request([](TrackerInterface &store) { return store.dataFromUrl(url, 0); });
    QTest::newRow("videosChangedReady") << Request([](TrackerInterface &store) {
        store.videosChanged(QList<int>{1});
        return 1;
    });
}

void TestTrackerFailures::aLateErrorGivesNoAnswer()
{
    QFETCH(Request, request);
    m_driver->answer(FakeSparqlAnswer::later());
    const auto answers = spyOnAllAnswers();
    QVERIFY(request(*m_store) != 0);
    const int index = lastStatement();
    const auto result = m_driver->statements().at(index).result;
    const QByteArray warning = QByteArray("void TrackerInterface::") + QTest::currentDataTag()
        + "() Error in query: \"connection lost\"";
    QTest::ignoreMessage(QtWarningMsg, warning.constData());
    m_driver->fail(index, u"connection lost"_s);
    QCOMPARE(seen(answers), QByteArrayList());
    QTRY_VERIFY(result.isNull());
}

// Asked at a place while the store fails, then asked again: the place is not lost.
void TestTrackerFailures::anErrorLeavesTheGivenPosition()
{
    m_driver->answer(FakeSparqlAnswer::later());
    m_store->dataFromUrl(url, 40);
    QTest::ignoreMessage(QtWarningMsg,
                         "void TrackerInterface::dataFromUrlReady() Error in query: \"closed\"");
    m_driver->fail(lastStatement(), u"closed"_s);
    m_driver->answerWith({row(u"T"_s, u"a.mp4"_s)});
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromUrlFinished);
    m_store->dataFromUrl(url, 0);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().first().value<VideoInfo>().playPosition, 40u);
}

void TestTrackerFailures::noRowGivesNoAnswer_data()
{
    addRequests();
}

void TestTrackerFailures::noRowGivesNoAnswer()
{
    QFETCH(Request, request);
    const auto answers = spyOnAllAnswers();
    m_driver->answerWith({});
    QVERIFY(request(*m_store) != 0);
    const auto result = m_driver->statements().last().result;
    const QByteArray warning
        = QByteArray("void TrackerInterface::") + QTest::currentDataTag() + "() No data in query result";
    QTest::ignoreMessage(QtWarningMsg, warning.constData());
    QTRY_VERIFY(result.isNull());
    QCOMPARE(seen(answers), QByteArrayList());
}

void TestTrackerFailures::slotsWithoutAResultWarn_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const char *slot :
         {"playedTimeReady", "dataFromUrlReady", "dataFromUrnReady", "dataFromIdReady", "videoDetailsReady",
          "allVideosReady", "urnReady", "urlReady", "titleReady", "playCountReady", "videosChangedReady"})
        QTest::newRow(slot) << QByteArray(slot);
}

void TestTrackerFailures::slotsWithoutAResultWarn()
{
    QFETCH(QByteArray, slot);
    QTest::ignoreMessage(QtWarningMsg,
                         ("void TrackerInterface::" + slot + "() NULL result for query").constData());
    QVERIFY(QMetaObject::invokeMethod(m_store.get(), slot.constData()));
}

// Every request of which a failure leaves no answer, by the slot that reads it.
void TestTrackerFailures::addRequests()
{
    QTest::addColumn<Request>("request");
    const auto add = [](const char *slot, const Request &request) { QTest::newRow(slot) << request; };
    add("dataFromUrnReady", [](TrackerInterface &store) { return store.dataFromUrn(urn); });
    add("videoDetailsReady", [](TrackerInterface &store) { return store.videoDetails(urn); });
    add("urnReady", [](TrackerInterface &store) { return store.urnForUrl(url); });
    add("urlReady", [](TrackerInterface &store) { return store.urlForUrn(urn); });
    add("titleReady", [](TrackerInterface &store) { return store.title(urn); });
    add("playCountReady", [](TrackerInterface &store) { return store.playCount(urn); });
    add("playedTimeReady", [](TrackerInterface &store) { return store.playedTime(urn); });
}

QTEST_GUILESS_MAIN(TestTrackerFailures)
#include "test_trackerfailures.moc"
