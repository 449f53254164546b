// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"
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
    [[nodiscard]] toolkit::Button *buttonNamed(const QString &name) const
    {
        const QList<QGraphicsItem *> items = m_window.scene()->items();
        for (QGraphicsItem *item : items) {
            auto *button = qobject_cast<toolkit::Button *>(item->toGraphicsObject());
            if (button && button->objectName() == name)
                return button;
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
    toolkit::Button *button = buttonNamed(u"InfoButton"_s);
    QVERIFY(button);
    button->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"pause"_s}); // of the details
    QCOMPARE(stack(), u"library player details"_s);
}

void PlayerKeysTest::spaceElsewherePauses_data()
{
    QTest::addColumn<QString>("focus");
    QTest::newRow("nowhere") << QString();
    QTest::newRow("a control") << u"VolumeButton"_s;
}

void PlayerKeysTest::spaceElsewherePauses()
{
    QFETCH(QString, focus);
    play();
    if (!focus.isEmpty())
        buttonNamed(focus)->setFocus(Qt::TabFocusReason);
    QCOMPARE(strike(), QStringList{u"pause"_s});
    QTRY_COMPARE(state(), AvloRenderer::Paused);
    QCOMPARE(strike(), QStringList{u"resume"_s});
}

int main(int argc, char **argv)
{
    return runControllerTest<PlayerKeysTest>(argc, argv);
}
#include "tst_playerkeys.moc"
