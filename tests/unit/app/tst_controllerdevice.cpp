// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelinterfaceadaptor.h"
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "library/localvideospage.h"
#include "platform/media/rendererregistry.h"
#include "platform/media/videowidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QKeyEvent>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// Of a class's own signals or slots, in the order in which they are declared.
QStringList declared(const QMetaObject &meta, QMetaMethod::MethodType type)
{
    QStringList signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == type)
            signatures.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    return signatures;
}

// Tells when it goes.
class CountedBackend : public NullMediaBackend
{
public:
    CountedBackend() { ++alive; }
    ~CountedBackend() override { --alive; }
    static inline int alive = 0;
};

} // namespace

// What the controller declares, and what it does when the device changes.
class ControllerDeviceTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup() { clean(); }
    void declarationsStandInTheirOrder_data();
    void declarationsStandInTheirOrder();
    void keyReleaseWhileTheLibraryIsOnTopIsNotForwarded();
    void noEventIsSwallowed();
    void newWindowIdReachesTheRenderer();
    void eitherLockPauses_data();
    void eitherLockPauses();
    void displayStateReachesThePlayer();
    void switcherBecomesMinimizedAndMaximized();
    void cardAwaySparesAVideoThatDoesNotNeedIt();
    void playerHearsOfTheCardFirst();
    void objectsAreMadeOnce();
    void mediaIsReadyBeforeTheFirstTapAndKept();
    void mediaThatCannotBeHadWarns();
};

void ControllerDeviceTest::declarationsStandInTheirOrder_data()
{
    QTest::addColumn<QStringList>("found");
    QTest::addColumn<QStringList>("expected");
    const QMetaObject &controller = ApplicationController::staticMetaObject;
    QTest::newRow("signals of the controller")
        << declared(controller, QMetaMethod::Signal)
        << QStringList{u"minimized()"_s,          u"maximized()"_s,
                       u"keyEvent(QKeyEvent*)"_s, u"mmcStatusChanged(bool)"_s,
                       u"launched()"_s,           u"preUnmount()"_s};
    QTest::newRow("slots of the controller") << declared(controller, QMetaMethod::Slot)
                                             << QStringList{u"showPlayerPage()"_s,
                                                            u"raiseToTop()"_s,
                                                            u"goToLocalVideosPage()"_s,
                                                            u"init()"_s,
                                                            u"goToPage(toolkit::ApplicationPage*)"_s,
                                                            u"goBack()"_s,
                                                            u"returnFromPlay()"_s,
                                                            u"returnToPlay()"_s,
                                                            u"initObjects()"_s,
                                                            u"initObjectsTimeout()"_s,
                                                            u"createDetailsPage()"_s,
                                                            u"initServices()"_s,
                                                            u"showDetails()"_s,
                                                            u"showDetails(QString)"_s,
                                                            u"shareVideo(QString)"_s,
                                                            u"pauseThumbnailUpdated()"_s,
                                                            u"showExtensionView(QGraphicsWidget*,QString)"_s,
                                                            u"showInfoBanner(QString)"_s,
                                                            u"showNotification(QString)"_s,
                                                            u"delayedAccessPlayerPage()"_s,
                                                            u"refreshSettings()"_s,
                                                            u"playbackBlocked()"_s,
                                                            u"stopAndQuit()"_s,
                                                            u"deviceLockStatusChanged(int,int)"_s,
                                                            u"deviceDisplayStateChanged(int)"_s,
                                                            u"play(VideoInfo&)"_s,
                                                            u"serviceFwPlayRequest(QString,uint)"_s,
                                                            u"initializeAvloShared()"_s,
                                                            u"processAndPlay(QString&,int)"_s,
                                                            u"trackerDataReady(VideoInfo,int)"_s,
                                                            u"delayedAutoUpdate()"_s,
                                                            u"accessPlayerPage(int,int)"_s,
                                                            u"mmcStateChanged(bool)"_s,
                                                            u"showMmcInfoPage()"_s,
                                                            u"hideMmcInfoPage()"_s};
    const QMetaObject &service = KestrelService::staticMetaObject;
    QTest::newRow("signals of the service")
        << declared(service, QMetaMethod::Signal)
        << QStringList{u"startPlayFromPosition(QString,uint)"_s, u"playbackStarted()"_s, u"launched()"_s,
                       u"raise()"_s, u"cancelled()"_s};
    QTest::newRow("slots of the service")
        << declared(service, QMetaMethod::Slot)
        << QStringList{u"play(QStringList)"_s, u"play(QStringList,uint)"_s, u"launch()"_s,
                       u"launch(QStringList)"_s, u"cancel()"_s};
    const QMetaObject &adaptor = KestrelInterfaceAdaptor::staticMetaObject;
    QTest::newRow("signals of the adaptor")
        << declared(adaptor, QMetaMethod::Signal) << QStringList{u"launched()"_s, u"playbackStarted()"_s};
    QTest::newRow("slots of the adaptor") << declared(adaptor, QMetaMethod::Slot)
                                          << QStringList{u"cancel()"_s,
                                                         u"launch(uint,QString)"_s,
                                                         u"launch(uint,QString,QStringList)"_s,
                                                         u"play(uint,QString,uint,QString)"_s,
                                                         u"play(uint,QString,QStringList)"_s,
                                                         u"play(QStringList)"_s,
                                                         u"play(QStringList,uint)"_s};
}

void ControllerDeviceTest::declarationsStandInTheirOrder()
{
    QFETCH(QStringList, found);
    QFETCH(QStringList, expected);
    QCOMPARE(found, expected);
}

void ControllerDeviceTest::keyReleaseWhileTheLibraryIsOnTopIsNotForwarded()
{
    start();
    QList<QEvent::Type> forwarded;
    connect(m_controller.get(), &ApplicationController::keyEvent, this,
            [&forwarded](QKeyEvent *event) { forwarded.append(event->type()); });
    QTest::keyPress(&m_window, Qt::Key_F5);
    QTest::keyRelease(&m_window, Qt::Key_F5);
    QCOMPARE(forwarded, QList<QEvent::Type>{QEvent::KeyPress});
    tap(video(1));
    QTest::keyPress(&m_window, Qt::Key_F5);
    QTest::keyRelease(&m_window, Qt::Key_F5);
    QCOMPARE(forwarded, (QList<QEvent::Type>{QEvent::KeyPress, QEvent::KeyPress, QEvent::KeyRelease}));
    // Off the player again.
    Q_EMIT player()->goBack();
    QTest::keyPress(&m_window, Qt::Key_F5);
    QTest::keyRelease(&m_window, Qt::Key_F5);
    QCOMPARE(forwarded.size(), 4);
}

void ControllerDeviceTest::noEventIsSwallowed()
{
    start();
    tap(video(1));
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_F5, Qt::NoModifier);
        QVERIFY(!m_controller->eventFilter(&m_window, &key));
    }
    for (const QEvent::Type type : {QEvent::WinIdChange, QEvent::Close, QEvent::MouseButtonPress}) {
        QEvent event(type);
        QVERIFY(!m_controller->eventFilter(&m_window, &event));
    }
}

void ControllerDeviceTest::newWindowIdReachesTheRenderer()
{
    start();
    QEvent early(QEvent::WinIdChange);
    QVERIFY(!m_controller->eventFilter(&m_window, &early)); // no player yet: nobody to tell
    tap(video(1));
    QTRY_VERIFY(player()->videoWidget()->renderer());
    QEvent change(QEvent::WinIdChange);
    QCoreApplication::sendEvent(&m_window, &change);
    const QVariant id = player()->videoWidget()->renderer()->property("xid");
    QCOMPARE(id.toInt(), int(m_window.effectiveWinId()));
    QVERIFY(id.toInt() != 0);
}

void ControllerDeviceTest::eitherLockPauses_data()
{
    QTest::addColumn<int>("lock");
    QTest::newRow("device") << 0;
    QTest::newRow("keys") << 1;
}

void ControllerDeviceTest::eitherLockPauses()
{
    QFETCH(int, lock);
    start();
    tap(video(1));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    m_controller->deviceLockStatusChanged(lock, 0);
    m_controller->deviceLockStatusChanged(lock, 2); // unknown is not locked
    QVERIFY(!backend()->commands().contains(u"pause"_s));
    m_controller->deviceLockStatusChanged(lock, 1);
    QVERIFY(backend()->commands().contains(u"pause"_s));
}

void ControllerDeviceTest::displayStateReachesThePlayer()
{
    start();
    tap(video(1));
    PlayerController *playing = m_controller->playerController();
    m_controller->deviceDisplayStateChanged(1);
    QVERIFY(!playing->isDisplayOff());
    m_controller->deviceDisplayStateChanged(0);
    QVERIFY(playing->isDisplayOff());
    m_controller->deviceDisplayStateChanged(1);
    QVERIFY(!playing->isDisplayOff());
    m_controller->deviceDisplayStateChanged(2); // on is 1 and nothing else
    QVERIFY(playing->isDisplayOff());
    m_controller->deviceDisplayStateChanged(1);
}

void ControllerDeviceTest::switcherBecomesMinimizedAndMaximized()
{
    start();
    QSignalSpy minimized(m_controller.get(), &ApplicationController::minimized);
    QSignalSpy maximized(m_controller.get(), &ApplicationController::maximized);
    Q_EMIT m_window.switcherEntered();
    QCOMPARE(minimized.count(), 1);
    QCOMPARE(maximized.count(), 0);
    Q_EMIT m_window.switcherExited();
    QCOMPARE(minimized.count(), 1);
    QCOMPARE(maximized.count(), 1);
}

void ControllerDeviceTest::cardAwaySparesAVideoThatDoesNotNeedIt()
{
    start();
    VideoInfo stream;
    stream.url = u"http://host/a.mp4"_s;
    m_controller->play(stream);
    QCOMPARE(stack(), u"library player"_s);
    m_controller->mmcStateChanged(false);
    QVERIFY(player()->isVisible());
    Q_EMIT player()->goBack(); // to the library, whose videos lie on the card: the page stands over it
    QCOMPARE(stack(), u"library"_s);
    m_controller->mmcStateChanged(true);
    tap(video(1));
    m_controller->mmcStateChanged(false);
    QVERIFY(!player()->isVisible());
    m_controller->mmcStateChanged(true);
    QTRY_VERIFY(player()->isVisible());
}

void ControllerDeviceTest::playerHearsOfTheCardFirst()
{
    start();
    tap(video(1));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    QStringList order;
    connect(m_controller.get(), &ApplicationController::mmcStatusChanged, this,
            [this, &order](bool available) {
                order.append(available ? u"library: there"_s : u"library: away"_s);
                order.append(player()->isVisible() ? u"player to be seen"_s : u"player covered"_s);
            });
    m_controller->mmcStateChanged(false);
    QCOMPARE(order, (QStringList{u"library: away"_s, u"player to be seen"_s})); // covered only afterwards
    QVERIFY(!player()->isVisible());
    m_controller->mmcStateChanged(true);
}

void ControllerDeviceTest::objectsAreMadeOnce()
{
    start();
    QCOMPARE(m_controller->findChildren<KestrelService *>().size(), 1);
    m_controller->initObjects();
    m_controller->initObjectsTimeout();
    Q_EMIT library()->localContentCreated();
    QCOMPARE(m_controller->findChildren<KestrelService *>().size(), 1);
    QCOMPARE(m_controller->findChildren<LockWatcher *>().size(), 1);
}

void ControllerDeviceTest::mediaIsReadyBeforeTheFirstTapAndKept()
{
    // Letting go of it would wait for what it loads.
    start();
    RendererRegistry::setBackendFactory([] { return std::make_unique<CountedBackend>(); });
    const int before = CountedBackend::alive;
    m_controller->initializeAvloShared();
    m_controller->initializeAvloShared();
    QCOMPARE(CountedBackend::alive, before + 1);
    m_controller.reset();
    QCOMPARE(CountedBackend::alive, 0);
    prepare();
}

void ControllerDeviceTest::mediaThatCannotBeHadWarns()
{
    start();
    RendererRegistry::setBackendFactory([] { return std::unique_ptr<MediaBackend>(); });
    expect("void ApplicationController::initializeAvloShared() AvloShared initialize failed! Check D-BUS");
    m_controller->initializeAvloShared();
    prepare();
}

int main(int argc, char **argv)
{
    return runControllerTest<ControllerDeviceTest>(argc, argv);
}
#include "tst_controllerdevice.moc"
