// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_viewportfixture.h"

#include <QSignalSpy>
#include <QTest>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;

class ViewportPullTest : public QObject, private ViewportFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void pullBeyondTheTop_data();
    void pullBeyondTheTop();
    void pullWithReducedMotion();
    void pullByWheel_data();
    void pullByWheel();
    void flingToTheTopIsNoPull();
    void wheelThatArrivesAtTheTopIsNoPull();
    void positionSetByAReceiverIsToldLast();
};

void ViewportPullTest::pullBeyondTheTop_data()
{
    QTest::addColumn<bool>("touch");
    QTest::addColumn<qreal>("height");
    QTest::newRow("pointer") << false << 5000.0;
    QTest::newRow("touch") << true << 5000.0;
    QTest::newRow("content that fits") << false << 100.0;
}

void ViewportPullTest::pullBeyondTheTop()
{
    QFETCH(const bool, touch);
    QFETCH(const qreal, height);
    makePage(height);
    m_touch = touch;
    drag(QPointF(240, 300), QPointF(240, 450), 15, 16);
    QVERIFY(y() < -10);
    QCOMPARE(m_seen.pulls(), 1);
    release(QPointF(240, 450), 200);
    QTRY_COMPARE(y(), 0.0);
    QTRY_COMPARE(m_seen.positions.last(), 0.0);
    QCOMPARE(m_seen.pulls(), 1);
    QCOMPARE(m_content->taps(), 0);
    // And once more: the end of the first is a beginning again.
    drag(QPointF(240, 300), QPointF(240, 450), 15, 16);
    QCOMPARE(m_seen.pulls(), 2);
    release(QPointF(240, 450), 200);
    QTRY_COMPARE(m_seen.positions.last(), 0.0);
}

void ViewportPullTest::pullWithReducedMotion()
{
    setReducedMotion(true);
    makePage(5000);
    drag(QPointF(240, 300), QPointF(240, 450), 15, 16);
    QCOMPARE(m_seen.pulls(), 1);
    QCOMPARE(y(), 0.0); // nothing is seen to move
    release(QPointF(240, 450));
    QCOMPARE(m_seen.positions.last(), 0.0);
    QCOMPARE(m_seen.pulls(), 1);
    QCOMPARE(m_content->taps(), 0);
}

void ViewportPullTest::pullByWheel_data()
{
    QTest::addColumn<bool>("reduced");
    QTest::newRow("motion") << false;
    QTest::newRow("reduced motion") << true;
}

void ViewportPullTest::pullByWheel()
{
    QFETCH(const bool, reduced);
    setReducedMotion(reduced);
    makePage(5000);
    wheel(120);
    QTRY_VERIFY(m_seen.least() < 0);
    QTRY_COMPARE(m_seen.positions.last(), 0.0);
    QCOMPARE(m_seen.pulls(), 1);
    QCOMPARE(y(), 0.0);
}

void ViewportPullTest::flingToTheTopIsNoPull()
{
    makePage(50000);
    m_viewport->setPosition({0, 300});
    m_seen.positions.clear();
    QSignalSpy stopped(m_viewport, &PannableViewport::panningStopped);
    drag(QPointF(240, 200), QPointF(240, 500), 8, 10);
    release(QPointF(240, 540), 10);
    QVERIFY(stopped.wait(TestPatience));
    QVERIFY(m_seen.least() < 0); // it did run over the top
    QCOMPARE(y(), 0.0);
    QCOMPARE(m_seen.positions.last(), 0.0);
    m_seen.positions.prepend(300);
    QCOMPARE(m_seen.pulls(), 0);
}

void ViewportPullTest::wheelThatArrivesAtTheTopIsNoPull()
{
    setReducedMotion(true);
    makePage(5000);
    m_viewport->setPosition({0, 200});
    m_seen.positions.clear();
    for (int notch = 0; notch < 6; ++notch)
        wheel(120);
    QCOMPARE(y(), 0.0);
    QCOMPARE(m_seen.least(), 0.0);
}

// The page answers a pull by scrolling to the top: whoever listens must end at 0, not at the pull.
void ViewportPullTest::positionSetByAReceiverIsToldLast()
{
    makePage(5000);
    QList<qreal> heardLater;
    connect(m_viewport, &PannableViewport::positionChanged, m_page.get(), [this](QPointF position) {
        if (position.y() < 0)
            m_viewport->setPosition({});
    });
    connect(m_viewport, &PannableViewport::positionChanged, m_page.get(),
            [&heardLater](QPointF position) { heardLater.append(position.y()); });
    drag(QPointF(240, 300), QPointF(240, 450), 15, 16);
    release(QPointF(240, 450));
    QCOMPARE(y(), 0.0);
    QCOMPARE(heardLater.last(), 0.0);
    QCOMPARE(heardLater.size(), 2);
    QVERIFY(!m_viewport->isPanning());
}

KESTREL_TOOLKIT_TEST_MAIN(ViewportPullTest)
#include "core_viewportpulltest.moc"
