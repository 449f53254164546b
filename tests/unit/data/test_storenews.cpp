// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackerinterfacefixture.h"

#include <data/storenews.h>

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the store layer tells beside its answers, and the plays that it counts where the store does not.
class TestStoreNews : public TrackerInterfaceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }
    void serversAreTwoOfTheModes_data();
    void serversAreTwoOfTheModes();
    void aPlayIsOneMoreAndNow_data();
    void aPlayIsOneMoreAndNow();
    void aPlayThatCannotBeCountedIsNot();
    void aVideoWithoutAPlaceIsAtItsBeginningOnAServer_data();
    void aVideoWithoutAPlaceIsAtItsBeginningOnAServer();
    void storedPropertiesAreTold();
    void aListThatFailedIsTold();
    void aStoreThatCannotBeReachedIsTold();

private:
    static QString updateOf(const QString &property, const QString &value)
    {
        return u"DELETE { <%1> %2 ?_insert } WHERE { <%1> %2 ?_insert .} INSERT { <%1> %2 \"%3\" }"_s.arg(
            urn, property, value);
    }
};

void TestStoreNews::serversAreTwoOfTheModes_data()
{
    QTest::addColumn<bool>("onServer");
    QTest::newRow("QTRACKER") << false;
    QTest::newRow("QTRACKER_DIRECT") << false;
    QTest::newRow("QSPARQL_ENDPOINT") << true;
    QTest::newRow("QVIRTUOSO") << true;
}

void TestStoreNews::serversAreTwoOfTheModes()
{
    TrackerInterface::setTrackerMode(QString::fromLatin1(QTest::currentDataTag()));
    QTEST(TrackerInterface::isOnServer(), "onServer");
}

void TestStoreNews::aPlayIsOneMoreAndNow_data()
{
    QTest::addColumn<QList<QVariantList>>("stored");
    QTest::addColumn<QString>("count");
    QTest::newRow("never") << QList<QVariantList>() << u"1"_s;
    QTest::newRow("thrice") << QList<QVariantList>{{3}} << u"4"_s;
    QTest::newRow("as text") << QList<QVariantList>{{u"9"_s}} << u"10"_s;
}

void TestStoreNews::aPlayIsOneMoreAndNow()
{
    QFETCH(const QList<QVariantList>, stored);
    QFETCH(const QString, count);
    m_driver->answerWith(stored);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    m_store->recordPlay(urn);
    QTRY_COMPARE_WITH_TIMEOUT(m_driver->texts(SparqlQuery::UpdateStatement).size(), 2, 20000);
    const QStringList updates = m_driver->texts(SparqlQuery::UpdateStatement);
    QCOMPARE(updates.first(), updateOf(u"nie:usageCounter"_s, count));
    const QString written = updates.last().section(u'"', 1, 1);
    QCOMPARE(updates.last(), updateOf(u"nie:contentAccessed"_s, written));
    const QDateTime time = QDateTime::fromString(written, Qt::ISODate);
    QVERIFY2(time >= before && time <= QDateTime::currentDateTimeUtc(), qPrintable(written));
}

// A count that nobody knows is not made one.
void TestStoreNews::aPlayThatCannotBeCountedIsNot()
{
    m_driver->answer(FakeSparqlAnswer::later());
    m_store->recordPlay(QString());
    QCOMPARE(texts(), QStringList());
    m_store->recordPlay(urn);
    QTest::ignoreMessage(QtWarningMsg,
                         "void TrackerInterface::recordPlay(const QString&) Error in query: \"gone\"");
    m_driver->fail(lastStatement(), u"gone"_s);
    QCOMPARE(m_driver->texts(SparqlQuery::UpdateStatement), QStringList());
}

void TestStoreNews::aVideoWithoutAPlaceIsAtItsBeginningOnAServer_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<bool>("isThere");
    QTest::addColumn<QString>("place");
    QTest::newRow("own store") << u"QTRACKER"_s << true << u"no such video"_s;
    QTest::newRow("server") << u"QVIRTUOSO"_s << true << u"0"_s;
    QTest::newRow("server without it") << u"QVIRTUOSO"_s << false << u"no such video"_s;
}

// Somebody leaves a video that nobody has ever played, and the program is killed.
void TestStoreNews::aVideoWithoutAPlaceIsAtItsBeginningOnAServer()
{
    QFETCH(const QString, mode);
    QFETCH(const bool, isThere);
    TrackerInterface::setTrackerMode(mode);
    m_driver->answerWhen(u"nmm:runTime"_s, FakeSparqlAnswer::rows({}));
    m_driver->answerWhen(
        u"nie:url"_s, FakeSparqlAnswer::rows(isThere ? QList<QVariantList>{{url}} : QList<QVariantList>()));
    QString place;
    QVERIFY(m_store->askStoredPlace(urn, [&place](const TrackerInterface::StoredPlace &stored) {
        place = !stored.answered ? u"no answer"_s
                                 : (stored.position ? QString::number(*stored.position) : u"no such video"_s);
    }));
    QTRY_VERIFY_WITH_TIMEOUT(!place.isEmpty(), 20000);
    QTEST(place, "place");
}

void TestStoreNews::storedPropertiesAreTold()
{
    m_driver->answer(FakeSparqlAnswer::later());
    QSignalSpy stored(m_store->news(), &StoreNews::propertyStored);
    QVERIFY(m_store->setTitle(urn, u"Lake"_s));
    QVERIFY(m_store->setPlayedTime(urn, 17));
    const int last = lastStatement();
    m_driver->fail(last - 1, u"no"_s);
    QCOMPARE(stored.size(), 0);
    m_driver->finish(last);
    QCOMPARE(stored.size(), 1);
    QCOMPARE(stored.first(), (QVariantList{urn, u"nmm:runTime"_s}));
}

void TestStoreNews::aListThatFailedIsTold()
{
    m_driver->answer(FakeSparqlAnswer::later());
    QSignalSpy failed(m_store->news(), &StoreNews::listFailed);
    QVERIFY(m_store->allVideos(0) != 0);
    m_driver->finish(lastStatement());
    QCOMPARE(failed.size(), 0);
    QVERIFY(m_store->allVideos(0) != 0);
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::allVideosReady() Error in query: \"gone\"");
    m_driver->fail(lastStatement(), u"gone"_s);
    QCOMPARE(failed.size(), 1);
}

void TestStoreNews::aStoreThatCannotBeReachedIsTold()
{
    QSignalSpy reachable(m_store->news(), &StoreNews::reachableChanged);
    QVERIFY(m_store->news()->isReachable());
    m_driver->setReachable(false);
    QVERIFY(!m_store->news()->isReachable());
    m_driver->setReachable(true);
    QCOMPARE(reachable.size(), 2);
}

QTEST_GUILESS_MAIN(TestStoreNews)
#include "test_storenews.moc"
