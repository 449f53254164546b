// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_windowfixture.h"

#include "platform/toolkit/action.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/sheetheader.h"

#include <QAnimationDriver>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;

namespace {

// The clock of all animations, which goes only when it is told to.
class DrivenAnimations : public QAnimationDriver
{
public:
    DrivenAnimations() { install(); }
    ~DrivenAnimations() override { uninstall(); }
    qint64 elapsed() const override { return m_elapsed; }
    void start() override
    {
        m_elapsed = 0;
        QAnimationDriver::start();
    }
    void step(int milliseconds)
    {
        m_elapsed += milliseconds;
        advance();
        QCoreApplication::processEvents();
    }

private:
    qint64 m_elapsed = 0;
};

} // namespace

// How long pages, sheets, dialogs and menus are on their way, by the animations' own clock.
class TransitionTest : public QObject, private WindowFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void areSeenAndNotWaitedFor_data();
    void areSeenAndNotWaitedFor();
    void tapOnAPageThatComesReachesIt();
    void tapEndsASheetThatRises_data();
    void tapEndsASheetThatRises();
    void tapAnswersADialogThatComes();
    void tapChoosesFromAMenuThatComes();
    void tapBesideClosesAMenuThatComes();

private:
    void tap(const QPointF &scene)
    {
        QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, m_window->mapFromScene(scene));
    }
    static QPointF middleOf(const QGraphicsItem *item) { return item->sceneBoundingRect().center(); }
    // In the middle of its way.
    static void halfWay(DrivenAnimations &clock)
    {
        for (int frame = 0; frame < 8; ++frame)
            clock.step(12);
    }
    // Milliseconds until the signal; -1 when it does not come within a second.
    static int timeUntil(DrivenAnimations &clock, const QSignalSpy &arrived)
    {
        for (int time = 0; time <= 1000; time += 10) {
            if (arrived.count() > 0)
                return time;
            clock.step(10);
        }
        return -1;
    }
    template <typename Item>
    QList<int> thereAndBack(Item &item, const std::function<void()> &appear,
                            const std::function<void()> &disappear)
    {
        DrivenAnimations clock;
        const QSignalSpy appeared(&item, &Item::appeared);
        const QSignalSpy disappeared(&item, &Item::disappeared);
        appear();
        const int there = timeUntil(clock, appeared);
        QCoreApplication::processEvents(); // a clock that goes on while nothing moves would be behind
        disappear();
        return {there, timeUntil(clock, disappeared)};
    }
    QList<int> times(const QString &what);
};

QList<int> TransitionTest::times(const QString &what)
{
    ApplicationWindow *window = m_window.get();
    if (what == "page"_L1) {
        ApplicationPage page;
        return thereAndBack(
            page, [&] { page.appear(window); }, [&] { page.dismiss(); });
    }
    if (what == "sheet"_L1) {
        Sheet sheet;
        sheet.setCentralWidget(new Label(u"Text"_s));
        return thereAndBack(
            sheet, [&] { sheet.appear(window); }, [&] { sheet.reject(); });
    }
    if (what == "dialog"_L1) {
        QueryDialog dialog;
        dialog.setText(u"Text"_s);
        return thereAndBack(
            dialog, [&] { dialog.appear(window); }, [&] { dialog.reject(); });
    }
    ObjectMenu menu;
    Action action;
    action.setText(u"Details"_s);
    menu.addAction(&action);
    return thereAndBack(
        menu, [&] { menu.appear(window); }, [&] { menu.disappear(); });
}

void TransitionTest::areSeenAndNotWaitedFor_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"page", "sheet", "dialog", "menu"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void TransitionTest::areSeenAndNotWaitedFor()
{
    QFETCH(const QString, what);
    show(ApplicationWindow::Profile::Desktop);
    for (const int time : times(what))
        QVERIFY2(time >= 150 && time <= 250, qPrintable(QString::number(time)));
    setReducedMotion(true);
    QCOMPARE(times(what), QList<int>({0, 0}));
}

void TransitionTest::tapOnAPageThatComesReachesIt()
{
    show(ApplicationWindow::Profile::Desktop);
    ApplicationPage page;
    auto *button = new Button(u"Play"_s, page.centralWidget());
    button->setGeometry(QRectF(0, 100, 100, 60));
    const QSignalSpy clicked(button, &Button::clicked);
    DrivenAnimations clock;
    page.appear(m_window.get());
    halfWay(clock);
    QVERIFY(page.x() > 10);
    tap(middleOf(button));
    QCOMPARE(clicked.size(), 1);
    page.dismiss(Appearance::Immediate);
}

void TransitionTest::tapEndsASheetThatRises_data()
{
    QTest::addColumn<bool>("beside");
    QTest::newRow("on its action") << false;
    QTest::newRow("beside it") << true;
}

void TransitionTest::tapEndsASheetThatRises()
{
    QFETCH(const bool, beside);
    show(ApplicationWindow::Profile::Desktop);
    Sheet sheet;
    sheet.setNegativeAction(u"Cancel"_s);
    sheet.setCentralWidget(new Label(u"Text"_s));
    const QSignalSpy appeared(&sheet, &Sheet::appeared);
    const QSignalSpy rejected(&sheet, &Sheet::rejected);
    const QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    DrivenAnimations clock;
    sheet.appear(m_window.get());
    halfWay(clock);
    tap(beside ? QPointF(200, 100) : middleOf(sheet.header()->negativeButton()));
    QCOMPARE(rejected.size(), 1);
    QVERIFY(timeUntil(clock, disappeared) > 0);
    QCOMPARE(appeared.size(), 0);
}

void TransitionTest::tapAnswersADialogThatComes()
{
    show(ApplicationWindow::Profile::Desktop);
    QueryDialog dialog;
    dialog.setText(u"Text"_s);
    const QSignalSpy accepted(&dialog, &QueryDialog::accepted);
    DrivenAnimations clock;
    dialog.appear(m_window.get());
    halfWay(clock);
    tap(middleOf(dialog.button(QueryDialog::Yes)));
    QCOMPARE(accepted.size(), 1);
}

void TransitionTest::tapChoosesFromAMenuThatComes()
{
    show(ApplicationWindow::Profile::Desktop);
    ObjectMenu menu;
    Action action;
    action.setText(u"Details"_s);
    menu.addAction(&action);
    menu.setCursorPosition({100, 300});
    const QSignalSpy triggered(&action, &Action::triggered);
    DrivenAnimations clock;
    menu.appear(m_window.get());
    halfWay(clock);
    QCOMPARE(menu.state(), ObjectMenu::State::Appearing);
    tap(menu.mapToScene(menu.entryRect(0).center()));
    QCOMPARE(triggered.size(), 1);
}

void TransitionTest::tapBesideClosesAMenuThatComes()
{
    show(ApplicationWindow::Profile::Desktop);
    ObjectMenu menu;
    Action action;
    action.setText(u"Details"_s);
    menu.addAction(&action);
    menu.setCursorPosition({100, 300});
    DrivenAnimations clock;
    menu.appear(m_window.get());
    halfWay(clock);
    tap({30, 30});
    QCOMPARE(menu.state(), ObjectMenu::State::Disappearing);
}

KESTREL_TOOLKIT_TEST_MAIN(TransitionTest)
#include "core_transitiontest.moc"
