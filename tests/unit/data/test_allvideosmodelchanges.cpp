// SPDX-License-Identifier: GPL-3.0-or-later
// What becomes of the model when the store and the thumbnails change, and when views hear of it.
#include "allvideosmodelfixture.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace VideoRows;

namespace {

QString print(const QSignalSpy &dataChanged)
{
    QStringList texts;
    for (const QVariantList &arguments : dataChanged) {
        const QModelIndex first = arguments.at(0).toModelIndex();
        const QModelIndex last = arguments.at(1).toModelIndex();
        texts.append(
            u"%1,%2-%3,%4"_s.arg(first.row()).arg(first.column()).arg(last.row()).arg(last.column()));
    }
    return texts.join(u' ');
}

} // namespace

class TestAllVideosModelChanges : public AllVideosModelFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { startStore(); }
    void init() { startModel(); }
    void cleanup() { stopModel(); }

    void theStoresReportsReachTheModel();
    void aTitleChangeIsShownAtOnceInTheTitleColumn();
    void aDurationChangeWaitsTwoSecondsAfterTheLastOne();
    void rangesGrowWhileTheyWait();
    void newVideosAreAppendedWithoutThumbnails();
    void changedVideosKeepTheirThumbnails();
    void anEmptyChangeDoesNothing();

    void oneDeletionRemovesOneRow();
    void threeDeletionsAreOneReset();
    void anUnknownIdIsIgnoredQuietly();
    void twoUnknownIdsStillResetOnce();
    void aRemovedFileLeavesTheModel();
    void equalRowsGoTogetherAndViewsStayInStep();
    void theUpdateIsToldBeforeTheFiles();

    void aDefaultThumbnailIsShownAtOnce();
    void anEmptyDefaultThumbnailDoesNothing();
    void anEmptyPauseThumbnailClearsTheColumn();
    void aPauseThumbnailAloneWaits();
    void aPauseThumbnailWithPendingChangesFlushesThem();
    void thumbnailsOfUnknownVideosWarn();

    void changesOutOfBoundsWarn();
    void rowsRemovedWhileAChangeWaitsAreNotAnnounced();
    void aReloadWhileAChangeWaitsStaysInBounds();
};

void TestAllVideosModelChanges::theStoresReportsReachTheModel()
{
    load(videoRows(3));
    TrackerInterface *store = TrackerInterface::instance();
    Q_EMIT store->videosDeleted({2});
    Q_EMIT store->videosChanged(QList<QStringList>{videoRow(3, u"Renamed"_s), videoRow(4)});
    QCOMPARE(column(*m_model, 1), (QStringList{u"Video 1"_s, u"Renamed"_s, u"Video 4"_s}));
}

void TestAllVideosModelChanges::aTitleChangeIsShownAtOnceInTheTitleColumn()
{
    load(videoRows(5));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->videosChanged({videoRow(4, u"Renamed"_s), videoRow(2)});
    QCOMPARE(print(changed), u"1,1-3,1"_s);
    QVERIFY(!AllVideosModelProbe::timer(*m_model)->isActive());
    QCOMPARE(m_model->titleForUrn(u"urn:4"_s), u"Renamed"_s);
}

void TestAllVideosModelChanges::aDurationChangeWaitsTwoSecondsAfterTheLastOne()
{
    load(videoRows(5));
    QTimer *timer = AllVideosModelProbe::timer(*m_model);
    QVERIFY(timer->isSingleShot());
    QCOMPARE(timer->interval(), 2000);
    // From here on only the test lets it run out, however slow the machine is.
    constexpr int anHour = 3600 * 1000;
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(anHour);
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->videosChanged({videoRow(3, u"Video 3"_s, u"70"_s)});
    QVERIFY(timer->isActive());
    QTRY_VERIFY(timer->remainingTime() < anHour - 200);
    m_model->videosChanged({videoRow(3, u"Video 3"_s, u"80"_s)});
    QVERIFY2(timer->remainingTime() > anHour - 200, "every change pushes the report back");
    QCOMPARE(changed.size(), 0);
    QVERIFY(runOut(timer));
    QCOMPARE(print(changed), u"2,0-2,0"_s);
    QCOMPARE(column(*m_model, 3).at(2), u"80"_s);
}

void TestAllVideosModelChanges::rangesGrowWhileTheyWait()
{
    load(videoRows(9));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->videosChanged({videoRow(5)});
    m_model->videosChanged({videoRow(8)});
    m_model->videosChanged({videoRow(3), videoRow(4)});
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(print(changed), u"2,0-7,0"_s);
    // The range was spent.
    m_model->videosChanged({videoRow(9)});
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(print(changed), u"2,0-7,0 8,0-8,0"_s);
}

void TestAllVideosModelChanges::newVideosAreAppendedWithoutThumbnails()
{
    load(videoRows(2));
    QSignalSpy inserted(m_model.get(), &QAbstractItemModel::rowsInserted);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    m_model->videosChanged({videoRow(8), videoRow(1), videoRow(7)});
    QCOMPARE(column(*m_model, 0), (QStringList{u"urn:1"_s, u"urn:2"_s, u"urn:8"_s, u"urn:7"_s}));
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(inserted.first().at(1).toInt(), 2);
    QCOMPARE(inserted.first().at(2).toInt(), 3);
    QCOMPARE(updates.size(), 1);
    QCOMPARE(column(*m_model, 8), QStringList(4));
    QCOMPARE(column(*m_model, 9), QStringList(4));
}

void TestAllVideosModelChanges::changedVideosKeepTheirThumbnails()
{
    load(videoRows(1));
    m_model->defaultThumbnailUpdated(urlOf(1), u"/t/1.jpeg"_s);
    m_model->pauseThumbnailUpdated(urlOf(1), u"/p/1.jpeg"_s);
    m_model->videosChanged({videoRow(1, u"Renamed"_s)});
    QCOMPARE(column(*m_model, 8), QStringList{u"/p/1.jpeg"_s});
    QCOMPARE(column(*m_model, 9), QStringList{u"/t/1.jpeg"_s});
}

void TestAllVideosModelChanges::anEmptyChangeDoesNothing()
{
    load(videoRows(1));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    m_model->videosChanged(QList<QStringList>());
    QVERIFY(changed.isEmpty() && updates.isEmpty());
    QVERIFY(!AllVideosModelProbe::timer(*m_model)->isActive());
}

void TestAllVideosModelChanges::oneDeletionRemovesOneRow()
{
    load(videoRows(3));
    QSignalSpy removed(m_model.get(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy files(m_model.get(), &AllVideosModel::filesRemoved);
    m_model->videosDeleted({2});
    QCOMPARE(removed.size(), 1);
    QCOMPARE(resets.size(), 0);
    QCOMPARE(updates.size(), 1);
    QCOMPARE(files.size(), 1);
    QCOMPARE(files.first().first().toStringList(), QStringList{urlOf(2)});
    QCOMPARE(column(*m_model, 0), (QStringList{u"urn:1"_s, u"urn:3"_s}));
}

void TestAllVideosModelChanges::threeDeletionsAreOneReset()
{
    load(videoRows(5));
    QSignalSpy removed(m_model.get(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy files(m_model.get(), &AllVideosModel::filesRemoved);
    m_model->videosDeleted({5, 1, 3});
    QCOMPARE(removed.size(), 0);
    QCOMPARE(resets.size(), 1);
    QCOMPARE(updates.size(), 1);
    QCOMPARE(files.size(), 1);
    QCOMPARE(files.first().first().toStringList(), (QStringList{urlOf(5), urlOf(1), urlOf(3)}));
    QCOMPARE(column(*m_model, 0), (QStringList{u"urn:2"_s, u"urn:4"_s}));
}

void TestAllVideosModelChanges::anUnknownIdIsIgnoredQuietly()
{
    load(videoRows(2));
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy files(m_model.get(), &AllVideosModel::filesRemoved);
    m_model->videosDeleted({99});
    m_model->videosDeleted({});
    QVERIFY(updates.isEmpty() && files.isEmpty());
    QCOMPARE(m_model->rowCount(), 2);
}

void TestAllVideosModelChanges::twoUnknownIdsStillResetOnce()
{
    load(videoRows(2));
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy files(m_model.get(), &AllVideosModel::filesRemoved);
    m_model->videosDeleted({98, 99});
    QCOMPARE(resets.size(), 1);
    QCOMPARE(updates.size(), 1);
    QCOMPARE(files.size(), 1);
    QVERIFY(files.first().first().toStringList().isEmpty());
    QCOMPARE(m_model->rowCount(), 2);
}

void TestAllVideosModelChanges::aRemovedFileLeavesTheModel()
{
    load(videoRows(3));
    QSignalSpy removed(m_model.get(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    QSignalSpy files(m_model.get(), &AllVideosModel::filesRemoved);
    m_model->removeVideo(u"file:///v/none.mp4"_s);
    QVERIFY(removed.isEmpty() && updates.isEmpty() && files.isEmpty());
    m_model->removeVideo(urlOf(1));
    QCOMPARE(removed.size(), 1);
    QCOMPARE(updates.size(), 1);
    QCOMPARE(files.first().first().toStringList(), QStringList{urlOf(1)});
    QCOMPARE(column(*m_model, 0), (QStringList{u"urn:2"_s, u"urn:3"_s}));
}

void TestAllVideosModelChanges::equalRowsGoTogetherAndViewsStayInStep()
{
    load({videoRow(1), videoRow(2), videoRow(1), videoRow(3)});
    QSignalSpy files(m_model.get(), &AllVideosModel::filesRemoved);
    m_model->videosDeleted({1});
    QCOMPARE(column(*m_model, 0), (QStringList{u"urn:2"_s, u"urn:3"_s}));
    QCOMPARE(files.size(), 1);
    QCOMPARE(m_proxy->rowCount(), 2);
}

// Whoever hears of files finds the rows gone and the views told.
void TestAllVideosModelChanges::theUpdateIsToldBeforeTheFiles()
{
    load(videoRows(5));
    QStringList order;
    const auto note = [&](const QString &what) { order.append(what + QString::number(m_model->rowCount())); };
    connect(m_model.get(), &QAbstractItemModel::rowsRemoved, this, [&] { note(u"removed"_s); });
    connect(m_model.get(), &QAbstractItemModel::modelReset, this, [&] { note(u"reset"_s); });
    connect(m_model.get(), &AllVideosModel::modelUpdated, this, [&] { note(u"updated"_s); });
    connect(m_model.get(), &AllVideosModel::filesRemoved, this, [&] { note(u"files"_s); });
    m_model->removeVideo(urlOf(1));
    m_model->videosDeleted({2});
    m_model->videosDeleted({3, 4});
    QCOMPARE(order,
             (QStringList{u"removed4"_s, u"updated4"_s, u"files4"_s, u"removed3"_s, u"updated3"_s,
                          u"files3"_s, u"reset1"_s, u"updated1"_s, u"files1"_s}));
}

void TestAllVideosModelChanges::aDefaultThumbnailIsShownAtOnce()
{
    load(videoRows(3));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->defaultThumbnailUpdated(urlOf(2), u"/t/2.jpeg"_s);
    QCOMPARE(print(changed), u"1,0-1,0"_s);
    QCOMPARE(column(*m_model, 9), (QStringList{QString(), u"/t/2.jpeg"_s, QString()}));
}

void TestAllVideosModelChanges::anEmptyDefaultThumbnailDoesNothing()
{
    load(videoRows(1));
    m_model->defaultThumbnailUpdated(urlOf(1), u"/t/1.jpeg"_s);
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->defaultThumbnailUpdated(urlOf(1), QString());
    m_model->defaultThumbnailUpdated(QString(), u"/t/2.jpeg"_s);
    QCOMPARE(changed.size(), 0);
    QCOMPARE(column(*m_model, 9), QStringList{u"/t/1.jpeg"_s});
}

void TestAllVideosModelChanges::anEmptyPauseThumbnailClearsTheColumn()
{
    load(videoRows(1));
    m_model->pauseThumbnailUpdated(urlOf(1), u"/p/1.jpeg"_s);
    QCOMPARE(column(*m_model, 8), QStringList{u"/p/1.jpeg"_s});
    m_model->pauseThumbnailUpdated(urlOf(1), QString());
    QCOMPARE(column(*m_model, 8), QStringList{QString()});
}

void TestAllVideosModelChanges::aPauseThumbnailAloneWaits()
{
    load(videoRows(2));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->pauseThumbnailUpdated(urlOf(2), u"/p/2.jpeg"_s);
    QCOMPARE(changed.size(), 0);
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(print(changed), u"1,0-1,0"_s);
    // Announced, it is forgotten: a change of the store that comes then waits as well.
    m_model->videosChanged({videoRow(1)});
    QCOMPARE(changed.size(), 1);
}

void TestAllVideosModelChanges::aPauseThumbnailWithPendingChangesFlushesThem()
{
    load(videoRows(4));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->videosChanged({videoRow(4)});
    m_model->pauseThumbnailUpdated(urlOf(2), u"/p/2.jpeg"_s);
    QCOMPARE(print(changed), u"1,0-3,0"_s);
    QVERIFY(!AllVideosModelProbe::timer(*m_model)->isActive());
    // And the other way round.
    m_model->pauseThumbnailUpdated(urlOf(1), u"/p/1.jpeg"_s);
    QCOMPARE(changed.size(), 1);
    m_model->videosChanged({videoRow(1)});
    QCOMPARE(print(changed), u"1,0-3,0 0,0-0,0"_s);
}

void TestAllVideosModelChanges::thumbnailsOfUnknownVideosWarn()
{
    load(videoRows(1));
    QTest::ignoreMessage(QtWarningMsg,
                         "void AllVideosModel::defaultThumbnailUpdated(const QString&, const QString&) "
                         "Url not found from model: file:///x");
    m_model->defaultThumbnailUpdated(u"file:///x"_s, u"/t"_s);
    QTest::ignoreMessage(QtWarningMsg,
                         "void AllVideosModel::pauseThumbnailUpdated(const QString&, const QString&) "
                         "Url not found from model: file:///x");
    m_model->pauseThumbnailUpdated(u"file:///x"_s, u"/t"_s);
}

void TestAllVideosModelChanges::changesOutOfBoundsWarn()
{
    load(videoRows(2));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    for (const QPoint range : {QPoint(-1, 0), QPoint(0, 2)}) {
        QTest::ignoreMessage(QtWarningMsg,
                             "void AllVideosModel::emitDataChanged(int, int) index out of bounds");
        m_model->emitDataChanged(range.x(), range.y());
    }
    QVERIFY(changed.isEmpty() && !AllVideosModelProbe::timer(*m_model)->isActive());
    m_model->emitDataChanged(0, 1);
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(print(changed), u"0,0-1,0"_s);
}

// A video's place is saved and its file is deleted within the two seconds of the report.
void TestAllVideosModelChanges::rowsRemovedWhileAChangeWaitsAreNotAnnounced()
{
    load(videoRows(2));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->videosChanged({videoRow(2)});
    m_model->videosDeleted({2});
    m_model->videosDeleted({1});
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(changed.size(), 0);
}

// The store comes back with fewer videos within the two seconds of a report.
void TestAllVideosModelChanges::aReloadWhileAChangeWaitsStaysInBounds()
{
    load(videoRows(9));
    QSignalSpy changed(m_model.get(), &QAbstractItemModel::dataChanged);
    m_model->videosChanged({videoRow(2), videoRow(8)});
    load(videoRows(3));
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(print(changed), u"1,0-2,0"_s);
    m_model->videosChanged({videoRow(1)});
    QVERIFY(runOut(AllVideosModelProbe::timer(*m_model)));
    QCOMPARE(print(changed), u"1,0-2,0 0,0-0,0"_s);
}

QTEST_GUILESS_MAIN(TestAllVideosModelChanges)
#include "test_allvideosmodelchanges.moc"
