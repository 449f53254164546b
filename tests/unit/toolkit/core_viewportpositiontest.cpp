// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_viewportfixture.h"

#include "platform/toolkit/scrollindicator.h"

#include <QSignalSpy>
#include <QTest>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;

class ViewportPositionTest : public QObject, private ViewportFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void wheelScrolls();
    void keysScroll();
    void setPositionIsClampedAndAtOnce();
    void ensureVisibleScrollsTheLeastWay();
    void hundredThousandCellsArePrecise();
    void contentThatGrowsAndShrinks();
    void indicator_data();
    void indicator();
};

void ViewportPositionTest::wheelScrolls()
{
    makePage(5000);
    QSignalSpy stopped(m_viewport, &PannableViewport::panningStopped);
    wheel(-120);
    wheel(-120);
    QVERIFY(stopped.wait(TestPatience));
    QTRY_COMPARE(y(), 240.0);
    setReducedMotion(true);
    wheel(120);
    QCOMPARE(y(), 120.0);
}

void ViewportPositionTest::keysScroll()
{
    setReducedMotion(true);
    makePage(5000);
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QCOMPARE(y(), 80.0);
    QTest::keyClick(m_window.get(), Qt::Key_Up);
    QCOMPARE(y(), 0.0);
    QTest::keyClick(m_window.get(), Qt::Key_PageDown);
    QCOMPARE(y(), m_viewport->size().height() - 80);
    QTest::keyClick(m_window.get(), Qt::Key_End);
    QCOMPARE(y(), m_viewport->range().bottom());
    QTest::keyClick(m_window.get(), Qt::Key_Home);
    QCOMPARE(y(), 0.0);
}

void ViewportPositionTest::setPositionIsClampedAndAtOnce()
{
    makePage(5000);
    const qreal end = 5000 - m_viewport->size().height();
    m_viewport->setPosition({0, 9999});
    QCOMPARE(y(), end);
    QCOMPARE(m_content->y(), -end);
    m_viewport->setPosition({0, -5});
    QCOMPARE(y(), 0.0);
    QCOMPARE(m_seen.positions, (QList<qreal>{end, 0}));
    QCOMPARE(m_viewport->range(), QRectF(0, 0, 0, end));
}

void ViewportPositionTest::ensureVisibleScrollsTheLeastWay()
{
    setReducedMotion(true);
    makePage(5000);
    const qreal height = m_viewport->size().height();
    m_viewport->ensureVisible(QRectF(0, 100, 480, 136));
    QCOMPARE(y(), 0.0);
    m_viewport->ensureVisible(QRectF(0, 2000, 480, 136));
    QCOMPARE(y(), 2136 + EdgeDepth - height);
    m_viewport->ensureVisible(QRectF(0, 1000, 480, 136));
    QCOMPARE(y(), 1000 - EdgeDepth);
}

void ViewportPositionTest::hundredThousandCellsArePrecise()
{
    makePage(13600000);
    m_viewport->setPosition({0, 13599000.5});
    QCOMPARE(y(), qMin(13599000.5, m_viewport->range().bottom()));
    drag(QPointF(240, 300), QPointF(240, 600), 20, 40);
    const qreal before = y();
    move(QPointF(240, 601), 40);
    QTRY_COMPARE(before - y(), 1.0);
    release(QPointF(240, 601), 300);
    QTRY_VERIFY(!m_viewport->isPanning());
    const QPointF top = m_content->mapFromItem(m_viewport, QPointF());
    QVERIFY(qAbs(top.y() - y()) <= 0.5);
}

void ViewportPositionTest::contentThatGrowsAndShrinks()
{
    makePage(5000);
    m_viewport->setPosition({0, 4000});
    m_content->setPreferredHeight(6000);
    QTRY_COMPARE(m_content->size().height(), 6000.0);
    QCOMPARE(y(), 4000.0);
    m_content->setPreferredHeight(1000);
    QTRY_COMPARE(y(), 1000 - m_viewport->size().height());
    m_content->setPreferredHeight(10);
    QTRY_COMPARE(y(), 0.0);
    QCOMPARE(m_content->size().height(), m_viewport->size().height());
}

void ViewportPositionTest::indicator_data()
{
    QTest::addColumn<qreal>("content");
    QTest::addColumn<qreal>("position");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<QRectF>("bar");
    QTest::newRow("everything is seen") << 500.0 << 0.0 << false << QRectF();
    QTest::newRow("top") << 1632.0 << 0.0 << false << QRectF(472, 8, 4, 400);
    QTest::newRow("bottom") << 1632.0 << 816.0 << false << QRectF(472, 408, 4, 400);
    QTest::newRow("mirrored") << 1632.0 << 0.0 << true << QRectF(4, 8, 4, 400);
    QTest::newRow("very long") << 13600000.0 << 0.0 << false << QRectF(472, 8, 4, 40);
    QTest::newRow("pulled") << 1632.0 << -100.0 << false << QRectF(472, 8, 4, 300);
}

void ViewportPositionTest::indicator()
{
    QFETCH(const qreal, content);
    QFETCH(const qreal, position);
    QFETCH(const bool, mirrored);
    QTEST(ScrollIndicator::barFor(QSizeF(480, 816), content, position, 4, 4, mirrored), "bar");
}

KESTREL_TOOLKIT_TEST_MAIN(ViewportPositionTest)
#include "core_viewportpositiontest.moc"
