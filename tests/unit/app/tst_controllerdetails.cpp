// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "details/extensionpage.h"
#include "details/previewwidget.h"
#include "details/videodetailscontainer.h"
#include "platform/extensions/extensionarea.h"
#include "platform/extensions/extensionfailures.h"
#include "platform/media/videowidget.h"
#include "platform/system/settingsmanager.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/theme.h"
#include "player/navigationbarwidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "unit/extensions/extensionplaces.h"

#include <QGraphicsWidget>
#include <QPointer>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QGraphicsItem *itemNamed(const QString &name, const QGraphicsItem *under)
{
    for (QGraphicsItem *item : under->childItems()) {
        if (item->toGraphicsObject() && item->toGraphicsObject()->objectName() == name)
            return item;
        if (QGraphicsItem *found = itemNamed(name, item))
            return found;
    }
    return nullptr;
}

} // namespace

// The roads to details, to an extension's own page and back, and sharing.
class ControllerDetailsTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup();
    void thePlayerOffersTheDetails();
    void detailsOfAStreamKeepWhatWasShown();
    void detailsOfAVideoInTheLibrary();
    void backFromDetailsGoesOnPlaying();
    void backFromDetailsOfTheLibraryLeadsThere();
    void keysGoToThePlayerAgainAfterDetails();
    void extensionPlaysAndBackLeadsToTheLibrary();
    void extensionPlaysFromItsOwnPage();
    void extensionPageIsDeletedWhenItIsLeft();
    void extensionWidgetOutlivesItsPage();
    void extensionPageWithoutItsWidgetIsLeft();
    void coveredExtensionPageWithoutItsWidgetIsLeft();
    void extensionPageLooksAsTheProgramDoes();
    void busRequestLeavesDetailsAndExtensionPages();
    void newStillReachesTheDetails();
    void settingLoadsAndUnloadsExtensions();
    void pageThatAsksCountsInGoingBack();
    void shareGivesADecodedAddress_data();
    void shareGivesADecodedAddress();
    void shareServiceIsMadeAtStartOnlyWithoutTheServiceFramework();

private:
    void playing(int number = 1)
    {
        tap(video(number));
        QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    }
    void setOnlineContent(int mode)
    {
        SettingsValues values;
        values.onlineContentMode = mode;
        SettingsManager::instance()->setOverride(values);
    }
    [[nodiscard]] bool isInformationOffered() const
    {
        const QGraphicsItem *button = itemNamed(u"InfoButton"_s, player());
        return button && button->isVisibleTo(button->parentItem());
    }
    [[nodiscard]] ExtensionPage *extensionPage() const
    {
        return qobject_cast<ExtensionPage *>(m_controller->pageStack().last());
    }
    [[nodiscard]] QString visible() const
    {
        const toolkit::ApplicationPage *page = m_window.sceneManager()->visiblePage();
        return page == library() ? u"library"_s : page == player() ? u"player"_s : u"other"_s;
    }
};

void ControllerDetailsTest::cleanup()
{
    clean();
    SettingsManager::instance()->setOverride(SettingsValues());
}

void ControllerDetailsTest::thePlayerOffersTheDetails()
{
    start();
    playing();
    QVERIFY(isInformationOffered());
    player()->setControlsEnabled(true);
    Q_EMIT player()->showDetailsPage();
    QCOMPARE(stack(), u"library player details"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), details());
    QCOMPARE(detailsAskedFor(), QStringList(u"urn:uuid:1"_s));
    QVERIFY(backend()->commands().contains(u"pause"_s));
    QVERIFY(!player()->navigationBar()->isEnabled());
    const DetailsPage *made = m_controller->detailsPage();
    m_controller->createDetailsPage(); // one for all times
    QCOMPARE(m_controller->detailsPage(), made);
}

void ControllerDetailsTest::detailsOfAStreamKeepWhatWasShown()
{
    start();
    VideoInfo stream;
    stream.url = u"http://host/a.mp4"_s;
    m_controller->play(stream);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    expect("void ApplicationController::showDetails() Details cannot be shown for streams");
    m_controller->showDetails();
    QCOMPARE(stack(), u"library player details"_s);
    QCOMPARE(detailsAskedFor(), QStringList());
    // Nothing was shown before: the page says so and is not blank.
    QTRY_COMPARE(details()->preview()->detailsContainer()->labels().size(), 1);
    QVERIFY(backend()->commands().contains(u"pause"_s));
}

void ControllerDetailsTest::detailsOfAVideoInTheLibrary()
{
    start();
    Q_EMIT library()->showDetailsPage(u"urn:uuid:7"_s);
    QCOMPARE(stack(), u"library details"_s);
    QCOMPARE(detailsAskedFor(), QStringList(u"urn:uuid:7"_s));
    QVERIFY(!player());
}

void ControllerDetailsTest::backFromDetailsGoesOnPlaying()
{
    start();
    playing();
    player()->handleInfoButtonClick();
    QCOMPARE(stack(), u"library player details"_s);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    player()->videoWidget()->setControlsVisible(true);
    m_window.setOrientationAngle(270, toolkit::ApplicationWindow::Transition::Immediate);
    Q_EMIT details()->backButtonClicked();
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(visible(), u"player"_s);
    QVERIFY(player()->navigationBar()->isEnabled());
    QVERIFY(!player()->videoWidget()->controlsVisible());
    QCOMPARE(m_window.orientationAngle(), 0);
    QVERIFY(!m_controller->playerController()->stopAtEnd());
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
}

void ControllerDetailsTest::backFromDetailsOfTheLibraryLeadsThere()
{
    start();
    m_controller->showDetails(u"urn:uuid:7"_s);
    Q_EMIT details()->backButtonClicked();
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(visible(), u"library"_s);
}

void ControllerDetailsTest::keysGoToThePlayerAgainAfterDetails()
{
    start();
    playing();
    player()->handleInfoButtonClick();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    backend()->clearCommands();
    QTest::keyClick(&m_window, Qt::Key_Right); // the details', not the player's
    QCOMPARE(backend()->commands(), QStringList());
    Q_EMIT details()->backButtonClicked();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->clearCommands();
    QTest::keyClick(&m_window, Qt::Key_Right);
    QCOMPARE(backend()->commands().filter(u"seek"_s).size(), 1); // once, however often it was connected
}

void ControllerDetailsTest::extensionPlaysAndBackLeadsToTheLibrary()
{
    // From a video to its details, from there to a related one; Back does not lead through all of them.
    start();
    playing(2);
    player()->handleInfoButtonClick();
    QString related = u"file:///videos/1.mp4"_s;
    expect("bool ApplicationController::playbackBlocked() Playing from unsupported page");
    Q_EMIT details()->extensionVideoPlaybackRequest(related);
    QTRY_COMPARE(stack(), u"library player details player"_s);
    QCOMPARE(played(), related);
    QCOMPARE(player()->backButtonType(), PlayerPage::NormalBackButton);
    QTest::keyClick(&m_window, Qt::Key_Backspace);
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(visible(), u"library"_s);
    // A lone library page is never dismissed into another one.
    m_controller->goBack();
    QCOMPARE(visible(), u"library"_s);
    QCOMPARE(m_window.sceneManager()->history(), QList<toolkit::ApplicationPage *>{library()});
}

void ControllerDetailsTest::extensionPlaysFromItsOwnPage()
{
    start();
    m_controller->showDetails(u"urn:uuid:2"_s);
    QGraphicsWidget content;
    Q_EMIT details()->showExtensionView(&content, u"Related"_s);
    QCOMPARE(stack(), u"library details extension"_s);
    const QPointer<ExtensionPage> page = extensionPage();
    QString related = u"file:///videos/1.mp4"_s;
    expect("bool ApplicationController::playbackBlocked() Playing from unsupported page");
    Q_EMIT details()->extensionVideoPlaybackRequest(related);
    QTRY_COMPARE(stack(), u"library details extension player"_s);
    QTest::keyClick(&m_window, Qt::Key_Backspace);
    QCOMPARE(stack(), u"library"_s);
    QTRY_VERIFY(!page);
    QCOMPARE(content.parentItem(), nullptr);
}

void ControllerDetailsTest::extensionPageIsDeletedWhenItIsLeft()
{
    start();
    m_controller->showDetails(u"urn:uuid:2"_s);
    QGraphicsWidget content;
    m_controller->showExtensionView(&content, u"Related"_s);
    const QPointer<ExtensionPage> page = extensionPage();
    QVERIFY(page);
    QCOMPARE(page->title(), u"Related"_s);
    QCOMPARE(page->escapeMode(), toolkit::ApplicationPage::EscapeMode::Back);
    QVERIFY(page->isPannable());
    QVERIFY(page->isAncestorOf(&content));
    Q_EMIT page->backButtonClicked();
    QCOMPARE(stack(), u"library details"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), details());
    QTRY_VERIFY(!page);
}

void ControllerDetailsTest::extensionWidgetOutlivesItsPage()
{
    start();
    m_controller->showDetails(u"urn:uuid:2"_s);
    auto content = std::make_unique<QGraphicsWidget>();
    m_controller->showExtensionView(content.get(), u"Related"_s);
    const QPointer<ExtensionPage> page = extensionPage();
    m_controller.reset();
    QVERIFY(!page);
    QCOMPARE(content->parentItem(), nullptr);
    QCOMPARE(content->scene(), nullptr);
}

// “I turned extensions off while one of them was open.”
void ControllerDetailsTest::extensionPageWithoutItsWidgetIsLeft()
{
    start();
    m_controller->showDetails(u"urn:uuid:2"_s);
    auto content = std::make_unique<QGraphicsWidget>();
    m_controller->showExtensionView(content.get(), u"Related"_s);
    QCOMPARE(stack(), u"library details extension"_s);
    content.reset();
    QTRY_COMPARE(stack(), u"library details"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), details());
}

void ControllerDetailsTest::coveredExtensionPageWithoutItsWidgetIsLeft()
{
    start();
    m_controller->showDetails(u"urn:uuid:2"_s);
    auto below = std::make_unique<QGraphicsWidget>();
    QGraphicsWidget above;
    m_controller->showExtensionView(below.get(), u"Related"_s);
    m_controller->showExtensionView(&above, u"More"_s);
    QCOMPARE(stack(), u"library details extension extension"_s);
    below.reset();
    m_controller->goBack();
    QTRY_COMPARE(stack(), u"library details"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), details());
}

void ControllerDetailsTest::extensionPageLooksAsTheProgramDoes()
{
    start();
    m_controller->showDetails(u"urn:uuid:2"_s);
    QGraphicsWidget content;
    m_controller->showExtensionView(&content, u"Related"_s);
    auto *theme = toolkit::Theme::instance();
    QTRY_COMPARE(content.palette().color(QPalette::WindowText), theme->token(u"text1"_s));
    QCOMPARE(content.font().pixelSize(), theme->style(u"CommonLabel"_s).font.pixelSize());
    m_controller->goBack();
}

void ControllerDetailsTest::busRequestLeavesDetailsAndExtensionPages()
{
    start();
    playing(2);
    player()->handleInfoButtonClick();
    QGraphicsWidget content;
    m_controller->showExtensionView(&content, u"Related"_s);
    const QPointer<ExtensionPage> page = extensionPage();
    QCOMPARE(stack(), u"library player details extension"_s);
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s});
    QCOMPARE(visible(), u"player"_s);
    QTRY_COMPARE(stack(), u"player"_s);
    QTRY_VERIFY(!page);
    QCOMPARE(played(), u"file:///videos/1.mp4"_s);
    QTest::keyClick(&m_window, Qt::Key_Backspace);
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(visible(), u"library"_s);
}

void ControllerDetailsTest::newStillReachesTheDetails()
{
    start();
    m_controller->pauseThumbnailUpdated(); // nobody shows it yet
    playing(1);
    playing(1);
    m_store.answerWhen(
        u"nie:contentAccessed"_s,
        FakeSparqlAnswer::rows({{u"urn:uuid:1"_s, u"video 1"_s, 60, 1000, 0, QVariant(), u"video/mp4"_s,
                                 u"file:///videos/1.mp4"_s, QString(), QVariant(), 0, u"1.mp4"_s}}));
    m_controller->showDetails(u"urn:uuid:1"_s);
    QTRY_COMPARE(details()->urn(), u"urn:uuid:1"_s);
    m_store.clear();
    Q_EMIT m_controller->playerController()->pauseThumbnailUpdated();
    QCOMPARE(m_store.texts().filter(u"?_video = <urn:uuid:1>"_s).size(), 1);
}

void ControllerDetailsTest::settingLoadsAndUnloadsExtensions()
{
    ExtensionPlaces places;
    places.install(u"user"_s, u"video_youtuberelatedextension.desktop"_s, QString());
    const auto failures = [this] { return details()->extensionArea()->failures()->list().size(); };
    setOnlineContent(0);
    start();
    QVERIFY(!details()); // no reason to make one
    setOnlineContent(1);
    QVERIFY(details());
    QVERIFY(!details()->extensionArea()); // nobody looks at the page
    m_controller->showDetails(u"urn:uuid:1"_s);
    QVERIFY(details()->extensionArea());
    QCOMPARE(failures(), 1); // that there is no library: it was looked for
    setOnlineContent(2); // 1 and nothing else
    QCOMPARE(failures(), 0);
    setOnlineContent(1);
    QCOMPARE(failures(), 1);
}

void ControllerDetailsTest::pageThatAsksCountsInGoingBack()
{
    // The player's keys come back only when the page beneath the one that asks is the player's.
    start();
    playing();
    m_controller->showDetails();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    connect(library(), &LocalVideosPage::goBackClicked, this, [] {});
    Q_EMIT library()->goBackClicked(); // asked for by the library, which has nothing beneath it
    QCOMPARE(stack(), u"library player"_s);
    backend()->clearCommands();
    QTest::keyClick(&m_window, Qt::Key_Right);
    QCOMPARE(backend()->commands(), QStringList());
}

void ControllerDetailsTest::shareGivesADecodedAddress_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("shared");
    QTest::newRow("blank") << u"file:///videos/a%20b.mp4"_s << u"file:///videos/a b.mp4"_s;
    QTest::newRow("percent") << u"file:///videos/100%25.mp4"_s << u"file:///videos/100%.mp4"_s;
    QTest::newRow("hash") << u"file:///videos/a%23b.mp4"_s << u"file:///videos/a#b.mp4"_s;
    QTest::newRow("letters") << u"file:///videos/%C3%A9t%C3%A9.mp4"_s << u"file:///videos/été.mp4"_s;
    QTest::newRow("stream") << u"http://host/a%20b"_s << u"http://host/a b"_s;
    QTest::newRow("plain") << u"file:///videos/a.mp4"_s << u"file:///videos/a.mp4"_s;
}

void ControllerDetailsTest::shareGivesADecodedAddress()
{
    QFETCH(QString, address);
    QFETCH(QString, shared);
    start();
    Q_EMIT library()->shareVideo(address);
    tap(video(1));
    Q_EMIT player()->shareVideo(address);
    QCOMPARE(FakeShareService::shared(), (QList<QStringList>{{shared}, {shared}}));
    QCOMPARE(FakeShareService::created(), 1);
}

void ControllerDetailsTest::shareServiceIsMadeAtStartOnlyWithoutTheServiceFramework()
{
    start({}, true);
    QCoreApplication::processEvents();
    QCOMPARE(FakeShareService::created(), 0);
    m_controller->shareVideo(u"file:///a.mp4"_s); // also before its time
    QCOMPARE(FakeShareService::created(), 1);
    clean();
    start();
    QCOMPARE(FakeShareService::created(), 0);
    QTRY_COMPARE(FakeShareService::created(), 1);
    m_controller->initServices();
    QCOMPARE(FakeShareService::created(), 1);
}

int main(int argc, char **argv)
{
    return runControllerTest<ControllerDetailsTest>(argc, argv);
}
#include "tst_controllerdetails.moc"
