// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "data/mmcmonitor.h"
#include "data/trackerinterface.h"
#include "library/filteredmodel.h"
#include "library/filterwidget.h"
#include "library/myallvideoswidget.h"
#include "platform/media/videowidget.h"
#include "platform/system/settingsmanager.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/scenemanager.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QPointer>
#include <QRegularExpression>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

class SettableLocks : public LockWatcher
{
public:
    explicit SettableLocks(QObject *parent) : LockWatcher(parent) { made = this; }
    [[nodiscard]] int state(int lock) const override { return states.value(lock, 2); }
    static inline QPointer<SettableLocks> made;
    static inline QList<int> states{0, 0};
};

class SettableDisplay : public DisplayWatcher
{
public:
    explicit SettableDisplay(QObject *parent) : DisplayWatcher(parent) { made = this; }
    [[nodiscard]] int state() const override
    {
        ++reads;
        return now;
    }
    static inline QPointer<SettableDisplay> made;
    static inline int now = 1;
    static inline int reads = 0;
};

class SettableUsb : public UsbMode
{
public:
    [[nodiscard]] bool isMassStorage() const override { return massStorage; }
    static inline bool massStorage = false;
};

} // namespace

// Who hears whom: each signal is sent by the object that sends it, and what it causes is looked at.
class ControllerConnectionsTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void libraryGoesBack();
    void libraryTellsErrors();
    void playerTellsErrorsAndNotices();
    void deletedFileOfThePlayerLeavesTheList_data();
    void deletedFileOfThePlayerLeavesTheList();
    void contentOfTheLibraryStartsTheDeviceMachinery();
    void withoutContentItStartsAfterASecondAndAHalf();
    void lockIsReadAtStartAndFollowed_data();
    void lockIsReadAtStartAndFollowed();
    void displayIsReadOnceAndFollowed();
    void displayIsReadForAPlayerThatComesFirst();
    void massStorageAtStartCoversTheLibrary();
    void monitorIsHeardOnce();
    void warningBeforeTheUnmountPausesAndSaves();
    void minimizedIsHeardAtOnceAndMaximizedLater();
    void settingsReachThePlayerLive();
    void updatesOfTheListRestWhileThePlayerRuns();
    void callsOfTheBusReachTheController();
    void takenServiceNameIsToldOnceAndComesWhenItsOwnerEnds();
    void changeOfTheStoreStartsAParkedRequest();
    void requestOverTheBusBeginsAfresh();
    void requestOverTheBusForgetsThatTheWindowWasMinimized();
    void emptyFilterFieldGoesWhenTheLibraryComes();
    void windowIsHeardAndHasTheTabToolbar();

private:
    void tellsByBanner(const QString &message)
    {
        QVERIFY(banner());
        QCOMPARE(banner()->title(), message);
        QCOMPARE(banner()->styleName(), u"SystemBanner"_s);
        delete banner();
    }
    void playing()
    {
        tap(video(1));
        QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
        backend()->clearCommands();
        m_store.clear();
    }

    SettableUsb m_usb;
    static inline ControllerConnectionsTest *s_test = nullptr;
};

void ControllerConnectionsTest::initTestCase()
{
    prepare();
    s_test = this;
    DeviceStateOverrides overrides;
    overrides.call = [](QObject *parent) -> CallMonitor * { return new FakeCalls(parent); };
    overrides.lock = [](QObject *parent) -> LockWatcher * { return new SettableLocks(parent); };
    overrides.display = [](QObject *parent) -> DisplayWatcher * { return new SettableDisplay(parent); };
    overrides.usbMode = []() -> UsbMode * { return &s_test->m_usb; };
    setDeviceStateOverrides(overrides);
}

void ControllerConnectionsTest::init()
{
    SettableLocks::states = {0, 0};
    SettableDisplay::now = 1;
    SettableDisplay::reads = 0;
    SettableUsb::massStorage = false;
    SettingsManager::instance()->setOverride(SettingsValues());
}

void ControllerConnectionsTest::cleanup()
{
    delete banner();
    if (m_controller)
        m_controller->mmcStateChanged(true);
    clean();
}

void ControllerConnectionsTest::libraryGoesBack()
{
    start();
    m_controller->goToPage(m_controller->detailsPage());
    Q_EMIT library()->goBackClicked();
    QCOMPARE(stack(), u"library"_s);
}

void ControllerConnectionsTest::libraryTellsErrors()
{
    start();
    Q_EMIT library()->handleError(u"of the library"_s);
    tellsByBanner(u"of the library"_s);
}

void ControllerConnectionsTest::playerTellsErrorsAndNotices()
{
    start();
    playing();
    Q_EMIT player()->playerError(u"of the player"_s);
    tellsByBanner(u"of the player"_s);
    Q_EMIT player()->notify(u"a notice"_s);
    tellsByBanner(u"a notice"_s);
}

void ControllerConnectionsTest::deletedFileOfThePlayerLeavesTheList_data()
{
    QTest::addColumn<bool>("libraryFirst");
    QTest::newRow("the library was there first") << true;
    QTest::newRow("the player was there first") << false;
}

void ControllerConnectionsTest::deletedFileOfThePlayerLeavesTheList()
{
    QFETCH(bool, libraryFirst);
    start({}, !libraryFirst);
    VideoInfo info = video(1);
    if (!libraryFirst) {
        expect("bool ApplicationController::playbackBlocked() Playing from unsupported page");
        m_controller->play(info);
        m_controller->goToLocalVideosPage();
        QTRY_COMPARE(library()->localVideosWidget()->viewState(), int(MyAllVideosWidget::ListShown));
        m_controller->goToPage(player());
    } else {
        playing();
    }
    QCOMPARE(library()->localVideosWidget()->proxy()->rowCount(), 1);
    Q_EMIT player()->deleteFile(u"file:///videos/1.mp4"_s);
    QCOMPARE(library()->localVideosWidget()->proxy()->rowCount(), 0);
}

void ControllerConnectionsTest::contentOfTheLibraryStartsTheDeviceMachinery()
{
    m_controller = std::make_unique<ApplicationController>(nullptr, false, QString());
    QTRY_VERIFY(library());
    QVERIFY(!m_controller->findChild<KestrelService *>());
    Q_EMIT library()->localContentCreated();
    QVERIFY(m_controller->findChild<KestrelService *>());
    QVERIFY(m_controller->findChild<LockWatcher *>());
    QVERIFY(m_controller->findChild<CallMonitor *>());
}

void ControllerConnectionsTest::withoutContentItStartsAfterASecondAndAHalf()
{
    m_controller = std::make_unique<ApplicationController>(nullptr, false, QString());
    QElapsedTimer since;
    since.start();
    QTRY_VERIFY(library());
    library()->disconnect(SIGNAL(localContentCreated())); // a list that is never announced
    QTRY_VERIFY(m_controller->findChild<KestrelService *>());
    QVERIFY2(since.elapsed() >= 1400, qPrintable(QString::number(since.elapsed())));
}

void ControllerConnectionsTest::lockIsReadAtStartAndFollowed_data()
{
    QTest::addColumn<int>("lock");
    QTest::newRow("device") << 0;
    QTest::newRow("keys") << 1;
}

void ControllerConnectionsTest::lockIsReadAtStartAndFollowed()
{
    QFETCH(int, lock);
    SettableLocks::states[lock] = 1;
    start();
    tap(video(1));
    QTRY_VERIFY(backend() && backend()->commands().contains(u"pause"_s)); // locked from the beginning
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    Q_EMIT SettableLocks::made->stateChanged(lock, 0);
    m_controller->playerController()->resume();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->clearCommands();
    Q_EMIT SettableLocks::made->stateChanged(lock, 1);
    QCOMPARE(backend()->commands(), QStringList(u"pause"_s));
    // The other one opens: still locked.
    Q_EMIT SettableLocks::made->stateChanged(1 - lock, 0);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    backend()->clearCommands();
    m_controller->playerController()->resume();
    QTRY_COMPARE(backend()->commands(), (QStringList{u"resume"_s, u"pause"_s}));
}

void ControllerConnectionsTest::displayIsReadOnceAndFollowed()
{
    SettableDisplay::now = 0;
    start();
    tap(video(1));
    QCOMPARE(SettableDisplay::reads, 1);
    QVERIFY(m_controller->playerController()->isDisplayOff());
    Q_EMIT SettableDisplay::made->stateChanged(1);
    QVERIFY(!m_controller->playerController()->isDisplayOff());
    Q_EMIT SettableDisplay::made->stateChanged(0);
    QVERIFY(m_controller->playerController()->isDisplayOff());
    QCOMPARE(SettableDisplay::reads, 1);
}

void ControllerConnectionsTest::displayIsReadForAPlayerThatComesFirst()
{
    // Tapped before the device machinery ran: the display is looked at all the same.
    m_controller = std::make_unique<ApplicationController>(nullptr, false, QString());
    QTRY_VERIFY(library());
    VideoInfo info = video(1);
    m_controller->play(info);
    QVERIFY(!m_controller->playerController()->isDisplayOff());
    QCOMPARE(SettableDisplay::reads, 1);
    Q_EMIT SettableDisplay::made->stateChanged(0);
    QVERIFY(m_controller->playerController()->isDisplayOff());
    m_controller->initObjects();
    QCOMPARE(SettableDisplay::reads, 1);
    QVERIFY(m_controller->playerController()->isDisplayOff());
}

void ControllerConnectionsTest::massStorageAtStartCoversTheLibrary()
{
    SettableUsb::massStorage = true;
    m_controller = std::make_unique<ApplicationController>(nullptr, false, QString());
    QTRY_VERIFY(library());
    QVERIFY(m_window.sceneManager()->visiblePage() != library());
    Q_EMIT MmcMonitor::instance()->mmcStateChanged(true);
    QCOMPARE(m_window.sceneManager()->visiblePage(), library());
}

void ControllerConnectionsTest::monitorIsHeardOnce()
{
    start(); // set up twice by now: with the library and with the device machinery
    QSignalSpy changes(m_controller.get(), &ApplicationController::mmcStatusChanged);
    QSignalSpy onThePage(library(), &LocalVideosPage::mmcStateChanged);
    QSignalSpy warnings(m_controller.get(), &ApplicationController::preUnmount);
    MmcMonitor::instance()->usbState(u"mass_storage"_s);
    QCOMPARE(changes, (QList<QVariantList>{{false}}));
    QCOMPARE(onThePage, (QList<QVariantList>{{false}}));
    MmcMonitor::instance()->usbState(u"mass_storage"_s); // a state that is told again is handed on again
    QCOMPARE(changes.count(), 2);
    MmcMonitor::instance()->usbState(u"MASS_STORAGE"_s);
    QCOMPARE(changes.count(), 2);
    QCOMPARE(warnings.count(), 0);
    MmcMonitor::instance()->usbState(u"pre-unmount"_s);
    QCOMPARE(warnings.count(), 1);
    QCOMPARE(changes.count(), 2);
}

void ControllerConnectionsTest::warningBeforeTheUnmountPausesAndSaves()
{
    start();
    playing();
    backend()->advance(std::chrono::seconds(12));
    MmcMonitor::instance()->usbState(u"pre-unmount"_s);
    QCOMPARE(backend()->commands(), QStringList(u"pause"_s));
    QTRY_COMPARE(m_store.texts(SparqlQuery::UpdateStatement).filter(u"nmm:runTime \"12\""_s).size(), 1);
    MmcMonitor::instance()->usbState(u"mass_storage"_s);
    QVERIFY(!player()->isVisible());
    Q_EMIT MmcMonitor::instance()->mmcStateChanged(true);
    QVERIFY(player()->isVisible());
    QCOMPARE(stack(), u"library player"_s);
}

void ControllerConnectionsTest::minimizedIsHeardAtOnceAndMaximizedLater()
{
    start();
    playing();
    Q_EMIT m_window.switcherEntered();
    QCOMPARE(backend()->commands(), QStringList(u"pause"_s));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    Q_EMIT m_window.switcherExited();
    // The page is told on the next turn: until then what would start is still held.
    m_controller->playerController()->resume();
    backend()->clearCommands();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
}

void ControllerConnectionsTest::settingsReachThePlayerLive()
{
    SettingsValues values;
    values.playbackStartMode = 0;
    values.playbackDisplayMode = 0;
    SettingsManager::instance()->setOverride(values);
    start();
    tap(video(1, 20));
    QTRY_VERIFY(backend() && backend()->commands().contains(u"play file:///videos/1.mp4 0"_s));
    QVERIFY(player()->videoWidget()->fillMode());
    values.playbackStartMode = 3; // any other number is 1
    values.playbackDisplayMode = 2;
    SettingsManager::instance()->setOverride(values);
    tap(video(2, 20));
    QTRY_VERIFY(backend()->commands().contains(u"play file:///videos/2.mp4 20"_s));
    QVERIFY(!player()->videoWidget()->fillMode());
}

void ControllerConnectionsTest::updatesOfTheListRestWhileThePlayerRuns()
{
    start();
    playing();
    QVERIFY(library()->localVideosWidget()->autoUpdate());
    QTRY_VERIFY(!library()->localVideosWidget()->autoUpdate()); // a second and a half later
    Q_EMIT player()->goBack();
    QVERIFY(library()->localVideosWidget()->autoUpdate());
    m_controller->delayedAutoUpdate(); // late: nothing plays any more
    QVERIFY(library()->localVideosWidget()->autoUpdate());
}

void ControllerConnectionsTest::callsOfTheBusReachTheController()
{
    start();
    auto *service = m_controller->findChild<KestrelService *>();
    QSignalSpy launched(m_controller.get(), &ApplicationController::launched);
    Q_EMIT service->startPlayFromPosition(u"file:///videos/1.mp4"_s, 9);
    QTRY_COMPARE(stack(), u"player"_s);
    QCOMPARE(m_controller->playerController()->currentVideo().playPosition, 9u);
    QCOMPARE(launched.count(), 1);
    m_window.showMinimized();
    QTRY_VERIFY(m_window.isMinimized());
    Q_EMIT service->raise();
    QTRY_VERIFY(!m_window.isMinimized());
    QTRY_VERIFY(m_window.isOnDisplay()); // what is not is paused, in the next test, too
}

void ControllerConnectionsTest::takenServiceNameIsToldOnceAndComesWhenItsOwnerEnds()
{
    // An instance that is just ending still has the name; the next one would never be found by it.
    const QString name = u"com.harrow.orlan.sorelkit.KestrelService"_s;
    const auto ownerOf
        = [&name] { return QDBusConnection::sessionBus().interface()->serviceOwner(name).value(); };
    QDBusConnection::sessionBus().unregisterService(name);
    {
        QDBusConnection other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s);
        QVERIFY(other.registerService(name));
        expect("void ApplicationController::registerService() Taken by another program, this one waits for "
               "it: com.harrow.orlan.sorelkit.KestrelService");
        QTest::failOnWarning(QRegularExpression(u"KestrelService"_s)); // a second time
        start();
        m_controller->initObjects();
        QCOMPARE(ownerOf(), other.baseService());
    }
    QDBusConnection::disconnectFromBus(u"other"_s);
    QTRY_COMPARE(ownerOf(), QDBusConnection::sessionBus().baseService());
}

void ControllerConnectionsTest::changeOfTheStoreStartsAParkedRequest()
{
    start();
    tap(video(1, 20));
    Q_EMIT player()->goBack();
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    tap(video(2, 5));
    QCOMPARE(stack(), u"library"_s);
    Q_EMIT TrackerInterface::instance()->videosChanged(QList<QStringList>{});
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(m_controller->playerController()->currentVideo().playPosition, 17u);
}

void ControllerConnectionsTest::requestOverTheBusBeginsAfresh()
{
    start();
    playing();
    player()->videoWidget()->setFrame(u"/still.jpeg"_s);
    QVERIFY(!player()->videoWidget()->isBusy());
    m_store.answer(FakeSparqlAnswer::never()); // and so nothing else happens yet
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/2.mp4"_s});
    QCOMPARE(player()->videoWidget()->frame(), QString());
    QVERIFY(player()->videoWidget()->isBusy());
}

void ControllerConnectionsTest::requestOverTheBusForgetsThatTheWindowWasMinimized()
{
    start();
    playing();
    Q_EMIT m_window.switcherEntered();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    backend()->clearCommands();
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s});
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    QCOMPARE(backend()->commands().filter(u"pause"_s), QStringList());
}

void ControllerConnectionsTest::emptyFilterFieldGoesWhenTheLibraryComes()
{
    start();
    library()->showTextEdit(QString(), true);
    QVERIFY(library()->localVideosWidget()->filterWidget()->isVisible());
    m_controller->goToLocalVideosPage();
    QTRY_VERIFY(!library()->localVideosWidget()->filterWidget()->isVisible());
}

void ControllerConnectionsTest::windowIsHeardAndHasTheTabToolbar()
{
    start();
    QCOMPARE(m_window.toolbarView(), toolkit::ApplicationWindow::ToolbarView::Tab);
    QSignalSpy keys(m_controller.get(), &ApplicationController::keyEvent);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_window, &key);
    QVERIFY(!keys.isEmpty());
}

int main(int argc, char **argv)
{
    return runControllerTest<ControllerConnectionsTest>(argc, argv);
}
#include "tst_controllerconnections.moc"
