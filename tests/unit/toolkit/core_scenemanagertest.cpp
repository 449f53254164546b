// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_support.h"

#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/pannableviewport.h"

#include <QGraphicsScene>
#include <QSignalSpy>
#include <QVariantAnimation>
#include <QTest>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;

namespace {

// Counts what a page hears.
class Page : public ApplicationPage
{
public:
    explicit Page(const QString &name, QStringList *log = nullptr) : m_log(log)
    {
        setObjectName(name);
        connect(this, &ApplicationPage::appeared, this, [this] { note(u"appeared"_s); });
        connect(this, &ApplicationPage::disappeared, this, [this] { note(u"disappeared"_s); });
    }

    int contents = 0;
    QList<QEvent::Type> events;

protected:
    void createContent() override { ++contents; }
    bool event(QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::WindowBlocked:
        case QEvent::WindowUnblocked:
        case QEvent::WindowActivate:
        case QEvent::WindowDeactivate:
            events.append(event->type());
            break;
        default:
            break;
        }
        return ApplicationPage::event(event);
    }

private:
    void note(const QString &what)
    {
        if (m_log != nullptr)
            m_log->append(objectName() + u' ' + what);
    }
    QStringList *m_log;
};

} // namespace

class SceneManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void contentIsMadeAtTheFirstAppearance();
    void coveredPagesAreHidden();
    void appearingAPageOfTheHistoryMovesItToTheTop();
    void appearingThePageOnTopDoesNothing();
    void theLastPageIsNeverDismissed();
    void dismissingAPageBelowOnlyTakesItOut();
    void slideEndsAtItsPlace();
    void slideIsInterruptedByTheNext();
    void backDuringASlideGoesOnFromWhereItIsSeen();
    void slideTakesAQuarterOfASecond();
    void tapOnAPageThatSlidesInTakesItBack();
    void motionIsReducedFromTheNextPageOn();
    void pageOnItsWayOutTakesNoPress();
    void windowIsNamedAfterThePage();
    void noSlideWithReducedMotion();
    void pageDeletedInMidSlide();
    void pageOnTopDeleted();
    void pagesOutliveTheWindow();
    void widgetsOfThePageEnterAndLeaveTheDisplay();
    void overlayCoversAndUncovers();
    void pageAppearsOverTheOverlay();
    void menusBlockThePageOnTop();
    void focusComesBackWithThePage();
    void focusDoesNotGoOnToTheNextPage();
    void pagesAreMirrored();

private:
    std::unique_ptr<ApplicationWindow> m_window;
    SceneManager *m_manager = nullptr;
};

void SceneManagerTest::init()
{
    m_window = shownWindow(ApplicationWindow::Profile::Desktop);
    m_manager = m_window->sceneManager();
}

void SceneManagerTest::cleanup()
{
    m_window.reset();
    setReducedMotion(false);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

void SceneManagerTest::contentIsMadeAtTheFirstAppearance()
{
    Page page(u"a"_s);
    QCOMPARE(page.contents, 0);
    page.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(page.contents, 1);
    Page other(u"b"_s);
    other.appear(m_window.get(), Appearance::Immediate);
    other.dismiss(Appearance::Immediate);
    page.appear(m_window.get());
    QCOMPARE(page.contents, 1);
}

void SceneManagerTest::coveredPagesAreHidden()
{
    QStringList log;
    Page a(u"a"_s, &log);
    Page b(u"b"_s, &log);
    a.appear(m_window.get(), Appearance::Immediate);
    QVERIFY(a.isShown());
    QCOMPARE(a.size(), m_window->logicalSize());
    b.appear(m_window.get(), Appearance::Immediate);
    QVERIFY(!a.isVisible());
    QVERIFY(!a.isShown());
    QVERIFY(b.isVisible());
    QCOMPARE(m_manager->currentPage(), &b);
    b.dismiss(Appearance::Immediate);
    QVERIFY(a.isVisible());
    QVERIFY(!b.isVisible());
    QCOMPARE(log.join(u", "_s), u"a appeared, a disappeared, b appeared, b disappeared, a appeared"_s);
}

void SceneManagerTest::appearingAPageOfTheHistoryMovesItToTheTop()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    Page c(u"c"_s);
    for (Page *page : {&a, &b, &c})
        page->appear(m_window.get(), Appearance::Immediate);
    a.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(m_manager->history(), (QList<ApplicationPage *>{&b, &c, &a}));
    QVERIFY(a.isVisible());
    QVERIFY(!c.isVisible());
    QCOMPARE(a.pos(), QPointF());
}

void SceneManagerTest::appearingThePageOnTopDoesNothing()
{
    Page a(u"a"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    QSignalSpy appeared(&a, &ApplicationPage::appeared);
    QSignalSpy changed(m_window.get(), &ApplicationWindow::pageChanged);
    a.appear(m_window.get());
    QCOMPARE(appeared.size() + changed.size(), 0);
    QCOMPARE(m_manager->history().size(), 1);
}

void SceneManagerTest::theLastPageIsNeverDismissed()
{
    Page a(u"a"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    QSignalSpy disappeared(&a, &ApplicationPage::disappeared);
    a.dismiss();
    a.dismiss(Appearance::Immediate);
    QCOMPARE(m_manager->currentPage(), &a);
    QVERIFY(a.isVisible());
    QCOMPARE(disappeared.size(), 0);
}

void SceneManagerTest::dismissingAPageBelowOnlyTakesItOut()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get(), Appearance::Immediate);
    QSignalSpy changed(m_window.get(), &ApplicationWindow::pageChanged);
    a.dismiss();
    QCOMPARE(m_manager->history(), QList<ApplicationPage *>{&b});
    QVERIFY(b.isVisible());
    QCOMPARE(changed.size(), 0);
}

void SceneManagerTest::slideEndsAtItsPlace()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    QSignalSpy appeared(&b, &ApplicationPage::appeared);
    b.appear(m_window.get());
    QVERIFY(m_manager->isInTransition());
    QVERIFY(b.isShown());
    QVERIFY(b.isOnDisplay());
    QVERIFY(a.isVisible()); // until it is covered
    QVERIFY(b.x() > 0);
    QVERIFY(appeared.wait(TestPatience));
    QVERIFY(!m_manager->isInTransition());
    QCOMPARE(b.pos(), QPointF());
    QVERIFY(!a.isVisible());
}

void SceneManagerTest::slideIsInterruptedByTheNext()
{
    QStringList log;
    Page a(u"a"_s, &log);
    Page b(u"b"_s, &log);
    Page c(u"c"_s, &log);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    c.appear(m_window.get());
    QVERIFY(!a.isVisible());
    QVERIFY(b.isVisible());
    QTRY_VERIFY(!m_manager->isInTransition());
    QVERIFY(!b.isVisible());
    QCOMPARE(c.pos(), QPointF());
    QCOMPARE(log.join(u", "_s), u"a appeared, a disappeared, b appeared, b disappeared, c appeared"_s);
}

void SceneManagerTest::backDuringASlideGoesOnFromWhereItIsSeen()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    QTRY_VERIFY(b.x() < m_window->logicalSize().width() * 0.8);
    const qreal seenA = a.x();
    const qreal seenB = b.x();
    QVERIFY(m_manager->isInTransition());
    b.dismiss();
    QCOMPARE(a.x(), seenA);
    QCOMPARE(b.x(), seenB);
    QTRY_VERIFY(!m_manager->isInTransition());
    QCOMPARE(a.pos(), QPointF());
    QVERIFY(a.isVisible());
    QVERIFY(!b.isVisible());
}

// Long enough to be understood, short enough not to be waited for.
void SceneManagerTest::slideTakesAQuarterOfASecond()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    const auto *slide = m_manager->findChild<QVariantAnimation *>(u"slide"_s);
    QVERIFY(slide != nullptr);
    QCOMPARE(slide->state(), QAbstractAnimation::Running);
    QVERIFY(slide->totalDuration() >= 150 && slide->totalDuration() <= 250);
}

// The wrong video: the way back is tapped before the page has come to rest.
void SceneManagerTest::tapOnAPageThatSlidesInTakesItBack()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    QTRY_VERIFY(b.x() < m_window->logicalSize().width() * 0.8);
    const QPoint backMark = m_window->mapFromScene(b.mapToScene(QPointF(32, 38)));
    QVERIFY(m_manager->isInTransition());
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, backMark);
    QCOMPARE(m_manager->currentPage(), &a);
    QTRY_VERIFY(!m_manager->isInTransition());
    QCOMPARE(a.pos(), QPointF());
    QVERIFY(!b.isVisible());
}

void SceneManagerTest::motionIsReducedFromTheNextPageOn()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    Page c(u"c"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    QVERIFY(m_manager->isInTransition());
    setReducedMotion(true);
    c.appear(m_window.get());
    QVERIFY(!m_manager->isInTransition());
    QCOMPARE(c.pos(), QPointF());
    setReducedMotion(false);
    c.dismiss();
    QVERIFY(m_manager->isInTransition());
}

// A second tap on the list, while the page that the first one opened slides in, opens nothing.
void SceneManagerTest::pageOnItsWayOutTakesNoPress()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    QVERIFY(m_manager->takesPress({100, 100}));
    b.appear(m_window.get());
    QVERIFY(!m_manager->takesPress({1, 100}));
    QVERIFY(m_manager->takesPress({m_window->logicalSize().width() + 1, 100})); // where it comes in
    QTRY_VERIFY(!m_manager->isInTransition());
    QVERIFY(m_manager->takesPress({1, 100}));
    b.dismiss();
    QVERIFY(!m_manager->takesPress({200, 100}));
    QTRY_VERIFY(!m_manager->isInTransition());
    QVERIFY(m_manager->takesPress({200, 100}));
}

void SceneManagerTest::windowIsNamedAfterThePage()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.setTitle(u"Videos"_s);
    b.setTitle(u"Details"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(m_window->windowTitle(), u"Videos"_s);
    b.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(m_window->windowTitle(), u"Details"_s);
    a.setTitle(u"All videos"_s);
    b.dismiss(Appearance::Immediate);
    QCOMPARE(m_window->windowTitle(), u"All videos"_s);
    a.setTitle(u"Clips"_s);
    QCOMPARE(m_window->windowTitle(), u"Clips"_s);
}

void SceneManagerTest::noSlideWithReducedMotion()
{
    setReducedMotion(true);
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    QVERIFY(!m_manager->isInTransition());
    QCOMPARE(b.pos(), QPointF());
    QVERIFY(!a.isVisible());
}

void SceneManagerTest::pageDeletedInMidSlide()
{
    Page a(u"a"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    auto b = std::make_unique<Page>(u"b"_s);
    b->appear(m_window.get());
    b->dismiss();
    QVERIFY(m_manager->isInTransition());
    b.reset();
    QTRY_VERIFY(!m_manager->isInTransition());
    QVERIFY(a.isVisible());
    QCOMPARE(m_manager->history(), QList<ApplicationPage *>{&a});
}

void SceneManagerTest::pageOnTopDeleted()
{
    Page a(u"a"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    auto b = std::make_unique<Page>(u"b"_s);
    b->appear(m_window.get(), Appearance::Immediate);
    QSignalSpy appeared(&a, &ApplicationPage::appeared);
    b.reset();
    QCOMPARE(m_manager->currentPage(), &a);
    QVERIFY(a.isVisible());
    QVERIFY(a.isOnDisplay());
    QCOMPARE(appeared.size(), 1);
}

void SceneManagerTest::pagesOutliveTheWindow()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    b.appear(m_window.get());
    m_window.reset();
    QCOMPARE(a.scene(), nullptr);
    QCOMPARE(b.scene(), nullptr);
    QVERIFY(!b.isOnDisplay());
    b.dismiss(); // nowhere to be dismissed from: nothing happens
}

void SceneManagerTest::widgetsOfThePageEnterAndLeaveTheDisplay()
{
    Page a(u"a"_s);
    auto *shown = new Widget(a.centralWidget());
    auto *hidden = new Widget(a.centralWidget());
    hidden->hide();
    QSignalSpy entered(shown, &Widget::displayEntered);
    QSignalSpy left(shown, &Widget::displayExited);
    QSignalSpy hiddenEntered(hidden, &Widget::displayEntered);
    a.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(entered.size(), 1);
    QCOMPARE(hiddenEntered.size(), 0);
    hidden->show();
    QCOMPARE(hiddenEntered.size(), 1);

    Page b(u"b"_s);
    b.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(left.size(), 1);
    b.dismiss(Appearance::Immediate);
    QCOMPARE(entered.size(), 2);
    m_window->hide();
    QCOMPARE(left.size(), 2);
    QVERIFY(!shown->isOnDisplay());
    m_window->showForProfile();
    QTRY_COMPARE(entered.size(), 3);
}

void SceneManagerTest::overlayCoversAndUncovers()
{
    QStringList log;
    Page a(u"a"_s, &log);
    Page card(u"card"_s, &log);
    a.appear(m_window.get(), Appearance::Immediate);
    m_manager->showOverlayPage(&card);
    m_manager->showOverlayPage(&card); // told twice
    QVERIFY(card.isVisible());
    QVERIFY(!a.isVisible());
    QCOMPARE(m_manager->currentPage(), &a);
    QCOMPARE(m_manager->visiblePage(), &card);
    m_manager->hideOverlayPage(&card);
    m_manager->hideOverlayPage(&card);
    QVERIFY(a.isVisible());
    QVERIFY(!card.isVisible());
    QCOMPARE(log.join(u", "_s), u"a appeared, a disappeared, card appeared, card disappeared, a appeared"_s);
}

// A stream may play while the card is away; leaving it shows again that the card is.
void SceneManagerTest::pageAppearsOverTheOverlay()
{
    Page a(u"a"_s);
    Page player(u"player"_s);
    Page card(u"card"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    m_manager->showOverlayPage(&card);
    player.appear(m_window.get(), Appearance::Immediate);
    QVERIFY(player.isVisible());
    QVERIFY(!card.isVisible());
    player.dismiss();
    QVERIFY(card.isVisible());
    QVERIFY(!a.isVisible());
    QVERIFY(!player.isVisible());
    m_manager->hideOverlayPage(&card);
    QVERIFY(a.isVisible());
}

void SceneManagerTest::menusBlockThePageOnTop()
{
    Page a(u"a"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    a.events.clear();
    m_manager->block();
    m_manager->block(); // a dialog over a menu
    m_manager->unblock();
    QVERIFY(m_manager->isBlocked());
    m_manager->unblock();
    m_manager->unblock();
    QCOMPARE(a.events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
    QVERIFY(!m_manager->isBlocked());
}

void SceneManagerTest::focusComesBackWithThePage()
{
    m_window->activateWindow();
    QTRY_VERIFY(m_window->isActiveWindow());
    Page a(u"a"_s);
    auto *field = new Widget(a.centralWidget());
    field->setFlag(QGraphicsItem::ItemIsFocusable);
    a.appear(m_window.get(), Appearance::Immediate);
    field->setFocus();
    QCOMPARE(m_window->scene()->focusItem(), field);
    Page b(u"b"_s);
    b.appear(m_window.get(), Appearance::Immediate);
    QVERIFY(m_window->scene()->focusItem() != field);
    b.dismiss(Appearance::Immediate);
    QCOMPARE(m_window->scene()->focusItem(), field);
}

// “I tapped on a video's details with my finger, and one of the buttons there has the keyboard's ring.”
void SceneManagerTest::focusDoesNotGoOnToTheNextPage()
{
    m_window->activateWindow();
    QTRY_VERIFY(m_window->isActiveWindow());
    Page a(u"a"_s);
    Page b(u"b"_s);
    const auto field = [](const Page &page) {
        auto *widget = new Widget(page.centralWidget());
        widget->setFocusPolicy(Qt::TabFocus);
        return widget;
    };
    Widget *const fieldOfA = field(a);
    Widget *const fieldOfB = field(b);
    a.appear(m_window.get(), Appearance::Immediate);
    fieldOfA->setFocus(Qt::OtherFocusReason);
    b.appear(m_window.get(), Appearance::Immediate);
    QCOMPARE(m_window->scene()->focusItem(), nullptr);
    fieldOfB->setFocus(Qt::TabFocusReason);
    b.dismiss(Appearance::Immediate);
    QCOMPARE(m_window->scene()->focusItem(), fieldOfA);
}

void SceneManagerTest::pagesAreMirrored()
{
    Page a(u"a"_s);
    Page b(u"b"_s);
    a.appear(m_window.get(), Appearance::Immediate);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(a.layoutDirection(), Qt::RightToLeft);
    b.appear(m_window.get());
    QVERIFY(b.x() < 0);
    QTRY_COMPARE(b.x(), 0.0);
}

KESTREL_TOOLKIT_TEST_MAIN(SceneManagerTest)
#include "core_scenemanagertest.moc"
