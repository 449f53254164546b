// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/portalrequest.h"
#include "platform/share/servicepresence.h"
#include "platform/share/shareportal.h"
#include "platform/share/sharetargets.h"
#include "support/fakeportal.h"
#include "support/loglines.h"
#include "support/privatebus.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <csignal>

#include <fcntl.h>

using namespace Qt::Literals::StringLiterals;

// Requests to a portal on the session's bus.
class SharePortalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_portal.reset(); }
    void emailWithTwoAttachments();
    void emailOfAStreamHasNoAttachments();
    void fileIsOpenedByAProgramOfThePersonsChoice();
    void addressIsOpenedAsItIs();
    void endsOfARequest_data();
    void endsOfARequest();
    void theAnswerMayTakeItsTime();
    void anAnswerForAnotherRequestIsNone();
    void nobodyElseCanAnswer();
    void endsOnce();
    void portalThatGoesAwayFails();
    void withoutAPortalItFails();
    void deletedRequestIsNotHeardOf();
    void targetsFollowThePortal();
    void aPartThatThePortalLacksIsNotOffered();
    void targetsAskNobodyWhoIsNotThere();
    void whatIsMissingIsOneLineOfTheLog();
    void aPortalThatTheBusCanStart();

private:
    [[nodiscard]] QDBusUnixFileDescriptor file(const QString &name, const QByteArray &content)
    {
        QFile written(m_dir.filePath(name));
        if (!written.open(QIODevice::WriteOnly) || written.write(content) != content.size())
            return {};
        written.close();
        QDBusUnixFileDescriptor result;
        result.giveFileDescriptor(
            ::open(QFile::encodeName(written.fileName()).constData(), O_RDONLY | O_CLOEXEC));
        return result;
    }
    PortalRequest *openAddress()
    {
        return SharePortal(m_bus).openAddress(QString(), u"http://example.com/a.mp4"_s, this);
    }
    // "done", "cancelled" or "failed" once the request has ended.
    static QString endOf(PortalRequest *request)
    {
        QString end;
        connect(request, &PortalRequest::done, [&end] { end += u"done"_s; });
        connect(request, &PortalRequest::cancelled, [&end] { end += u"cancelled"_s; });
        connect(request, &PortalRequest::failed, [&end] { end += u"failed"_s; });
        request->start();
        if (!end.isEmpty())
            return u"within start(): "_s + end;
        const QPointer<PortalRequest> alive(request);
        (void)QTest::qWaitFor([&alive] { return alive.isNull(); });
        return end;
    }

    QTemporaryDir m_dir;
    QDBusConnection m_bus = QDBusConnection::sessionBus();
    std::unique_ptr<FakePortal> m_portal;
};

void SharePortalTest::init()
{
    m_portal = std::make_unique<FakePortal>(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
    QVERIFY(m_portal->appear());
}

void SharePortalTest::emailWithTwoAttachments()
{
    PortalRequest *request = SharePortal(m_bus).composeEmail(
        u"x11:1a"_s, u"2 items"_s, QString(), {file(u"a%20b#1?.mp4"_s, "one"), file(u"b"_s, "two")}, this);
    QCOMPARE(endOf(request), u"done"_s);
    QCOMPARE(m_portal->calls.size(), 1);
    const FakePortal::Call call = m_portal->calls.first();
    QCOMPARE(call.method, u"ComposeEmail"_s);
    QCOMPARE(call.window, u"x11:1a"_s);
    QCOMPARE(call.options.value(u"subject"_s).toString(), u"2 items"_s);
    QVERIFY(!call.options.contains(u"body"_s));
    QCOMPARE(call.files, (QList<QByteArray>{"one", "two"}));
}

void SharePortalTest::emailOfAStreamHasNoAttachments()
{
    PortalRequest *request
        = SharePortal(m_bus).composeEmail({}, u"live"_s, u"rtsp://example.com/live"_s, {}, this);
    QCOMPARE(endOf(request), u"done"_s);
    const FakePortal::Call call = m_portal->calls.first();
    QCOMPARE(call.options.value(u"body"_s).toString(), u"rtsp://example.com/live"_s);
    QVERIFY(!call.options.contains(u"attachment_fds"_s));
}

void SharePortalTest::fileIsOpenedByAProgramOfThePersonsChoice()
{
    PortalRequest *request = SharePortal(m_bus).openFile(u"x11:1a"_s, file(u"a"_s, "film"), this);
    QCOMPARE(endOf(request), u"done"_s);
    const FakePortal::Call call = m_portal->calls.first();
    QCOMPARE(call.method, u"OpenFile"_s);
    QCOMPARE(call.files, QList<QByteArray>{"film"});
    QCOMPARE(call.options.value(u"ask"_s), QVariant(true));
    QCOMPARE(call.options.value(u"writable"_s), QVariant(false));
}

void SharePortalTest::addressIsOpenedAsItIs()
{
    QCOMPARE(endOf(openAddress()), u"done"_s);
    const FakePortal::Call call = m_portal->calls.first();
    QCOMPARE(call.method, u"OpenURI"_s);
    QCOMPARE(call.address, u"http://example.com/a.mp4"_s);
    QCOMPARE(call.options.value(u"ask"_s), QVariant(true));
}

void SharePortalTest::endsOfARequest_data()
{
    QTest::addColumn<FakePortal::Manner>("manner");
    QTest::addColumn<uint>("code");
    QTest::addColumn<QString>("end");
    using Manner = FakePortal::Manner;
    QTest::newRow("done") << Manner::Answers << 0U << u"done"_s;
    QTest::newRow("broken off by the person") << Manner::Answers << 1U << u"cancelled"_s;
    QTest::newRow("failed") << Manner::Answers << 2U << u"failed"_s;
    QTest::newRow("a code of the future") << Manner::Answers << 77U << u"failed"_s;
    QTest::newRow("the answer before the handle") << Manner::ResponseFirst << 0U << u"done"_s;
    QTest::newRow("broken off before the handle") << Manner::ResponseFirst << 1U << u"cancelled"_s;
    QTest::newRow("refused") << Manner::Refuses << 0U << u"failed"_s;
}

void SharePortalTest::endsOfARequest()
{
    QFETCH(FakePortal::Manner, manner);
    QFETCH(uint, code);
    QFETCH(QString, end);
    m_portal->manner = manner;
    m_portal->code = code;
    PortalRequest *request = openAddress();
    QCOMPARE(endOf(request), end);
    const FakePortal::Call call = m_portal->calls.first();
    QVERIFY(!call.options.value(u"handle_token"_s).toString().isEmpty());
}

// The person thinks about which program to take.
void SharePortalTest::theAnswerMayTakeItsTime()
{
    m_portal->manner = FakePortal::Manner::Waits;
    PortalRequest *request = openAddress();
    QSignalSpy done(request, &PortalRequest::done);
    request->start();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QCOMPARE(request->handle(), m_portal->calls.first().handle); // known beforehand
    QVERIFY(!done.wait(300));
    m_portal->respond(0);
    QVERIFY(done.wait(TestPatience));
    // A portal of the old kind names its object as it likes.
    m_portal->manner = FakePortal::Manner::OwnHandle;
    PortalRequest *old = openAddress();
    QSignalSpy oldDone(old, &PortalRequest::done);
    old->start();
    QTRY_COMPARE(m_portal->calls.size(), 2);
    QTRY_COMPARE(old->handle(), m_portal->calls.last().handle);
    QVERIFY(old->handle().endsWith("/t1"_L1));
    m_portal->respond(0);
    QVERIFY(oldDone.wait(TestPatience));
}

void SharePortalTest::anAnswerForAnotherRequestIsNone()
{
    m_portal->manner = FakePortal::Manner::Waits;
    PortalRequest *first = openAddress();
    PortalRequest *second = openAddress();
    QSignalSpy firstEnd(first, &PortalRequest::cancelled);
    QSignalSpy secondEnd(second, &PortalRequest::cancelled);
    first->start();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    second->start();
    QTRY_COMPARE(m_portal->calls.size(), 2);
    m_portal->respond(1);
    QVERIFY(secondEnd.wait(TestPatience));
    QCOMPARE(firstEnd.size(), 0);
    delete first;
}

void SharePortalTest::nobodyElseCanAnswer()
{
    m_portal->manner = FakePortal::Manner::Waits;
    PortalRequest *request = openAddress();
    QSignalSpy done(request, &PortalRequest::done);
    request->start();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QDBusConnection stranger
        = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), u"stranger"_s);
    QDBusMessage forged = QDBusMessage::createTargetedSignal(
        m_bus.baseService(), request->handle(), u"org.freedesktop.portal.Request"_s, u"Response"_s);
    forged << 0U << QVariantMap();
    QVERIFY(stranger.send(forged));
    QVERIFY(!done.wait(300));
    QDBusConnection::disconnectFromBus(u"stranger"_s);
    m_portal->respond(0);
    QVERIFY(done.wait(TestPatience));
}

void SharePortalTest::endsOnce()
{
    m_portal->manner = FakePortal::Manner::Waits;
    PortalRequest *request = openAddress();
    QSignalSpy done(request, &PortalRequest::done);
    QSignalSpy failed(request, &PortalRequest::failed);
    const QPointer<PortalRequest> alive(request);
    request->start();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    m_portal->respond(0);
    m_portal->respond(2);
    m_portal->disappear();
    QTRY_VERIFY(alive.isNull());
    QCOMPARE(done.size(), 1);
    QCOMPARE(failed.size(), 0);
}

void SharePortalTest::portalThatGoesAwayFails()
{
    m_portal->manner = FakePortal::Manner::Waits;
    PortalRequest *request = openAddress();
    QSignalSpy failed(request, &PortalRequest::failed);
    request->start();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    m_portal->disappear();
    QVERIFY(failed.wait(TestPatience));
    // It is restarted: the next request is none of the old one's.
    QVERIFY(m_portal->appear());
    m_portal->manner = FakePortal::Manner::Answers;
    QCOMPARE(endOf(openAddress()), u"done"_s);
}

void SharePortalTest::withoutAPortalItFails()
{
    m_portal->disappear();
    QCOMPARE(endOf(openAddress()), u"failed"_s);
}

void SharePortalTest::deletedRequestIsNotHeardOf()
{
    m_portal->manner = FakePortal::Manner::Waits;
    PortalRequest *request = openAddress();
    request->start();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    delete request;
    m_portal->respond(0);
    m_portal->manner = FakePortal::Manner::Answers;
    QCOMPARE(endOf(openAddress()), u"done"_s);
}

void SharePortalTest::targetsFollowThePortal()
{
    ShareTargets targets(m_bus, QDBusConnection(u"no such bus"_s), this);
    QTRY_VERIFY(targets.hasEmail() && targets.hasOpenWith());
    QVERIFY(!targets.hasBluetooth());
    m_portal->disappear();
    QTRY_VERIFY(!targets.hasEmail() && !targets.hasOpenWith());
    QVERIFY(m_portal->appear());
    QTRY_VERIFY(targets.hasEmail() && targets.hasOpenWith());
}

void SharePortalTest::aPartThatThePortalLacksIsNotOffered()
{
    m_portal->interfaces = {SharePortal::openUriInterface()};
    ShareTargets targets(m_bus, QDBusConnection(u"no such bus"_s), this);
    QTRY_VERIFY(targets.hasOpenWith() && !targets.hasEmail());
    // A mail program's part comes with the next start of the portal.
    m_portal->disappear();
    QTRY_VERIFY(!targets.hasOpenWith());
    m_portal->interfaces = {SharePortal::emailInterface()};
    QVERIFY(m_portal->appear());
    QTRY_VERIFY(!targets.hasOpenWith() && targets.hasEmail());
}

void SharePortalTest::targetsAskNobodyWhoIsNotThere()
{
    ShareTargets nowhere(QDBusConnection(u"no such bus"_s), QDBusConnection(u"no such bus"_s), this);
    QVERIFY(!nowhere.hasEmail() && !nowhere.hasOpenWith() && !nowhere.hasBluetooth());
}

void SharePortalTest::whatIsMissingIsOneLineOfTheLog()
{
    const QString gone = u"org.freedesktop.portal.Desktop is not there: nothing is shared by it"_s;
    const QString there = u"org.freedesktop.portal.Desktop is there"_s;
    LogLines log("kestrel.share");
    ServicePresence present(m_bus, SharePortal::busName(), this);
    QTRY_VERIFY(present.isAvailable());
    QCOMPARE(log.all(), QStringList()); // what is there from the start is worth no line
    m_portal->disappear();
    QTRY_VERIFY(!present.isAvailable());
    QCOMPARE(log.all(), QStringList{gone});
    ServicePresence missing(m_bus, SharePortal::busName(), this);
    QTRY_COMPARE(log.all(), (QStringList{gone, gone}));
    QVERIFY(m_portal->appear());
    QTRY_VERIFY(present.isAvailable() && missing.isAvailable());
    QCOMPARE(log.all(), (QStringList{gone, gone, there, there}));
    ServicePresence nowhere(QDBusConnection(u"no such bus"_s), SharePortal::busName(), this);
    QCOMPARE(log.count(gone), 3);
}

// Offering it does not start it; the person who takes it does. It may come and go as it likes.
void SharePortalTest::aPortalThatTheBusCanStart()
{
    const QString folder = m_dir.filePath(u"data/dbus-1/services"_s);
    QVERIFY(QDir().mkpath(folder));
    const QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.filePath(u"data"_s)));
    PrivateBus daemon;
    const QString address = daemon.start();
    qputenv("XDG_DATA_HOME", dataHome);
    QVERIFY(!address.isEmpty());
    QDBusConnection bus = QDBusConnection::connectToBus(address, u"started"_s);
    QDBusConnectionInterface *names = bus.interface();
    const ShareTargets targets(bus, QDBusConnection(u"no such bus"_s), this);
    QVERIFY(!targets.hasEmail());
    // It is installed while the program runs.
    QFile service(folder + u"/org.freedesktop.portal.Desktop.service"_s);
    QVERIFY(service.open(QIODevice::WriteOnly));
    service.write("[D-BUS Service]\nName=org.freedesktop.portal.Desktop\nExec=" KESTREL_PORTAL_PEER "\n");
    service.close();
    QVERIFY(bus.call(QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/"_s,
                                                    u"org.freedesktop.DBus"_s, u"ReloadConfig"_s))
                .type()
            == QDBusMessage::ReplyMessage);
    QTRY_VERIFY(targets.hasEmail() && targets.hasOpenWith());
    QVERIFY(!names->isServiceRegistered(SharePortal::busName()));
    const SharePortal portal(bus);
    QCOMPARE(endOf(portal.openAddress(QString(), u"http://example.com/a.mp4"_s, this)), u"done"_s);
    QVERIFY(names->isServiceRegistered(SharePortal::busName()));
    QCOMPARE(::kill(pid_t(names->servicePid(SharePortal::busName()).value()), SIGKILL), 0);
    QTRY_VERIFY(!names->isServiceRegistered(SharePortal::busName()));
    QVERIFY(targets.hasEmail() && targets.hasOpenWith()); // the next one is a call away
    QCOMPARE(endOf(portal.openFile(QString(), file(u"film"_s, "film"), this)), u"done"_s);
    QDBusConnection::disconnectFromBus(u"started"_s);
}

QTEST_GUILESS_MAIN(SharePortalTest)
#include "share_portal.moc"
