// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/relatedlibrary.h"

#include "libraryquestions.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>

#include <map>
#include <memory>

using namespace Qt::Literals::StringLiterals;

struct sqlite3_stmt;

namespace {

// What the database did for a question, counted by itself: the same on every machine, however busy.
struct Work
{
    qint64 steps = 0; // of its virtual machine
    qint64 scanned = 0; // rows of tables gone through from end to end
    qint64 indexed = 0; // rows of indexes made for this question alone, as for a copy of a table
};

Work g_work;

template <typename Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int done(const char *name, sqlite3_stmt *statement)
{
    static const auto status = next<int (*)(sqlite3_stmt *, int, int)>("sqlite3_stmt_status");
    if (statement) {
        g_work.scanned += status(statement, 1, 1); // SQLITE_STMTSTATUS_FULLSCAN_STEP
        g_work.indexed += status(statement, 3, 1); // SQLITE_STMTSTATUS_AUTOINDEX
        g_work.steps += status(statement, 4, 1); // SQLITE_STMTSTATUS_VM_STEP
    }
    return next<int (*)(sqlite3_stmt *)>(name)(statement);
}

} // namespace

// Stand before those of the library that the store's calls.
extern "C" int sqlite3_reset(sqlite3_stmt *statement)
{
    return done("sqlite3_reset", statement);
}

extern "C" int sqlite3_finalize(sqlite3_stmt *statement)
{
    return done("sqlite3_finalize", statement);
}

namespace {

// A store in this process.
class Store
{
public:
    Store(RelatedLibrary kind, int videos)
    {
        qputenv("XDG_DATA_HOME", m_data.path().toUtf8());
        fillRelatedLibrary(kind, videos);
        GFile *place
            = g_file_new_for_path(QFile::encodeName(m_data.path() + u"/kestrel/store"_s).constData());
        GFile *ontology = tracker_sparql_get_ontology_nepomuk();
        m_connection = tracker_sparql_connection_new(TRACKER_SPARQL_CONNECTION_FLAGS_READONLY, place,
                                                     ontology, nullptr, nullptr);
        g_object_unref(ontology);
        g_object_unref(place);
    }
    ~Store()
    {
        tracker_sparql_connection_close(m_connection);
        g_object_unref(m_connection);
    }
    Q_DISABLE_COPY_MOVE(Store)

    // Rows of a question, and what they cost.
    QList<QStringList> ask(const QString &question, Work *work)
    {
        g_work = {};
        GError *error = nullptr;
        TrackerSparqlCursor *cursor
            = tracker_sparql_connection_query(m_connection, question.toUtf8().constData(), nullptr, &error);
        if (!cursor)
            qFatal("%s: %s", qPrintable(question), error->message);
        QList<QStringList> rows;
        while (tracker_sparql_cursor_next(cursor, nullptr, nullptr)) {
            QStringList row;
            for (int column = 0; column < tracker_sparql_cursor_get_n_columns(cursor); ++column)
                row.append(QString::fromUtf8(tracker_sparql_cursor_get_string(cursor, column, nullptr)));
            rows.append(row);
        }
        tracker_sparql_cursor_close(cursor);
        g_object_unref(cursor);
        *work = g_work;
        return rows;
    }

private:
    QTemporaryDir m_data;
    TrackerSparqlConnection *m_connection = nullptr;
};

// Questions about a video, by what they are for, in the middle of a library.
using Questions = QList<std::pair<QString, QString>>;

Questions questionsAbout(RelatedLibrary kind, int number, Store &store)
{
    Work work;
    const QString itself = LibraryQuestions::ofUrl(relatedUrl(kind, number));
    const QList<QStringList> ids = store.ask(itself, &work);
    RelatedVideo video;
    int season = 0;
    for (const auto part :
         {LibraryQuestions::Part::Names, LibraryQuestions::Part::Kind, LibraryQuestions::Part::Time}) {
        const auto rows = store.ask(LibraryQuestions::part(part, {ids.value(0).value(0).toInt()}), &work);
        LibraryQuestions::takePart(part, rows.value(0), video, season);
    }
    const QString folder = folderOf(video.url);
    Questions questions{
        {u"itself"_s, itself},
        {u"after it"_s, LibraryQuestions::nextTo(video.url, LibraryQuestions::endOf(folder), true)},
        {u"before it"_s, LibraryQuestions::nextTo(video.url, folder, false)},
        {u"names"_s, LibraryQuestions::part(LibraryQuestions::Part::Names, {video.id})},
        {u"kind"_s, LibraryQuestions::part(LibraryQuestions::Part::Kind, {video.id})},
        {u"time"_s, LibraryQuestions::part(LibraryQuestions::Part::Time, {video.id})}};
    for (const QString &question : LibraryQuestions::episodes(video))
        questions.append({u"episodes"_s, question});
    for (const QString &question : LibraryQuestions::similar(video))
        questions.append({u"similar"_s, question});
    if (season != 0) {
        questions.append({u"season"_s, LibraryQuestions::seasonNumbers({season})});
        questions.append({u"series"_s, LibraryQuestions::seriesOf({season})});
    }
    return questions;
}

} // namespace

class TestRelatedQuestions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanupTestCase() { m_stores.clear(); }

    void tenTimesTheVideosAreNoMoreWork_data();
    void tenTimesTheVideosAreNoMoreWork();
    void noTableIsCopiedForASeries();
    void neighboursComeInOrder();

private:
    // Filled when it is first asked for.
    Store &store(RelatedLibrary kind, int videos)
    {
        std::unique_ptr<Store> &kept = m_stores[{kind, videos}];
        if (!kept)
            kept = std::make_unique<Store>(kind, videos);
        return *kept;
    }

    std::map<std::pair<RelatedLibrary, int>, std::unique_ptr<Store>> m_stores;
};

void TestRelatedQuestions::tenTimesTheVideosAreNoMoreWork_data()
{
    QTest::addColumn<RelatedLibrary>("kind");
    QTest::addColumn<int>("number");
    QTest::newRow("a recording in a large folder") << RelatedLibrary::Mixed << 200;
    QTest::newRow("an episode by its name") << RelatedLibrary::Mixed << 201;
    QTest::newRow("a film of many words") << RelatedLibrary::Mixed << 203;
    QTest::newRow("one of many that are alike") << RelatedLibrary::Alike << 200;
}

void TestRelatedQuestions::tenTimesTheVideosAreNoMoreWork()
{
    QFETCH(RelatedLibrary, kind);
    QFETCH(int, number);
    Store &small = store(kind, 400);
    Store &large = store(kind, 4000);
    const Questions questions = questionsAbout(kind, number, small);
    const Questions again = questionsAbout(kind, number, large);
    QCOMPARE(again.size(), questions.size());
    for (qsizetype i = 0; i < questions.size(); ++i) {
        Work before;
        Work after;
        const qsizetype rows = small.ask(questions[i].second, &before).size();
        const qsizetype more = large.ask(again[i].second, &after).size();
        const auto told = u"%1: %2 rows with %3 steps, %4 rows with %5 steps: %6"_s.arg(questions[i].first)
                              .arg(rows)
                              .arg(before.steps)
                              .arg(more)
                              .arg(after.steps)
                              .arg(again[i].second)
                              .toUtf8();
        QVERIFY2(after.steps > 0, told.constData()); // it was counted
        // A row of an answer takes some ten steps, and so would each of the videos that are gone through.
        QVERIFY2(after.steps < 2 * before.steps + 40 * std::max<qsizetype>(0, more - rows) + 400,
                 told.constData());
        QVERIFY2(after.indexed == 0, told.constData());
        QVERIFY2(after.scanned <= more + 10, told.constData());
    }
}

// These go through the episodes that have metadata, once.
void TestRelatedQuestions::noTableIsCopiedForASeries()
{
    Store &alike = store(RelatedLibrary::Alike, 4000);
    Work work;
    QList<int> seasons;
    for (const QStringList &row : alike.ask(LibraryQuestions::seasons(u"Saga 0"_s), &work))
        seasons.append(row.value(0).toInt());
    QCOMPARE(seasons.size(), 1);
    QCOMPARE(work.indexed, 0);
    const QList<QStringList> episodes = alike.ask(LibraryQuestions::episodesOf(seasons), &work);
    QCOMPARE(episodes.size(), 200); // a twentieth
    QCOMPARE(work.indexed, 0);
    QVERIFY2(work.scanned <= 4000, QByteArray::number(work.scanned).constData());
    const int first = episodes.constFirst().value(0).toInt();
    const int last = episodes.constLast().value(0).toInt();
    const auto near = alike.ask(LibraryQuestions::episodesNumbered(150, first, last), &work);
    QCOMPARE(near.size(), 151); // 50 to 200
    QCOMPARE(work.indexed, 0);
    QVERIFY2(work.steps < 20 * (last - first + 1) + 400, QByteArray::number(work.steps).constData());
}

void TestRelatedQuestions::neighboursComeInOrder()
{
    Store &mixed = store(RelatedLibrary::Mixed, 4000);
    Work work;
    const QString url = relatedUrl(RelatedLibrary::Mixed, 2000);
    const QString folder = folderOf(url);
    const auto after = mixed.ask(LibraryQuestions::nextTo(url, LibraryQuestions::endOf(folder), true), &work);
    const auto before = mixed.ask(LibraryQuestions::nextTo(url, folder, false), &work);
    QCOMPARE(after.size(), LibraryQuestions::mostOfASide);
    QCOMPARE(before.size(), LibraryQuestions::mostOfASide);
    for (int i = 0; i < LibraryQuestions::mostOfASide; ++i) {
        QCOMPARE(after.at(i).at(1), relatedUrl(RelatedLibrary::Mixed, 2002 + 2 * i));
        QCOMPARE(before.at(i).at(1), relatedUrl(RelatedLibrary::Mixed, 1998 - 2 * i));
    }
}

QTEST_GUILESS_MAIN(TestRelatedQuestions)

#include "tst_relatedquestions.moc"
