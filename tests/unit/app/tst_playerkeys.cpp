// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"
#include "platform/media/playbackextras.h"
#include "platform/media/playbackoptions.h"
#include "platform/media/videowidget.h"
#include "platform/toolkit/button.h"
#include "player/navigationbarwidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QGraphicsScene>

using namespace Qt::Literals::StringLiterals;

// A key goes to the player by two ways, over the window and to what has the focus: it does one thing.
class PlayerKeysTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void init();
    void cleanup();

    void spaceOnTheMenuButtonOpensTheMenu();
    void spaceOnTheBackButtonLeaves();
    void spaceOnTheInformationButtonShowsTheDetails();
    void spaceOnAControlPressesIt();
    void spaceOnThePlayMarkPausesOnce();
    void spaceInTheOptionsChooses();
    void spaceElsewherePauses_data();
    void spaceElsewherePauses();

private:
    [[nodiscard]] QStringList strike()
    {
        backend()->clearCommands();
        QTest::keyClick(&m_window, Qt::Key_Space);
        return backend()->commands();
    }
    [[nodiscard]] AvloRenderer::State state() const { return m_controller->playerController()->state(); }
    [[nodiscard]] toolkit::Widget *partNamed(const QString &name) const
    {
        const QList<QGraphicsItem *> items = m_window.scene()->items();
        for (QGraphicsItem *item : items) {
            auto *part = qobject_cast<toolkit::Widget *>(item->toGraphicsObject());
            if (part && part->objectName() == name)
                return part;
        }
        return nullptr;
    }
    void play()
    {
        start();
        tap(video(1));
        QTRY_COMPARE(state(), AvloRenderer::Playing);
        player()->videoWidget()->setControlsVisible(true);
        player()->controlsVisibilityChanged(true);
    }
};

void PlayerKeysTest::init()
{
    m_window.raiseToFront();
    QVERIFY(QTest::qWaitForWindowActive(&m_window));
}

void PlayerKeysTest::cleanup()
{
    m_window.closeMenu();
    clean();
}

void PlayerKeysTest::spaceOnTheMenuButtonOpensTheMenu()
{
    play();
    player()->navigationBar()->menuButton()->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"pause"_s}); // of the menu
    QVERIFY(m_window.isMenuOpen());
    QTRY_COMPARE(state(), AvloRenderer::Paused);
    backend()->clearCommands();
    m_window.closeMenu();
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    QCOMPARE(backend()->commands(), QStringList{u"resume"_s});
}

void PlayerKeysTest::spaceOnTheBackButtonLeaves()
{
    play();
    player()->navigationBar()->backButton()->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"pause"_s}); // of leaving
    QCOMPARE(stack(), u"library"_s);
}

void PlayerKeysTest::spaceOnTheInformationButtonShowsTheDetails()
{
    play();
    toolkit::Widget *button = partNamed(u"InfoButton"_s);
    QVERIFY(button);
    button->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"pause"_s}); // of the details
    QCOMPARE(stack(), u"library player details"_s);
}

void PlayerKeysTest::spaceOnAControlPressesIt()
{
    play();
    partNamed(u"VolumeButton"_s)->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"volume 0"_s});
    QCOMPARE(strike(), QStringList{u"volume 1"_s});
    QCOMPARE(state(), AvloRenderer::Playing);
}

void PlayerKeysTest::spaceOnThePlayMarkPausesOnce()
{
    play();
    partNamed(u"PlayPauseButton"_s)->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"pause"_s});
    QTRY_COMPARE(state(), AvloRenderer::Paused);
}

// The video goes on below the options.
void PlayerKeysTest::spaceInTheOptionsChooses()
{
    play();
    partNamed(u"OptionsButton"_s)->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList());
    PlaybackOptions *options = player()->videoWidget()->extras()->options();
    QVERIFY(options->isDisplayed());
    QTest::keyClick(&m_window, Qt::Key_Down);
    QTRY_VERIFY(qobject_cast<toolkit::Button *>(m_window.scene()->focusItem()->toGraphicsObject()));
    QCOMPARE(strike(), QStringList());
    QVERIFY(options->topic() != PlaybackOptions::Topic::All);
    QCOMPARE(state(), AvloRenderer::Playing);
    options->dismiss();
}

void PlayerKeysTest::spaceElsewherePauses_data()
{
    QTest::addColumn<QString>("focus");
    QTest::addColumn<bool>("controls");
    QTest::newRow("nowhere") << QString() << true;
    QTest::newRow("a slider") << u"SeekSlider"_s << true;
    QTest::newRow("a button that has gone meanwhile") << u"VolumeButton"_s << false;
}

void PlayerKeysTest::spaceElsewherePauses()
{
    QFETCH(QString, focus);
    QFETCH(bool, controls);
    play();
    if (!focus.isEmpty())
        partNamed(focus)->setFocus(Qt::TabFocusReason);
    if (!controls)
        player()->videoWidget()->setControlsVisible(false);
    QCOMPARE(strike(), QStringList{u"pause"_s});
    QTRY_COMPARE(state(), AvloRenderer::Paused);
    QCOMPARE(strike(), QStringList{u"resume"_s});
}

int main(int argc, char **argv)
{
    return runControllerTest<PlayerKeysTest>(argc, argv);
}
#include "tst_playerkeys.moc"
