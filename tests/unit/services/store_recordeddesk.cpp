// SPDX-License-Identifier: GPL-3.0-or-later
#include "changefeed.h"
#include "database.h"
#include "recordeddesk.h"
#include "userjournal.h"
#include "videolibrary.h"

#include <QDateTime>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

qint64 at(const QString &time)
{
    return QDateTime::fromString(time, Qt::ISODate).toSecsSinceEpoch();
}

const qint64 dayBegins = at(u"2020-05-01T00:00:00Z"_s);
const qint64 dayEnds = at(u"2020-05-02T00:00:00Z"_s);

QString insertion(int number, const QString &created)
{
    return u"INSERT DATA { <urn:uuid:%1> a nmm:Video, nfo:FileDataObject ; nie:url \"file:///%1.mp4\" ; "
           "nfo:fileName \"%1.mp4\" ; nie:contentCreated \"%2\" }"_s.arg(number)
               .arg(created);
}

} // namespace

// The details of a video are opened a moment after the service has started: the videos of the same day are
// told before all videos are read.
class StoreRecordedDesk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void beforeTheTableIsRead();
    void anyTimeIsAnswered_data();
    void anyTimeIsAnswered();
    void whereThereIsNoDatabaseYet();
    void tooManyQuestions();

private:
    struct Library
    {
        explicit Library(const QString &folder)
            : journal(folder + u"/journal"_s),
              database(folder + u"/store"_s),
              library(&database, &journal, &feed)
        {
        }

        UserJournal journal;
        Database database;
        ChangeFeed feed;
        VideoLibrary library;
    };
    [[nodiscard]] QStringList asked(RecordedDesk &desk, const RecordedQuestion &question);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QTemporaryDir> m_elsewhere;
    std::unique_ptr<Library> m_library; // with four videos
    std::unique_ptr<Library> m_unread; // which nobody opens: its table is never read
};

void StoreRecordedDesk::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_elsewhere = std::make_unique<QTemporaryDir>();
    m_library = std::make_unique<Library>(m_folder->path());
    m_unread = std::make_unique<Library>(m_elsewhere->path());
    m_library->database.open();
    bool isWritten = false;
    StoreWrite write;
    write.texts = {insertion(1, u"2020-04-30T23:59:59Z"_s), insertion(2, u"2020-05-01T00:00:00Z"_s),
                   insertion(3, u"2020-05-01T15:00:00+02:00"_s), insertion(4, u"2020-05-02T00:00:00Z"_s)};
    write.done = [&isWritten](const QString &error) { isWritten = error.isEmpty(); };
    m_library->database.write(std::move(write));
    QTRY_VERIFY_WITH_TIMEOUT(isWritten, 30'000);
    QTRY_COMPARE_WITH_TIMEOUT(m_library->library.table().size(), 4, 30'000);
}

void StoreRecordedDesk::cleanup()
{
    m_unread.reset();
    m_library.reset();
    QTRY_COMPARE_WITH_TIMEOUT(Database::closing(), 0, 30'000);
}

// The last parts of the urns.
QStringList StoreRecordedDesk::asked(RecordedDesk &desk, const RecordedQuestion &question)
{
    bool isAnswered = false;
    QStringList urns;
    const bool isTaken = desk.ask(question, [&](const QList<int> &ids) {
        isAnswered = true;
        for (const int id : ids)
            m_library->database.read(
                u"SELECT ?v { ?v a nmm:Video FILTER (tracker:id(?v) = %1) }"_s.arg(id),
                [&urns](TrackerSparqlCursor *row) { urns.append(columnText(row, 0).section(u':', -1)); });
    });
    if (!isTaken || !QTest::qWaitFor([&isAnswered] { return isAnswered; }, 30'000))
        return {u"no answer"_s};
    return urns;
}

void StoreRecordedDesk::beforeTheTableIsRead()
{
    RecordedDesk desk(&m_library->database, &m_unread->library);
    QVERIFY(!m_unread->library.isLoaded());
    QCOMPARE(asked(desk, {dayBegins, dayEnds, at(u"2020-05-01T12:00:00Z"_s), 10}),
             QStringList({u"3"_s, u"2"_s}));
    QCOMPARE(asked(desk, {dayBegins, dayEnds, at(u"2020-05-01T12:00:00Z"_s), 1}), QStringList(u"3"_s));
    QCOMPARE(asked(desk, {dayBegins - 1, dayEnds + 1, dayBegins, 10}),
             QStringList({u"2"_s, u"1"_s, u"3"_s, u"4"_s}));
}

void StoreRecordedDesk::anyTimeIsAnswered_data()
{
    QTest::addColumn<qint64>("from");
    QTest::addColumn<qint64>("until");
    QTest::addColumn<int>("videos");
    QTest::newRow("all") << std::numeric_limits<qint64>::min() << std::numeric_limits<qint64>::max() << 4;
    QTest::newRow("none") << dayBegins << dayBegins << 0;
    QTest::newRow("the wrong way") << dayEnds << dayBegins << 0;
    QTest::newRow("before everything") << std::numeric_limits<qint64>::min() << dayBegins - 1 << 0;
}

void StoreRecordedDesk::anyTimeIsAnswered()
{
    QFETCH(qint64, from);
    QFETCH(qint64, until);
    QFETCH(int, videos);
    RecordedDesk unread(&m_library->database, &m_unread->library);
    QCOMPARE(asked(unread, {from, until, dayBegins, 10}).size(), videos);
    RecordedDesk read(&m_library->database, &m_library->library);
    QCOMPARE(asked(read, {from, until, dayBegins, 10}).size(), videos);
}

void StoreRecordedDesk::whereThereIsNoDatabaseYet()
{
    RecordedDesk desk(&m_unread->database, &m_unread->library);
    int answers = 0;
    QVERIFY(desk.ask({dayBegins, dayEnds, dayBegins, 10}, [&answers](const QList<int> &ids) {
        ++answers;
        QCOMPARE(ids, QList<int>());
    }));
    QCOMPARE(answers, 0);
    m_unread->database.open();
    QTRY_COMPARE_WITH_TIMEOUT(answers, 1, 30'000);
}

void StoreRecordedDesk::tooManyQuestions()
{
    RecordedDesk desk(&m_unread->database, &m_unread->library);
    int answers = 0;
    for (int i = 0; i < RecordedDesk::mostWaiting; ++i)
        QVERIFY(desk.ask({}, [&answers](const QList<int> &) { ++answers; }));
    QVERIFY(!desk.ask({}, [&answers](const QList<int> &) { ++answers; }));
    QCOMPARE(answers, 0);
}

QTEST_GUILESS_MAIN(StoreRecordedDesk)
#include "store_recordeddesk.moc"
