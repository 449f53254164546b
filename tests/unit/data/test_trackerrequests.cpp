// SPDX-License-Identifier: GPL-3.0-or-later
// What the store layer sends, character by character.
#include "trackerinterfacefixture.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestTrackerRequests : public TrackerInterfaceFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }

    void requestsSendTheirExactTexts_data();
    void requestsSendTheirExactTexts();
    void updatesSendTheirExactTexts();
    void changedIdsSendTheirExactText();
    void noIdsSendAnEmptyList();

    void quotesAndBackslashesOfAnAddressAreEscaped();
    void angleBracketsOfAnIriAreEscaped();
    void aTitleWithAQuoteStaysInsideItsLiteral();
    void placeholdersInATitleAreReplacedByTheLaterSteps();

    void theOwnEquipmentFollowsModelAndBuild_data();
    void theOwnEquipmentFollowsModelAndBuild();
    void theOwnEquipmentIsBuiltOnce();
    void namesOfTheDeviceStandAsTheyAre();

    void anUnknownModeIsRefused();
    void theModeNamesTheDriver();
    void signalsAndSlotsStandInTheirOrder();
};

void TestTrackerRequests::requestsSendTheirExactTexts_data()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *name, Request request, const QString &text) {
        QTest::newRow(name) << request << text;
    };
    add(
        "all videos", [](TrackerInterface &store) { return store.allVideos(0); }, ExpectedTexts::allVideos);
    add(
        "five videos", [](TrackerInterface &store) { return store.allVideos(5); }, ExpectedTexts::fiveVideos);
    add(
        "a negative limit is none", [](TrackerInterface &store) { return store.allVideos(-1); },
        ExpectedTexts::allVideos);
    add(
        "one video", [](TrackerInterface &store) { return store.dataFromUrn(urn); }, ExpectedTexts::oneVideo);
    add(
        "by address", [](TrackerInterface &store) { return store.dataFromUrl(url, 0); },
        ExpectedTexts::byUrl);
    add(
        "details", [](TrackerInterface &store) { return store.videoDetails(urn); }, ExpectedTexts::details);
    add(
        "urn for url", [](TrackerInterface &store) { return store.urnForUrl(url); }, ExpectedTexts::urnByUrl);
    add(
        "url for urn", [](TrackerInterface &store) { return store.urlForUrn(urn); }, ExpectedTexts::url);
    add(
        "title", [](TrackerInterface &store) { return store.title(urn); }, ExpectedTexts::title);
    add(
        "play count", [](TrackerInterface &store) { return store.playCount(urn); }, ExpectedTexts::playCount);
    add(
        "played time", [](TrackerInterface &store) { return store.playedTime(urn); },
        ExpectedTexts::playedTime);
}

void TestTrackerRequests::requestsSendTheirExactTexts()
{
    QFETCH(Request, request);
    QFETCH(QString, text);
    QVERIFY(request(*m_store) != 0);
    QCOMPARE(texts(), QStringList{text});
    QCOMPARE(m_driver->statements().last().type, SparqlQuery::SelectStatement);
}

void TestTrackerRequests::updatesSendTheirExactTexts()
{
    QVERIFY(m_store->setTitle(urn, u"A title"_s));
    QVERIFY(m_store->setPlayedTime(urn, 754));
    QCOMPARE(m_driver->texts(SparqlQuery::UpdateStatement),
             (QStringList{ExpectedTexts::setTitle, ExpectedTexts::setPlayedTime}));
}

void TestTrackerRequests::changedIdsSendTheirExactText()
{
    m_store->videosChanged(QList<int>{7, 11, 13});
    QCOMPARE(texts(), QStringList{ExpectedTexts::byIds});
}

void TestTrackerRequests::noIdsSendAnEmptyList()
{
    m_store->videosChanged(QList<int>{});
    QVERIFY(lastText().endsWith(u"FILTER(tracker:id(?_urn) IN ())}"_s));
}

void TestTrackerRequests::quotesAndBackslashesOfAnAddressAreEscaped()
{
    m_store->dataFromUrl(u"file:///a\"b\\c.mp4"_s, 0);
    QVERIFY2(lastText().contains(u"nie:url \"file:///a\\\"b\\\\c.mp4\" ."_s), qPrintable(lastText()));
    m_store->urnForUrl(u"file:///a\"b\\c.mp4"_s);
    QVERIFY2(lastText().contains(u"nie:url \"file:///a\\\"b\\\\c.mp4\" ."_s), qPrintable(lastText()));
}

void TestTrackerRequests::angleBracketsOfAnIriAreEscaped()
{
    m_store->playedTime(u"urn:a<b>c\\d"_s);
    QVERIFY2(lastText().contains(u"<urn:a\\<b\\>c\\\\d> nmm:runTime"_s), qPrintable(lastText()));
}

void TestTrackerRequests::aTitleWithAQuoteStaysInsideItsLiteral()
{
    m_store->setTitle(urn, u"The \"best\" one"_s);
    QVERIFY2(lastText().endsWith(u"nie:title \"The \\\"best\\\" one\" }"_s), qPrintable(lastText()));
}

void TestTrackerRequests::placeholdersInATitleAreReplacedByTheLaterSteps()
{
    m_store->setTitle(urn, u"My _URN_ and _PROPERTY_"_s);
    QVERIFY2(lastText().endsWith(u"\"My urn:uuid:1 and nie:title\" }"_s), qPrintable(lastText()));
}

void TestTrackerRequests::theOwnEquipmentFollowsModelAndBuild_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("build");
    QTest::addColumn<QString>("named");
    QTest::newRow("before the full model") << u"Q5"_s << u"1500"_s << u"Rzw"_s;
    QTest::newRow("the full model") << u"Q5"_s << u"1501"_s << u"Q5"_s;
    QTest::newRow("no build") << u"Q5"_s << QString() << u"Q5"_s;
    QTest::newRow("an unreadable build") << u"Q5"_s << u"15x"_s << u"Q5"_s;
    QTest::newRow("build 0") << u"Q5"_s << u"0"_s << u"Q5"_s;
    QTest::newRow("another model") << u"Q6"_s << u"1500"_s << u"Q6"_s;
}

void TestTrackerRequests::theOwnEquipmentFollowsModelAndBuild()
{
    QFETCH(QString, model);
    QFETCH(QString, build);
    QFETCH(QString, named);
    m_information.modelName = model;
    m_information.build = build;
    m_store->allVideos(0);
    QVERIFY2(lastText().contains(u"(?_equipment != <urn:equipment:Harrow:%1:>)"_s.arg(named)),
             qPrintable(lastText()));
}

void TestTrackerRequests::theOwnEquipmentIsBuiltOnce()
{
    m_store->allVideos(0);
    m_information.modelName = u"Z1"_s;
    m_store->allVideos(0);
    QCOMPARE(texts(), (QStringList{ExpectedTexts::allVideos, ExpectedTexts::allVideos}));
}

// Blanks of a firmware's names come escaped; nothing of them is taken for a place to fill in.
void TestTrackerRequests::namesOfTheDeviceStandAsTheyAre()
{
    m_information.manufacturerName = u"Acme%20Corp"_s;
    m_information.modelName = u"%1%20X"_s;
    const QString own = u"(?_equipment != <urn:equipment:Acme%20Corp:%1%20X:>)"_s;
    m_store->allVideos(0);
    QVERIFY2(lastText().contains(own), qPrintable(lastText()));
    m_store->dataFromUrn(urn);
    QVERIFY2(lastText().contains(own), qPrintable(lastText()));
    m_store->videosChanged(QList<int>{1});
    QVERIFY2(lastText().contains(own), qPrintable(lastText()));
}

void TestTrackerRequests::anUnknownModeIsRefused()
{
    QTest::ignoreMessage(QtWarningMsg,
                         "static void TrackerInterface::setTrackerMode(const QString&) Tracker mode: "
                         "\"qtracker\"  not supported");
    TrackerInterface::setTrackerMode(u"qtracker"_s);
    const int before = m_driver->opened();
    const Store another;
    QCOMPARE(m_driver->opened(), before + 2); // the queries' and the notifier's
}

void TestTrackerRequests::theModeNamesTheDriver()
{
    for (const QString &mode : {u"QTRACKER_DIRECT"_s, u"QSPARQL_ENDPOINT"_s, u"QVIRTUOSO"_s}) {
        FakeSparqlStore driver(mode);
        TrackerInterface::setTrackerMode(mode);
        const int before = m_driver->opened();
        Store store;
        QCOMPARE(driver.opened(), 1);
        QCOMPARE(m_driver->opened(), before + 1); // the notifier keeps to the library's own store
        QVERIFY(store.allVideos(0) != 0);
        QCOMPARE(driver.texts(), QStringList{ExpectedTexts::allVideos});
    }
}

void TestTrackerRequests::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = TrackerInterface::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    QCOMPARE(signatures.join('\n'),
             QByteArrayList({"playedTimeFinished(int,int)",
                             "dataFromUrlFinished(VideoInfo,int)",
                             "dataFromUrnFinished(VideoInfo,int)",
                             "dataFromIdFinished(VideoInfo,int)",
                             "videoDetailsFinished(VideoDetails,int)",
                             "allVideosFinished(QList<QStringList>,int)",
                             "urnFinished(QString,int)",
                             "urlFinished(QString,int)",
                             "titleFinished(QString,int)",
                             "playCountFinished(int,int)",
                             "videosDeleted(QList<int>)",
                             "videosChanged(QList<QStringList>)",
                             "playedTimeReady()",
                             "dataFromUrlReady()",
                             "dataFromUrnReady()",
                             "dataFromIdReady()",
                             "videoDetailsReady()",
                             "allVideosReady()",
                             "urnReady()",
                             "urlReady()",
                             "titleReady()",
                             "playCountReady()",
                             "videosChangedReady()",
                             "videosChanged(QList<int>)"})
                 .join('\n'));
}

QTEST_GUILESS_MAIN(TestTrackerRequests)
#include "test_trackerrequests.moc"
