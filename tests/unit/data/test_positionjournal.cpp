// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"
#include "support/fulldisk.h"
#include "support/loglines.h"

#include <data/positionjournal.h>
#include <data/thumbnailhelper.h>
#include <data/thumbnailpaths.h>
#include <data/trackerinterface.h>
#include <platform/sparql/changenotifier.h>

#include <QDir>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 10000; // ms; a loaded machine

VideoInfo video(const QString &urn = u"urn:1"_s, quint32 duration = 60)
{
    VideoInfo info;
    info.urn = urn;
    info.duration = duration;
    info.url = u"file:///v/"_s + QString(urn).replace(u':', u'-') + u".mp4"_s;
    return info;
}

VideoInfo at(VideoInfo info, quint32 position)
{
    info.playPosition = position;
    return info;
}

} // namespace

// The place in a video when the program is killed, or the store is away: each test lets a program write its
// notes, ends it without a word, and starts another one over the same folder.
class TestPositionJournal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aNoteIsASmallFileOfItsOwn();
    void whatTheStoreDoesNotKnowIsNotNoted();
    void whatWasNotClosedBecomesTheSavedPlace_data();
    void whatWasNotClosedBecomesTheSavedPlace();
    void aPlaceAtTheEndTakesTheStillAway();
    void aNoteIsClosedWhenTheStoreHasThePlace();
    void aStoreThatRefusesIsTriedAgainWhenItAnswers();
    void playingOnKeepsTheNoteOpen();
    void aNewerSaveIsNeverOverwritten();
    void aSaveThatNobodyAnsweredIsNoNewerOne();
    void theStoreIsAskedOnceForWhatItHad();
    void aStoreThatIsAwayForLongHasWhicheverPlace();
    void twoVideosOneUponTheOther();
    void aStoreThatIsAwayAtTheStartIsTriedWhenItComes();
    void aVideoThatIsGoneIsNotWrittenTo();
    void aStoreThatWasBuiltAnewKnowsTheVideoByAnotherName();
    void aRenamedFileKeepsItsPlace();
    void aPlaceFromLongAgoIsDroppedWhenTheVideoIsGone_data();
    void aPlaceFromLongAgoIsDroppedWhenTheVideoIsGone();
    void damagedNotesAreDropped_data();
    void damagedNotesAreDropped();
    void aNoteThatWasCutShortLeavesTheOneBefore();
    void aFullDiskIsToldOnceAndLeavesTheNoteBefore();
    void aFolderThatCannotBeMadeIsToldOnce();
    void whatIsPlayedMeanwhileIsNotRestored();

private:
    void begin();
    // As a kill: what is not on the disk by now does not come there, and nothing more is said to the store.
    void kill();
    [[nodiscard]] QString folder() const { return m_state->filePath(u"kestrel/places"_s); }
    [[nodiscard]] QStringList files() const
    {
        return QDir(folder()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    // Of the only file, or of the one for `urn`.
    [[nodiscard]] QJsonObject noted(const QString &urn = {}) const;
    void edit(const QString &key, const QJsonValue &value) const;
    [[nodiscard]] QStringList saved() const;
    [[nodiscard]] int questions() const
    {
        return int(m_store.texts().filter(u"nmm:runTime ?_prop"_s).size());
    }
    void storeHas(quint32 position)
    {
        m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{position}}));
    }
    [[nodiscard]] bool settled() { return m_journal->waitForDone(Patience); }
    void storeAnswers(const QList<QStringList> &rows = {})
    {
        Q_EMIT TrackerInterface::instance()->allVideosFinished(rows, 1);
    }

    QTemporaryDir m_home;
    FakeSparqlStore m_store;
    std::unique_ptr<QTemporaryDir> m_state;
    std::unique_ptr<PositionJournal> m_journal;
};

void TestPositionJournal::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    FakeThumbnailerClient::install();
    ChangeNotifier::setSource([](ChangeNotifier *) {});
}

void TestPositionJournal::init()
{
    m_state = std::make_unique<QTemporaryDir>();
    qputenv("XDG_STATE_HOME", QFile::encodeName(m_state->path()));
    m_store.answerBy({});
    m_store.answer(FakeSparqlAnswer::rows({}));
    storeHas(20);
    m_store.clear();
    begin();
}

void TestPositionJournal::cleanup()
{
    m_journal.reset();
}

void TestPositionJournal::begin()
{
    m_journal = std::make_unique<PositionJournal>(TrackerInterface::instance(), ThumbnailHelper::instance(),
                                                  PositionJournal::defaultFolder());
}

void TestPositionJournal::kill()
{
    QVERIFY(settled());
    m_journal.reset();
    m_store.clear();
    begin();
}

QJsonObject TestPositionJournal::noted(const QString &urn) const
{
    for (const QString &name : files()) {
        QFile file(folder() + u'/' + name);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        if (urn.isEmpty() || object[u"urn"_s].toString() == urn)
            return object;
    }
    return {};
}

void TestPositionJournal::edit(const QString &key, const QJsonValue &value) const
{
    QJsonObject object = noted();
    object[key] = value;
    QFile file(folder() + u'/' + files().constFirst());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(object).toJson());
}

QStringList TestPositionJournal::saved() const
{
    static const QRegularExpression insert(u"INSERT \\{ <(.*)> nmm:runTime \"(\\d+)\" \\}$"_s);
    QStringList places;
    for (const QString &text : m_store.texts(SparqlQuery::UpdateStatement)) {
        const QRegularExpressionMatch match = insert.match(text);
        places.append(match.captured(1) + u' ' + match.captured(2));
    }
    return places;
}

void TestPositionJournal::aNoteIsASmallFileOfItsOwn()
{
    QVERIFY(!QFileInfo::exists(folder())); // as long as nothing plays
    m_journal->note(video(), 5);
    m_journal->note(video(), 10);
    QVERIFY(settled());
    QCOMPARE(files().size(), 1);
    QCOMPARE(noted()[u"position"_s].toInt(), 10);
    const QFileInfo file(folder() + u'/' + files().constFirst());
    QVERIFY2(file.size() < 500, qPrintable(QString::number(file.size())));
    QCOMPARE(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    QCOMPARE(saved(), QStringList());
}

void TestPositionJournal::whatTheStoreDoesNotKnowIsNotNoted()
{
    VideoInfo stream;
    stream.url = u"http://h/stream"_s;
    m_journal->note(stream, 10);
    m_journal->save(at(stream, 10)); // goes to the store as ever
    QVERIFY(settled());
    QVERIFY(!QFileInfo::exists(folder()));
    QCOMPARE(saved(), QStringList{u" 10"_s});
}

void TestPositionJournal::whatWasNotClosedBecomesTheSavedPlace_data()
{
    QTest::addColumn<quint32>("duration");
    QTest::addColumn<quint32>("position");
    QTest::addColumn<QStringList>("saved");
    QTest::newRow("in the middle") << 60u << 38u << QStringList{u"urn:1 38"_s};
    QTest::newRow("three seconds before the end") << 60u << 57u << QStringList{u"urn:1 57"_s};
    QTest::newRow("two seconds before the end") << 60u << 58u << QStringList{u"urn:1 0"_s};
    QTest::newRow("at the end") << 60u << 60u << QStringList{u"urn:1 0"_s};
    QTest::newRow("beyond the end") << 60u << 61u << QStringList{u"urn:1 61"_s};
    QTest::newRow("at the beginning") << 60u << 0u << QStringList{u"urn:1 0"_s};
    QTest::newRow("unknown length") << 0u << 38u << QStringList{u"urn:1 38"_s};
    QTest::newRow("where the store has it") << 60u << 20u << QStringList();
}

void TestPositionJournal::whatWasNotClosedBecomesTheSavedPlace()
{
    QFETCH(quint32, duration);
    QFETCH(quint32, position);
    QFETCH(QStringList, saved);
    m_journal->note(video(u"urn:1"_s, duration), position);
    kill();
    QCOMPARE(this->saved(), QStringList()); // not before it is asked to
    m_journal->restore();
    QTRY_COMPARE(this->saved(), saved);
    QTRY_COMPARE(files(), QStringList()); // the store has it
    // Once.
    kill();
    m_journal->restore();
    QVERIFY(settled());
    QCOMPARE(questions(), 0);
}

void TestPositionJournal::aPlaceAtTheEndTakesTheStillAway()
{
    QTemporaryDir stills;
    QImage frame(32, 18, QImage::Format_RGB32);
    frame.fill(Qt::red);
    QVERIFY(frame.save(stills.filePath(u"frame.png"_s)));
    QVERIFY(ThumbnailHelper::instance()->createPauseThumbnail(video().url, stills.filePath(u"frame.png"_s)));
    const QString still = ThumbnailPaths::pausePath(video().url, u"video-grid"_s);
    QVERIFY(QFileInfo::exists(still));
    m_journal->note(video(), 59);
    kill();
    m_journal->restore();
    QTRY_COMPARE(saved(), QStringList{u"urn:1 0"_s});
    QVERIFY(!QFileInfo::exists(still));
}

void TestPositionJournal::aNoteIsClosedWhenTheStoreHasThePlace()
{
    m_store.answer(FakeSparqlAnswer::later());
    m_journal->note(video(), 38);
    m_journal->save(at(video(), 40));
    const int update = int(m_store.statements().size()) - 1;
    QVERIFY(settled());
    QCOMPARE(noted()[u"position"_s].toInt(), 40); // it may be killed now, too
    m_store.finish(update);
    QVERIFY(settled());
    QCOMPARE(files(), QStringList());
}

void TestPositionJournal::aStoreThatRefusesIsTriedAgainWhenItAnswers()
{
    m_journal->restore();
    m_store.answer(FakeSparqlAnswer::error(u"the disk is full"_s));
    m_journal->save(at(video(), 40));
    QTRY_COMPARE(m_journal->leftPlace(u"urn:1"_s), std::optional<quint32>(40));
    QVERIFY(settled());
    QCOMPARE(files().size(), 1);
    QCOMPARE(saved(), QStringList{u"urn:1 40"_s});
    m_store.answer(FakeSparqlAnswer::rows({}));
    storeAnswers();
    QTRY_COMPARE(saved(), (QStringList{u"urn:1 40"_s, u"urn:1 40"_s}));
    QTRY_COMPARE(files(), QStringList());
    QCOMPARE(m_journal->leftPlace(u"urn:1"_s), std::nullopt);
}

void TestPositionJournal::playingOnKeepsTheNoteOpen()
{
    m_store.answer(FakeSparqlAnswer::later());
    m_journal->save(at(video(), 40)); // a pause
    const int update = int(m_store.statements().size()) - 1;
    m_journal->note(video(), 45); // and on
    m_store.finish(update);
    QVERIFY(settled());
    QCOMPARE(noted()[u"position"_s].toInt(), 45);
    storeHas(40);
    kill();
    m_store.answer(FakeSparqlAnswer::rows({}));
    m_journal->restore();
    QTRY_COMPARE(saved(), QStringList{u"urn:1 45"_s});
}

// The store took a save, and the program was killed before its own file said so.
void TestPositionJournal::aNewerSaveIsNeverOverwritten()
{
    m_journal->note(video(), 38);
    QTRY_VERIFY(settled() && noted()[u"base"_s].toBool()); // it is known that the store had 20
    kill();
    storeHas(300);
    m_journal->restore();
    QTRY_VERIFY(m_journal->leftPlace(u"urn:1"_s) == std::nullopt);
    QVERIFY(settled());
    QCOMPARE(saved(), QStringList());
    QCOMPARE(files(), QStringList());
}

void TestPositionJournal::aSaveThatNobodyAnsweredIsNoNewerOne()
{
    for (const quint32 has : {20u, 40u}) { // it came through, or did not
        init();
        m_journal->note(video(), 38);
        QTRY_VERIFY(settled() && noted()[u"base"_s].toBool());
        m_store.answerWhen(u"INSERT"_s, FakeSparqlAnswer::never());
        m_journal->save(at(video(), 40));
        m_journal->note(video(), 45);
        kill();
        m_store.answerWhen(u"INSERT"_s, FakeSparqlAnswer::rows({}));
        storeHas(has);
        m_journal->restore();
        QTRY_COMPARE(saved(), QStringList{u"urn:1 45"_s});
        QTRY_COMPARE(files(), QStringList());
    }
}

void TestPositionJournal::theStoreIsAskedOnceForWhatItHad()
{
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::error(u"away"_s));
    for (quint32 second = 5; second < 100; second += 5) {
        m_journal->note(video(), second);
        QVERIFY(settled());
        QCoreApplication::processEvents();
    }
    QCOMPARE(questions(), 1);
    QCOMPARE(m_store.texts().size(), 1);
}

// Every pause and every seek is a save, and none is answered.
void TestPositionJournal::aStoreThatIsAwayForLongHasWhicheverPlace()
{
    m_journal->note(video(u"urn:1"_s, 600), 38);
    QTRY_VERIFY(settled() && noted()[u"base"_s].toBool());
    m_store.answerWhen(u"INSERT"_s, FakeSparqlAnswer::never());
    for (quint32 second = 40; second < 80; ++second)
        m_journal->save(at(video(u"urn:1"_s, 600), second));
    QVERIFY(settled());
    QVERIFY(QFileInfo(folder() + u'/' + files().constFirst()).size() < 500);
    kill();
    m_store.answerWhen(u"INSERT"_s, FakeSparqlAnswer::rows({}));
    m_journal->restore(); // it still has 20
    QTRY_COMPARE(saved(), QStringList{u"urn:1 79"_s});
}

void TestPositionJournal::twoVideosOneUponTheOther()
{
    m_store.answer(FakeSparqlAnswer::later());
    m_journal->save(at(video(u"urn:1"_s), 30));
    const int first = int(m_store.statements().size()) - 1;
    m_journal->note(video(u"urn:2"_s), 7);
    QVERIFY(settled());
    QCOMPARE(files().size(), 2);
    m_store.finish(first);
    QVERIFY(settled());
    QCOMPARE(files().size(), 1);
    QCOMPARE(noted()[u"urn"_s].toString(), u"urn:2"_s);
    // Killed before either was answered, both come back.
    m_journal->save(at(video(u"urn:1"_s), 33));
    kill();
    m_store.answer(FakeSparqlAnswer::rows({}));
    m_journal->restore();
    QTRY_COMPARE(saved().size(), 2);
    QStringList places = saved();
    places.sort();
    QCOMPARE(places, (QStringList{u"urn:1 33"_s, u"urn:2 7"_s}));
    QTRY_COMPARE(files(), QStringList());
}

void TestPositionJournal::aStoreThatIsAwayAtTheStartIsTriedWhenItComes()
{
    m_journal->note(video(), 38);
    kill();
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::error(u"no store"_s));
    m_journal->restore();
    QTRY_COMPARE(questions(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(m_journal->leftPlace(u"urn:1"_s), std::optional<quint32>(38)); // where it goes on meanwhile
    QCOMPARE(files().size(), 1);
    storeHas(20);
    QTRY_VERIFY((storeAnswers(), !saved().isEmpty()));
    QCOMPARE(saved(), QStringList{u"urn:1 38"_s});
    QTRY_COMPARE(files(), QStringList());
}

void TestPositionJournal::aVideoThatIsGoneIsNotWrittenTo()
{
    m_journal->note(video(), 38);
    kill();
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({}));
    LogLines lines("kestrel.data");
    m_journal->restore();
    QTRY_COMPARE(lines.all().filter(u"the store does not have it"_s).size(), 1);
    for (int i = 0; i < 3; ++i) {
        storeAnswers({{u"urn:2"_s, u"Another"_s, u"b.mp4"_s, u"60"_s, u"0"_s, u"video/mp4"_s,
                       u"file:///v/b.mp4"_s, u"2"_s}});
        QCoreApplication::processEvents();
    }
    QCOMPARE(saved(), QStringList());
    QCOMPARE(questions(), 1);
    QCOMPARE(files().size(), 1); // a database may be lost, and built again
}

void TestPositionJournal::aStoreThatWasBuiltAnewKnowsTheVideoByAnotherName()
{
    m_journal->note(video(), 38);
    QTRY_VERIFY(settled() && noted()[u"base"_s].toBool());
    kill();
    m_store.answerWhen(u"<urn:1> nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({}));
    LogLines lines("kestrel.data");
    m_journal->restore();
    QTRY_COMPARE(lines.all().filter(u"the store does not have it"_s).size(), 1);
    storeAnswers(
        {{u"urn:new"_s, u"Title"_s, u"1.mp4"_s, u"60"_s, u"20"_s, u"video/mp4"_s, video().url, u"9"_s}});
    QTRY_COMPARE(saved(), QStringList{u"urn:new 38"_s});
    QTRY_COMPARE(files(), QStringList());
}

void TestPositionJournal::aRenamedFileKeepsItsPlace()
{
    VideoInfo renamed = video();
    m_journal->note(renamed, 33);
    renamed.url = u"file:///v/another%20name.mp4"_s; // while it plays
    m_journal->note(renamed, 38);
    kill();
    m_journal->restore();
    QTRY_COMPARE(saved(), QStringList{u"urn:1 38"_s});
}

void TestPositionJournal::aPlaceFromLongAgoIsDroppedWhenTheVideoIsGone_data()
{
    QTest::addColumn<bool>("gone");
    QTest::newRow("gone") << true;
    QTest::newRow("there; perhaps the clock was wrong") << false;
}

void TestPositionJournal::aPlaceFromLongAgoIsDroppedWhenTheVideoIsGone()
{
    QFETCH(bool, gone);
    m_journal->note(video(), 38);
    QVERIFY(settled());
    edit(u"written"_s, noted()[u"written"_s].toInteger() - 40 * 24 * 3600);
    kill();
    if (gone)
        m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({}));
    m_journal->restore();
    QTRY_VERIFY(settled() && files().isEmpty());
    QCOMPARE(saved(), gone ? QStringList() : QStringList{u"urn:1 38"_s});
}

void TestPositionJournal::damagedNotesAreDropped_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("cut short") << QByteArray(R"({"urn":"urn:1","duration":60,"posi)");
    QTest::newRow("zeroes") << QByteArray(200, '\0');
    QTest::newRow("no object") << QByteArray("[1,2,3]");
    QTest::newRow("no name") << QByteArray(R"({"duration":60,"position":38})");
    QTest::newRow("no place") << QByteArray(R"({"urn":"urn:1","duration":60})");
    QTest::newRow("a place before the beginning")
        << QByteArray(R"({"urn":"urn:1","duration":60,"position":-3})");
    QTest::newRow("a place beyond all numbers")
        << QByteArray(R"({"urn":"urn:1","duration":60,"position":1e300})");
    QTest::newRow("another video's") << QByteArray(R"({"urn":"urn:2","duration":60,"position":38})");
    QTest::newRow("megabytes") << QByteArray(4 << 20, '{');
}

void TestPositionJournal::damagedNotesAreDropped()
{
    QFETCH(QByteArray, text);
    m_journal->note(video(), 38);
    QVERIFY(settled());
    QFile file(folder() + u'/' + files().constFirst());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();
    m_journal.reset();
    m_store.clear();
    LogLines lines("kestrel.data");
    begin();
    QCOMPARE(lines.all().filter(u"damaged"_s).size(), 1);
    m_journal->restore();
    QVERIFY(settled());
    QCOMPARE(files(), QStringList());
    QCOMPARE(m_store.texts(), QStringList());
}

void TestPositionJournal::aNoteThatWasCutShortLeavesTheOneBefore()
{
    m_journal->note(video(), 38);
    QVERIFY(settled());
    QFile unfinished(folder() + u'/' + files().constFirst() + u".new"_s);
    QVERIFY(unfinished.open(QIODevice::WriteOnly));
    unfinished.write(R"({"urn":"urn:1","durat)");
    unfinished.close();
    kill();
    m_journal->restore();
    QTRY_COMPARE(saved(), QStringList{u"urn:1 38"_s});
    QTRY_COMPARE(files(), QStringList());
}

void TestPositionJournal::aFullDiskIsToldOnceAndLeavesTheNoteBefore()
{
    m_journal->note(video(), 38);
    QVERIFY(settled());
    LogLines lines("kestrel.data");
    {
        const FullDisk full;
        for (const quint32 second : {43u, 48u, 53u}) {
            m_journal->note(video(), second);
            QVERIFY(settled());
        }
    }
    QCOMPARE(lines.all().filter(u"cannot be written"_s).size(), 1);
    QCOMPARE(files().size(), 1);
    QCOMPARE(noted()[u"position"_s].toInt(), 38);
    // There is room again.
    m_journal->note(video(), 58);
    QVERIFY(settled());
    QCOMPARE(noted()[u"position"_s].toInt(), 58);
    QCOMPARE(lines.all().filter(u"cannot be written"_s).size(), 1);
}

void TestPositionJournal::aFolderThatCannotBeMadeIsToldOnce()
{
    QFile file(m_state->filePath(u"kestrel"_s)); // where a folder should be
    QVERIFY(file.open(QIODevice::WriteOnly));
    LogLines lines("kestrel.data");
    for (const quint32 second : {38u, 43u}) {
        m_journal->note(video(), second);
        QVERIFY(settled());
    }
    QCOMPARE(lines.all().filter(u"cannot be written"_s).size(), 1);
    m_journal->save(at(video(), 45)); // the store gets it all the same
    QCOMPARE(saved(), QStringList{u"urn:1 45"_s});
}

// The store answers late, and the person has gone on watching.
void TestPositionJournal::whatIsPlayedMeanwhileIsNotRestored()
{
    m_journal->note(video(), 38);
    kill();
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::later());
    m_journal->restore();
    QCOMPARE(questions(), 1);
    m_journal->save(at(video(), 50));
    m_store.finish(0, {{20}});
    QTRY_COMPARE(files(), QStringList());
    QCOMPARE(saved(), QStringList{u"urn:1 50"_s});
}

QTEST_GUILESS_MAIN(TestPositionJournal)
#include "test_positionjournal.moc"
