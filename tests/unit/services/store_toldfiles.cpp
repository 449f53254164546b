// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexerfixture.h"

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the indexer makes of files that the desktop's index has read.
class StoreToldFiles : public IndexerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }
    void cleanup() { close(); }
    void aFileThatTheIndexReadIsNotOpened();
    void aFileToldTwiceIsOneVideo();
    void factsThatComeWhileAFileWaitsSaveTheReading();
    void whatThePersonMadeOfAToldVideoSurvivesACopyElsewhere();
    void aPromisedFileIsOfInterestAsTheNewPlaceOfAnother();
    void aMissingFileIsLostOnlyForSure();
};

void StoreToldFiles::aFileThatTheIndexReadIsNotOpened()
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
void StoreToldFiles::aFileToldTwiceIsOneVideo()
{
    QVERIFY(write(u"a.mp4"_s, "title=A") && write(u"b.mp4"_s, "title=B, longer"));
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s), told(u"b.mp4"_s, u"B"_s)});
    m_indexer->onFound({told(u"a.mp4"_s, u"A"_s)});
    QVERIFY(settled());
    QCOMPARE(count(), 2);
    QVERIFY(m_database->isHealthy());
}

void StoreToldFiles::factsThatComeWhileAFileWaitsSaveTheReading()
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

void StoreToldFiles::whatThePersonMadeOfAToldVideoSurvivesACopyElsewhere()
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

void StoreToldFiles::aPromisedFileIsOfInterestAsTheNewPlaceOfAnother()
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

void StoreToldFiles::aMissingFileIsLostOnlyForSure()
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

QTEST_GUILESS_MAIN(StoreToldFiles)
#include "store_toldfiles.moc"
