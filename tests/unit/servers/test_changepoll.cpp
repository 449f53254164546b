// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/changepoll.h"
#include "platform/servers/resourceids.h"

#include "polledserver.h"
#include "support/driventimer.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using Quad = ChangeNotifier::Quad;
using Answer = FakeSparqlAnswer;
using namespace polling;

namespace {

constexpr int Wait = 20000; // ms

// "+3 -4 7:t": what became a video, stopped being one, and whose title (p: position, f: file name) changed.
QString textOf(const QList<Quad> &deletes, const QList<Quad> &inserts)
{
    const auto word = [](const Quad &quad, const QString &sign) {
        if (quad.predicate == TypeId && quad.object == VideoClass)
            return sign + QString::number(quad.subject);
        static const QHash<int, QString> letters{
            {TitleId, u"t"_s}, {PositionId, u"p"_s}, {FileNameId, u"f"_s}};
        return u"%1%2:%3"_s.arg(sign, QString::number(quad.subject), letters.value(quad.predicate, u"?"_s));
    };
    QStringList words;
    for (const Quad &quad : deletes)
        words.append(word(quad, u"-"_s));
    for (const Quad &quad : inserts)
        words.append(word(quad, u"+"_s));
    return words.join(u' ');
}

} // namespace

class TestChangePoll : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void tellsWhatChanged_data();
    void tellsWhatChanged();
    void nothingIsToldBeforeTheNumbersAreKnown();
    void numbersThatCameLateAreAskedForByTheListenerToo();
    void noPollWithoutAListOrWhileUnseen();
    void pollsStopBetweenQuestionsOnceUnseen();
    void noIntervalNoPolls();
    void onePollAtATimeWithPausesInProportion();
    void whatChangedWhileTheListWasLoadedIsTold();
    void whatChangedWhileAGroupWasReadIsTold();
    void aPollThatFailsChangesNothing();
    void aServerThatIsBackIsAskedAtOnce();
    void onlyGroupsThatChangedAreRead();
    void largeLibrariesAreReadInParts();
    void longAnswersAreReadInTurns();
    void aNewListEndsAReadingOfRows();
    void answersCutShortDeleteNothing();
    void stampsSpareTheGroups();
    void aServerWithoutStampsIsPolledWithout();
    void manyChangesAskForANewListOnce();
    void ownUpdatesAreToldAtOnce();

private:
    // The poll that is due, from its begin to its end.
    void pollOnce();
    void startPoll(const LibrarySnapshot &list);
    [[nodiscard]] QTimer *timer() const { return m_poll->findChild<QTimer *>(u"pollTimer"_s); }
    // What was told since the last call.
    QString takeTold();

    std::unique_ptr<PolledServer> m_server;
    std::unique_ptr<ChangeNotifier> m_notifier;
    std::unique_ptr<ChangePoll> m_poll;
    ChangePoll::Options m_options;
    std::chrono::milliseconds m_interval{30000};
    qint64 m_now = 0;
    QStringList m_told;
};

void TestChangePoll::init()
{
    m_interval = std::chrono::seconds(30);
    m_now = 1000;
    m_told.clear();
    m_server = std::make_unique<PolledServer>();
    for (int id = 1; id <= 5; ++id)
        m_server->videos[id] = {u"Title %1"_s.arg(id), {}, u"%1.mp4"_s.arg(id)};
    m_options = {};
    m_options.driver = u"QSPARQL_ENDPOINT"_s;
    m_options.interval = [this] { return m_interval; };
    m_options.clock = [this] { return m_now; };
}

void TestChangePoll::cleanup()
{
    m_poll.reset();
    m_notifier.reset();
    ChangeNotifier::setSource({});
    m_server.reset();
}

void TestChangePoll::startPoll(const LibrarySnapshot &list)
{
    m_poll = std::make_unique<ChangePoll>(m_options);
    ChangeNotifier::setSource([this](ChangeNotifier *notifier) { m_poll->attach(notifier); });
    m_notifier = std::make_unique<ChangeNotifier>(u"http://example.org/nmm#Video"_s);
    connect(m_notifier.get(), &ChangeNotifier::changed, this,
            [this](const QList<Quad> &deletes, const QList<Quad> &inserts) {
                m_told.append(textOf(deletes, inserts));
            });
    connect(m_notifier.get(), &ChangeNotifier::reset, this, [this] { m_told.append(u"reset"_s); });
    QTRY_COMPARE_WITH_TIMEOUT(m_server->ownStore().open(), 0, Wait); // the numbers are read
    m_poll->setVisible(true);
    m_poll->setList(list);
}

void TestChangePoll::pollOnce()
{
    QVERIFY(runOut(timer()));
    QTRY_VERIFY_WITH_TIMEOUT(timer()->isActive(), Wait);
}

QString TestChangePoll::takeTold()
{
    return std::exchange(m_told, {}).join(u" | "_s);
}

void TestChangePoll::tellsWhatChanged_data()
{
    using Change = std::function<void(std::map<int, Video> &)>;
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("told");

    const auto row = [](const char *name, const Change &change, const QString &told) {
        QTest::newRow(name) << change << told;
    };
    row(
        "nothing", [](auto &) {}, u""_s);
    row(
        "renamed", [](auto &videos) { videos[3].title = u"Titel 3"_s; }, u"-3:t +3:t"_s);
    row(
        "title gone", [](auto &videos) { videos[3].title = u""_s; }, u"-3:t +3:t"_s); // another is shown
    row(
        "played", [](auto &videos) { videos[3].position = u"17"_s; }, u"+3:p"_s);
    row(
        "file renamed", [](auto &videos) { videos[3].fileName = u"x.mp4"_s; }, u"-3:f +3:f"_s);
    row(
        "new",
        [](auto &videos) {
            videos[9] = {u"Nine"_s, u"4"_s, u"9.mp4"_s};
        },
        u"+9"_s);
    row(
        "deleted", [](auto &videos) { videos.erase(3); }, u"-3"_s);
    row(
        "all deleted", [](auto &videos) { videos.clear(); }, u"-1 -2 -3 -4 -5"_s);
    row(
        "one in place of another",
        [](auto &videos) {
            videos.erase(3);
            videos[259] = {u"Title 3"_s, {}, u"3.mp4"_s}; // of the same group
        },
        u"-3 +259"_s);
}

void TestChangePoll::tellsWhatChanged()
{
    QFETCH(const std::function<void(std::map<int, Video> &)>, change);
    startPoll(m_server->list());
    pollOnce();
    QCOMPARE(takeTold(), QString());
    change(m_server->videos);
    pollOnce();
    QTEST(takeTold(), "told");
    pollOnce();
    QCOMPARE(takeTold(), QString());
}

void TestChangePoll::nothingIsToldBeforeTheNumbersAreKnown()
{
    m_server->ownStore().answer(Answer::later());
    const LibrarySnapshot list = m_server->list();
    m_poll = std::make_unique<ChangePoll>(m_options);
    ChangeNotifier notifier(u"http://example.org/nmm#Video"_s);
    QSignalSpy told(&notifier, &ChangeNotifier::changed);
    m_poll->attach(&notifier);
    m_poll->setVisible(true);
    m_poll->setList(list);
    m_server->videos[3].title = u"Other"_s;
    const QString iri = u"urn:video:written"_s;
    m_poll->tellWritten(iri, LibrarySnapshot::Title);
    pollOnce();
    QCOMPARE(told.size(), 0);
    QCOMPARE(m_server->takeQuestions(), QStringList());

    m_server->ownStore().finish(0, {{VideoClass, TitleId, PositionId, FileNameId, TypeId}});
    QCOMPARE(told.size(), 1); // the update that waited
    QCOMPARE(told.first().at(1).value<QList<Quad>>(),
             QList<Quad>({{0, ResourceIds::shared().idOf(iri), TitleId, -1}}));
    pollOnce();
    QCOMPARE(told.size(), 2);
}

// The library's own store is just being started: whoever listens asked it once, too, and was not answered.
void TestChangePoll::numbersThatCameLateAreAskedForByTheListenerToo()
{
    m_server->ownStore().answer(Answer::error(u"nobody there"_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"changes cannot be told"_s));
    startPoll(m_server->list());
    m_server->ownStore().answerWith({{VideoClass, TitleId, PositionId, FileNameId, TypeId}});
    m_server->videos[3].title = u"Other"_s;
    pollOnce();
    QTRY_COMPARE_WITH_TIMEOUT(m_told.size(), 1, Wait);
    QCOMPARE(takeTold(), u"reset"_s);
    pollOnce();
    QCOMPARE(takeTold(), u"-3:t +3:t"_s);
}

void TestChangePoll::noPollWithoutAListOrWhileUnseen()
{
    m_poll = std::make_unique<ChangePoll>(m_options);
    ChangeNotifier notifier(u"http://example.org/nmm#Video"_s);
    m_poll->attach(&notifier);
    m_poll->setVisible(true);
    QVERIFY(!timer()->isActive());
    m_poll->setList(m_server->list());
    QVERIFY(timer()->isActive());
    m_poll->setVisible(false);
    QVERIFY(!timer()->isActive());
    m_now += 10000;
    m_poll->setVisible(true); // what is left of the pause
    QCOMPARE(timer()->interval(), 20000);
    m_poll->setVisible(false);
    m_now += 3600000;
    m_poll->setVisible(true);
    QCOMPARE(timer()->interval(), 0);
    QCOMPARE(m_server->takeQuestions(), QStringList());
}

void TestChangePoll::pollsStopBetweenQuestionsOnceUnseen()
{
    startPoll(m_server->list());
    pollOnce();
    m_server->takeQuestions();
    m_server->videos[3].title = u"Other"_s;
    QVERIFY(runOut(timer()));
    m_poll->setVisible(false);
    QCoreApplication::processEvents();
    QCOMPARE(m_server->takeQuestions(), QStringList{u"groups"_s});
    QCOMPARE(takeTold(), QString());
    m_poll->setVisible(true);
    pollOnce();
    QCOMPARE(takeTold(), u"-3:t +3:t"_s);
}

void TestChangePoll::noIntervalNoPolls()
{
    m_interval = std::chrono::milliseconds::zero();
    startPoll(m_server->list());
    QVERIFY(!timer()->isActive());
}

// An archive whose server needs ten seconds to count is left alone for ninety.
void TestChangePoll::onePollAtATimeWithPausesInProportion()
{
    startPoll(m_server->list());
    pollOnce();
    QCOMPARE(timer()->interval(), 30000);
    m_server->takeQuestions();
    m_server->store().answerBy([](const SparqlQuery &) { return Answer::later(); });
    QVERIFY(runOut(timer()));
    m_poll->setVisible(false);
    m_poll->setVisible(true);
    QVERIFY(!timer()->isActive()); // there is one under way
    QCOMPARE(m_server->store().statements().size(), 1);
    m_now += 10000;
    m_server->store().fail(0, u"too late"_s);
    QCOMPARE(timer()->interval(), 90000);
}

void TestChangePoll::whatChangedWhileTheListWasLoadedIsTold()
{
    const LibrarySnapshot list = m_server->list();
    m_server->videos[2].title = u"Other"_s;
    m_server->videos.erase(4);
    m_server->videos[8] = {u"Eight"_s, {}, u"8.mp4"_s};
    startPoll(list);
    pollOnce();
    QCOMPARE(takeTold(), u"-2:t +2:t +8 | -4"_s);
}

void TestChangePoll::whatChangedWhileAGroupWasReadIsTold()
{
    startPoll(m_server->list());
    pollOnce();
    m_server->videos[2].title = u"Other"_s;
    m_server->beforeRows = [this] {
        m_server->videos[2].title = u"Another"_s;
        m_server->videos.erase(4); // of a group that is not read any more
    };
    pollOnce();
    QCOMPARE(takeTold(), u"-2:t +2:t"_s);
    pollOnce();
    QCOMPARE(takeTold(), u"-4"_s);
    pollOnce();
    QCOMPARE(takeTold(), QString());
}

void TestChangePoll::aPollThatFailsChangesNothing()
{
    startPoll(m_server->list());
    pollOnce();
    m_server->away = true;
    m_server->videos.erase(2);
    pollOnce();
    pollOnce();
    QCOMPARE(takeTold(), QString());
    m_server->away = false;
    pollOnce();
    QCOMPARE(takeTold(), u"-2"_s);
}

void TestChangePoll::aServerThatIsBackIsAskedAtOnce()
{
    startPoll(m_server->list());
    QSignalSpy reachable(m_poll.get(), &ChangePoll::reachableChanged);
    m_server->store().setReachable(false);
    QVERIFY(!m_poll->isReachable());
    m_server->store().setReachable(true);
    QCOMPARE(reachable.size(), 2);
    QCOMPARE(timer()->interval(), 0);
}

void TestChangePoll::onlyGroupsThatChangedAreRead()
{
    startPoll(m_server->list());
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList({u"stamps"_s, u"groups"_s, u"rows 5"_s}));
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList{u"groups"_s});
    m_server->videos[2].title = u"Other"_s;
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList({u"groups"_s, u"rows 1"_s}));
}

void TestChangePoll::largeLibrariesAreReadInParts()
{
    m_options.mostRows = 3;
    startPoll(m_server->list());
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList({u"stamps"_s, u"groups"_s, u"rows 3"_s, u"rows 2"_s}));
    QCOMPARE(takeTold(), QString());
}

void TestChangePoll::longAnswersAreReadInTurns()
{
    for (int id = 1; id <= 5000; ++id)
        m_server->videos[id] = {u"Title %1"_s.arg(id), {}, u"%1.mp4"_s.arg(id)};
    startPoll(m_server->list());
    m_server->videos[4999].title = u"Other"_s;
    pollOnce();
    QCOMPARE(takeTold(), u"-4999:t +4999:t"_s);
    QCOMPARE(m_poll->snapshot().count(), 5000);
}

void TestChangePoll::aNewListEndsAReadingOfRows()
{
    for (int id = 1; id <= 5000; ++id)
        m_server->videos[id] = {u"Title %1"_s.arg(id), {}, u"%1.mp4"_s.arg(id)};
    startPoll(m_server->list());
    m_server->videos[4999].title = u"Other"_s;
    m_server->answersRowsLater = true;
    QVERIFY(runOut(timer()));
    QTRY_COMPARE_WITH_TIMEOUT(m_server->store().texts().size(), 3, Wait);
    m_server->finishRows(2);
    m_server->answersRowsLater = false;
    m_poll->setList(m_server->list());
    QVERIFY(timer()->isActive());
    pollOnce();
    QCOMPARE(takeTold(), QString());
}

// A server that gives ten thousand rows at most, and does not say so.
void TestChangePoll::answersCutShortDeleteNothing()
{
    m_server->mostRows = 2;
    startPoll(m_server->list());
    for (int polls = 0; polls < 10; ++polls)
        pollOnce();
    QCOMPARE(takeTold(), QString());
    m_server->takeQuestions();
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList{u"groups"_s}); // all was read, in smaller parts
}

void TestChangePoll::stampsSpareTheGroups()
{
    for (auto &[id, video] : m_server->videos)
        video.stamp = id;
    startPoll(m_server->list());
    pollOnce();
    m_server->takeQuestions();
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList{u"stamps"_s});
    m_server->videos[2].title = u"Other"_s;
    m_server->videos[2].stamp = 77;
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList({u"stamps"_s, u"groups"_s, u"rows 1"_s}));
    QCOMPARE(takeTold(), u"-2:t +2:t"_s);

    m_server->videos[3].title = u"Other"_s; // written by a program that sets no stamps
    for (int polls = 1; polls < ChangePoll::pollsPerFullOne; ++polls)
        pollOnce();
    QCOMPARE(takeTold(), QString());
    pollOnce();
    QCOMPARE(takeTold(), u"-3:t +3:t"_s);
}

void TestChangePoll::aServerWithoutStampsIsPolledWithout()
{
    m_server->countsStamps = false;
    startPoll(m_server->list());
    pollOnce();
    m_server->takeQuestions();
    m_server->videos[2].title = u"Other"_s;
    pollOnce();
    QCOMPARE(m_server->takeQuestions(), QStringList({u"groups"_s, u"rows 5"_s}));
    QCOMPARE(takeTold(), u"-2:t +2:t"_s);
}

void TestChangePoll::manyChangesAskForANewListOnce()
{
    m_options.mostChanges = 3;
    startPoll(m_server->list());
    pollOnce();
    for (int id = 1; id <= 4; ++id)
        m_server->videos[id].title = u"Other"_s;
    pollOnce();
    QCOMPARE(takeTold(), u"reset"_s);
    m_poll->setList(m_server->list());
    pollOnce();
    QCOMPARE(takeTold(), QString());

    // A list that never is what the poll reads does not go round in circles.
    for (int id = 1; id <= 4; ++id)
        m_server->videos[id].title = u"Third"_s;
    const LibrarySnapshot stale = m_server->list();
    for (int id = 1; id <= 4; ++id)
        m_server->videos[id].title = u"Fourth"_s;
    pollOnce();
    QCOMPARE(takeTold(), u"reset"_s);
    m_poll->setList(stale);
    QTest::ignoreMessage(QtWarningMsg, "the server tells 4 videos other than its list does");
    pollOnce();
    QCOMPARE(takeTold(), QString());
}

void TestChangePoll::ownUpdatesAreToldAtOnce()
{
    startPoll(m_server->list());
    const QString iri = u"urn:video:edited"_s;
    m_poll->setVisible(false);
    m_poll->tellWritten(iri, LibrarySnapshot::Title);
    m_poll->tellWritten(iri, LibrarySnapshot::Position);
    const int id = ResourceIds::shared().idOf(iri);
    QCOMPARE(takeTold(), u"+%1:t | +%1:p"_s.arg(id));
    QCOMPARE(m_server->takeQuestions(), QStringList());
}

QTEST_GUILESS_MAIN(TestChangePoll)
#include "test_changepoll.moc"
