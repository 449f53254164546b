// SPDX-License-Identifier: GPL-3.0-or-later
#include "exactclips.h"

#include <platform/media/exactpositions.h>
#include <platform/media/gst/gstmediabackend.h>
#include <platform/media/videowidget.h>

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine

// One viewing of a video; the program ends with it, as far as the video is concerned.
class Viewing : public QObject
{
public:
    Viewing()
    {
        m_backend.setStillOnPause(true);
        connect(&m_backend, &MediaBackend::frameChanged, this, [this] {
            const VideoFrame frame = m_backend.frame();
            numbers.append(frame.isNull() ? -1 : testclips::frameNumber(frame.image));
        });
        connect(&m_backend, &MediaBackend::paused, this, [this] { ++pauses; });
    }
    [[nodiscard]] GstMediaBackend &backend() { return m_backend; }
    [[nodiscard]] int shown() const { return numbers.isEmpty() ? -1 : numbers.last(); }

    QList<int> numbers; // of all frames that were there to be painted
    int pauses = 0;

private:
    GstMediaBackend m_backend;
};

// Notes what is painted, time after time.
class Recorder : public QGraphicsView
{
public:
    QList<int> painted; // 0: black

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QGraphicsView::paintEvent(event);
        QImage image(viewport()->size(), QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        render(&painter);
        painted.append(testclips::frameNumber(image));
    }
};

struct Left
{
    int number = -1;
    uint second = 0; // all that anybody else knows of the place
};

} // namespace

// A video that is left at any moment goes on at the very frame, whatever it is coded and packed in.
class ExactResumeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void leftWhilePlaying_data();
    void leftWhilePlaying();
    void leftAfterSeeksWhilePaused_data();
    void leftAfterSeeksWhilePaused();
    void sought_data();
    void sought();
    void leftTimeAndAgainWithoutDrifting();
    void stoppedWithoutAPause();
    void anotherVideoTakesItsPlace();
    void theStillComesFirstAndNothingBlackAfterIt();
    void theMomentIsKeptOverARestart();

private:
    void rows() const;
    [[nodiscard]] QString clip(const char *name) const
    {
        return testclips::address(m_clips.filePath(QString::fromLatin1(name)));
    }
    void watch(const QString &uri, uint second, int frames, Left *left);
    void goOn(const QString &uri, const Left &left);

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    QRandomGenerator m_random{7};
};

void ExactResumeTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    const QString source = m_clips.filePath(u"source.mkv"_s);
    QVERIFY(exactclips::makeSource(source));
    for (const exactclips::Pair &pair : exactclips::pairs())
        QVERIFY2(exactclips::make(source, pair, m_clips.filePath(QString::fromLatin1(pair.file))), pair.name);
}

void ExactResumeTest::rows() const
{
    QTest::addColumn<QString>("uri");
    for (const exactclips::Pair &pair : exactclips::pairs())
        QTest::newRow(pair.name) << testclips::address(m_clips.filePath(QString::fromLatin1(pair.file)));
}

// Watches some frames and pauses.
void ExactResumeTest::watch(const QString &uri, uint second, int frames, Left *left)
{
    Viewing viewing;
    viewing.backend().play(uri, second);
    QTRY_VERIFY_WITH_TIMEOUT(viewing.numbers.size() >= frames, Patience);
    viewing.backend().pause();
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
    *left = {viewing.shown(), uint(viewing.backend().position() / 1s)};
}

void ExactResumeTest::goOn(const QString &uri, const Left &left)
{
    Viewing viewing;
    viewing.backend().play(uri, left.second);
    viewing.backend().pause(); // on the first frame, however slow the machine is
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
    const QString seen
        = u"left at %1, went on at %2"_s.arg(QString::number(left.number), QDebug::toString(viewing.numbers));
    QVERIFY2(viewing.numbers.size() >= 2, qPrintable(seen));
    QVERIFY2(viewing.numbers.first() == left.number, qPrintable(seen)); // the still
    QVERIFY2(viewing.numbers.last() == left.number, qPrintable(seen));
    viewing.backend().resume();
    QTRY_VERIFY_WITH_TIMEOUT(viewing.shown() > left.number, Patience);
}

void ExactResumeTest::leftWhilePlaying_data()
{
    rows();
}

void ExactResumeTest::leftWhilePlaying()
{
    QFETCH(QString, uri);
    Left left;
    watch(uri, m_random.bounded(1, 7), m_random.bounded(2, 12), &left);
    if (!QTest::currentTestFailed())
        goOn(uri, left);
}

void ExactResumeTest::leftAfterSeeksWhilePaused_data()
{
    rows();
}

void ExactResumeTest::leftAfterSeeksWhilePaused()
{
    QFETCH(QString, uri);
    for (int round = 0; round < 2; ++round) {
        Left left;
        {
            Viewing viewing;
            viewing.backend().play(uri, 1);
            viewing.backend().pause();
            QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
            const auto place = std::chrono::microseconds(m_random.bounded(4'000'000, 9'500'000));
            viewing.backend().seek(place, MediaBackend::SeekPrecision::Exact);
            QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 2, Patience);
            left = {viewing.shown(), uint(viewing.backend().position() / 1s)};
        }
        goOn(uri, left);
        if (QTest::currentTestFailed())
            return;
    }
}

void ExactResumeTest::sought_data()
{
    rows();
}

// A finger goes over the time line, shows a key frame wherever it is, and rests where playing can begin, too.
void ExactResumeTest::sought()
{
    QFETCH(QString, uri);
    // A file of its own: nobody has left it anywhere.
    const QString path = QUrl(uri).toLocalFile();
    const QString copy = m_clips.filePath(u"sought-"_s + QFileInfo(path).fileName());
    QVERIFY(QFile::copy(path, copy));
    uri = testclips::address(copy);
    int wanted = -1;
    {
        Viewing viewing;
        viewing.backend().play(uri, 6);
        viewing.backend().pause();
        QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
        wanted = viewing.shown();
    }
    Viewing viewing;
    MediaBackend &backend = viewing.backend();
    backend.play(uri, 1);
    backend.pause();
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
    QSignalSpy found(&backend, &MediaBackend::seekFinished);
    backend.beginScrub();
    for (const auto place : {8000ms, 3000ms, 6000ms}) {
        backend.seek(place, MediaBackend::SeekPrecision::KeyFrame);
        QVERIFY(found.wait(Patience));
    }
    backend.endScrub();
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 2, Patience);
    QVERIFY2(std::abs(viewing.shown() - wanted) <= 1,
             qPrintable(QDebug::toString(viewing.numbers) + QString::number(wanted)));
    backend.resume();
    QTRY_VERIFY_WITH_TIMEOUT(viewing.shown() > wanted + 5, Patience);
}

// Opened and closed again at once, as one does who looks for something.
void ExactResumeTest::leftTimeAndAgainWithoutDrifting()
{
    const QString uri = clip("open.mkv");
    Left left;
    watch(uri, 3, 7, &left);
    for (int round = 0; round < 5; ++round) {
        Left again;
        watch(uri, left.second, 1, &again);
        QVERIFY(!QTest::currentTestFailed());
        QVERIFY2(again.number >= left.number, "it went back");
        left = again;
        Viewing viewing;
        viewing.backend().play(uri, left.second);
        viewing.backend().pause();
        QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
        QCOMPARE(viewing.shown(), left.number);
    }
}

void ExactResumeTest::stoppedWithoutAPause()
{
    const QString uri = clip("b.mp4");
    Left left;
    {
        Viewing viewing;
        viewing.backend().play(uri, 2);
        QTRY_VERIFY_WITH_TIMEOUT(viewing.numbers.size() > 6, Patience);
        viewing.backend().stop();
        left = {viewing.shown(), uint(viewing.backend().position() / 1s)};
    }
    Viewing viewing;
    viewing.backend().play(uri, left.second);
    viewing.backend().pause();
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
    QCOMPARE(QSet<int>(viewing.numbers.begin(), viewing.numbers.end()), QSet<int>{left.number});
}

void ExactResumeTest::anotherVideoTakesItsPlace()
{
    const QString uri = clip("b.mp4");
    Viewing viewing;
    viewing.backend().play(uri, 4);
    QTRY_VERIFY_WITH_TIMEOUT(viewing.numbers.size() > 6, Patience);
    const Left left{viewing.shown(), uint(viewing.backend().position() / 1s)};
    viewing.backend().play(clip("vp9.webm"), 1);
    QTRY_VERIFY_WITH_TIMEOUT(viewing.numbers.contains(25), Patience);
    viewing.numbers.clear();
    viewing.backend().play(uri, left.second);
    QTRY_VERIFY_WITH_TIMEOUT(!viewing.numbers.isEmpty(), Patience);
    QCOMPARE(viewing.numbers.first(), left.number);
}

void ExactResumeTest::theStillComesFirstAndNothingBlackAfterIt()
{
    const QString uri = clip("hevc.mp4");
    Left left;
    watch(uri, 3, 9, &left);
    QGraphicsScene scene;
    Recorder view;
    view.setScene(&scene);
    view.setFrameShape(QFrame::NoFrame);
    view.setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    view.resize(320, 180);
    scene.setSceneRect(0, 0, 320, 180);
    auto *video = new VideoWidget;
    scene.addItem(video);
    video->setGeometry(scene.sceneRect());
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTRY_VERIFY(video->backend() != nullptr);
    video->reset();
    video->play(uri, left.second);
    QTRY_VERIFY_WITH_TIMEOUT(!view.painted.isEmpty() && view.painted.last() > left.number + 5, Patience);
    QList<int> story = view.painted;
    while (!story.isEmpty() && story.first() == 0)
        story.removeFirst();
    const QString text = QDebug::toString(story);
    QVERIFY2(story.first() == left.number, qPrintable(text));
    QVERIFY2(!story.contains(0), qPrintable(text));
    QVERIFY2(std::is_sorted(story.begin(), story.end()), qPrintable(text));
}

void ExactResumeTest::theMomentIsKeptOverARestart()
{
    const QString uri = clip("b.mp4");
    MediaTime place{0};
    {
        Viewing viewing;
        viewing.backend().play(uri, 1);
        viewing.backend().seek(6440ms, MediaBackend::SeekPrecision::Exact);
        viewing.backend().pause();
        QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses, 1, Patience);
        place = viewing.backend().position();
    }
    QCOMPARE(place, MediaTime(6440ms));
    const ExactPositions next(ExactPositions::shared().fileName());
    QCOMPARE(next.at(uri, 6), place);
    QCOMPARE(next.at(uri, 5), MediaTime(5s));
}

QTEST_MAIN(ExactResumeTest)
#include "tst_exactresume.moc"
