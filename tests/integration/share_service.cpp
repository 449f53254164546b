// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/obexpush.h"
#include "platform/share/platformshareservice.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/theme.h"
#include "support/fakebluetooth.h"
#include "support/fakeportal.h"
#include "support/heartbeat.h"
#include "support/privatebus.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationPage;
using toolkit::ApplicationWindow;
using toolkit::Banner;
using toolkit::Button;
using Manner = FakePortal::Manner;

namespace {

class Page : public ApplicationPage
{
public:
    QList<QEvent::Type> events;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::WindowUnblocked)
            events.append(event->type());
        return ApplicationPage::event(event);
    }
};

} // namespace

// The service in a window, with a portal, bluez and its object exchange on buses of the test's own.
class ShareServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void whatIsOfferedForWhat_data();
    void whatIsOfferedForWhat();
    void emailOfAFileWithAnOddName();
    void emailOfAFileWithAnEndlessName();
    void emailOfFilesAndStreams();
    void openWithOfAFileAndOfAStream();
    void portalIsToldOfTheWindow();
    void copiedAddress();
    void missingFileIsTold_data();
    void missingFileIsTold();
    void breakingOffIsNotTold();
    void failureIsTold_data();
    void failureIsTold();
    void portalThatHangsHoldsUpNothing();
    void sentByBluetooth();
    void notSentByBluetooth();
    void sendingIsStopped();
    void pageIsBlockedUntilTheChoiceIsMade();
    void nothingToShare();
    void withoutAWindow();
    void aSecondShareTakesTheSheetOver();
    void sheetGoesWithItsPage();
    void sheetGoesWhenAnotherPageCovers();
    void serviceGoesWhileTheSheetIsUp();
    void asTheFactoryOfTheProgram();

private:
    QString file(const QString &name, const QByteArray &content)
    {
        QFile written(m_dir.filePath(name));
        if (!written.open(QIODevice::WriteOnly) || written.write(content) != content.size())
            return {};
        return u"file://"_s + written.fileName();
    }
    [[nodiscard]] QStringList offered() const
    {
        QStringList result;
        if (m_service->sheet() != nullptr) {
            for (const Button *row : m_service->sheet()->rows())
                result.append(row->text());
        }
        return result;
    }
    void choose(const QString &text)
    {
        for (Button *row : m_service->sheet()->rows()) {
            if (row->text() == text) {
                row->click();
                return;
            }
        }
        QFAIL(qPrintable(u"no row "_s + text + u" in "_s + offered().join(u", "_s)));
    }
    // The banner on the screen; empty when there is none.
    [[nodiscard]] QString banner() const
    {
        for (QGraphicsItem *item : m_window->scene()->items()) {
            const auto *shown = qobject_cast<Banner *>(item->toGraphicsObject());
            if (shown != nullptr && shown->isVisible())
                return shown->title();
        }
        return {};
    }

    QTranslator m_catalog;
    QTemporaryDir m_dir;
    PrivateBus m_daemon;
    QString m_sessionAddress = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    QString m_systemAddress;
    std::unique_ptr<FakePortal> m_portal;
    std::unique_ptr<FakeBluez> m_bluez;
    std::unique_ptr<FakeObex> m_obex;
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<Page> m_page;
    std::unique_ptr<PlatformShareService> m_service;
};

void ShareServiceTest::initTestCase()
{
    QVERIFY(m_catalog.load(u":/translations/video_en.qm"_s));
    QVERIFY(QCoreApplication::installTranslator(&m_catalog));
    toolkit::Theme::instance()->setReducedMotion(true);
    m_systemAddress = m_daemon.start();
    QVERIFY(!m_systemAddress.isEmpty());
    (void)QDBusConnection::connectToBus(m_systemAddress, u"system"_s);
}

void ShareServiceTest::init()
{
    m_portal = std::make_unique<FakePortal>(m_sessionAddress);
    QVERIFY(m_portal->appear());
    m_bluez = std::make_unique<FakeBluez>(m_systemAddress);
    m_bluez->setAdapter(true);
    m_bluez->addDevice(u"AA:BB"_s, {{u"Alias"_s, u"Phone %1"_s}});
    QVERIFY(m_bluez->appear());
    m_obex = std::make_unique<FakeObex>(m_sessionAddress);
    QVERIFY(m_obex->appear());
    m_window = std::make_unique<ApplicationWindow>();
    m_window->setProfile(ApplicationWindow::Profile::Desktop);
    m_window->showForProfile();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_page = std::make_unique<Page>();
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    m_service
        = std::make_unique<PlatformShareService>(QDBusConnection::sessionBus(), QDBusConnection(u"system"_s));
    const ShareTargets &targets = m_service->targets();
    QTRY_VERIFY(targets.hasEmail() && targets.hasOpenWith() && targets.hasBluetooth());
    QGuiApplication::clipboard()->clear();
}

void ShareServiceTest::cleanup()
{
    m_service.reset();
    m_page.reset();
    m_window.reset();
    m_obex.reset();
    m_bluez.reset();
    m_portal.reset();
}

void ShareServiceTest::whatIsOfferedForWhat_data()
{
    QTest::addColumn<QStringList>("addresses");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("rows");
    const QString email = u"E-mail"_s;
    const QString open = u"Open with another program"_s;
    const QString bluetooth = u"Bluetooth"_s;
    const QString copy = u"Copy address"_s;
    QTest::newRow("a file") << QStringList{u"file:///v/a%20b#1?.mp4"_s} << u"a%20b#1?.mp4"_s
                            << QStringList{email, open, bluetooth, copy};
    QTest::newRow("a stream") << QStringList{u"rtsp://example.com/live"_s} << u"live"_s
                              << QStringList{email, open, copy};
    QTest::newRow("two files") << QStringList{u"file:///a"_s, u"file:///b"_s} << u"2 items"_s
                               << QStringList{email, bluetooth, copy};
    QTest::newRow("a file and a stream")
        << QStringList{u"file:///a"_s, u"mms://b"_s} << u"2 items"_s << QStringList{email, copy};
}

void ShareServiceTest::whatIsOfferedForWhat()
{
    QFETCH(QStringList, addresses);
    QFETCH(QString, title);
    QFETCH(QStringList, rows);
    m_service->share(addresses);
    QVERIFY(m_service->sheet()->isOpen());
    QCOMPARE(m_service->sheet()->title(), title);
    QCOMPARE(offered(), rows);
    // Without the peers there is always the clipboard, also for a sheet that is up.
    m_obex->disappear();
    m_portal->disappear();
    QTRY_COMPARE(offered(), QStringList{u"Copy address"_s});
}

void ShareServiceTest::emailOfAFileWithAnOddName()
{
    const QString odd = file(u"a%20b#1?.mp4"_s, "the odd one");
    QVERIFY(!file(u"a b"_s, "its decoded name").isEmpty());
    m_service->share({odd});
    choose(u"E-mail"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    const FakePortal::Call call = m_portal->calls.first();
    QCOMPARE(call.method, u"ComposeEmail"_s);
    QCOMPARE(call.files, QList<QByteArray>{"the odd one"});
    QCOMPARE(call.options.value(u"subject"_s).toString(), u"a%20b#1?.mp4"_s);
    QVERIFY(!m_service->sheet()->isDisplayed());
}

// The portal takes no subject of several lines, and none that is longer than 200 characters.
void ShareServiceTest::emailOfAFileWithAnEndlessName()
{
    m_service->share({file(u"two\nlines and "_s + QString(230, u'x'), "film")});
    choose(u"E-mail"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QCOMPARE(m_portal->calls.first().files, QList<QByteArray>{"film"});
    QVERIFY(
        m_portal->calls.first().options.value(u"subject"_s).toString().startsWith(u"two lines and xxx"_s));
    QTRY_COMPARE(m_service->findChildren<PortalRequest *>().size(), 0);
    QCOMPARE(banner(), QString());
}

void ShareServiceTest::emailOfFilesAndStreams()
{
    m_service->share({file(u"a"_s, "A"), u"http://example.com/x y"_s, file(u"b"_s, "B"), u"mms://z"_s});
    choose(u"E-mail"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    const FakePortal::Call call = m_portal->calls.first();
    QCOMPARE(call.files, (QList<QByteArray>{"A", "B"}));
    QCOMPARE(call.options.value(u"body"_s).toString(), u"http://example.com/x%20y\nmms://z"_s);
}

void ShareServiceTest::openWithOfAFileAndOfAStream()
{
    m_service->share({file(u"100%.mp4"_s, "film")});
    choose(u"Open with another program"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QCOMPARE(m_portal->calls.last().method, u"OpenFile"_s);
    QCOMPARE(m_portal->calls.last().files, QList<QByteArray>{"film"});
    m_service->share({u"rtsp://example.com/live"_s});
    choose(u"Open with another program"_s);
    QTRY_COMPARE(m_portal->calls.size(), 2);
    QCOMPARE(m_portal->calls.last().method, u"OpenURI"_s);
    QCOMPARE(m_portal->calls.last().address, u"rtsp://example.com/live"_s);
    QCOMPARE(banner(), QString());
}

void ShareServiceTest::portalIsToldOfTheWindow()
{
    m_service->share({u"rtsp://example.com/live"_s});
    choose(u"E-mail"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    const QString window = m_portal->calls.first().window;
    QVERIFY(window.startsWith("x11:"_L1));
    bool ok = false;
    QCOMPARE(WId(window.mid(4).toULongLong(&ok, 16)), m_window->effectiveWinId());
    QVERIFY(ok);
}

void ShareServiceTest::copiedAddress()
{
    m_service->share({u"file:///v/a%20b#1?.mp4"_s});
    choose(u"Copy address"_s);
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), u"/v/a%20b#1?.mp4"_s);
    QCOMPARE(data->data(u"text/uri-list"_s).trimmed(), QByteArray("file:///v/a%2520b%231%3F.mp4"));
    QCOMPARE(banner(), u"Address copied"_s);
    m_service->share({u"http://example.com/a"_s});
    choose(u"Copy address"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"http://example.com/a"_s);
}

void ShareServiceTest::missingFileIsTold_data()
{
    QTest::addColumn<QString>("row");
    QTest::newRow("e-mail") << u"E-mail"_s;
    QTest::newRow("another program") << u"Open with another program"_s;
    QTest::newRow("bluetooth") << u"Bluetooth"_s;
}

void ShareServiceTest::missingFileIsTold()
{
    QFETCH(QString, row);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"/gone.mp4 cannot be shared: "_s));
    m_service->share({u"file:///gone.mp4"_s});
    choose(row);
    if (row == "Bluetooth"_L1)
        choose(u"Phone %1"_s);
    QTRY_COMPARE(banner(), u"The file cannot be read."_s);
    QVERIFY(m_portal->calls.isEmpty());
    QVERIFY(m_obex->sessions.isEmpty());
}

void ShareServiceTest::breakingOffIsNotTold()
{
    QTest::failOnWarning(QRegularExpression(u"portal"_s));
    m_portal->manner = Manner::Waits;
    m_service->share({u"rtsp://example.com/live"_s});
    choose(u"E-mail"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QCOMPARE(m_service->findChildren<PortalRequest *>().size(), 1);
    m_portal->respond(1);
    QTRY_COMPARE(m_service->findChildren<PortalRequest *>().size(), 0);
    QCOMPARE(banner(), QString());
}

void ShareServiceTest::failureIsTold_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<Manner>("manner");
    QTest::addColumn<QString>("told");
    QTest::newRow("e-mail") << u"E-mail"_s << Manner::Answers << u"The e-mail could not be prepared."_s;
    QTest::newRow("e-mail refused") << u"E-mail"_s << Manner::Refuses
                                    << u"The e-mail could not be prepared."_s;
    QTest::newRow("another program") << u"Open with another program"_s << Manner::Answers
                                     << u"It could not be opened with another program."_s;
}

void ShareServiceTest::failureIsTold()
{
    QFETCH(QString, row);
    QFETCH(Manner, manner);
    QFETCH(QString, told);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the portal did not share: "_s));
    m_portal->manner = manner;
    m_portal->code = 2;
    m_service->share({u"rtsp://example.com/live"_s});
    choose(row);
    QTRY_COMPARE(banner(), told);
}

void ShareServiceTest::portalThatHangsHoldsUpNothing()
{
    m_portal->manner = Manner::Silent;
    const Heartbeat heart;
    m_service->share({file(u"a.mp4"_s, "x")});
    choose(u"E-mail"_s);
    QTRY_COMPARE(m_portal->calls.size(), 1);
    // The next one is not held up by it.
    m_portal->manner = Manner::Answers;
    m_service->share({u"rtsp://example.com/live"_s});
    choose(u"Open with another program"_s);
    QTRY_COMPARE(m_portal->calls.size(), 2);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the portal is gone"_s));
    m_portal->disappear(); // it is killed
    QTRY_COMPARE(banner(), u"The e-mail could not be prepared."_s);
    QVERIFY2(heart.isSteady(), heart.report());
}

void ShareServiceTest::sentByBluetooth()
{
    const QString address = file(u"a%20b#1?.mp4"_s, "film");
    m_service->share({address});
    choose(u"Bluetooth"_s);
    choose(u"Phone %1"_s); // a name is no pattern
    QTRY_COMPARE(banner(), u"Sending to Phone %1"_s);
    QTRY_COMPARE(m_obex->sent, QStringList{address.mid(7)});
    m_obex->transferred(510);
    QTRY_COMPARE(banner(), u"Sending to Phone %1: 51%"_s);
    m_obex->transferred(520);
    QTRY_COMPARE(banner(), u"Sending to Phone %1: 52%"_s);
    m_obex->status(u"complete"_s);
    QTRY_COMPARE(banner(), u"Sent to Phone %1"_s);
}

void ShareServiceTest::notSentByBluetooth()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"not sent to AA:BB"_s));
    m_obex->refuses = u"CreateSession"_s;
    m_service->share({file(u"a.mp4"_s, "film")});
    choose(u"Bluetooth"_s);
    choose(u"Phone %1"_s);
    QTRY_COMPARE(banner(), u"It could not be sent to Phone %1."_s);
}

void ShareServiceTest::sendingIsStopped()
{
    const QString stop = u"Stop sending to Phone %1"_s;
    const QString film = file(u"a.mp4"_s, "film");
    m_service->share({film});
    QVERIFY(!offered().contains(stop)); // nothing is under way
    choose(u"Bluetooth"_s);
    choose(u"Phone %1"_s);
    QTRY_COMPARE(m_obex->sent.size(), 1);
    m_service->share({film});
    choose(stop);
    QCOMPARE(banner(), u"Sending to Phone %1 was stopped"_s);
    QTRY_COMPARE(m_obex->removed.size(), 1);
    QTRY_COMPARE(m_service->findChildren<ObexPush *>().size(), 0);
    // The next one is through while the sheet is up: the row goes.
    m_service->share({film});
    QVERIFY(!offered().contains(stop));
    choose(u"Bluetooth"_s);
    choose(u"Phone %1"_s);
    QTRY_COMPARE(m_obex->sent.size(), 2);
    m_service->share({film});
    QVERIFY(offered().contains(stop));
    m_obex->status(u"complete"_s);
    QTRY_VERIFY(!offered().contains(stop));
    QVERIFY(m_service->sheet()->isOpen());
}

void ShareServiceTest::pageIsBlockedUntilTheChoiceIsMade()
{
    m_page->events.clear();
    m_service->share({u"rtsp://example.com/live"_s});
    QCOMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowBlocked});
    QSignalSpy accepted(m_service->sheet(), &ShareSheet::accepted);
    choose(u"Copy address"_s);
    QCOMPARE(accepted.size(), 1);
    QTRY_COMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
}

void ShareServiceTest::nothingToShare()
{
    for (int i = 0; i < 3; ++i)
        QTest::ignoreMessage(QtWarningMsg, "nothing is shared: no address");
    m_service->share({});
    m_service->share({QString()});
    m_service->share({u"file://"_s});
    QVERIFY(m_service->sheet() == nullptr);
}

void ShareServiceTest::withoutAWindow()
{
    m_page.reset();
    m_window.reset();
    QTest::ignoreMessage(QtWarningMsg, "nothing is shared: no window");
    m_service->share({u"file:///a"_s});
    QVERIFY(m_service->sheet() == nullptr);
}

void ShareServiceTest::aSecondShareTakesTheSheetOver()
{
    m_service->share({u"file:///a.mp4"_s});
    choose(u"Bluetooth"_s);
    m_service->share({u"rtsp://example.com/live"_s});
    QVERIFY(m_service->sheet()->isOpen());
    QCOMPARE(m_service->sheet()->title(), u"live"_s);
    choose(u"Copy address"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"rtsp://example.com/live"_s);
    QTRY_VERIFY(!m_window->sceneManager()->isBlocked());
}

// Another program asks for a video while the sheet is up.
void ShareServiceTest::sheetGoesWithItsPage()
{
    m_service->share({u"file:///a.mp4"_s});
    ApplicationPage next;
    next.appear(m_window.get(), toolkit::Appearance::Immediate);
    QVERIFY(!m_service->sheet()->isDisplayed());
    QTRY_VERIFY(!m_window->sceneManager()->isBlocked());
}

// The card is exported to a computer.
void ShareServiceTest::sheetGoesWhenAnotherPageCovers()
{
    m_service->share({u"file:///a.mp4"_s});
    ApplicationPage information;
    m_window->sceneManager()->showOverlayPage(&information);
    QVERIFY(!m_service->sheet()->isDisplayed());
    m_window->sceneManager()->hideOverlayPage(&information);
}

void ShareServiceTest::serviceGoesWhileTheSheetIsUp()
{
    m_service->share({u"file:///a.mp4"_s});
    m_service.reset();
    QVERIFY(!m_window->sceneManager()->isBlocked());
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QVERIFY(m_window->isVisible());
}

void ShareServiceTest::asTheFactoryOfTheProgram()
{
    ShareService::setFactory(&PlatformShareService::createOnDefaultBuses);
    const std::unique_ptr<ShareService> made(ShareService::create());
    ShareService::setFactory(nullptr);
    auto *service = dynamic_cast<PlatformShareService *>(made.get());
    QVERIFY(service != nullptr);
    made->share({u"file:///a.mp4"_s});
    QTRY_VERIFY(service->targets().hasEmail());
    QCOMPARE(service->sheet()->rows().size(), 3); // there is no system bus here
}

int main(int argc, char **argv)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    QApplication application(argc, argv);
    ShareServiceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "share_service.moc"
