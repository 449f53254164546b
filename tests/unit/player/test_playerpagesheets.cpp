// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

#include <platform/media/playbackextras.h>
#include <platform/media/playbackoptions.h>
#include <platform/media/playercontrols.h>
#include <platform/toolkit/label.h>

#include <QGraphicsLayout>
#include <QGuiApplication>
#include <QScopeGuard>

using namespace Qt::Literals::StringLiterals;

// A sheet over the player that is none of its menu's: that of the options, under which the video plays on.
class TestPlayerPageSheets : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void whatThePersonPausedStaysPaused_data();
    void whatThePersonPausedStaysPaused();
    void theTitleKeepsClearOfTheOptions_data();
    void theTitleKeepsClearOfTheOptions();
    void aVideoThatPlaysPlaysOn();
    void aVideoThatTheWindowPausedMeanwhileGoesOn();
    void whatTheRendererSaysLateUnderTheMenuDoesNotCount();

private:
    [[nodiscard]] PlaybackOptions *options() const { return f.widget->extras()->options(); }
    void openOptions()
    {
        f.widget->setControlsVisible(true);
        f.widget->controls()->optionsButton()->click();
        QVERIFY(options()->isActive());
        QVERIFY(!m_page->navigationBar()->isEnabled());
    }
    void closeOptions()
    {
        options()->reject();
        QTRY_VERIFY(m_page->navigationBar()->isEnabled()); // unblocked
    }
    // By the menu, which the person then closes.
    void openMenu()
    {
        m_page->navigationBar()->menuButton()->click();
        QVERIFY(m_window->isMenuOpen());
        QVERIFY(f.waitFor(AvloRenderer::Paused));
    }
    void closeMenu()
    {
        m_window->closeMenu();
        QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    }
};

void TestPlayerPageSheets::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageSheets::init()
{
    begin();
}

void TestPlayerPageSheets::cleanup()
{
    end();
}

void TestPlayerPageSheets::whatThePersonPausedStaysPaused_data()
{
    QTest::addColumn<QString>("before");
    for (const QString &before : {u"nothing"_s, u"the window was away"_s, u"the menu went under the lock"_s})
        QTest::newRow(qPrintable(before)) << before;
}

// The page had paused it, too, some time before; that is over since the person played it again.
void TestPlayerPageSheets::whatThePersonPausedStaysPaused()
{
    QFETCH(QString, before);
    QVERIFY(play(stored()));
    openMenu();
    closeMenu();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    if (before == u"the window was away"_s) {
        send(QEvent::WindowDeactivate);
        QVERIFY(f.waitFor(AvloRenderer::Paused));
        QVERIFY(PlayerPageProbe::wasPlaying(*m_page));
        send(QEvent::WindowActivate);
    } else if (before == u"the menu went under the lock"_s) {
        openMenu();
        f.controller->deviceLockStatusChanged(true);
        closeMenu();
        QVERIFY(PlayerPageProbe::wasPlaying(*m_page));
        f.controller->deviceLockStatusChanged(false);
    }
    if (before != u"nothing"_s) {
        f.controller->togglePause();
        QVERIFY(f.waitFor(AvloRenderer::Playing));
    }
    f.controller->togglePause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    f.backend->clearCommands();
    openOptions();
    closeOptions();
    QCOMPARE(f.backend->commands(), QStringList());
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
}

void TestPlayerPageSheets::theTitleKeepsClearOfTheOptions_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<bool>("makesRoom");
    QTest::addRow("upright") << QSize(480, 854) << false << false;
    QTest::addRow("wide") << QSize(854, 480) << false << true;
    QTest::addRow("wide, right to left") << QSize(854, 480) << true << true;
    QTest::addRow("a large window") << QSize(1280, 800) << false << true;
    QTest::addRow("a very wide window") << QSize(1900, 600) << false << true;
}

// The options stand over a part of the bar when they stand at the side; what is read goes into the rest.
void TestPlayerPageSheets::theTitleKeepsClearOfTheOptions()
{
    QFETCH(QSize, size);
    QFETCH(bool, mirrored);
    QFETCH(bool, makesRoom);
    // The size stays: a way back that the window manager has not gone yet would come in between.
    const auto asBefore = qScopeGuard([] { QGuiApplication::setLayoutDirection(Qt::LeftToRight); });
    QGuiApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
    m_window->resize(size);
    QTRY_VERIFY(m_window->size() == size && m_page->size() == m_window->logicalSize());
    QTRY_COMPARE(m_page->navigationBar()->screenOrientation(),
                 size.width() > size.height() ? Qt::Horizontal : Qt::Vertical);
    QVERIFY(play(stored()));
    const auto title = [this] {
        const PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
        overlay->navigationBar()->layout()->activate();
        overlay->toolbar()->layout()->activate();
        for (const QGraphicsItem *item : overlay->toolbar()->childItems()) {
            if (const auto *label = dynamic_cast<const toolkit::Label *>(item))
                return label->mapRectToScene(label->rect());
        }
        return QRectF();
    };
    QTRY_COMPARE(PlayerPageProbe::overlay(*m_page)->navigationBar()->size().width(), qreal(size.width()));
    const QRectF before = title();
    QVERIFY(before.width() > 100);
    openOptions();
    const QRectF panel = options()->mapRectToScene(options()->takenRect());
    QVERIFY(!panel.isEmpty());
    QCOMPARE(panel.intersects(before), makesRoom);
    QVERIFY(!panel.intersects(title()));
    QVERIFY(title().width() > 100);
    QCOMPARE(title() != before, makesRoom);
    if (makesRoom) {
        const qreal gap = mirrored ? title().left() - panel.right() : panel.left() - title().right();
        QVERIFY2(gap >= 16, qPrintable(QString::number(gap)));
    }
    closeOptions();
    QTRY_COMPARE(title(), before);
}

void TestPlayerPageSheets::aVideoThatPlaysPlaysOn()
{
    QVERIFY(play(stored()));
    f.backend->clearCommands();
    openOptions();
    closeOptions();
    QCOMPARE(f.backend->commands(), QStringList());
    QCOMPARE(f.controller->state(), AvloRenderer::Playing);
}

void TestPlayerPageSheets::aVideoThatTheWindowPausedMeanwhileGoesOn()
{
    QVERIFY(play(stored()));
    openOptions();
    send(QEvent::WindowDeactivate);
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    send(QEvent::WindowActivate);
    closeOptions();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(resumes(), 1);
}

// The menu was opened when the video was just going on: the renderer tells of that first, of the pause then.
void TestPlayerPageSheets::whatTheRendererSaysLateUnderTheMenuDoesNotCount()
{
    QVERIFY(play(stored()));
    openMenu();
    Q_EMIT f.widget->renderer()->stateChanged(AvloRenderer::Playing);
    Q_EMIT f.widget->renderer()->stateChanged(AvloRenderer::Paused);
    closeMenu();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(resumes(), 1);
}

QTEST_MAIN(TestPlayerPageSheets)
#include "test_playerpagesheets.moc"
