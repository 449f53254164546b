// SPDX-License-Identifier: GPL-3.0-or-later
#include "database.h"
#include "librarylog.h"

#include <glib.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QString insertion(int number)
{
    return u"INSERT DATA { <urn:uuid:%1> a nmm:Video, nfo:FileDataObject ; nie:url \"file:///%1.mp4\" }"_s
        .arg(number);
}

int countOf(Database *database)
{
    int count = -1;
    database->read(u"SELECT COUNT(?v) { ?v a nmm:Video }"_s,
                   [&](TrackerSparqlCursor *row) { count = int(tracker_sparql_cursor_get_integer(row, 0)); });
    return count;
}

} // namespace

class StoreDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void writesWaitUntilTheWriterIsThere();
    void readersAreServedBeforeTheWriter();
    void aFailedWriteLeavesTheOthers();
    void aCorruptDatabaseIsMovedAsideOnce_data();
    void aCorruptDatabaseIsMovedAsideOnce();
    void anErrorInTheLibrarysLogStopsWritingUntilItIsRepaired();
    void oldDatabasesDoNotPileUp();

private:
    [[nodiscard]] QString path() const { return m_folder->filePath(u"store"_s); }
    static bool write(Database *database, const QString &text, QString *error = nullptr);
    void makeDatabase();

    std::unique_ptr<QTemporaryDir> m_folder;
};

bool StoreDatabase::write(Database *database, const QString &text, QString *error)
{
    bool isDone = false;
    QString failure;
    StoreWrite write;
    write.texts.append(text);
    write.done = [&](const QString &told) {
        failure = told;
        isDone = true;
    };
    database->write(std::move(write));
    const bool came = QTest::qWaitFor([&] { return isDone; }, 20000);
    if (error)
        *error = failure;
    return came && failure.isEmpty();
}

void StoreDatabase::makeDatabase()
{
    Database database(path());
    database.open();
    QVERIFY(write(&database, insertion(1)));
}

void StoreDatabase::writesWaitUntilTheWriterIsThere()
{
    Database database(path());
    database.open();
    QVERIFY(!database.writer());
    QVERIFY(write(&database, insertion(1)));
    QCOMPARE(countOf(&database), 1);
}

void StoreDatabase::readersAreServedBeforeTheWriter()
{
    makeDatabase();
    Database database(path());
    database.open();
    QVERIFY(!database.writer());
    QCOMPARE(countOf(&database), 1);
    QVERIFY(write(&database, insertion(2)));
    QCOMPARE(countOf(&database), 2);
}

void StoreDatabase::aFailedWriteLeavesTheOthers()
{
    Database database(path());
    database.open();
    QString error;
    QVERIFY(!write(&database, u"INSERT DATA { this is no SPARQL"_s, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(database.isHealthy());
    QVERIFY(write(&database, insertion(1)));
    QVERIFY(!write(&database, u"INSERT DATA { <urn:uuid:2> nmm:runTime 5 }"_s, &error)); // of no video
    QVERIFY(database.isHealthy());
    QCOMPARE(countOf(&database), 1);
}

void StoreDatabase::aCorruptDatabaseIsMovedAsideOnce_data()
{
    QTest::addColumn<int>("position");
    QTest::newRow("the head") << 0;
    QTest::newRow("the first page") << 100;
    QTest::newRow("cut to nothing") << -1;
}

void StoreDatabase::aCorruptDatabaseIsMovedAsideOnce()
{
    QFETCH(int, position);
    makeDatabase();
    // What is still in the log would hide the damage.
    QFile::remove(path() + u"/meta.db-wal"_s);
    QFile::remove(path() + u"/meta.db-shm"_s);
    QFile file(path() + u"/meta.db"_s);
    QVERIFY(file.open(QIODevice::ReadWrite));
    if (position < 0) {
        QVERIFY(file.resize(0));
    } else {
        file.seek(position);
        file.write(QByteArray(3000, 'x'));
    }
    file.close();

    Database database(path());
    QSignalSpy aside(&database, &Database::movedAside);
    QSignalSpy ready(&database, &Database::readerReady);
    database.open();
    QTRY_COMPARE_WITH_TIMEOUT(ready.count(), 1, 20000);
    QCOMPARE(aside.count(), 1);
    QCOMPARE(countOf(&database), 0);
    QVERIFY(write(&database, insertion(7)));
    QCOMPARE(countOf(&database), 1);
    QCOMPARE(QDir(m_folder->path()).entryList({u"store-damaged-*"_s}).size(), 1);
}

void StoreDatabase::anErrorInTheLibrarysLogStopsWritingUntilItIsRepaired()
{
    Database database(path());
    database.open();
    QVERIFY(write(&database, insertion(1)));
    QSignalSpy health(&database, &Database::healthyChanged);
    g_log("Tracker", G_LOG_LEVEL_CRITICAL, "Could not do something: disk I/O error");
    QTRY_VERIFY(!database.isHealthy());
    QVERIFY(!database.writer());
    QCOMPARE(countOf(&database), 1); // reading goes on

    // Written once the store can write again.
    QVERIFY(write(&database, insertion(2)));
    QVERIFY(database.isHealthy());
    QCOMPARE(health.count(), 2);
    QCOMPARE(countOf(&database), 2);
}

void StoreDatabase::oldDatabasesDoNotPileUp()
{
    for (int i = 0; i < 6; ++i)
        QVERIFY(QDir().mkpath(path() + u"-damaged-2020010%1T000000000"_s.arg(i)));
    QVERIFY(QDir().mkpath(path()));
    QFile file(path() + u"/meta.db"_s);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no database");
    file.close();
    Database database(path());
    database.open();
    QVERIFY(write(&database, insertion(1)));
    const QStringList aside = QDir(m_folder->path()).entryList({u"store-damaged-*"_s});
    QCOMPARE(aside.size(), 3);
    QCOMPARE(aside.first().left(22), u"store-damaged-20200104"_s);
}

QTEST_GUILESS_MAIN(StoreDatabase)
#include "store_database.moc"
