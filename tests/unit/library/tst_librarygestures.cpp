// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/filteredmodel.h"
#include "library/griditemwidget.h"
#include "library/griditemwidgetmodel.h"
#include "libraryfixture.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/pannableviewport.h"
#include "support/fingers.h"

#include <QScreen>
#include <QSignalSpy>
#include <QTimer>
#include <QWheelEvent>

using namespace Qt::Literals::StringLiterals;

// The gestures of one finger on the list, with and without a second one on the screen.
class LibraryGesturesTest : public QObject
{
    Q_OBJECT

public:
    explicit LibraryGesturesTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void gesture_data();
    void gesture();
    void tapWhileTheSceneTurns_data();
    void tapWhileTheSceneTurns();
    void tapAcrossATurnIsNone();
    void tapAfterATurnHitsWhatIsSeen();
    void wheelBeyondTheTopBringsTheField_data();
    void wheelBeyondTheTopBringsTheField();
    void pullWithReducedMotionBringsTheField();
    void touchThatIsTakenAwayIsNoTap();
    void panThatIsTakenAwayEnds();
    void tapOnAFilteredVideoLowersTheKeyboard();

private:
    [[nodiscard]] toolkit::PannableViewport *viewport() const { return f.page->pannableViewport(); }
    [[nodiscard]] toolkit::ObjectMenu *menu() const { return f.widget()->objectMenu(); }
    [[nodiscard]] toolkit::Widget *cell(int row) const
    {
        return f.widget()->list()->cell(f.widget()->proxy()->index(row, 0));
    }
    [[nodiscard]] QPoint onCell(int row) const
    {
        return cell(row) ? f.window.mapFromScene(cell(row)->sceneBoundingRect().center()) : QPoint(-1, -1);
    }
    void secondFinger(const QString &what);
    void pan(const QPoint &from, int way, const QString &second);
    void longTap(const QString &second);
    [[nodiscard]] QString outcome();
    // With the whole screen, which the window manager gives it in its time.
    [[nodiscard]] bool becomesHandset()
    {
        f.window.setProfile(toolkit::ApplicationWindow::Profile::Handset);
        return QTest::qWaitFor([this] {
            return f.window.size() == f.window.screen()->size() && f.page->size() == f.window.logicalSize()
                && onCell(1).y() > 0;
        });
    }

    LibraryFixture &f;
    std::unique_ptr<Fingers> m_fingers;
    QStringList m_played;
};

void LibraryGesturesTest::init()
{
    toolkit::Theme::instance()->setReducedMotion(false);
    QStringList titles;
    for (int i = 0; i < 40; ++i)
        titles.append(u"video %1"_s.arg(i, 2, 10, QChar(u'0')));
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    m_fingers = std::make_unique<Fingers>(&f.window);
    m_played.clear();
    connect(f.page.get(), &LocalVideosPage::showNowPlayingPage, this,
            [this](VideoInfo &info) { m_played.append(info.title); });
    QTRY_VERIFY(onCell(4).y() > 0);
}

void LibraryGesturesTest::cleanup()
{
    m_fingers.reset();
    f.close();
    f.window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    toolkit::Theme::instance()->setReducedMotion(true);
}

// Comes onto the screen while the first is in the middle of its gesture.
void LibraryGesturesTest::secondFinger(const QString &what)
{
    if (what.isEmpty())
        return;
    m_fingers->down(1, onCell(3) + QPoint(120, 20));
    if (what == "taps"_L1)
        m_fingers->up(1);
    for (int step = 0; what == "moves"_L1 && step < 4; ++step)
        m_fingers->moveBy(1, QPoint(0, -40));
}

// A step at a time, as frames go by; the finger leaves without a rest.
void LibraryGesturesTest::pan(const QPoint &from, int way, const QString &second)
{
    m_fingers->down(0, from);
    for (int step = 1; step <= 4; ++step) {
        if (step == 3)
            secondFinger(second);
        const qreal before = viewport()->position().y();
        m_fingers->moveBy(0, QPoint(0, way / 4));
        if (viewport()->isPanning())
            (void)QTest::qWaitFor([&] { return viewport()->position().y() != before; }, 100);
    }
    m_fingers->up(0);
}

void LibraryGesturesTest::longTap(const QString &second)
{
    m_fingers->down(0, onCell(2));
    secondFinger(second);
    QTRY_COMPARE(menu()->state(), toolkit::ObjectMenu::State::Shown);
    m_fingers->moveBy(0, QPoint(0, -100)); // over the rows of the menu, or beside it
    m_fingers->up(0);
}

QString LibraryGesturesTest::outcome()
{
    QStringList parts;
    for (const QString &title : std::as_const(m_played))
        parts.append(u"played "_s + title);
    if (menu()->state() == toolkit::ObjectMenu::State::Shown) {
        QSignalSpy details(f.page.get(), &LocalVideosPage::showDetailsPage);
        menu()->chooseEntry(0);
        parts.append(u"menu of "_s + details.value(0).value(0).toString());
    }
    if (viewport()->position().y() > 0)
        parts.append(u"scrolled"_s);
    if (f.field()->isVisible())
        parts.append(f.edit()->hasFocus() ? u"field with keyboard"_s : u"field"_s);
    return parts.join(u", "_s);
}

void LibraryGesturesTest::gesture_data()
{
    QTest::addColumn<QString>("gesture");
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("outcome");
    const QList<QPair<QString, QString>> gestures{{u"tap"_s, u"played video 02"_s},
                                                  {u"long tap"_s, u"menu of urn:uuid:3"_s},
                                                  {u"flick"_s, u"scrolled"_s},
                                                  {u"pull"_s, u"field"_s}};
    for (const auto &[gesture, outcome] : gestures) {
        for (const QString &second : {QString(), u"rests"_s, u"taps"_s, u"moves"_s}) {
            const QString what = second.isEmpty() ? u"one finger"_s : u"a second finger %1"_s.arg(second);
            QTest::addRow("%s, %s", qPrintable(gesture), qPrintable(what)) << gesture << second << outcome;
        }
    }
}

void LibraryGesturesTest::gesture()
{
    QFETCH(const QString, gesture);
    QFETCH(const QString, second);
    if (gesture == "tap"_L1) {
        m_fingers->down(0, onCell(2));
        secondFinger(second);
        m_fingers->up(0);
    } else if (gesture == "long tap"_L1) {
        longTap(second);
    } else if (gesture == "flick"_L1) {
        pan(onCell(4), -320, second);
        const qreal left = viewport()->position().y();
        QTRY_VERIFY(viewport()->position().y() > left + 80); // goes on alone
    } else {
        pan(onCell(0), 240, second);
    }
    if (m_fingers->isDown(1))
        m_fingers->up(1);
    QTRY_VERIFY(!viewport()->isPanning());
    QTEST(outcome(), "outcome");
    // The screen is free again.
    if (f.field()->isVisible())
        f.page->resetFilter();
    m_played.clear();
    viewport()->setPosition({});
    QTRY_VERIFY(onCell(1).y() > 0 && !f.field()->isVisible());
    QTRY_COMPARE(menu()->state(), toolkit::ObjectMenu::State::Hidden);
    m_fingers->down(0, onCell(1));
    m_fingers->up(0);
    QCOMPARE(m_played, QStringList(u"video 01"_s));
}

void LibraryGesturesTest::tapWhileTheSceneTurns_data()
{
    QTest::addColumn<QString>("second");
    QTest::newRow("one finger") << QString();
    QTest::newRow("a second finger leaves last") << u"rests"_s;
    QTest::newRow("a second finger leaves first") << u"taps"_s;
}

void LibraryGesturesTest::tapWhileTheSceneTurns()
{
    QFETCH(const QString, second);
    QVERIFY(becomesHandset());
    int angle = f.window.orientationAngle();
    bool tapped = false;
    // On a busy machine the turn may be over before the finger has left.
    for (int attempt = 0; attempt < 20 && !tapped; ++attempt) {
        angle = (angle + 90) % 360;
        QVERIFY(QTest::qWaitFor([this] { return !f.window.isTurning(); }));
        m_played.clear();
        f.window.setOrientationAngle(angle);
        const QPoint middle = f.window.viewport()->rect().center();
        m_fingers->down(0, middle);
        if (!second.isEmpty())
            m_fingers->down(1, middle + QPoint(90, 90));
        if (second == "taps"_L1)
            m_fingers->up(1);
        m_fingers->up(0);
        if (m_fingers->isDown(1))
            m_fingers->up(1);
        tapped = f.window.isTurning();
    }
    QVERIFY(tapped);
    QCOMPARE(m_played, QStringList());
    QTRY_VERIFY(!f.window.isTurning());
    QCOMPARE(m_played, QStringList());
}

// The scene turns about its middle, where the finger is: another video comes under it.
void LibraryGesturesTest::tapAcrossATurnIsNone()
{
    QVERIFY(becomesHandset());
    const QPoint middle = f.window.viewport()->rect().center();
    m_fingers->down(0, middle);
    f.window.setOrientationAngle(f.window.orientationAngle() + 90,
                                 toolkit::ApplicationWindow::Transition::Immediate);
    m_fingers->up(0);
    QVERIFY(!f.window.isTurning());
    QCOMPARE(m_played, QStringList());
    m_fingers->down(0, middle);
    m_fingers->up(0);
    QCOMPARE(m_played.size(), 1);
}

void LibraryGesturesTest::tapAfterATurnHitsWhatIsSeen()
{
    QVERIFY(becomesHandset());
    for (const int turn : {90, 180, 270, 0}) {
        f.window.setOrientationAngle(turn);
        QTRY_VERIFY(!f.window.isTurning());
        QTRY_VERIFY(f.window.viewport()->rect().contains(onCell(1)) && !onCell(1).isNull());
        m_played.clear();
        m_fingers->down(0, onCell(1));
        m_fingers->up(0);
        QCOMPARE(m_played, QStringList(u"video 01"_s));
    }
}

void LibraryGesturesTest::wheelBeyondTheTopBringsTheField_data()
{
    QTest::addColumn<bool>("reduced");
    QTest::newRow("motion") << false;
    QTest::newRow("reduced motion") << true;
}

void LibraryGesturesTest::wheelBeyondTheTopBringsTheField()
{
    QFETCH(const bool, reduced);
    toolkit::Theme::instance()->setReducedMotion(reduced);
    const QPointF at = onCell(2);
    QWheelEvent up(at, f.window.viewport()->mapToGlobal(at), QPoint(), QPoint(0, 120), Qt::NoButton,
                   Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(f.window.viewport(), &up);
    QTRY_VERIFY(f.field()->isVisible());
    QTRY_COMPARE(viewport()->position().y(), 0.0);
    QVERIFY(!f.edit()->hasFocus());
    QVERIFY(f.widget()->findChild<QTimer *>(u"filterTimer"_s)->isActive());
}

void LibraryGesturesTest::pullWithReducedMotionBringsTheField()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QList<qreal> positions;
    connect(viewport(), &toolkit::PannableViewport::positionChanged, this,
            [&positions](QPointF position) { positions.append(position.y()); });
    pan(onCell(0), 240, {});
    QCOMPARE(outcome(), u"field"_s);
    QCOMPARE(positions.count(0.0), 1); // told once, and back
    QCOMPARE(positions.size(), 2);
}

// A swipe that begins on a video and turns out to be for the compositor.
void LibraryGesturesTest::touchThatIsTakenAwayIsNoTap()
{
    const auto *item = qobject_cast<GridItemWidget *>(cell(2));
    QVERIFY(item);
    m_fingers->down(0, onCell(2));
    QVERIFY(item->model()->isDown());
    m_fingers->taken();
    QVERIFY(!item->model()->isDown());
    QCOMPARE(outcome(), QString());
    m_fingers->down(0, onCell(2));
    m_fingers->up(0);
    QCOMPARE(outcome(), u"played video 02"_s);
}

void LibraryGesturesTest::panThatIsTakenAwayEnds()
{
    m_fingers->down(0, onCell(4));
    m_fingers->moveBy(0, QPoint(0, -60));
    m_fingers->moveBy(0, QPoint(0, -60));
    QVERIFY(viewport()->isPanning());
    m_fingers->taken();
    QTRY_VERIFY(!viewport()->isPanning());
    QCOMPARE(m_played, QStringList());
}

void LibraryGesturesTest::tapOnAFilteredVideoLowersTheKeyboard()
{
    f.page->showTextEdit(u"07"_s, true);
    f.edit()->setFocus();
    QTRY_VERIFY(f.widget()->proxy()->rowCount() == 1 && cell(0)
                && cell(0)->sceneBoundingRect().top() >= f.field()->sceneBoundingRect().bottom());
    QSignalSpy gained(f.edit(), &toolkit::TextEdit::gainedFocus);
    m_fingers->down(0, onCell(0));
    m_fingers->up(0);
    QCOMPARE(outcome(), u"played video 07"_s);
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.edit()->hasFocus() && f.widget()->list()->hasFocus());
    QCOMPARE(gained.count(), 0);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    LibraryGesturesTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_librarygestures.moc"
