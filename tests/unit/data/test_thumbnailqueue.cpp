// SPDX-License-Identifier: GPL-3.0-or-later
// The pace at which missing pictures are asked for, and what becomes of the answers.
#include "thumbnailhelperfixture.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestThumbnailQueue : public ThumbnailHelperFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { m_thumbnails.reset(); }

    void missingPicturesWaitAMomentAndAreAskedForTogether();
    void aRunningQueueTimerIsNotRestarted();
    void anAddressAskedForAgainMovesToTheFront();
    void fiveMissingPicturesKeepTheNewestFourAndAreAskedForAtOnce();
    void fourDroppedRequestsGiveUpTheQueue();
    void whileHeldNothingIsAskedForAndReleasingRestartsTheTimer();
    void whileHeldAFullQueueIsKept();
    void disabledThumbnailingAsksForNothing();
    void anEmptyAddressAsksForNothing();
    void streamsAreNotAskedFor();

    void aFinishedPictureIsKnownAndReported();
    void aFailedPictureIsReportedAndLeavesTheQueue();
    void cancelKeepsOrEmptiesTheQueue();
    void aChangedPictureIsReadAgain();
};

void TestThumbnailQueue::missingPicturesWaitAMomentAndAreAskedForTogether()
{
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), u"video/mp4"_s), QString());
    QCOMPARE(m_thumbnails->thumbnail(urlOf(2), QString()), QString());
    QTimer *timer = ThumbnailHelperProbe::timer(*m_thumbnails);
    QCOMPARE(timer->interval(), 100);
    QCOMPARE(client()->requests.size(), 0);
    QVERIFY(runOut(timer));
    QVERIFY(!timer->isActive());
    QCOMPARE(client()->requests.size(), 1);
    QCOMPARE(requested(), urls({2, 1}));
    QCOMPARE(client()->requests.first().mimeTypes, (QStringList{QString(), u"video/mp4"_s}));
    QCOMPARE(client()->requests.first().flavor, u"video-grid"_s);
}

void TestThumbnailQueue::aRunningQueueTimerIsNotRestarted()
{
    m_thumbnails->thumbnail(urlOf(1), QString());
    QTimer *timer = ThumbnailHelperProbe::timer(*m_thumbnails);
    timer->setInterval(60000);
    m_thumbnails->thumbnail(urlOf(2), QString());
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 60000);
}

void TestThumbnailQueue::anAddressAskedForAgainMovesToTheFront()
{
    m_thumbnails->thumbnail(urlOf(1), u"video/mp4"_s);
    m_thumbnails->thumbnail(urlOf(2), QString());
    m_thumbnails->thumbnail(urlOf(1), u"video/mp4"_s);
    QCOMPARE(ThumbnailHelperProbe::queue(*m_thumbnails), urls({1, 2}));
}

void TestThumbnailQueue::fiveMissingPicturesKeepTheNewestFourAndAreAskedForAtOnce()
{
    for (int number = 1; number <= 4; ++number)
        m_thumbnails->thumbnail(urlOf(number), QString());
    QCOMPARE(client()->requests.size(), 1); // the fourth has filled the queue
    QCOMPARE(client()->cancels, 1);
    m_thumbnails->thumbnail(urlOf(5), QString());
    QCOMPARE(ThumbnailHelperProbe::queue(*m_thumbnails), urls({5, 4, 3, 2}));
    QCOMPARE(client()->requests.size(), 2);
    QCOMPARE(requested(), urls({5, 4, 3, 2}));
    QCOMPARE(client()->cancels, 2);
    QCOMPARE(m_thumbnails->droppedRequests(), 1);
    QVERIFY(!ThumbnailHelperProbe::timer(*m_thumbnails)->isActive());
}

void TestThumbnailQueue::fourDroppedRequestsGiveUpTheQueue()
{
    for (int number = 1; number <= 7; ++number)
        m_thumbnails->thumbnail(urlOf(number), QString());
    QCOMPARE(m_thumbnails->droppedRequests(), 3);
    const qsizetype requests = client()->requests.size();
    m_thumbnails->thumbnail(urlOf(8), QString());
    QCOMPARE(ThumbnailHelperProbe::queue(*m_thumbnails), QStringList());
    QCOMPARE(m_thumbnails->droppedRequests(), 0);
    QCOMPARE(client()->requests.size(), requests);
    QVERIFY(client()->outstanding.isEmpty());
    // The count begins anew.
    for (int number = 11; number <= 15; ++number)
        m_thumbnails->thumbnail(urlOf(number), QString());
    QCOMPARE(m_thumbnails->droppedRequests(), 1);
}

void TestThumbnailQueue::whileHeldNothingIsAskedForAndReleasingRestartsTheTimer()
{
    QTimer *timer = ThumbnailHelperProbe::timer(*m_thumbnails);
    m_thumbnails->thumbnail(urlOf(1), QString());
    m_thumbnails->setHoldRequests(true);
    QVERIFY(!timer->isActive());
    m_thumbnails->thumbnail(urlOf(2), QString());
    QVERIFY(runOut(timer));
    QCOMPARE(client()->requests.size(), 0);
    QVERIFY2(timer->isActive(), "a turn that is held does nothing at all");
    m_thumbnails->setHoldRequests(false);
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 100);
    QVERIFY(runOut(timer));
    QCOMPARE(requested(), urls({2, 1}));
}

void TestThumbnailQueue::whileHeldAFullQueueIsKept()
{
    m_thumbnails->setHoldRequests(true);
    for (int number = 1; number <= 9; ++number)
        m_thumbnails->thumbnail(urlOf(number), QString());
    QCOMPARE(client()->requests.size(), 0);
    QCOMPARE(ThumbnailHelperProbe::queue(*m_thumbnails), urls({9, 8, 7, 6}));
    QCOMPARE(m_thumbnails->droppedRequests(), 1); // the fourth of five began the count anew
    m_thumbnails->setHoldRequests(false);
    QVERIFY(runOut(ThumbnailHelperProbe::timer(*m_thumbnails)));
    QCOMPARE(requested(), urls({9, 8, 7, 6}));
}

void TestThumbnailQueue::disabledThumbnailingAsksForNothing()
{
    m_thumbnails->disableThumbnailing(true);
    m_thumbnails->thumbnail(urlOf(1), QString());
    QVERIFY(!ThumbnailHelperProbe::timer(*m_thumbnails)->isActive());
    m_thumbnails->disableThumbnailing(false);
    m_thumbnails->thumbnail(urlOf(1), QString());
    QVERIFY(ThumbnailHelperProbe::timer(*m_thumbnails)->isActive());
}

void TestThumbnailQueue::anEmptyAddressAsksForNothing()
{
    QCOMPARE(m_thumbnails->thumbnail(QString(), u"video/mp4"_s), QString());
    QVERIFY(!ThumbnailHelperProbe::timer(*m_thumbnails)->isActive());
}

void TestThumbnailQueue::streamsAreNotAskedFor()
{
    for (const QString &url : {u"http://archive.example/a.mp4"_s, u"HTTPS://archive.example/a.mp4"_s,
                               u"rtsp://archive.example/a"_s, u"mms://archive.example/a"_s})
        QCOMPARE(m_thumbnails->thumbnail(url, u"video/mp4"_s), QString());
    QVERIFY(ThumbnailHelperProbe::queue(*m_thumbnails).isEmpty());
    QVERIFY(!ThumbnailHelperProbe::timer(*m_thumbnails)->isActive());
}

void TestThumbnailQueue::aFinishedPictureIsKnownAndReported()
{
    const QString url = u"file:///v/a%20%C3%A4.mp4"_s;
    QSignalSpy ready(m_thumbnails.get(), &ThumbnailHelper::newThumbnailReady);
    m_thumbnails->thumbnail(url, QString());
    QVERIFY(runOut(ThumbnailHelperProbe::timer(*m_thumbnails)));
    client()->answer(client()->requests.first().urls.first(), u"/t/a b.jpeg"_s);
    QCOMPARE(ready.size(), 1);
    QCOMPARE(ready.first(), (QVariantList{url, u"/t/a b.jpeg"_s}));
    QVERIFY(ThumbnailHelperProbe::queue(*m_thumbnails).isEmpty());
    QCOMPARE(m_thumbnails->thumbnail(url, QString()), u"/t/a b.jpeg"_s);
}

void TestThumbnailQueue::aFailedPictureIsReportedAndLeavesTheQueue()
{
    QSignalSpy failed(m_thumbnails.get(), &ThumbnailHelper::newThumbnailError);
    m_thumbnails->thumbnail(urlOf(1), QString());
    m_thumbnails->thumbnail(urlOf(2), QString());
    QVERIFY(runOut(ThumbnailHelperProbe::timer(*m_thumbnails)));
    client()->fail(QUrl(urlOf(1)), u"broken"_s);
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed.first(), (QVariantList{urlOf(1), u"broken"_s}));
    QCOMPARE(ThumbnailHelperProbe::queue(*m_thumbnails), urls({2}));
}

void TestThumbnailQueue::cancelKeepsOrEmptiesTheQueue()
{
    m_thumbnails->thumbnail(urlOf(1), QString());
    m_thumbnails->cancel(false);
    QCOMPARE(client()->cancels, 1);
    QCOMPARE(ThumbnailHelperProbe::queue(*m_thumbnails), urls({1}));
    m_thumbnails->cancel(true);
    QCOMPARE(client()->cancels, 2);
    QVERIFY(ThumbnailHelperProbe::queue(*m_thumbnails).isEmpty());
}

void TestThumbnailQueue::aChangedPictureIsReadAgain()
{
    m_thumbnails->thumbnailerReady(QUrl(urlOf(1)), QUrl(u"file:///t/1.jpeg"_s));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), QString()), u"/t/1.jpeg"_s);
    m_thumbnails->thumbnailUpdated(urlOf(1));
    QCOMPARE(m_thumbnails->thumbnail(urlOf(1), QString()), QString());
}

QTEST_MAIN(TestThumbnailQueue)
#include "test_thumbnailqueue.moc"
