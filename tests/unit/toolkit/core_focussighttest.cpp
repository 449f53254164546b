// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_viewportfixture.h"

#include "platform/toolkit/focussight.h"

using namespace toolkit;

class FocusSightTest : public QObject, private ViewportFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { tearDown(); }
    void theKeyboardIsFollowed();
    void aFocusThatComesBackMovesNothing();
    void whatGoesBeforeItsTurn();
    void arrowsGoToWhatIsInSight();
    void arrowsReadWhatStandsBetween();
    void arrowsPassWhatCannotBeTapped();

private:
    [[nodiscard]] bool isInSight(const QGraphicsWidget *row) const;
    [[nodiscard]] bool move(Qt::Key key);

    FocusSight *m_sight = nullptr;
    QList<QGraphicsWidget *> m_rows; // not the toolkit's, one every 100 pixels
};

void FocusSightTest::init()
{
    setUp();
    makePage(3000);
    setReducedMotion(true);
    m_sight = new FocusSight(m_viewport);
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    auto *column = new QGraphicsWidget(m_content);
    m_rows.clear();
    for (int row = 0; row < 30; ++row) {
        m_rows.append(new QGraphicsWidget(column));
        m_rows.last()->setGeometry(0, row * 100, 200, 90);
        m_rows.last()->setFocusPolicy(Qt::TabFocus);
    }
}

bool FocusSightTest::isInSight(const QGraphicsWidget *row) const
{
    return m_viewport->rect().contains(m_viewport->mapRectFromItem(row, row->rect()));
}

// “I press Tab and nothing seems to happen.”
void FocusSightTest::theKeyboardIsFollowed()
{
    m_rows.first()->setFocus(Qt::TabFocusReason);
    for (int row = 1; row < 30; ++row) {
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
        QVERIFY(m_rows.at(row)->hasFocus());
        QTRY_VERIFY(isInSight(m_rows.at(row)));
    }
    m_rows.at(3)->setFocus(Qt::BacktabFocusReason);
    QTRY_VERIFY(isInSight(m_rows.at(3)));
    QCOMPARE(y(), 300 - EdgeDepth); // the least way
}

// “I scrolled down and opened a row; when I come back I want to be where I was.”
void FocusSightTest::aFocusThatComesBackMovesNothing()
{
    for (const Qt::FocusReason reason :
         {Qt::OtherFocusReason, Qt::ActiveWindowFocusReason, Qt::MouseFocusReason}) {
        m_rows.at(20)->setFocus(reason);
        QVERIFY(m_rows.at(20)->hasFocus());
        QCoreApplication::processEvents();
        QCOMPARE(y(), 0.0);
        m_rows.at(20)->clearFocus();
    }
}

void FocusSightTest::whatGoesBeforeItsTurn()
{
    m_rows.at(20)->setFocus(Qt::TabFocusReason);
    delete m_rows.at(20);
    QCoreApplication::processEvents();
    QCOMPARE(y(), 0.0);
    m_rows.at(29)->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(isInSight(m_rows.at(29)));
}

bool FocusSightTest::move(Qt::Key key)
{
    const QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    const bool moved = m_sight->moveByKey(&event);
    QCoreApplication::processEvents();
    return moved;
}

void FocusSightTest::arrowsGoToWhatIsInSight()
{
    m_viewport->setPosition({0, 470}); // a fifth of the fourth row is seen
    QVERIFY(move(Qt::Key_Down));
    QVERIFY(m_rows.at(5)->hasFocus());
    for (int row = 6; row < 20; ++row) {
        QVERIFY(move(Qt::Key_Down));
        QVERIFY(m_rows.at(row)->hasFocus());
        QTRY_VERIFY(isInSight(m_rows.at(row)));
    }
    QVERIFY(move(Qt::Key_Up));
    QVERIFY(m_rows.at(18)->hasFocus());
    // A finger scrolled on meanwhile: from where the person looks now.
    m_viewport->setPosition({0, 0});
    QVERIFY(move(Qt::Key_Down));
    QVERIFY(m_rows.at(0)->hasFocus());
    QVERIFY(!move(Qt::Key_Up));
    QVERIFY(!move(Qt::Key_Left));
    QVERIFY(!move(Qt::Key_PageDown));
}

void FocusSightTest::arrowsReadWhatStandsBetween()
{
    for (int row = 3; row < 20; ++row)
        m_rows.at(row)->hide(); // as if a long text stood there
    m_rows.at(2)->setFocus(Qt::TabFocusReason);
    QVERIFY(!move(Qt::Key_Down));
    QVERIFY(m_rows.at(2)->hasFocus());
    m_viewport->setPosition({0, 2000 - m_viewport->size().height()});
    QVERIFY(!move(Qt::Key_Down));
    m_viewport->setPosition({0, 2060 - m_viewport->size().height()});
    QVERIFY(move(Qt::Key_Down));
    QVERIFY(m_rows.at(20)->hasFocus());
}

void FocusSightTest::arrowsPassWhatCannotBeTapped()
{
    m_rows.at(1)->setEnabled(false);
    m_rows.at(2)->hide();
    m_rows.at(3)->setFocusPolicy(Qt::NoFocus);
    m_rows.at(0)->setFocus(Qt::TabFocusReason);
    QVERIFY(move(Qt::Key_Down));
    QVERIFY(m_rows.at(4)->hasFocus());
}

KESTREL_TOOLKIT_TEST_MAIN(FocusSightTest)
#include "core_focussighttest.moc"
