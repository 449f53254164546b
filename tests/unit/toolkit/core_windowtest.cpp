// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_windowfixture.h"

#include "platform/toolkit/application.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/windowgeometry.h"

#include <QAction>
#include <QGuiApplication>
#include <QScreen>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;
using Profile = ApplicationWindow::Profile;

class WindowTest : public QObject, private WindowFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void oneActiveWindow();
    void profileOfTheEnvironment();
    void handsetFillsTheScreen();
    void desktopBeginsAsAHandsetsScreen();
    void desktopLaysOutForItsShape();
    void showNormalReturnsToTheProfile();

    void headerByStyleAndTitle();
    void backMarkOfTheHeader();
    void menuBlocksAndTriggers();
    void backClosesTheMenu();
    void newestBannerWins();
    void bannerIsNoWiderThanItsText();
    void bannerIsDarkOnADarkPage();
    void dismissedBannerIsDeleted();
};

void WindowTest::oneActiveWindow()
{
    QCOMPARE(Application::activeApplicationWindow(), nullptr);
    ApplicationWindow window;
    QCOMPARE(Application::activeApplicationWindow(), &window); // before it is shown, and without the focus
}

void WindowTest::profileOfTheEnvironment()
{
    qputenv("KESTREL_PROFILE", "handset");
    QCOMPARE(ApplicationWindow().profile(), Profile::Handset);
    qputenv("KESTREL_PROFILE", "desktop");
    QCOMPARE(ApplicationWindow().profile(), Profile::Desktop);
    ApplicationWindow window;
    window.setProfile(Profile::Handset);
    QCOMPARE(window.profile(), Profile::Desktop); // one run against the settings
    qunsetenv("KESTREL_PROFILE");
    QCOMPARE(ApplicationWindow().profile(), profileForScreen(QGuiApplication::primaryScreen()->size()));
}

void WindowTest::handsetFillsTheScreen()
{
    show(Profile::Handset);
    QTRY_COMPARE(m_window->size(), m_window->screen()->size());
    QVERIFY(m_window->isFullScreen());
    QCOMPARE(qMin(m_window->logicalSize().width(), m_window->logicalSize().height()), 480.0);
    QCOMPARE(m_page->size(), m_window->logicalSize());
}

void WindowTest::desktopBeginsAsAHandsetsScreen()
{
    ApplicationWindow window;
    window.setProfile(Profile::Desktop);
    const QSize room = window.screen()->availableSize();
    if (room.height() >= 920 && room.width() >= 480)
        QCOMPARE(window.size(), QSize(480, 854));
    else
        QVERIFY(window.height() < room.height() && window.width() <= 480);
    QVERIFY(!window.isFullScreen());
}

void WindowTest::desktopLaysOutForItsShape()
{
    show(Profile::Desktop);
    QSignalSpy changed(m_window.get(), &ApplicationWindow::orientationChanged);
    m_window->resize(470, 400);
    QTRY_COMPARE(m_window->orientation(), Qt::Horizontal);
    QCOMPARE(changed.last().first().value<Qt::Orientation>(), Qt::Horizontal);
    QTRY_COMPARE(m_page->size(), m_window->logicalSize());
    m_window->resize(400, 600);
    QTRY_COMPARE(m_window->orientation(), Qt::Vertical);
}

void WindowTest::showNormalReturnsToTheProfile()
{
    show(Profile::Handset);
    m_window->showNormal();
    QVERIFY(m_window->isFullScreen());
    m_window->setProfile(Profile::Desktop);
    QTRY_VERIFY(!m_window->isFullScreen());
    m_window->showFullScreen(); // only the person does that on a desktop
    QVERIFY(!m_window->isFullScreen());
    QTest::keyClick(m_window.get(), Qt::Key_F11);
    QTRY_VERIFY(m_window->isFullScreen());
    m_window->raiseToFront();
    QVERIFY(m_window->isFullScreen());
    QTest::keyClick(m_window.get(), Qt::Key_F11);
    QTRY_VERIFY(!m_window->isFullScreen());
}

void WindowTest::headerByStyleAndTitle()
{
    show(Profile::Desktop);
    m_page->setStyleName(u"VideoApplicationPage"_s);
    QCOMPARE(m_page->pannableViewport()->y(), 0.0); // no title yet
    m_page->setTitle(u"Videos"_s);
    QCOMPARE(m_page->pannableViewport()->y(), 76.0);
    QCOMPARE(m_page->pannableViewport()->size().height(), m_page->size().height() - 76);
    m_page->setStyleName(u"KestrelPlayerPage"_s);
    QCOMPARE(m_page->pannableViewport()->y(), 0.0);
    QCOMPARE(m_page->title(), u"Videos"_s);
}

void WindowTest::backMarkOfTheHeader()
{
    show(Profile::Desktop);
    Page details;
    details.setTitle(u"Details"_s);
    details.appear(m_window.get(), Appearance::Immediate);
    QSignalSpy back(&details, &ApplicationPage::backButtonClicked);
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, {30, 38});
    QCOMPARE(back.size(), 1);
    details.setComponentsDisplay(ApplicationPage::AllComponents, ApplicationPage::ComponentDisplay::Hide);
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, {30, 38});
    QCOMPARE(back.size(), 1);
}

void WindowTest::menuBlocksAndTriggers()
{
    show(Profile::Desktop);
    m_window->openMenu();
    QVERIFY(!m_window->isMenuOpen()); // no actions, no menu
    QAction share(u"Share"_s);
    m_page->addAction(&share);
    m_page->events.clear();
    QStringList log;
    connect(&share, &QAction::triggered, this, [&] {
        log.append(m_page->events.contains(QEvent::WindowUnblocked) ? u"late"_s : u"triggered"_s);
    });
    m_window->openMenu();
    QVERIFY(m_window->isMenuOpen());
    QCOMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowBlocked});
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(!m_window->isMenuOpen());
    QCOMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
    QVERIFY(log.isEmpty());
    m_page->events.clear();
    m_window->openMenu();
    // The first row lies below the bar, at the end of the line.
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, {m_window->width() - 100, 76 + 30});
    QCOMPARE(log, QStringList{u"triggered"_s});
    QVERIFY(!m_window->isMenuOpen());
    QCOMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
    QVERIFY(m_window->isVisible());
}

void WindowTest::backClosesTheMenu()
{
    show(Profile::Desktop);
    QAction share(u"Share"_s);
    m_page->addAction(&share);
    m_window->openMenu();
    QTest::mouseClick(m_window->viewport(), Qt::BackButton, {}, {200, 200});
    QVERIFY(!m_window->isMenuOpen());
    QVERIFY(m_window->isVisible());
    m_window->openMenu();
    m_window->closeMenu();
    QVERIFY(!m_window->isMenuOpen());
    QVERIFY(!m_window->sceneManager()->isBlocked());
}

void WindowTest::newestBannerWins()
{
    show(Profile::Desktop);
    const QPointer<Banner> first(new Banner);
    first->setTitle(u"The video cannot be played"_s);
    first->appear(m_window.get());
    QVERIFY(first->isVisible());
    QVERIFY(first->isOnDisplay());
    const QRectF scene(QPointF(), m_window->logicalSize());
    QVERIFY(scene.contains(first->mapRectToScene(first->rect())));
    const QPointer<Banner> second(new Banner);
    second->setTitle(u"Another one, with a text that is long enough to need more than a single line of it"_s);
    second->appear(m_window.get());
    QVERIFY(!first->isVisible());
    QTRY_VERIFY(first == nullptr);
    QVERIFY(scene.contains(second->mapRectToScene(second->rect())));
}

void WindowTest::bannerIsNoWiderThanItsText()
{
    show(Profile::Desktop);
    m_window->resize(1200, 720);
    const QPointer<Banner> brief(new Banner);
    brief->setTitle(u"Copied"_s);
    brief->appear(m_window.get());
    QVERIFY(brief->size().width() < 260);
    QCOMPARE(brief->geometry().center().x(), m_window->logicalSize().width() / 2);
    const QPointer<Banner> wordy(new Banner);
    wordy->setTitle(u"Another one, with a text that is long enough to need more than a single line of it"_s);
    wordy->appear(m_window.get());
    QCOMPARE(wordy->size().width(), wordy->style().number(u"maximumMeasure"_s));
    QVERIFY(wordy->size().height() > brief->size().height());
}

void WindowTest::bannerIsDarkOnADarkPage()
{
    const auto asBefore = qScopeGuard([] { toolkit::Theme::instance()->setDark(true); });
    toolkit::Theme::instance()->setDark(false);
    show(Profile::Desktop);
    const auto ground = [this] {
        auto *banner = new Banner;
        banner->setStyleName(u"SystemBanner"_s);
        banner->setTitle(u"The video cannot be played"_s);
        banner->appear(m_window.get());
        return banner->style().color(u"background"_s).lightness();
    };
    QVERIFY(ground() > 200);
    m_page->setStyleName(u"KestrelPlayerPage"_s);
    QVERIFY(ground() < 60);
}

void WindowTest::dismissedBannerIsDeleted()
{
    show(Profile::Desktop);
    const QPointer<Banner> banner(new Banner);
    banner->setTitle(u"Tap me"_s);
    banner->appear(m_window.get());
    const QPointF at = m_window->viewportTransform().map(banner->mapToScene(banner->rect().center()));
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, at.toPoint());
    QTRY_VERIFY(banner == nullptr);
}

KESTREL_TOOLKIT_TEST_MAIN(WindowTest)
#include "core_windowtest.moc"
