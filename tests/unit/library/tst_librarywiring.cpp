// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "library/filteredmodel.h"
#include "library/localvideoitemcreator.h"
#include "libraryfixture.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/pannableviewport.h"
#include "support/fakedevice.h"
#include "support/loglines.h"

#include <QAction>
#include <QSignalSpy>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationWindow;
using toolkit::List;
using toolkit::PannableViewport;
using toolkit::TextEdit;
using Page = LocalVideosPage;
using Videos = MyAllVideosWidget;

namespace {

// There is such a connection, and no second one. It is gone afterwards.
template <typename Sender, typename Signal, typename Receiver, typename Slot>
bool once(Sender *sender, Signal signal, Receiver *receiver, Slot slot)
{
    return QObject::disconnect(sender, signal, receiver, slot)
        && !QObject::disconnect(sender, signal, receiver, slot);
}

} // namespace

// Who hears of what on the library page.
class LibraryWiringTest : public QObject
{
    Q_OBJECT

public:
    explicit LibraryWiringTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init() { QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s}))); }
    void cleanup() { f.close(); }
    void pageAndItsWidget();
    void theAnnouncementIsHeardUntilItIsMade();
    void modelAndThumbnails();
    void fieldAndTimer();
    void listAndViewport();
    void leavingAndEnteringConnectTheLongTap();
    void windowAndMenu();
    void newsOfTheRowsWaitsForTheEventLoop();
    void thumbnailingIsSwitchedThroughThePage();
    void autoUpdateIsKept();
    void cardThatIsAwayAtTheStartKeepsMenuAndFieldShut();

private:
    LibraryFixture &f;
};

void LibraryWiringTest::pageAndItsWidget()
{
    Page *page = f.page.get();
    Videos *videos = f.widget();
    QVERIFY(once(videos, &Videos::playVideo, page, &Page::showNowPlayingPage));
    QVERIFY(once(videos, &Videos::notify, page, &Page::handleError));
    QVERIFY(once(videos, &Videos::shareVideo, page, &Page::shareVideo));
    QVERIFY(once(videos, &Videos::detailsActionClicked, page, &Page::showDetailsPage));
    QVERIFY(once(videos, &Videos::showTextEdit, page, &Page::showTextEdit));
    QVERIFY(once(page, &Page::backButtonClicked, videos, &Videos::goingBack));
    QVERIFY(once(videos, &Videos::contentVisible, page, &Page::setPannable));
    QVERIFY(once(page, &Page::mmcStateChanged, videos, &Videos::mmcStateChanged));
    QVERIFY(once(page, &Page::backButtonClicked, page, &Page::goBackClicked));
}

void LibraryWiringTest::theAnnouncementIsHeardUntilItIsMade()
{
    Page fresh;
    fresh.ensureContent();
    QVERIFY(once(fresh.localVideosWidget(), &Videos::displayEntered, &fresh, &Page::delayEvent));
    QSignalSpy created(f.page.get(), &Page::localContentCreated);
    QTRY_COMPARE(created.count(), 1);
    QVERIFY(!disconnect(f.widget(), &Videos::displayEntered, f.page.get(), &Page::delayEvent));
}

void LibraryWiringTest::modelAndThumbnails()
{
    Videos *videos = f.widget();
    AllVideosModel *model = videos->model();
    ThumbnailHelper *thumbnails = ThumbnailHelper::instance();
    QVERIFY(once(model, &AllVideosModel::modelUpdated, videos, &Videos::modelRowCountChanged));
    QVERIFY(once(model, &AllVideosModel::dataChanged, videos, &Videos::modelDataChanged));
    QVERIFY(once(model, &AllVideosModel::filesRemoved, thumbnails, &ThumbnailHelper::filesRemoved));
    QVERIFY(once(thumbnails, &ThumbnailHelper::newThumbnailReady, model,
                 &AllVideosModel::defaultThumbnailUpdated));
    QVERIFY(once(thumbnails, &ThumbnailHelper::pauseThumbnailCreated, model,
                 &AllVideosModel::pauseThumbnailUpdated));
}

void LibraryWiringTest::fieldAndTimer()
{
    Videos *videos = f.widget();
    QVERIFY(once(f.field(), &FilterWidget::textChanged, videos, &Videos::liveFilteringTextChanged));
    QVERIFY(once(f.field(), &FilterWidget::clearClicked, videos, &Videos::liveFilteringClearClicked));
    QVERIFY(once(f.edit(), &TextEdit::gainedFocus, videos, &Videos::liveFilteringFocusChanged));
    QVERIFY(once(f.edit(), &TextEdit::lostFocus, videos, &Videos::liveFilteringFocusChanged));
    QVERIFY(once(f.edit(), &TextEdit::textChanged, f.field(), &FilterWidget::handleTextChanged));
    QVERIFY(once(f.edit(), &TextEdit::returnPressed, f.field(), &FilterWidget::closeTheVKB));
    auto *timer = videos->findChild<QTimer *>(u"filterTimer"_s);
    QVERIFY(once(timer, &QTimer::timeout, videos, &Videos::filterTimeout));
}

void LibraryWiringTest::listAndViewport()
{
    Videos *videos = f.widget();
    List *list = videos->list();
    auto *creator = videos->findChild<LocalVideoItemCreator *>();
    ThumbnailHelper *thumbnails = ThumbnailHelper::instance();
    QVERIFY(once(list, &List::itemClicked, videos, &Videos::itemClicked));
    QVERIFY(once(list, &List::displayEntered, videos, &Videos::videoListEntered));
    QVERIFY(once(list, &List::panningStarted, creator, &LocalVideoItemCreator::panningStarted));
    QVERIFY(once(list, &List::panningStopped, creator, &LocalVideoItemCreator::panningStopped));
    QVERIFY(once(list, &List::panningStarted, thumbnails, &ThumbnailHelper::panningStarted));
    QVERIFY(once(list, &List::panningStopped, thumbnails, &ThumbnailHelper::panningStopped));
    QVERIFY(once(list, &List::panningStarted, videos, &Videos::panningStarted));
    // The nearest one around, from the first time that the list was seen.
    videos->videoListEntered();
    QVERIFY(once(f.page->pannableViewport(), &PannableViewport::positionChanged, videos, &Videos::VKBFilter));
}

void LibraryWiringTest::leavingAndEnteringConnectTheLongTap()
{
    Videos *videos = f.widget();
    List *list = videos->list();
    videos->goingBack();
    QVERIFY(!disconnect(list, &List::itemLongTapped, videos, &Videos::itemLongTapped));
    videos->videoListEntered();
    videos->videoListEntered();
    QVERIFY(once(list, &List::itemLongTapped, videos, &Videos::itemLongTapped));
}

void LibraryWiringTest::windowAndMenu()
{
    Videos *videos = f.widget();
    QVERIFY(once(&f.window, &ApplicationWindow::orientationChangeStarted, videos, &Videos::blockPlay));
    QVERIFY(once(&f.window, &ApplicationWindow::orientationChangeFinished, videos, &Videos::unblockPlay));
    const QList<QAction *> actions = videos->objectMenu()->actions();
    QCOMPARE(actions.size(), 4);
    QVERIFY(actions.first()->actionGroup() != nullptr);
    for (const QAction *action : actions)
        QCOMPARE(action->actionGroup(), actions.first()->actionGroup());
    QVERIFY(once(actions.at(0), &QAction::triggered, videos, &Videos::detailsVideoAction));
    QVERIFY(once(actions.at(1), &QAction::triggered, videos, &Videos::shareVideoAction));
    QVERIFY(once(actions.at(2), &QAction::triggered, videos, &Videos::editVideoAction));
    QVERIFY(once(actions.at(3), &QAction::triggered, videos, &Videos::deleteVideoAction));
}

void LibraryWiringTest::newsOfTheRowsWaitsForTheEventLoop()
{
    Videos videos;
    Q_EMIT videos.model()->modelUpdated();
    QCOMPARE(videos.viewState(), 0);
    QTRY_VERIFY(videos.viewState() != 0);
}

void LibraryWiringTest::thumbnailingIsSwitchedThroughThePage()
{
    const auto asked = [](const QString &url) {
        (void)ThumbnailHelper::instance()->thumbnail(url, u"video/mp4"_s);
        ThumbnailHelper::instance()->queueTimeOut();
        return FakeThumbnailerClient::last()->outstanding.contains(QUrl(url));
    };
    f.page->disableThumbnailing(true);
    QVERIFY(!asked(u"file:///videos/off.mp4"_s));
    f.page->disableThumbnailing(false);
    QVERIFY(asked(u"file:///videos/on.mp4"_s));
}

void LibraryWiringTest::autoUpdateIsKept()
{
    f.page->setAutoUpdate(false);
    QVERIFY(!f.widget()->autoUpdate());
    f.page->setAutoUpdate(true);
    QVERIFY(f.widget()->autoUpdate());
}

void LibraryWiringTest::cardThatIsAwayAtTheStartKeepsMenuAndFieldShut()
{
    f.close();
    fakes::Usb::install();
    fakes::Usb::set(true);
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.key(u"a"_s, Qt::Key_A);
    QVERIFY(!f.field()->isVisible());
    LogLines log("kestrel.library");
    f.widget()->itemLongTapped(f.widget()->proxy()->index(0, 0), {100, 200});
    QCOMPARE(f.widget()->objectMenu()->state(), toolkit::ObjectMenu::State::Hidden);
    QCOMPARE(log.all(),
             QStringList{u"void MyAllVideosWidget::showListObjectMenu(const QPointF&) "
                         "MMC not available!"_s});
    Q_EMIT f.page->mmcStateChanged(true);
    f.key(u"a"_s, Qt::Key_A);
    QVERIFY(f.field()->isVisible());
    fakes::Usb::remove();
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    LibraryWiringTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_librarywiring.moc"
