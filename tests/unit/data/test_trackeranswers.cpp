// SPDX-License-Identifier: GPL-3.0-or-later
// What the store layer makes of the answers and of the notifier's reports.
#include "trackerinterfacefixture.h"

#include <platform/sparql/sparqlconnection.h>

#include <QPointer>
#include <QSet>
#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

class TestTrackerAnswers : public TrackerInterfaceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }

    void rowsFallBackToTheFileNameUpToItsLastDot();
    void recordsFallBackToTheFileNameUpToItsLastDot();
    void titlesFallBackToTheFileNameUpToItsFirstDot_data();
    void titlesFallBackToTheFileNameUpToItsFirstDot();
    void unboundValuesAreEmptyTexts();
    void aResultWithoutRowsIsAnEmptyLibrary();
    void everyRequestIsAnsweredUnderItsId();
    void anAnswerByIdIsReadLikeOneByIri();

    void anUnknownAddressIsAnsweredWithTheAddress();
    void aGivenPositionReplacesTheStoredOneOnce();
    void aGivenPositionIsKeptForAnUnknownAddress();
    void addressesInFlightShareTheLastOnesValues();

    void thePositionOfDetailsIsThePlayCount();
    void emptyDetailsKeepTheirDefaults();

    void deletionsOfTheNotifierArePassedOn();
    void additionsAndChangesBecomeFreshRows();
    void aStoreThatWasReplacedIsAskedForAllVideosOnce();
    void resultsAreReleased();
};

void TestTrackerAnswers::rowsFallBackToTheFileNameUpToItsLastDot()
{
    m_driver->answerWith({row(QString(), u"holiday.part1.mp4"_s), row(u"Titled"_s, u"b.mp4"_s)});
    QSignalSpy answers(m_store.get(), &TrackerInterface::allVideosFinished);
    const int id = m_store->allVideos(0);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().at(1).toInt(), id);
    const auto rows = answers.first().first().value<QList<QStringList>>();
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0),
             (QStringList{urn, u"holiday.part1"_s, u"holiday.part1.mp4"_s, u"61"_s, u"17"_s, u"video/mp4"_s,
                          url, u"1234"_s}));
    QCOMPARE(rows.at(1).at(1), u"Titled"_s);
}

void TestTrackerAnswers::recordsFallBackToTheFileNameUpToItsLastDot()
{
    m_driver->answerWith({row(QString(), u"a.b.mp4"_s), row(u"second row"_s, u"x"_s)});
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromUrnFinished);
    m_store->dataFromUrn(urn);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(print(answers.first().first().value<VideoInfo>()),
             u"urn:uuid:1|a.b|a.b.mp4|61|17|video/mp4|file:///v/a.mp4|1234"_s);
}

void TestTrackerAnswers::titlesFallBackToTheFileNameUpToItsFirstDot_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("answer");
    QTest::newRow("stored") << u"A. B."_s << u"a.b.mp4"_s << u"A. B."_s;
    QTest::newRow("two dots") << QString() << u"a.b.mp4"_s << u"a"_s;
    QTest::newRow("no dot") << QString() << u"clip"_s << u"clip"_s;
    QTest::newRow("hidden file") << QString() << u".clip.mp4"_s << QString();
}

void TestTrackerAnswers::titlesFallBackToTheFileNameUpToItsFirstDot()
{
    QFETCH(QString, title);
    QFETCH(QString, fileName);
    QFETCH(QString, answer);
    m_driver->answerWith({{title, fileName}});
    QSignalSpy answers(m_store.get(), &TrackerInterface::titleFinished);
    m_store->title(urn);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().first().toString(), answer);
}

void TestTrackerAnswers::unboundValuesAreEmptyTexts()
{
    m_driver->answerWith({{urn, QVariant(), u"clip.mp4"_s, QVariant(), QVariant(), QVariant(), url, 7}});
    QSignalSpy answers(m_store.get(), &TrackerInterface::allVideosFinished);
    m_store->allVideos(0);
    QTRY_COMPARE(answers.size(), 1);
    const auto rows = answers.first().first().value<QList<QStringList>>();
    QCOMPARE(
        rows,
        (QList<QStringList>{{urn, u"clip"_s, u"clip.mp4"_s, QString(), QString(), QString(), url, u"7"_s}}));
}

void TestTrackerAnswers::aResultWithoutRowsIsAnEmptyLibrary()
{
    m_driver->answerWith({});
    QSignalSpy answers(m_store.get(), &TrackerInterface::allVideosFinished);
    m_store->allVideos(0);
    QTRY_COMPARE(answers.size(), 1);
    QVERIFY(answers.first().first().value<QList<QStringList>>().isEmpty());
}

void TestTrackerAnswers::everyRequestIsAnsweredUnderItsId()
{
    m_driver->answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    m_driver->answerWhen(u"nie:usageCounter ?_prop"_s, FakeSparqlAnswer::rows({{3}}));
    m_driver->answerWhen(u"nie:url ?_prop"_s, FakeSparqlAnswer::rows({{url}}));
    m_driver->answerWhen(u"SELECT ?_urn WHERE"_s, FakeSparqlAnswer::rows({{urn}}));
    QSignalSpy positions(m_store.get(), &TrackerInterface::playedTimeFinished);
    QSignalSpy counts(m_store.get(), &TrackerInterface::playCountFinished);
    QSignalSpy urls(m_store.get(), &TrackerInterface::urlFinished);
    QSignalSpy urns(m_store.get(), &TrackerInterface::urnFinished);
    const int positionId = m_store->playedTime(urn);
    const int secondPositionId = m_store->playedTime(urn);
    const int countId = m_store->playCount(urn);
    const int urlId = m_store->urlForUrn(urn);
    const int urnId = m_store->urnForUrl(url);
    QCOMPARE((QSet<int>{0, positionId, secondPositionId, countId, urlId, urnId}).size(), 6);
    QTRY_COMPARE(urns.size(), 1);
    QTRY_COMPARE(positions.size(), 2);
    QCOMPARE(positions.at(0), (QVariantList{17, positionId}));
    QCOMPARE(positions.at(1), (QVariantList{17, secondPositionId}));
    QCOMPARE(counts.at(0), (QVariantList{3, countId}));
    QCOMPARE(urls.at(0), (QVariantList{url, urlId}));
    QCOMPARE(urns.at(0), (QVariantList{urn, urnId}));
}

// Nothing in the program asks for it; what does finds the slot.
void TestTrackerAnswers::anAnswerByIdIsReadLikeOneByIri()
{
    SparqlConnection connection(u"QTRACKER"_s);
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromIdFinished);
    m_driver->answerWith({row(QString(), u"a.b.mp4"_s), row(u"second row"_s, u"x"_s)});
    QPointer<SparqlResult> result = connection.exec(SparqlQuery(u"SELECT one {}"_s));
    connect(result, SIGNAL(finished()), m_store.get(), SLOT(dataFromIdReady()));
    const int id = result->id();
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(print(answers.first().first().value<VideoInfo>()),
             u"urn:uuid:1|a.b|a.b.mp4|61|17|video/mp4|file:///v/a.mp4|1234"_s);
    QCOMPARE(answers.first().at(1).toInt(), id);
    QTRY_VERIFY(result.isNull());

    m_driver->answerWith({});
    result = connection.exec(SparqlQuery(u"SELECT one {}"_s));
    connect(result, SIGNAL(finished()), m_store.get(), SLOT(dataFromIdReady()));
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::dataFromIdReady() No data in query result");
    QTRY_VERIFY(result.isNull());
    QCOMPARE(answers.size(), 1);
}

void TestTrackerAnswers::anUnknownAddressIsAnsweredWithTheAddress()
{
    m_driver->answerWith({});
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromUrlFinished);
    const int id = m_store->dataFromUrl(u"file:///x \"y\".mp4"_s, 0);
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::dataFromUrlReady() No data in query result");
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(print(answers.first().first().value<VideoInfo>()), u"|||0|0||file:///x \"y\".mp4|0"_s);
    QCOMPARE(answers.first().at(1).toInt(), id);
}

void TestTrackerAnswers::aGivenPositionReplacesTheStoredOneOnce()
{
    m_driver->answerWith({row(u"T"_s, u"a.mp4"_s)});
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromUrlFinished);
    m_store->dataFromUrl(url, 40);
    QTRY_COMPARE(answers.size(), 1);
    m_store->dataFromUrl(url, 0);
    QTRY_COMPARE(answers.size(), 2);
    QCOMPARE(answers.at(0).first().value<VideoInfo>().playPosition, 40u);
    QCOMPARE(answers.at(1).first().value<VideoInfo>().playPosition, 17u);
}

void TestTrackerAnswers::aGivenPositionIsKeptForAnUnknownAddress()
{
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromUrlFinished);
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::dataFromUrlReady() No data in query result");
    m_driver->answerWith({});
    m_store->dataFromUrl(u"http://x/y"_s, 40);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.at(0).first().value<VideoInfo>().playPosition, 40u);
    // It stands until an answer with a row took it.
    m_driver->answerWith({row(u"T"_s, u"a.mp4"_s)});
    m_store->dataFromUrl(url, 0);
    QTRY_COMPARE(answers.size(), 2);
    QCOMPARE(answers.at(1).first().value<VideoInfo>().playPosition, 40u);
}

void TestTrackerAnswers::addressesInFlightShareTheLastOnesValues()
{
    QSignalSpy answers(m_store.get(), &TrackerInterface::dataFromUrlFinished);
    m_driver->answer(FakeSparqlAnswer::later());
    m_store->dataFromUrl(u"file:///first"_s, 30);
    const int first = lastStatement();
    m_store->dataFromUrl(u"file:///second"_s, 40);
    const int second = lastStatement();
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::dataFromUrlReady() No data in query result");
    m_driver->finish(first);
    QCOMPARE(print(answers.at(0).first().value<VideoInfo>()), u"|||0|40||file:///second|0"_s);
    m_driver->finish(second, {row(u"T"_s, u"a.mp4"_s)});
    QCOMPARE(print(answers.at(1).first().value<VideoInfo>()),
             u"urn:uuid:1|T|a.mp4|61|40|video/mp4|file:///v/a.mp4|1234"_s);
}

void TestTrackerAnswers::thePositionOfDetailsIsThePlayCount()
{
    const QDateTime added(QDate(2024, 5, 6), QTime(7, 8, 9), QTimeZone::utc());
    const QDateTime played(QDate(2025, 1, 2), QTime(3, 4, 5), QTimeZone::utc());
    m_driver->answerWith({{urn, QString(), 61, 5000000000LL, 44, played, u"video/mp4"_s, url, u"Episode 3"_s,
                           added, 3, u"a.mp4"_s}});
    QSignalSpy answers(m_store.get(), &TrackerInterface::videoDetailsFinished);
    const int id = m_store->videoDetails(urn);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().at(1).toInt(), id);
    const auto details = answers.first().first().value<VideoDetails>();
    QCOMPARE(details.playPosition, 3);
    QCOMPARE(details.playCount, 3);
    QCOMPARE(details.title, QString());
    QCOMPARE(details.fileName, u"a.mp4"_s);
    QCOMPARE(details.fileSize, 5000000000LL);
    QCOMPARE(details.duration, 61);
    QCOMPARE(details.added, added);
    QCOMPARE(details.lastAccessed, played);
    QCOMPARE((QStringList{details.urn, details.url, details.mimeType, details.additionalInfo}),
             (QStringList{urn, url, u"video/mp4"_s, u"Episode 3"_s}));
}

void TestTrackerAnswers::emptyDetailsKeepTheirDefaults()
{
    m_driver->answerWith({{urn}});
    QSignalSpy answers(m_store.get(), &TrackerInterface::videoDetailsFinished);
    m_store->videoDetails(urn);
    QTRY_COMPARE(answers.size(), 1);
    const auto details = answers.first().first().value<VideoDetails>();
    QVERIFY(!details.added.isValid() && !details.lastAccessed.isValid());
    QVERIFY(details.fileSize == 0 && details.playCount == 0 && details.duration == 0);
}

void TestTrackerAnswers::deletionsOfTheNotifierArePassedOn()
{
    QSignalSpy deleted(m_store.get(), &TrackerInterface::videosDeleted);
    QObject *notifier = m_store->findChild<ChangeNotifier *>()->parent();
    QVERIFY(QMetaObject::invokeMethod(notifier, "videosDeleted", Q_ARG(QList<int>, (QList<int>{4, 5}))));
    QCOMPARE(deleted.size(), 1);
    QCOMPARE(deleted.first().first().value<QList<int>>(), (QList<int>{4, 5}));
}

void TestTrackerAnswers::additionsAndChangesBecomeFreshRows()
{
    m_driver->answerWhen(u"IN (7)"_s, FakeSparqlAnswer::rows({row(u"Seven"_s, u"7.mp4"_s)}));
    m_driver->answerWhen(u"IN (8)"_s, FakeSparqlAnswer::rows({row(QString(), u"8.x.mp4"_s)}));
    QSignalSpy changed(m_store.get(), SIGNAL(videosChanged(QList<QStringList>)));
    QObject *notifier = m_store->findChild<ChangeNotifier *>()->parent();
    QVERIFY(QMetaObject::invokeMethod(notifier, "videosAdded", Q_ARG(QList<int>, (QList<int>{7}))));
    QVERIFY(QMetaObject::invokeMethod(notifier, "videosChanged", Q_ARG(QList<int>, (QList<int>{8}))));
    QTRY_COMPARE(changed.size(), 2);
    QCOMPARE(changed.at(0).first().value<QList<QStringList>>().first().at(1), u"Seven"_s);
    QCOMPARE(changed.at(1).first().value<QList<QStringList>>().first().at(1), u"8.x"_s);
}

void TestTrackerAnswers::aStoreThatWasReplacedIsAskedForAllVideosOnce()
{
    m_driver->answerWhen(u"a nmm:Video"_s, FakeSparqlAnswer::rows({row(u"T"_s, u"a.mp4"_s)}));
    QSignalSpy answers(m_store.get(), &TrackerInterface::allVideosFinished);
    m_driver->reset();
    Q_EMIT m_store->findChild<ChangeNotifier *>()->reset();
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(texts(), QStringList{ExpectedTexts::allVideos});
    m_driver->reset();
    QTRY_COMPARE(answers.size(), 2);
}

void TestTrackerAnswers::resultsAreReleased()
{
    m_driver->answerWith({row(u"T"_s, u"a.mp4"_s)});
    m_store->allVideos(0);
    m_store->dataFromUrn(urn);
    m_store->setPlayedTime(urn, 5);
    m_store->videosChanged(QList<int>{1});
    for (const FakeSparqlStore::Statement &statement : m_driver->statements())
        QTRY_VERIFY2(statement.result.isNull(), qPrintable(statement.text));
}

QTEST_GUILESS_MAIN(TestTrackerAnswers)
#include "test_trackeranswers.moc"
