// SPDX-License-Identifier: GPL-3.0-or-later
#include <data/trackernotifier.h>

#include "expectedtexts.h"

#include "support/driventimer.h"
#include "support/fakesparqldriver.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using Quad = ChangeNotifier::Quad;

struct TrackerNotifierProbe
{
    static QTimer *inserts(TrackerNotifier &notifier) { return notifier.m_insertsTimer; }
    static QTimer *deletes(TrackerNotifier &notifier) { return notifier.m_deletesTimer; }
};

namespace {

// Store ids of the class, its title, run time, file name and equipment.
constexpr int videoClass = 101;
constexpr int titleId = 102;
constexpr int runTimeId = 103;
constexpr int fileNameId = 104;
constexpr int equipmentId = 105;
constexpr int typeId = 106;

Quad isVideo(int subject)
{
    return {0, subject, typeId, videoClass};
}

Quad valueOf(int subject, int predicate)
{
    return {0, subject, predicate, -1};
}

QList<QList<int>> reports(const QSignalSpy &spy)
{
    QList<QList<int>> lists;
    for (const QVariantList &arguments : spy)
        lists.append(arguments.first().value<QList<int>>());
    return lists;
}

using Reports = QList<QList<int>>;

constexpr int anHour = 3600 * 1000;

// So that only the test lets it run out, however slow the machine is; its own interval has a test.
void stretch(QTimer *timer)
{
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(anHour);
}

} // namespace

class TestTrackerNotifier : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theClassAndItsPropertiesAreAskedForByTheirExactText();
    void theOntologyConnectionGoesAwayOnceRead();
    void bothTimersAreSingleShotsOfASecond();
    void signalsAndSlotsStandInTheirOrder();
    void tenCopiedVideosAreOneReportASecondAfterTheLast();
    void deletingForSecondsReportsEverySecondWhatWentSince();
    void aTitleEditIsReportedAtOnceWithoutATimer();
    void otherPropertiesAreNotReported_data();
    void otherPropertiesAreNotReported();
    void deletedPropertyValuesAreChangesToo();
    void theStoresNewsReachTheNotifier();
    void aSubjectInSeveralQuadsIsReportedOnce();
    void aVideoAddedAndChangedIsReportedBothWays();
    void aHundredThousandAdditionsAreTakenQuickly();
    void whatChangesBeforeTheIdsAreKnownIsReportedThen();
    void noResultIsWarnedOf();
    void aFailedOntologyQueryIsWarnedOf();
    void anEmptyOntologyAnswerIsWarnedOf();
    void aRebuiltStoreIsAskedForItsIdsAgain();
    void idsOfTheStoreBeforeAreNotReportedAsThoseOfTheNewOne();

private:
    std::unique_ptr<FakeSparqlStore> m_store;
    std::unique_ptr<TrackerNotifier> m_notifier;

    void start();
};

void TestTrackerNotifier::init()
{
    ChangeNotifier::setSource([](ChangeNotifier *) {});
    m_store = std::make_unique<FakeSparqlStore>();
    m_store->answerWith({{videoClass, titleId, runTimeId, fileNameId, equipmentId}});
}

void TestTrackerNotifier::cleanup()
{
    m_notifier.reset();
    m_store.reset();
    ChangeNotifier::setSource({});
}

void TestTrackerNotifier::start()
{
    m_notifier = std::make_unique<TrackerNotifier>(nullptr);
    QTRY_COMPARE(m_store->open(), 0);
}

void TestTrackerNotifier::theClassAndItsPropertiesAreAskedForByTheirExactText()
{
    start();
    QCOMPARE(m_store->texts(), QStringList{ExpectedTexts::ontology});
    QCOMPARE(m_store->statements().first().type, SparqlQuery::SelectStatement);
    QCOMPARE(m_notifier->findChild<ChangeNotifier *>()->classIri(),
             u"http://tracker.api.gnome.org/ontology/v3/nmm#Video"_s);
}

void TestTrackerNotifier::theOntologyConnectionGoesAwayOnceRead()
{
    m_notifier = std::make_unique<TrackerNotifier>(nullptr);
    QCOMPARE(m_store->open(), 1);
    QTRY_COMPARE(m_store->open(), 0);
    QVERIFY(m_store->statements().first().result.isNull());
}

void TestTrackerNotifier::bothTimersAreSingleShotsOfASecond()
{
    start();
    for (const QTimer *timer :
         {TrackerNotifierProbe::inserts(*m_notifier), TrackerNotifierProbe::deletes(*m_notifier)}) {
        QVERIFY(timer->isSingleShot());
        QCOMPARE(timer->interval(), 1000);
        QVERIFY(!timer->isActive());
    }
}

void TestTrackerNotifier::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = TrackerNotifier::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    signatures.removeAll("storeReset()");
    QCOMPARE(signatures,
             (QByteArrayList{"videosAdded(QList<int>)", "videosDeleted(QList<int>)",
                             "videosChanged(QList<int>)", "initIdVariables()",
                             "videoChanged(QList<ChangeNotifier::Quad>,QList<ChangeNotifier::Quad>)",
                             "insertsDone()", "deletesDone()"}));
}

void TestTrackerNotifier::tenCopiedVideosAreOneReportASecondAfterTheLast()
{
    start();
    QSignalSpy added(m_notifier.get(), &TrackerNotifier::videosAdded);
    QTimer *timer = TrackerNotifierProbe::inserts(*m_notifier);
    stretch(timer);
    for (int id = 1; id <= 9; ++id) {
        m_notifier->videoChanged({}, {isVideo(id)});
        QVERIFY(timer->isActive());
        QCOMPARE(added.size(), 0);
    }
    QTRY_VERIFY(timer->remainingTime() < anHour - 200);
    m_notifier->videoChanged({}, {isVideo(10)});
    QVERIFY2(timer->remainingTime() > anHour - 200, "each batch pushes the report back");
    QVERIFY(runOut(timer));
    QCOMPARE(reports(added), (Reports{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}}));
    QVERIFY(!timer->isActive());
    m_notifier->insertsDone();
    QCOMPARE(added.size(), 1);
}

void TestTrackerNotifier::deletingForSecondsReportsEverySecondWhatWentSince()
{
    start();
    QSignalSpy deleted(m_notifier.get(), &TrackerNotifier::videosDeleted);
    QTimer *timer = TrackerNotifierProbe::deletes(*m_notifier);
    stretch(timer);
    for (int second = 0; second < 3; ++second) {
        for (int i = 0; i < 3; ++i)
            m_notifier->videoChanged({isVideo(second * 10 + i)}, {});
        QTRY_VERIFY(timer->remainingTime() < anHour - 100);
        m_notifier->videoChanged({isVideo(second * 10 + 3)}, {});
        QVERIFY2(timer->remainingTime() < anHour - 100, "later deletions do not push the report back");
        QVERIFY(runOut(timer));
    }
    QCOMPARE(reports(deleted), (Reports{{0, 1, 2, 3}, {10, 11, 12, 13}, {20, 21, 22, 23}}));
}

void TestTrackerNotifier::aTitleEditIsReportedAtOnceWithoutATimer()
{
    start();
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    m_notifier->videoChanged({valueOf(7, titleId)}, {valueOf(7, titleId)});
    QCOMPARE(reports(changed), (Reports{{7}}));
    QVERIFY(!TrackerNotifierProbe::inserts(*m_notifier)->isActive());
    QVERIFY(!TrackerNotifierProbe::deletes(*m_notifier)->isActive());
    m_notifier->videoChanged({}, {valueOf(8, runTimeId), valueOf(9, fileNameId)});
    QCOMPARE(reports(changed), (Reports{{7}, {8, 9}}));
}

void TestTrackerNotifier::otherPropertiesAreNotReported_data()
{
    QTest::addColumn<int>("predicate");
    QTest::newRow("duration") << 301;
    QTest::newRow("MIME type") << 302;
    QTest::newRow("equipment") << equipmentId;
}

void TestTrackerNotifier::otherPropertiesAreNotReported()
{
    QFETCH(int, predicate);
    start();
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    m_notifier->videoChanged({valueOf(7, predicate)}, {valueOf(7, predicate)});
    QCOMPARE(changed.size(), 0);
    QVERIFY(!TrackerNotifierProbe::inserts(*m_notifier)->isActive());
    QVERIFY(!TrackerNotifierProbe::deletes(*m_notifier)->isActive());
}

void TestTrackerNotifier::deletedPropertyValuesAreChangesToo()
{
    start();
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    m_notifier->videoChanged({valueOf(5, runTimeId), valueOf(4, titleId)}, {valueOf(6, fileNameId)});
    QCOMPARE(reports(changed), (Reports{{5, 4, 6}}));
}

void TestTrackerNotifier::theStoresNewsReachTheNotifier()
{
    start();
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    QSignalSpy deleted(m_notifier.get(), &TrackerNotifier::videosDeleted);
    Q_EMIT m_notifier->findChild<ChangeNotifier *>()->changed({isVideo(5)}, {valueOf(6, titleId)});
    QCOMPARE(reports(changed), (Reports{{6}}));
    QVERIFY(runOut(TrackerNotifierProbe::deletes(*m_notifier)));
    QCOMPARE(reports(deleted), (Reports{{5}}));
}

void TestTrackerNotifier::aSubjectInSeveralQuadsIsReportedOnce()
{
    start();
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    QSignalSpy added(m_notifier.get(), &TrackerNotifier::videosAdded);
    QSignalSpy deleted(m_notifier.get(), &TrackerNotifier::videosDeleted);
    m_notifier->videoChanged({valueOf(7, titleId), isVideo(9), isVideo(9)},
                             {valueOf(7, titleId), valueOf(7, runTimeId), isVideo(8), isVideo(8)});
    m_notifier->videoChanged({isVideo(9)}, {isVideo(8), isVideo(3)});
    QVERIFY(runOut(TrackerNotifierProbe::inserts(*m_notifier)));
    QVERIFY(runOut(TrackerNotifierProbe::deletes(*m_notifier)));
    QCOMPARE(reports(changed), (Reports{{7}}));
    QCOMPARE(reports(added), (Reports{{8, 3}}));
    QCOMPARE(reports(deleted), (Reports{{9}}));
    // Reported ids are news again later.
    m_notifier->videoChanged({}, {isVideo(8)});
    QVERIFY(runOut(TrackerNotifierProbe::inserts(*m_notifier)));
    QCOMPARE(reports(added), (Reports{{8, 3}, {8}}));
}

void TestTrackerNotifier::aVideoAddedAndChangedIsReportedBothWays()
{
    start();
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    QSignalSpy added(m_notifier.get(), &TrackerNotifier::videosAdded);
    m_notifier->videoChanged({}, {isVideo(7), valueOf(7, titleId)});
    QCOMPARE(reports(changed), (Reports{{7}}));
    QVERIFY(runOut(TrackerNotifierProbe::inserts(*m_notifier)));
    QCOMPARE(reports(added), (Reports{{7}}));
}

void TestTrackerNotifier::aHundredThousandAdditionsAreTakenQuickly()
{
    start();
    QSignalSpy added(m_notifier.get(), &TrackerNotifier::videosAdded);
    QList<Quad> quads;
    for (int id = 1; id <= 100000; ++id)
        quads.append(isVideo(id));
    QElapsedTimer clock;
    clock.start();
    m_notifier->videoChanged({}, quads);
    m_notifier->videoChanged({}, quads);
    QVERIFY2(clock.elapsed() < 2000, "the time grows with the number, not with its square");
    QVERIFY(runOut(TrackerNotifierProbe::inserts(*m_notifier)));
    QCOMPARE(reports(added).first().size(), 100000);
}

void TestTrackerNotifier::whatChangesBeforeTheIdsAreKnownIsReportedThen()
{
    m_notifier = std::make_unique<TrackerNotifier>(nullptr);
    QSignalSpy changed(m_notifier.get(), qOverload<QList<int>>(&TrackerNotifier::videosChanged));
    m_notifier->videoChanged({valueOf(7, titleId)}, {valueOf(7, titleId)});
    m_notifier->videoChanged({}, {valueOf(8, runTimeId)});
    QVERIFY(changed.isEmpty());
    QTRY_COMPARE(reports(changed), (Reports{{7}, {8}}));
}

void TestTrackerNotifier::noResultIsWarnedOf()
{
    m_store->answer(FakeSparqlAnswer::null());
    QTest::ignoreMessage(QtWarningMsg, "TrackerNotifier::TrackerNotifier: no result");
    start();
}

void TestTrackerNotifier::aFailedOntologyQueryIsWarnedOf()
{
    m_store->answer(FakeSparqlAnswer::error(u"the store is closed"_s));
    QTest::ignoreMessage(QtWarningMsg,
                         "TrackerNotifier::TrackerNotifier: ontology query failed: the store is closed");
    start();
}

void TestTrackerNotifier::anEmptyOntologyAnswerIsWarnedOf()
{
    m_store->answerWith({});
    QTest::ignoreMessage(QtWarningMsg, "TrackerNotifier::TrackerNotifier: no ontology data");
    start();
}

void TestTrackerNotifier::aRebuiltStoreIsAskedForItsIdsAgain()
{
    start();
    QSignalSpy reset(m_notifier.get(), &TrackerNotifier::storeReset);
    QSignalSpy changed(m_notifier.get(), &TrackerNotifier::videosChanged);
    m_store->answerWith({{201, 202, 203, 204, 205}});
    Q_EMIT m_notifier->findChild<ChangeNotifier *>()->reset();
    QCOMPARE(reset.size(), 1);
    QTRY_COMPARE(m_store->open(), 0);
    QCOMPARE(m_store->texts().size(), 2);
    m_notifier->videoChanged({}, {valueOf(7, titleId), valueOf(8, 202)});
    QCOMPARE(reports(changed), (Reports{{8}}));
}

// A video is deleted, and within that second the store is rebuilt: its number names another video now, whose
// pictures must not go.
void TestTrackerNotifier::idsOfTheStoreBeforeAreNotReportedAsThoseOfTheNewOne()
{
    start();
    QSignalSpy added(m_notifier.get(), &TrackerNotifier::videosAdded);
    QSignalSpy deleted(m_notifier.get(), &TrackerNotifier::videosDeleted);
    m_notifier->videoChanged({isVideo(7)}, {isVideo(8)});
    Q_EMIT m_notifier->findChild<ChangeNotifier *>()->reset();
    QVERIFY(!TrackerNotifierProbe::inserts(*m_notifier)->isActive());
    QVERIFY(!TrackerNotifierProbe::deletes(*m_notifier)->isActive());
    QTRY_COMPARE(m_store->open(), 0);
    m_notifier->videoChanged({isVideo(9)}, {isVideo(10)});
    QVERIFY(runOut(TrackerNotifierProbe::inserts(*m_notifier)));
    QVERIFY(runOut(TrackerNotifierProbe::deletes(*m_notifier)));
    QCOMPARE(reports(added), (Reports{{10}}));
    QCOMPARE(reports(deleted), (Reports{{9}}));
}

QTEST_GUILESS_MAIN(TestTrackerNotifier)
#include "test_trackernotifier.moc"
