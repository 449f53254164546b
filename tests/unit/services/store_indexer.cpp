// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexer.h"
#include "storepaths.h"
#include "videoresource.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

// Stands for the workers: the content of a file is its answer, "title=.." or "crash" or "text".
class ScriptedReader : public MediaReader
{
    Q_OBJECT

public:
    int read(const QString &path, bool) override
    {
        reads.append(path.section(u'/', -1));
        const int id = ++m_last;
        QMetaObject::invokeMethod(
            this, [this, id, path] { answer(id, path); }, Qt::QueuedConnection);
        return id;
    }
    void releaseFilesUnder(const QString &) override { }

    QStringList reads;

private:
    void answer(int id, const QString &path)
    {
        QFile file(path);
        MediaReply reply;
        const QString content
            = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        if (content.isEmpty())
            reply.status = MediaReply::Status::Unreadable;
        else if (content.startsWith(u"crash"_s))
            reply.status = MediaReply::Status::Crashed;
        else if (content.startsWith(u"text"_s))
            reply.status = MediaReply::Status::NotMedia;
        if (content.startsWith(u"series"_s)) {
            reply.showName = u"The Lighthouse"_s;
            reply.season = 2;
            reply.episode = 5;
            reply.synopsis = u"Fog \"again\"\nand again."_s;
            reply.cameraMake = u"Good Cameras"_s;
            reply.cameraModel = u"X<1>"_s;
            reply.width = 640;
            reply.height = 360;
            reply.created = QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC);
        }
        reply.durationMs = 2400;
        reply.hasVideo = true;
        reply.mimeType = u"video/mp4"_s;
        reply.title = content.section(u"title="_s, 1).section(u'\n', 0, 0);
        Q_EMIT finished(id, reply);
    }

    int m_last = 0;
};

} // namespace

// The indexer over a real database, told of real files as the follower tells it.
class StoreIndexer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
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
    void aFileThatTheIndexReadIsNotOpened();
    void aFileToldTwiceIsOneVideo();
    void factsThatComeWhileAFileWaitsSaveTheReading();
    void whatThePersonMadeOfAToldVideoSurvivesACopyElsewhere();
    void aPromisedFileIsOfInterestAsTheNewPlaceOfAnother();
    void aMissingFileIsLostOnlyForSure();
    void progressEndsWithAllDone();

private:
    [[nodiscard]] QString root() const { return m_home->filePath(u"Videos"_s); }
    [[nodiscard]] QString at(const QString &name) const { return root() + u'/' + name; }
    bool write(const QString &name, const QByteArray &content);
    bool find(const QString &name);
    // As the desktop's index tells of a file.
    [[nodiscard]] FoundFile told(const QString &name, const QString &title) const;
    void scan(const QStringList &names);
    void open();
    void close();
    [[nodiscard]] VideoRecord video(const QString &name) const;
    [[nodiscard]] int count() const { return m_library->table().size(); }
    [[nodiscard]] QString stored(const QString &name, const QString &property);
    bool setTitle(const QString &name, const QString &title);
    bool settled();
    // As if it lay on a card.
    VideoRecord onAnotherFileSystem(const QString &name)
    {
        VideoRecord record = video(name);
        record.identity.device += 1000;
        m_library->relocate(record);
        return record;
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<UserJournal> m_journal;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<ChangeFeed> m_feed;
    std::unique_ptr<VideoLibrary> m_library;
    std::unique_ptr<ScriptedReader> m_reader;
    std::unique_ptr<Indexer> m_indexer;
    QStringList m_digested;
};

void StoreIndexer::init()
{
    m_digested.clear();
    m_home = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(root()));
    open();
}

void StoreIndexer::cleanup()
{
    close();
}

void StoreIndexer::open()
{
    m_journal = std::make_unique<UserJournal>(m_home->filePath(u"journal"_s));
    QVERIFY(m_journal->open());
    m_database = std::make_unique<Database>(m_home->filePath(u"store"_s));
    m_feed = std::make_unique<ChangeFeed>();
    m_library = std::make_unique<VideoLibrary>(m_database.get(), m_journal.get(), m_feed.get());
    m_reader = std::make_unique<ScriptedReader>();
    m_indexer = std::make_unique<Indexer>(m_library.get(), m_reader.get(), [](const MediaReply &reply) {
        return equipmentUrn(reply.cameraMake, reply.cameraModel);
    });
    connect(
        m_indexer.get(), &Indexer::digestWanted, m_indexer.get(),
        [this](const QString &path) {
            m_digested.append(path.section(u'/', -1));
            m_indexer->onDigested(path, contentDigest(path));
        },
        Qt::QueuedConnection);
    QSignalSpy loaded(m_library.get(), &VideoLibrary::loaded);
    m_database->open();
    QVERIFY(loaded.count() > 0 || loaded.wait(20000));
}

void StoreIndexer::close()
{
    m_indexer.reset();
    m_reader.reset();
    m_library.reset();
    m_feed.reset();
    m_database.reset();
    m_journal.reset();
    QTRY_COMPARE(Database::closing(), 0);
}

bool StoreIndexer::write(const QString &name, const QByteArray &content)
{
    QFile file(at(name));
    return QDir().mkpath(QFileInfo(at(name)).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size();
}

bool StoreIndexer::settled()
{
    return QTest::qWaitFor(
        [this] { return !m_indexer->progress()->isScanning() && m_database->pendingWrites() == 0; }, 20000);
}

// A file as an event reports it.
bool StoreIndexer::find(const QString &name)
{
    const auto identity = FileIdentity::ofFile(at(name));
    if (!identity)
        return false;
    m_indexer->onFound({{at(name), *identity, true}});
    return settled();
}

void StoreIndexer::scan(const QStringList &names)
{
    m_indexer->onScanStarted(root());
    QList<FoundFile> files;
    for (const QString &name : names)
        files.append({at(name), FileIdentity::ofFile(at(name)).value_or(FileIdentity()), false});
    m_indexer->onFound(files);
    m_indexer->onScanFinished(root());
    QVERIFY(settled());
}

VideoRecord StoreIndexer::video(const QString &name) const
{
    const VideoRecord *record = m_library->table().byPath(at(name));
    return record ? *record : VideoRecord();
}

QString StoreIndexer::stored(const QString &name, const QString &property)
{
    QString value;
    m_database->read(u"SELECT ?x { ?v nie:url \"%1\" ; %2 ?x }"_s.arg(urlOf(at(name)), property),
                     [&](TrackerSparqlCursor *row) { value = columnText(row, 0); });
    return value;
}

bool StoreIndexer::setTitle(const QString &name, const QString &title)
{
    QString error = u"no answer"_s;
    m_library->applyUpdate(
        {u"DELETE WHERE { <%1> nie:title ?t } ; INSERT DATA { <%1> nie:title \"%2\" }"_s.arg(video(name).urn,
                                                                                             title)},
        [&](const QString &told) { error = told; });
    return settled() && error.isEmpty();
}

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

FoundFile StoreIndexer::told(const QString &name, const QString &title) const
{
    MediaReply facts;
    facts.durationMs = 61000;
    facts.hasVideo = true;
    facts.mimeType = u"video/mp4"_s;
    facts.title = title;
    return {at(name), FileIdentity::ofFile(at(name)).value_or(FileIdentity()), false, false,
            std::make_shared<const MediaReply>(facts)};
}

void StoreIndexer::aFileThatTheIndexReadIsNotOpened()
{
    QVERIFY(write(u"a.mp4"_s, "title=Of the file") && write(u"b.mp4"_s, "title=Of the other file"));
    m_indexer->onFound({told(u"a.mp4"_s, u"Of the index"_s), told(u"b.mp4"_s, u"Too"_s)});
    QVERIFY(settled());
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"Of the index"_s);
    QCOMPARE(stored(u"a.mp4"_s, u"nfo:duration"_s), u"61"_s);
    QVERIFY(video(u"a.mp4"_s).id != 0);
    QVERIFY(m_reader->reads.isEmpty() && m_digested.isEmpty());
    // A scan finds them as they are.
    scan({u"a.mp4"_s, u"b.mp4"_s});
    QVERIFY(m_reader->reads.isEmpty() && m_digested.isEmpty());
    QCOMPARE(count(), 2);
    // The index read another content.
    QVERIFY(write(u"a.mp4"_s, "title=Longer than it was"));
    m_indexer->onFound({told(u"a.mp4"_s, u"New"_s)});
    QVERIFY(settled());
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"New"_s);
    QVERIFY(m_reader->reads.isEmpty());
}

// Many events tell of one file, and the next may come before the first is in the database.
void StoreIndexer::aFileToldTwiceIsOneVideo()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=B, longer"));
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s), told(u"b.mp4"_s, u"B"_s)});
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s)});
    QVERIFY(settled());
    QCOMPARE(count(), 2);
    QVERIFY(m_database->isHealthy());
}

void StoreIndexer::factsThatComeWhileAFileWaitsSaveTheReading()
{
    QVERIFY(write(u"a.mp4"_s, "title=Of the file"));
    FoundFile found = told(u"a.mp4"_s, u"Of the index"_s);
    m_indexer->onFound({{found.path, found.identity, true}});
    m_indexer->onFound({found});
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    QCOMPARE(stored(u"a.mp4"_s, u"nie:title"_s), u"Of the index"_s);
    QVERIFY(m_reader->reads.isEmpty());
}

void StoreIndexer::whatThePersonMadeOfAToldVideoSurvivesACopyElsewhere()
{
    QVERIFY(write(u"a.mp4"_s, "title=A"));
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s)});
    QVERIFY(settled());
    QVERIFY(setTitle(u"a.mp4"_s, u"Mine"_s));
    // Its digest is made when there is something to keep.
    QTRY_VERIFY(!video(u"a.mp4"_s).identity.digest.isEmpty());
    QVERIFY(settled());
    const VideoRecord before = onAnotherFileSystem(u"a.mp4"_s);
    QVERIFY(settled());
    QVERIFY(QFile::copy(at(u"a.mp4"_s), at(u"copy.mp4"_s)));
    FoundFile copy = told(u"copy.mp4"_s, u"A"_s);
    copy.fresh = true;
    m_indexer->onFound({copy});
    QVERIFY(settled());
    QVERIFY(QFile::remove(at(u"a.mp4"_s)));
    m_indexer->onGone(at(u"a.mp4"_s), false);
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    QCOMPARE(video(u"copy.mp4"_s).urn, before.urn);
    QCOMPARE(stored(u"copy.mp4"_s, u"nie:title"_s), u"Mine"_s);
}

void StoreIndexer::aPromisedFileIsOfInterestAsTheNewPlaceOfAnother()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=B, longer"));
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s)});
    QVERIFY(settled());
    const QString urn = video(u"a.mp4"_s).urn;
    QVERIFY(QFile::rename(at(u"a.mp4"_s), at(u"c.mp4"_s)));
    for (const QString &name : {u"b.mp4"_s, u"c.mp4"_s}) {
        FoundFile promised = told(name, {});
        promised.isPromised = true;
        promised.facts.reset();
        m_indexer->onFound({promised});
    }
    m_indexer->onMissing({at(u"a.mp4"_s)}, true);
    QVERIFY(settled());
    QCOMPARE(count(), 1);
    QCOMPARE(video(u"c.mp4"_s).urn, urn);
    QVERIFY(m_reader->reads.isEmpty());
}

void StoreIndexer::aMissingFileIsLostOnlyForSure()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=B, longer") && write(u"c.mp4"_s, "C"));
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s), told(u"b.mp4"_s, u"B"_s), told(u"c.mp4"_s, u"C"_s)});
    QVERIFY(settled());
    QVERIFY(setTitle(u"a.mp4"_s, u"Mine"_s));
    QVERIFY(QFile::remove(at(u"a.mp4"_s)) && QFile::remove(at(u"b.mp4"_s)));
    m_indexer->onMissing({at(u"a.mp4"_s), at(u"b.mp4"_s), at(u"c.mp4"_s)}, false);
    QVERIFY(settled());
    // b had nothing of the person's; c is there.
    QVERIFY(!video(u"a.mp4"_s).urn.isEmpty() && video(u"b.mp4"_s).urn.isEmpty());
    QVERIFY(!video(u"c.mp4"_s).urn.isEmpty());
    m_indexer->onMissing({at(u"a.mp4"_s), at(u"c.mp4"_s)}, true);
    QVERIFY(settled());
    QVERIFY(video(u"a.mp4"_s).urn.isEmpty() && !video(u"c.mp4"_s).urn.isEmpty());
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
