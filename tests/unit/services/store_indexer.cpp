// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexerfixture.h"
#include "storepaths.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

// The indexer over a real database, told of real files as the follower tells it.
class StoreIndexer : public IndexerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { close(); }
    void aFileBecomesAVideo();
    void anEpisodeIsPartOfItsSeason();
    void aFileThatHarmsAWorkerIsTriedOnce();
    void aFileThatIsNoMediaIsNotListedUntilItIs();
    void aTouchedFileIsNotReadAgain();
    void aChangedFileGetsItsNewTitleUnlessThePersonGaveOne();
    void aMoveBetweenFileSystemsKeepsTheVideo();
    void aCopyIsAVideoOfItsOwn();
    void oneOfTwoEqualFilesGoesAndTheOtherStays_data();
    void oneOfTwoEqualFilesGoesAndTheOtherStays();
    void aFileThatReplacesAnotherTakesItsPlace();
    void twoFilesThatChangeNamesKeepTheirVideos();
    void aFolderThatIsAwayKeepsItsVideos();
    void aFileSystemThatIsNotMountedKeepsItsVideos();
    void aFileDeletedWhileNobodyLookedIsGone();
    void aFileMovedWhileNobodyLookedKeepsItsVideo();
    void aNewDatabaseGetsThePersonsValuesBack();
    void progressEndsWithAllDone();
};

void StoreIndexer::aFileBecomesAVideo()
{
    QVERIFY(write(u"a.mp4"_s, "title=First"));
    QVERIFY(find(u"a.mp4"_s));
    QVERIFY(video(u"a.mp4"_s).urn.startsWith(u"urn:uuid:"_s));
    QVERIFY(video(u"a.mp4"_s).id != 0);
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"First"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nfo:duration"_s), u"2"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nmm:runTime"_s), u"0"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nfo:fileName"_s), u"a.mp4"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nfo:fileSize"_s), u"11"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nie:mimeType"_s), u"video/mp4"_s);
    QVERIFY(!stored(u"a.mp4"_s, u"nrl:added"_s).isEmpty());
    QVERIFY(!stored(u"a.mp4"_s, u"nie:contentCreated"_s).isEmpty());
}

void StoreIndexer::anEpisodeIsPartOfItsSeason()
{
    QVERIFY(write(u"a.mp4"_s, "series, title=One") && write(u"b.mp4"_s, "series again, title=Two"));
    scan({u"a.mp4"_s, u"b.mp4"_s});
    QCOMPARE(count(), 2);
    for (const QString &name : {u"a.mp4"_s, u"b.mp4"_s}) {
        QCOMPARE(stored(name, u"nmm:episodeNumber"_s), u"5"_s);
        QCOMPARE(stored(name, u"nmm:synopsis"_s), u"Fog \"again\"\nand again."_s);
        QCOMPARE(stored(name, u"nmm:isPartOfSeason/nmm:seasonNumber"_s), u"2"_s);
        QCOMPARE(stored(name, u"nmm:isPartOfSeason/nmm:seasonOf/nie:title"_s), u"The Lighthouse"_s);
        QCOMPARE(stored(name, u"nfo:equipment"_s), u"urn:equipment:Good%20Cameras:X%3C1%3E:"_s);
        QCOMPARE(stored(name, u"nfo:width"_s), u"640"_s);
        QVERIFY(stored(name, u"nie:contentCreated"_s).startsWith(u"2020-01-02T03:04:05"_s));
    }
    // Read again with other content: the values follow.
    QVERIFY(write(u"a.mp4"_s, "series, title=Other"));
    QVERIFY(find(u"a.mp4"_s));
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"Other"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nmm:episodeNumber"_s), u"5"_s);
}

void StoreIndexer::aFileThatHarmsAWorkerIsTriedOnce()
{
    QVERIFY(write(u"bad.mp4"_s, "crash"));
    QVERIFY(find(u"bad.mp4"_s));
    QCOMPARE(m_reader->reads.size(), 1);
    QVERIFY(find(u"bad.mp4"_s));
    scan({u"bad.mp4"_s});
    QCOMPARE(m_reader->reads.size(), 1);
    close();
    open();
    scan({u"bad.mp4"_s});
    QCOMPARE(m_reader->reads.size(), 0);
    QCOMPARE(count(), 0);
}

void StoreIndexer::aFileThatIsNoMediaIsNotListedUntilItIs()
{
    QVERIFY(write(u"a.mp4"_s, "text only"));
    QVERIFY(find(u"a.mp4"_s));
    QCOMPARE(count(), 0);
    QVERIFY(write(u"a.mp4"_s, "title=A real one now"));
    QVERIFY(find(u"a.mp4"_s));
    QCOMPARE(count(), 1);
}

void StoreIndexer::aTouchedFileIsNotReadAgain()
{
    QVERIFY(write(u"a.mp4"_s, "title=A"));
    QVERIFY(find(u"a.mp4"_s));
    const VideoRecord before = video(u"a.mp4"_s);
    QFile file(at(u"a.mp4"_s));
    QVERIFY(file.open(QIODevice::ReadWrite)
            && file.setFileTime(QDateTime::currentDateTime().addDays(-3), QFileDevice::FileModificationTime));
    file.close();
    QVERIFY(find(u"a.mp4"_s));
    QCOMPARE(m_reader->reads.size(), 1);
    QCOMPARE(video(u"a.mp4"_s).urn, before.urn);
    QVERIFY(video(u"a.mp4"_s).identity.modifiedMs < before.identity.modifiedMs);
    // Known by its new time from now on.
    scan({u"a.mp4"_s});
    QCOMPARE(m_reader->reads.size(), 1);
}

void StoreIndexer::aChangedFileGetsItsNewTitleUnlessThePersonGaveOne()
{
    QVERIFY(write(u"a.mp4"_s, "title=Old") && write(u"b.mp4"_s, "title=Of the file"));
    QVERIFY(find(u"a.mp4"_s) && find(u"b.mp4"_s));
    QVERIFY(setTitle(u"b.mp4"_s, u"Of the person"_s));
    const QString urn = video(u"a.mp4"_s).urn;
    QVERIFY(write(u"a.mp4"_s, "title=Newer") && write(u"b.mp4"_s, "title=Of another file"));
    QVERIFY(find(u"a.mp4"_s) && find(u"b.mp4"_s));
    QCOMPARE(m_reader->reads.size(), 4);
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"Newer"_s);
    QCOMPARE(stored(u"b.mp4"_s, u"nie:title"_s), u"Of the person"_s);
    QCOMPARE(video(u"a.mp4"_s).urn, urn);
}

void StoreIndexer::aMoveBetweenFileSystemsKeepsTheVideo()
{
    QVERIFY(write(u"a.mp4"_s, "title=A"));
    QVERIFY(find(u"a.mp4"_s));
    QVERIFY(setTitle(u"a.mp4"_s, u"Mine"_s));
    const VideoRecord before = onAnotherFileSystem(u"a.mp4"_s);
    QVERIFY(QFile::copy(at(u"a.mp4"_s), at(u"moved.mp4"_s)));
    QVERIFY(find(u"moved.mp4"_s));
    QVERIFY(QFile::remove(at(u"a.mp4"_s)));
    m_indexer->onGone(at(u"a.mp4"_s), false);
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    QCOMPARE(video(u"moved.mp4"_s).urn, before.urn);
    QCOMPARE(video(u"moved.mp4"_s).id, before.id);
    QCOMPARE(stored(u"moved.mp4"_s, u"nie:title"_s), u"Mine"_s);
    QCOMPARE(stored(u"moved.mp4"_s, u"nfo:fileName"_s), u"moved.mp4"_s);
}

void StoreIndexer::aCopyIsAVideoOfItsOwn()
{
    QVERIFY(write(u"a.mp4"_s, "title=A"));
    QVERIFY(find(u"a.mp4"_s));
    QVERIFY(QFile::copy(at(u"a.mp4"_s), at(u"b.mp4"_s)));
    QVERIFY(find(u"b.mp4"_s));
    QCOMPARE(count(), 2);
    QVERIFY(video(u"a.mp4"_s).urn != video(u"b.mp4"_s).urn);
}

void StoreIndexer::oneOfTwoEqualFilesGoesAndTheOtherStays_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"found together", "copied later", "copied before",
                            "found together, one on a card", "copied to the card, and the copy goes"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

// Somebody has a film twice and deletes or takes away one of them: the other one is left as it was.
void StoreIndexer::oneOfTwoEqualFilesGoesAndTheOtherStays()
{
    QFETCH(QString, way);
    const QString lost = u"lost.mp4"_s;
    const QString other = u"other.mp4"_s;
    const auto add = [this](const QString &name) { return write(name, "title=Same") && find(name); };
    if (way.startsWith(u"found"_s)) {
        QVERIFY(write(lost, "title=Same") && write(other, "title=Same"));
        scan({lost, other});
    } else if (way == u"copied later"_s) {
        QVERIFY(add(lost) && add(other));
    } else {
        QVERIFY(add(other) && add(lost));
    }
    if (way.contains(u"card"_s))
        onAnotherFileSystem(lost);
    QVERIFY(setTitle(lost, u"Mine"_s));
    const VideoRecord kept = video(other);
    const int gone = video(lost).id;
    m_feed->clear();
    QStringList told;
    const QObject listener; // not for longer than this test
    connect(m_feed.get(), &ChangeFeed::changed, &listener,
            [&](const QList<StoreQuad> &deletes, const QList<StoreQuad> &inserts) {
                for (const StoreQuad &quad : deletes)
                    told.append(u"%1 deleted"_s.arg(quad.subject));
                for (const StoreQuad &quad : inserts)
                    told.append(u"%1 changed"_s.arg(quad.subject));
            });
    QVERIFY(QFile::remove(at(lost)));
    m_indexer->onGone(at(lost), false);
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    QCOMPARE(video(other).urn, kept.urn);
    QCOMPARE(stored(other, u"nie:title"_s), u"Same"_s);
    QTRY_COMPARE(told, QStringList{u"%1 deleted"_s.arg(gone)});
}

void StoreIndexer::aFileThatReplacesAnotherTakesItsPlace()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=Bee"));
    QVERIFY(find(u"a.mp4"_s) && find(u"b.mp4"_s));
    const QString urn = video(u"a.mp4"_s).urn;
    QCOMPARE(::rename(qPrintable(at(u"a.mp4"_s)), qPrintable(at(u"b.mp4"_s))), 0);
    m_indexer->onMoved(at(u"a.mp4"_s), at(u"b.mp4"_s), false);
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    QCOMPARE(video(u"b.mp4"_s).urn, urn);
    QCOMPARE(stored(u"b.mp4"_s, u"nie:title"_s), u"A"_s);
}

void StoreIndexer::twoFilesThatChangeNamesKeepTheirVideos()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=Bee"));
    QVERIFY(find(u"a.mp4"_s) && find(u"b.mp4"_s));
    const QString a = video(u"a.mp4"_s).urn;
    const QString b = video(u"b.mp4"_s).urn;
    const auto move = [this](const QString &from, const QString &to) {
        m_indexer->onMoved(at(from), at(to), false);
        return QFile::rename(at(from), at(to));
    };
    QVERIFY(move(u"a.mp4"_s, u"c.mp4"_s) && move(u"b.mp4"_s, u"a.mp4"_s) && move(u"c.mp4"_s, u"b.mp4"_s));
    QVERIFY(settled());
    QCOMPARE(video(u"b.mp4"_s).urn, a);
    QCOMPARE(video(u"a.mp4"_s).urn, b);
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"Bee"_s);
}

void StoreIndexer::aFolderThatIsAwayKeepsItsVideos()
{
    QVERIFY(write(u"card/a.mp4"_s, "title=A"));
    QVERIFY(find(u"card/a.mp4"_s));
    const QString urn = video(u"card/a.mp4"_s).urn;
    QVERIFY(QDir().rename(root(), m_home->filePath(u"pulled"_s)));
    m_indexer->onAway(root());
    m_indexer->onScanFinished(root());
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    // The same content elsewhere is a copy as long as the card may come back.
    QVERIFY(QDir().rename(m_home->filePath(u"pulled"_s), root()));
    scan({u"card/a.mp4"_s});
    QCOMPARE(video(u"card/a.mp4"_s).urn, urn);
    QCOMPARE(m_reader->reads.size(), 1);
}

// The mount point is there and empty: the file's device is not the one that the folder is on.
void StoreIndexer::aFileSystemThatIsNotMountedKeepsItsVideos()
{
    QVERIFY(write(u"card/a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=B"));
    QVERIFY(find(u"card/a.mp4"_s) && find(u"b.mp4"_s));
    const VideoRecord onCard = onAnotherFileSystem(u"card/a.mp4"_s);
    QVERIFY(QFile::remove(at(u"card/a.mp4"_s)));
    scan({u"b.mp4"_s});
    QCOMPARE(video(u"card/a.mp4"_s).urn, onCard.urn);
    QCOMPARE(count(), 2);
}

void StoreIndexer::aFileDeletedWhileNobodyLookedIsGone()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=Bee"));
    scan({u"a.mp4"_s, u"b.mp4"_s});
    QCOMPARE(count(), 2);
    close();
    QVERIFY(QFile::remove(at(u"a.mp4"_s)));
    open();
    QCOMPARE(count(), 2);
    scan({u"b.mp4"_s});
    QCOMPARE(count(), 1);
    QCOMPARE(stored(u"a.mp4"_s, u"nfo:fileName"_s), QString());
}

void StoreIndexer::aFileMovedWhileNobodyLookedKeepsItsVideo()
{
    QVERIFY(write(u"a.mp4"_s, "title=A"));
    scan({u"a.mp4"_s});
    const QString urn = video(u"a.mp4"_s).urn;
    close();
    QVERIFY(QDir().mkpath(at(u"deep"_s)) && QFile::rename(at(u"a.mp4"_s), at(u"deep/renamed.mp4"_s)));
    open();
    scan({u"deep/renamed.mp4"_s});
    QCOMPARE(count(), 1);
    QCOMPARE(video(u"deep/renamed.mp4"_s).urn, urn);
    QCOMPARE(m_reader->reads.size(), 0);
}

void StoreIndexer::aNewDatabaseGetsThePersonsValuesBack()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=Bee"));
    scan({u"a.mp4"_s, u"b.mp4"_s});
    QVERIFY(setTitle(u"a.mp4"_s, u"Mine"_s));
    QString error = u"none"_s;
    const QString urn = video(u"a.mp4"_s).urn;
    m_library->applyUpdate({u"INSERT { <%1> nmm:runTime \"77\" } WHERE { }"_s.arg(urn)},
                           [&](const QString &told) { error = told; });
    m_library->recordPlay(urn);
    QVERIFY(settled());
    close();
    QVERIFY(QDir(m_home->filePath(u"store"_s)).removeRecursively());
    QVERIFY(QFile::rename(at(u"a.mp4"_s), at(u"renamed.mp4"_s)));
    open();
    QCOMPARE(count(), 0);
    scan({u"renamed.mp4"_s, u"b.mp4"_s});
    QCOMPARE(video(u"renamed.mp4"_s).urn, urn);
    QCOMPARE(stored(u"renamed.mp4"_s, u"nie:title"_s), u"Mine"_s);
    QCOMPARE(stored(u"renamed.mp4"_s, u"nie:usageCounter"_s), u"1"_s);
    QVERIFY(!stored(u"renamed.mp4"_s, u"nie:contentAccessed"_s).isEmpty());
    QCOMPARE(stored(u"b.mp4"_s, u"nie:title"_s), u"Bee"_s);
}

void StoreIndexer::progressEndsWithAllDone()
{
    QList<QVariantList> reports;
    connect(m_indexer->progress(), &ScanProgress::changed, this, [&](bool scanning, uint seen, uint done) {
        reports.append({scanning, seen, done});
    });
    QStringList names;
    for (int i = 0; i < 60; ++i) {
        names.append(u"%1.mp4"_s.arg(i));
        QVERIFY(write(names.last(), i % 7 == 0 ? "crash" : "title=x"));
    }
    scan(names);
    QTRY_COMPARE(reports.last(), QVariantList({false, 60u, 60u}));
    QCOMPARE(reports.first().value(0).toBool(), true);
}

QTEST_GUILESS_MAIN(StoreIndexer)
#include "store_indexer.moc"
