// SPDX-License-Identifier: GPL-3.0-or-later
#include "allvideosmodelfixture.h"

#include <data/storenews.h>
#include <data/thumbnailpaths.h>
#include <data/videoconstants.h>

#include <QTest>
#include <QThreadPool>

using namespace Qt::Literals::StringLiterals;
using namespace VideoRows;

namespace {

constexpr int Wait = 30000; // ms
constexpr int Long = AllVideosModel::RowsAtOnce + 500;

std::shared_ptr<const RowTable> tableOf(const QList<QStringList> &rows)
{
    RowTable table(VideoColumn::RowSize);
    for (const QStringList &row : rows) {
        for (const QString &text : row) {
            if (!table.append(RowTable::Type::Text, text.toUtf8()))
                qFatal("the table is full");
        }
    }
    return std::make_shared<const RowTable>(std::move(table));
}

} // namespace

// A list that is too long to be made in one turn of the event loop.
class TestLongList : public AllVideosModelFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { startStore(); }
    void init() { startModel(); }
    void cleanup() { stopModel(); }
    void aShortListStandsAtOnce();
    void aLongListReplacesTheRowsInOneReset();
    void changesInTheMiddleAreInBothLists();
    void aSecondListInTheMiddleCounts();
    void aShortListInTheMiddleCounts();
    void theModelMayGoInTheMiddle();
    void picturesAreThoseOnDisk();
    void listsAreOnlyMadeForThoseWhoReadThem();
    void removalsInTheMiddleAreToldOnce();

private:
    static void answer(const QList<QStringList> &rows)
    {
        Q_EMIT TrackerInterface::instance()->news()->listLoaded(tableOf(rows), ++s_id);
    }
    // What threads made is delivered, if anybody wants it still.
    static void finishThreads()
    {
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    static inline int s_id = 0;
};

void TestLongList::aShortListStandsAtOnce()
{
    answer(videoRows(3));
    QCOMPARE(column(*m_model, 1), (QStringList{u"Video 1"_s, u"Video 2"_s, u"Video 3"_s}));
}

void TestLongList::aLongListReplacesTheRowsInOneReset()
{
    answer(videoRows(3));
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    const QList<QStringList> rows = videoRows(Long);
    answer(rows);
    QCOMPARE(m_model->rowCount(), 3);
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), Long, Wait);
    QCOMPARE(updates.count(), 1);
    QCOMPARE(resets.count(), 1);
    for (const int row : {0, 1, Long / 2, Long - 1}) {
        for (int column = 0; column < VideoColumn::RowSize; ++column)
            QCOMPARE(m_model->text(row, column), rows.at(row).at(column));
    }
    QCOMPARE(m_model->urnForUrl(urlOf(Long)), u"urn:%1"_s.arg(Long));
}

void TestLongList::changesInTheMiddleAreInBothLists()
{
    m_tester.reset(); // it reads every cell at every signal
    answer(videoRows(9));
    answer(videoRows(Long));
    m_model->videosChanged({videoRow(5, u"Renamed"_s), videoRow(Long + 1)});
    m_model->videosDeleted({7});
    m_model->videosDeleted({8, 9});
    m_model->removeVideo(urlOf(1));
    m_model->defaultThumbnailUpdated(urlOf(2), u"/t/2.jpeg"_s);
    m_model->pauseThumbnailUpdated(urlOf(3), u"/t/3.jpeg"_s);
    const auto check = [this](int count) {
        QCOMPARE(m_model->rowCount(), count);
        QCOMPARE(m_model->titleForUrn(u"urn:5"_s), u"Renamed"_s);
        QCOMPARE(m_model->text(count - 1, VideoColumn::Urn), u"urn:%1"_s.arg(Long + 1));
        for (const int gone : {1, 7, 8, 9})
            QCOMPARE(m_model->rowOfUrn(u"urn:%1"_s.arg(gone)), -1);
        QCOMPARE(m_model->text(0, VideoColumn::DefaultThumbnail), u"/t/2.jpeg"_s);
        QCOMPARE(m_model->text(1, VideoColumn::PauseThumbnail), u"/t/3.jpeg"_s);
    };
    check(9 + 1 - 4);
    QTRY_VERIFY_WITH_TIMEOUT(m_model->rowCount() > 9, Wait);
    check(Long + 1 - 4);
}

void TestLongList::aSecondListInTheMiddleCounts()
{
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    answer(videoRows(Long + 7));
    m_model->videosChanged({videoRow(1, u"Before the answer"_s)});
    answer(videoRows(Long));
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), Long, Wait);
    finishThreads();
    QCOMPARE(m_model->rowCount(), Long);
    QCOMPARE(m_model->text(0, VideoColumn::Title), u"Video 1"_s);
    QCOMPARE(updates.count(), 2); // the row that was new to no list, and the list
}

void TestLongList::aShortListInTheMiddleCounts()
{
    for (const bool isTable : {true, false}) {
        answer(videoRows(Long));
        if (isTable)
            answer(videoRows(2));
        else
            m_model->queryFinished(videoRows(2));
        QCOMPARE(m_model->rowCount(), 2);
        m_model->videosDeleted({1});
        finishThreads();
        QCOMPARE(column(*m_model, 0), QStringList{u"urn:2"_s});
    }
}

void TestLongList::theModelMayGoInTheMiddle()
{
    answer(videoRows(Long));
    stopModel();
    finishThreads();
    startModel();
    QCOMPARE(m_model->rowCount(), 0);
}

void TestLongList::picturesAreThoseOnDisk()
{
    const QString path = ThumbnailPaths::defaultPath(urlOf(Long), THUMBNAIL_FLAVOR);
    QDir().mkpath(ThumbnailPaths::defaultFolder(THUMBNAIL_FLAVOR));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    answer(videoRows(Long));
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), Long, Wait);
    QCOMPARE(m_model->text(Long - 1, VideoColumn::DefaultThumbnail), path);
    QVERIFY(m_model->text(0, VideoColumn::DefaultThumbnail).isEmpty());
    // A row that changes keeps its picture.
    m_model->videosChanged({videoRow(Long, u"Renamed"_s)});
    QCOMPARE(m_model->text(Long - 1, VideoColumn::DefaultThumbnail), path);
}

void TestLongList::listsAreOnlyMadeForThoseWhoReadThem()
{
    TrackerInterface *store = TrackerInterface::instance();
    m_store->answerWith({{u"urn:4"_s, u""_s, u"a.b.mp4"_s, 9, 0, u"video/mp4"_s, u"file:///4"_s, 4}});
    QVERIFY(store->allVideos(0) != 0);
    QTRY_COMPARE_WITH_TIMEOUT(column(*m_model, 1), QStringList{u"a.b"_s}, Wait);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy lists(store, &TrackerInterface::allVideosFinished);
    const int request = store->allVideos(0);
    QTRY_COMPARE_WITH_TIMEOUT(lists.count(), 1, Wait);
    QCOMPARE(lists.first().at(0).value<QList<QStringList>>().first().at(1), u"a.b"_s);
    QCOMPARE(lists.first().at(1).toInt(), request);
    QCOMPARE(updates.count(), 1); // not by both roads
    // An answer that no table went before counts, whatever its number.
    Q_EMIT store->allVideosFinished(videoRows(2), request);
    QCOMPARE(m_model->rowCount(), 2);
}

void TestLongList::removalsInTheMiddleAreToldOnce()
{
    answer(videoRows(3));
    QSignalSpy removed(m_model.get(), &AllVideosModel::filesRemoved);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    answer(videoRows(Long));
    m_model->videosDeleted({1});
    m_model->videosDeleted({2, 9}); // one of them is in the new list only
    m_model->videosDeleted({Long + 1, Long + 2});
    QCOMPARE(removed.count(), 3);
    QCOMPARE(removed.takeFirst().first().toStringList(), QStringList{urlOf(1)});
    QCOMPARE(removed.takeFirst().first().toStringList(), QStringList{urlOf(2)});
    QCOMPARE(removed.takeFirst().first().toStringList(), QStringList());
    resets.clear();
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), Long - 3, Wait);
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.takeFirst().first().toStringList(), QStringList{urlOf(9)});
    QCOMPARE(resets.count(), 2); // the list, and two of its rows
    m_model->videosDeleted({10});
    QCOMPARE(removed.takeFirst().first().toStringList(), QStringList{urlOf(10)});
}

QTEST_GUILESS_MAIN(TestLongList)
#include "test_longlist.moc"
