// SPDX-License-Identifier: GPL-3.0-or-later
#include "changefeed.h"

#include <QElapsedTimer>
#include <QTest>

// The library page waits for a quiet second before it asks for new rows; it must get rows during a long scan
// too.
class StoreChangeFeed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theFirstNewVideoIsToldAtOnce();
    void newVideosAreGatheredForLittleMoreThanASecond();
    void deletionsAndChangedValuesDoNotWait();
    void aVideoThatIsGoneAgainIsNotToldAsNew();
    void aValueChangedTwiceInATurnIsToldOnce();

private:
    struct Batch
    {
        QList<StoreQuad> deletes;
        QList<StoreQuad> inserts;
        qint64 at = 0;
    };

    std::unique_ptr<ChangeFeed> m_feed;
    QList<Batch> m_batches;
    QElapsedTimer m_clock;
};

void StoreChangeFeed::init()
{
    m_batches.clear();
    m_feed = std::make_unique<ChangeFeed>();
    m_feed->setTerms({13, 369, 58, 70, 71});
    m_clock.start();
    connect(m_feed.get(), &ChangeFeed::changed, this,
            [this](const QList<StoreQuad> &deletes, const QList<StoreQuad> &inserts) {
                m_batches.append({deletes, inserts, m_clock.elapsed()});
            });
}

void StoreChangeFeed::theFirstNewVideoIsToldAtOnce()
{
    m_feed->videoAdded(1001);
    QTRY_COMPARE(m_batches.size(), 1);
    QVERIFY(m_batches[0].at < 1000);
    QVERIFY(m_batches[0].inserts == QList<StoreQuad>({{0, 1001, 13, 369}}));
    QVERIFY(m_batches[0].deletes.isEmpty());
}

void StoreChangeFeed::newVideosAreGatheredForLittleMoreThanASecond()
{
    m_feed->videoAdded(1);
    QTRY_COMPARE(m_batches.size(), 1);
    for (int id = 2; id < 100; ++id)
        m_feed->videoAdded(id);
    QTRY_COMPARE(m_batches.size(), 2);
    QCOMPARE(m_batches[1].inserts.size(), 98);
    const qint64 between = m_batches[1].at - m_batches[0].at;
    QVERIFY2(between > 1000, qPrintable(QString::number(between)));
}

void StoreChangeFeed::deletionsAndChangedValuesDoNotWait()
{
    m_feed->videoAdded(1);
    QTRY_COMPARE(m_batches.size(), 1);
    m_feed->videoAdded(2);
    m_feed->titleChanged(3);
    m_feed->runTimeChanged(4);
    m_feed->fileNameChanged(5);
    m_feed->videoDeleted(6);
    QTRY_COMPARE(m_batches.size(), 2);
    QVERIFY(m_batches[1].at < 1000);
    QVERIFY(m_batches[1].inserts == QList<StoreQuad>({{0, 3, 58, -1}, {0, 4, 70, -1}, {0, 5, 71, -1}}));
    QVERIFY(m_batches[1].deletes == QList<StoreQuad>({{0, 6, 13, 369}}));
}

void StoreChangeFeed::aVideoThatIsGoneAgainIsNotToldAsNew()
{
    m_feed->videoAdded(1);
    m_feed->videoDeleted(1);
    QTRY_COMPARE(m_batches.size(), 1);
    QVERIFY(m_batches[0].inserts.isEmpty());
    QCOMPARE(m_batches[0].deletes.size(), 1);
}

void StoreChangeFeed::aValueChangedTwiceInATurnIsToldOnce()
{
    m_feed->titleChanged(1);
    m_feed->titleChanged(1);
    QTRY_COMPARE(m_batches.size(), 1);
    QCOMPARE(m_batches[0].inserts.size(), 1);
}

QTEST_GUILESS_MAIN(StoreChangeFeed)
#include "store_changefeed.moc"
