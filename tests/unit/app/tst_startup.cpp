// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/applicationcontroller.h"
#include "app/startup.h"
#include "platform/media/nullmediabackend.h"
#include "platform/media/rendererregistry.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"

#include <QDBusConnection>
#include <QGraphicsScene>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>
#include <QTimer>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;
using toolkit::Application;
using toolkit::ApplicationWindow;

// The program itself, in a process of its own: this one, started again with PROBE set. It says on its output
// what it looks like when the event loop begins, and in which order it ends.
namespace {

constexpr auto PROBE = "KESTREL_STARTUP_PROBE"; // "look", or "wait" for a second start
constexpr int ExitCode = 7;
constexpr int Interval = 20; // ms

// Stand in for the store under the two names that it is reached by.
struct Stores
{
    FakeSparqlStore service;
    FakeSparqlStore direct{u"QTRACKER_DIRECT"_s};
};
Stores *stores = nullptr;

void say(const QJsonObject &what)
{
    std::printf("%s\n", QJsonDocument(what).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

int pagesIn(const ApplicationWindow *window)
{
    int pages = 0;
    for (QGraphicsItem *item : window->scene()->items())
        pages += qobject_cast<toolkit::ApplicationPage *>(item->toGraphicsObject()) ? 1 : 0;
    return pages;
}

// Three fingers that go to the right are a swipe, when there is anyone who recognises it.
class SwipeArea : public QWidget
{
public:
    SwipeArea()
    {
        setAttribute(Qt::WA_AcceptTouchEvents);
        grabGesture(Qt::SwipeGesture);
        resize(400, 200);
    }
    bool sees()
    {
        show();
        if (!QTest::qWaitForWindowExposed(this))
            return false;
        static QPointingDevice *const screen = QTest::createTouchDevice();
        auto touch = QTest::touchEvent(this, screen, false);
        for (int finger = 0; finger < 3; ++finger)
            touch.press(finger, {20, 40 + 40 * finger}, this);
        touch.commit();
        for (int x = 60; x <= 340; x += 40) {
            for (int finger = 0; finger < 3; ++finger)
                touch.move(finger, {x, 40 + 40 * finger}, this);
            touch.commit();
        }
        for (int finger = 0; finger < 3; ++finger)
            touch.release(finger, {340, 40 + 40 * finger}, this);
        touch.commit();
        return m_seen;
    }

protected:
    bool event(QEvent *event) override
    {
        m_seen = m_seen || event->type() == QEvent::Gesture;
        if (event->type() == QEvent::TouchBegin) {
            event->accept();
            return true;
        }
        return QWidget::event(event);
    }

private:
    bool m_seen = false;
};

ApplicationController *theController()
{
    QObject *service = QDBusConnection::sessionBus().objectRegisteredAt(u"/"_s);
    return service ? qobject_cast<ApplicationController *>(service->parent()) : nullptr;
}

// Ends the program, and tells who went before whom.
void endWhenServed()
{
    ApplicationController *controller = theController();
    if (!controller) {
        QTimer::singleShot(Interval, qApp, &endWhenServed);
        return;
    }
    static QJsonArray order;
    const auto note = [](const QString &what) {
        order.append(QCoreApplication::instance() ? what : what + u" too late"_s);
    };
    QObject::connect(controller, &QObject::destroyed, controller, [note] { note(u"controller"_s); });
    auto *window = Application::activeApplicationWindow();
    QObject::connect(window, &QObject::destroyed, window, [note] {
        note(u"window"_s);
        say({{u"order"_s, order}});
    });
    say({{u"lockedLater"_s, window->isOrientationAngleLocked()}, {u"swipe"_s, SwipeArea().sees()}});
    QCoreApplication::exit(ExitCode);
}

void waitForSecondStart()
{
    auto *window = Application::activeApplicationWindow();
    if (!window->isMinimized()) {
        say({{u"raised"_s, true}});
        QCoreApplication::exit(ExitCode);
        return;
    }
    QTimer::singleShot(Interval, qApp, &waitForSecondStart);
}

void minimizeWhenServed()
{
    auto *window = Application::activeApplicationWindow();
    if (!theController() || !window->isOnDisplay()) {
        QTimer::singleShot(Interval, qApp, &minimizeWhenServed);
        return;
    }
    window->showMinimized();
    say({{u"minimized"_s, true}});
    QTimer::singleShot(Interval, qApp, &waitForSecondStart);
}

// In the first turn of the event loop, before the controller's own first step.
void look()
{
    const auto *window = Application::activeApplicationWindow();
    if (!window || !window->isVisible()) {
        QTimer::singleShot(0, qApp, &look);
        return;
    }
    say({{u"pages"_s, pagesIn(window)},
         {u"style"_s, window->styleName()},
         {u"angle"_s, window->orientationAngle()},
         {u"locked"_s, window->isOrientationAngleLocked()},
         {u"fullScreen"_s, window->isFullScreen()},
         {u"identifier"_s, QCoreApplication::applicationName()},
         {u"video"_s, qtTrId("qtn_vide_player")},
         {u"music"_s, qtTrId("qtn_comm_back")},
         {u"service"_s, stores->service.opened()},
         {u"direct"_s, stores->direct.opened()}});
    if (qgetenv(PROBE) == "wait")
        minimizeWhenServed();
    else
        endWhenServed();
}

void beginToLook()
{
    if (qEnvironmentVariableIsSet(PROBE))
        QTimer::singleShot(0, qApp, &look);
}
Q_COREAPP_STARTUP_FUNCTION(beginToLook)

int runProbe(int argc, char **argv)
{
    Stores both;
    stores = &both;
    FakeThumbnailerClient::install();
    RendererRegistry::setBackendFactory([] { return std::make_unique<NullMediaBackend>(); });
    return runKestrel(argc, argv);
}

} // namespace

class StartupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowIsLockedToPortrait();
    void startedByTheServiceFrameworkTheWindowTurns();
    void modeOfTheStoreIsSetBeforeAnythingAsks();
    void modeWithoutAValueChangesNothing();
    void objectsGoInTheirOrder();
    void swipesAreNotTakenAway();
    void secondStartBringsTheFirstToTheFront();

private:
    static std::unique_ptr<QProcess> start(const QStringList &arguments, const QString &probe = u"look"_s)
    {
        auto program = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(PROBE), probe);
        environment.insert(u"KESTREL_PROFILE"_s, u"handset"_s);
        // Qt keeps no hold of a recogniser that it takes away for good: eight bytes, which are no news.
        environment.insert(u"ASAN_OPTIONS"_s, environment.value(u"ASAN_OPTIONS"_s) + u":detect_leaks=0"_s);
        program->setProcessEnvironment(environment);
        program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program->start(QCoreApplication::applicationFilePath(), arguments);
        return program;
    }
    // All that the program said of itself, after it has ended.
    static QJsonObject run(const QStringList &arguments)
    {
        const auto program = start(arguments);
        QJsonObject said;
        if (!program->waitForFinished(60000) || program->exitStatus() != QProcess::NormalExit)
            return said;
        for (const QByteArray &line : program->readAllStandardOutput().split('\n')) {
            const QJsonObject part = QJsonDocument::fromJson(line).object();
            for (auto it = part.begin(); it != part.end(); ++it)
                said.insert(it.key(), it.value());
        }
        said.insert(u"exitCode"_s, program->exitCode());
        return said;
    }
};

void StartupTest::windowIsLockedToPortrait()
{
    const QJsonObject said = run({});
    QCOMPARE(said.value(u"pages"_s).toInt(-1), 0); // nothing of the controller yet
    QCOMPARE(said.value(u"style"_s).toString(), u"VideoApplicationWindow"_s);
    QCOMPARE(said.value(u"angle"_s).toInt(), 270);
    QCOMPARE(said.value(u"locked"_s), QJsonValue(true));
    QCOMPARE(said.value(u"fullScreen"_s), QJsonValue(true));
    QCOMPARE(said.value(u"identifier"_s).toString(), u"video"_s);
    QCOMPARE(said.value(u"video"_s).toString(), u"Video player"_s);
    QCOMPARE(said.value(u"music"_s).toString(), u"Back"_s);
    QCOMPARE(said.value(u"exitCode"_s).toInt(), ExitCode);
}

void StartupTest::startedByTheServiceFrameworkTheWindowTurns()
{
    const QJsonObject said = run({u"-servicefw"_s});
    QCOMPARE(said.value(u"pages"_s).toInt(-1), 0);
    QCOMPARE(said.value(u"locked"_s), QJsonValue(false));
    QCOMPARE(said.value(u"lockedLater"_s), QJsonValue(false));
    QCOMPARE(said.value(u"fullScreen"_s), QJsonValue(true));
}

void StartupTest::modeOfTheStoreIsSetBeforeAnythingAsks()
{
    const QJsonObject said = run({u"-trackerconnectionmode"_s, u"QTRACKER_DIRECT"_s});
    QCOMPARE(said.value(u"direct"_s).toInt(), 1);
    QCOMPARE(said.value(u"service"_s).toInt(), 1); // the notifier's
}

void StartupTest::modeWithoutAValueChangesNothing()
{
    const QJsonObject said = run({u"-trackerconnectionmode"_s});
    QCOMPARE(said.value(u"direct"_s).toInt(-1), 0);
    QCOMPARE(said.value(u"service"_s).toInt(), 2);
}

void StartupTest::objectsGoInTheirOrder()
{
    const QJsonArray order = run({u"-servicefw"_s}).value(u"order"_s).toArray();
    QCOMPARE(order, QJsonArray({u"controller"_s, u"window"_s}));
}

void StartupTest::swipesAreNotTakenAway()
{
    QVERIFY2(SwipeArea().sees(), "the test's own fingers swipe");
    QCOMPARE(run({u"-servicefw"_s}).value(u"swipe"_s), QJsonValue(false));
}

void StartupTest::secondStartBringsTheFirstToTheFront()
{
    const auto first = start({}, u"wait"_s);
    QByteArray said;
    const auto hears = [&](const char *word) {
        said += first->readAllStandardOutput();
        return said.contains(word);
    };
    QTRY_VERIFY_WITH_TIMEOUT(hears("minimized"), 20000);
    const auto second = start({u"/videos/x.mp4"_s});
    QVERIFY(second->waitForFinished(20000));
    QCOMPARE(second->exitStatus(), QProcess::NormalExit);
    QCOMPARE(second->exitCode(), 0);
    QCOMPARE(second->readAllStandardOutput(), QByteArray());
    QTRY_VERIFY_WITH_TIMEOUT(hears("raised"), 20000);
    QTRY_COMPARE_WITH_TIMEOUT(first->state(), QProcess::NotRunning, 20000);
    QCOMPARE(first->exitCode(), ExitCode);
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(PROBE))
        return runProbe(argc, argv);
    QApplication application(argc, argv);
    StartupTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_startup.moc"
