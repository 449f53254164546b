// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_viewportfixture.h"

#include "platform/toolkit/button.h"

#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;

class ViewportTest : public QObject, private ViewportFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void dragFollowsTheFinger_data();
    void dragFollowsTheFinger();
    void flickGoesOnAndStops_data();
    void flickGoesOnAndStops();
    void tapReachesTheContent_data();
    void tapReachesTheContent();
    void panIsNoTap();
    void pressOnMovingContentStopsItAndIsNoTap();
    void sidewaysMovementDoesNotPan();
    void setPositionDuringADragEndsIt();
    void notPannable();
    void buttonInsideIsClickedOnlyByTaps();
    void turnedSceneIsPannedAlongItself();
    void lostPressDoesNotStick();
    void whatIsPannedRunsOutAtItsEdges_data();
    void whatIsPannedRunsOutAtItsEdges();
};

void ViewportTest::dragFollowsTheFinger_data()
{
    QTest::addColumn<bool>("touch");
    QTest::newRow("pointer") << false;
    QTest::newRow("touch") << true;
}

void ViewportTest::dragFollowsTheFinger()
{
    QFETCH(const bool, touch);
    makePage(5000);
    m_touch = touch;
    QSignalSpy started(m_viewport, &PannableViewport::panningStarted);
    QSignalSpy stopped(m_viewport, &PannableViewport::panningStopped);
    const QPointF from(240, 600);
    drag(from, QPointF(240, 400), 20, 40);
    QVERIFY(m_viewport->isPanning());
    QCOMPARE(started.size(), 1);
    const qreal before = y();
    QVERIFY2(before > 150 && before <= 200, qPrintable(QString::number(before)));
    move(QPointF(240, 380), 40);
    QTRY_COMPARE(y(), before + 20);
    for (int rest = 0; rest < 10; ++rest)
        move(QPointF(240, 380), 40);
    release(QPointF(240, 380), 200);
    QTRY_VERIFY(!m_viewport->isPanning());
    QCOMPARE(started.size(), 1);
    QCOMPARE(stopped.size(), 1);
    QCOMPARE(m_content->taps(), 0);
}

void ViewportTest::flickGoesOnAndStops_data()
{
    dragFollowsTheFinger_data();
}

void ViewportTest::flickGoesOnAndStops()
{
    QFETCH(const bool, touch);
    makePage(50000);
    m_touch = touch;
    QSignalSpy stopped(m_viewport, &PannableViewport::panningStopped);
    drag(QPointF(240, 600), QPointF(240, 360), 8, 12);
    const qreal left = y();
    release(QPointF(240, 330), 12);
    QVERIFY(stopped.wait(TestPatience));
    QVERIFY2(y() > left + 100, qPrintable(QString::number(y())));
    QCOMPARE(m_seen.positions.last(), y());
    QVERIFY(std::is_sorted(m_seen.positions.begin(), m_seen.positions.end()));
}

void ViewportTest::tapReachesTheContent_data()
{
    dragFollowsTheFinger_data();
}

void ViewportTest::tapReachesTheContent()
{
    QFETCH(const bool, touch);
    makePage(5000);
    m_touch = touch;
    tap(QPointF(240, 400));
    // A finger is never quite still.
    press(QPointF(240, 400));
    move(QPointF(242, 405));
    release(QPointF(242, 405));
    QCOMPARE(m_content->log.join(u' '), u"press tap press tap"_s);
    QCOMPARE(y(), 0.0);
    QVERIFY(m_seen.positions.isEmpty());
}

void ViewportTest::panIsNoTap()
{
    makePage(5000);
    drag(QPointF(240, 600), QPointF(240, 500), 10, 16);
    QCOMPARE(m_content->log.join(u' '), u"press cancel"_s);
    release(QPointF(240, 500));
    QCOMPARE(m_content->taps(), 0);
}

void ViewportTest::pressOnMovingContentStopsItAndIsNoTap()
{
    makePage(500000);
    drag(QPointF(240, 600), QPointF(240, 300), 8, 10);
    release(QPointF(240, 260), 10);
    m_content->log.clear();
    QVERIFY(m_viewport->isPanning());
    QSignalSpy changed(m_viewport, &PannableViewport::positionChanged);
    QVERIFY(changed.wait(TestPatience));
    press(QPointF(240, 400));
    const qreal stopped = y();
    release(QPointF(240, 400), 300);
    QVERIFY(!m_viewport->isPanning());
    QVERIFY(m_content->log.isEmpty());
    QCOMPARE(y(), stopped);
    tap(QPointF(240, 400));
    QCOMPARE(m_content->taps(), 1);
}

void ViewportTest::sidewaysMovementDoesNotPan()
{
    makePage(5000);
    drag(QPointF(400, 400), QPointF(100, 420), 20, 16);
    release(QPointF(100, 420));
    QCOMPARE(y(), 0.0);
    QVERIFY(m_seen.positions.isEmpty());
}

void ViewportTest::setPositionDuringADragEndsIt()
{
    makePage(5000);
    drag(QPointF(240, 600), QPointF(240, 500), 10, 16);
    QVERIFY(m_viewport->isPanning());
    m_viewport->setPosition({});
    QVERIFY(!m_viewport->isPanning());
    move(QPointF(240, 400));
    QCOMPARE(y(), 0.0);
    release(QPointF(240, 400));
    QCOMPARE(m_content->taps(), 0);
    tap(QPointF(240, 400));
    QCOMPARE(m_content->taps(), 1);
}

void ViewportTest::notPannable()
{
    makePage(5000);
    m_viewport->setPosition({0, 500});
    m_page->setPannable(false);
    QCOMPARE(y(), 0.0);
    QCOMPARE(m_content->size().height(), m_viewport->size().height());
    drag(QPointF(240, 600), QPointF(240, 300), 10, 16);
    release(QPointF(240, 300));
    wheel(-120);
    QCOMPARE(y(), 0.0);
    m_page->setPannable(true);
    QCOMPARE(m_content->size().height(), 5000.0);
}

void ViewportTest::buttonInsideIsClickedOnlyByTaps()
{
    makePage(5000);
    auto *button = new Button(u"Play"_s, m_content);
    button->setGeometry(QRectF(100, 300, 200, 80));
    QSignalSpy clicked(button, &Button::clicked);
    const QPointF at = button->mapToScene(button->rect().center());
    tap(at);
    QCOMPARE(clicked.size(), 1);
    drag(at, at - QPointF(0, 60), 10, 16);
    QVERIFY(!button->isDown());
    release(at - QPointF(0, 60));
    QCOMPARE(clicked.size(), 1);
}

void ViewportTest::turnedSceneIsPannedAlongItself()
{
    makePage(5000, ApplicationWindow::Profile::Handset);
    m_window->setOrientationAngle(m_window->orientationAngle() + 90,
                                  ApplicationWindow::Transition::Immediate);
    const QPointF from = m_page->rect().center();
    drag(from, from - QPointF(0, 100), 10, 40);
    QVERIFY2(y() > 60 && y() <= 100, qPrintable(QString::number(y())));
    release(from - QPointF(0, 100), 300);
}

// The widget under the finger goes away: no release will come.
void ViewportTest::lostPressDoesNotStick()
{
    makePage(5000);
    press(QPointF(240, 400));
    m_content->hide();
    m_content->show();
    tap(QPointF(240, 500));
    QCOMPARE(m_content->taps(), 1);
}

void ViewportTest::whatIsPannedRunsOutAtItsEdges_data()
{
    QTest::addColumn<qreal>("beyond"); // logical pixels of content
    QTest::addColumn<int>("least"); // of what is seen of its colour at the edge itself, of 255
    QTest::addColumn<int>("most");
    QTest::newRow("nothing") << 0.0 << 250 << 255;
    QTest::newRow("the first of it") << 7.0 << 150 << 249;
    QTest::newRow("much") << 500.0 << 0 << 100;
}

// It was cut under the heading of a page; and the fade comes with what goes there, not at once.
void ViewportTest::whatIsPannedRunsOutAtItsEdges()
{
    QFETCH(const qreal, beyond);
    QFETCH(const int, least);
    QFETCH(const int, most);
    makePage(5000);
    QPalette magenta;
    magenta.setColor(QPalette::Window, Qt::magenta); // of which every ground has less
    m_content->setPalette(magenta);
    m_content->setAutoFillBackground(true);
    const auto shown = [this](bool atFoot) {
        const QRectF area = m_viewport->mapRectToScene(m_viewport->rect());
        QImage image(480, 854, QImage::Format_RGB32);
        QPainter painter(&image);
        m_window->scene()->render(&painter, image.rect(), QRectF(0, 0, 480, 854));
        painter.end();
        return image.pixelColor(240, int(atFoot ? area.bottom() - 1 : area.top())).red();
    };
    m_viewport->setPosition({0, beyond});
    const int atHead = shown(false);
    QVERIFY2(atHead >= least && atHead <= most, qPrintable(QString::number(atHead)));
    m_viewport->setPosition({0, m_viewport->range().height() - beyond});
    const int atFoot = shown(true);
    QVERIFY2(atFoot >= least && atFoot <= most, qPrintable(QString::number(atFoot)));
}

KESTREL_TOOLKIT_TEST_MAIN(ViewportTest)
#include "core_viewporttest.moc"
