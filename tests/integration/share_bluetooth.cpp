// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/bluezdirectory.h"
#include "platform/share/obexpush.h"
#include "platform/share/sharetargets.h"
#include "support/fakebluetooth.h"
#include "support/loglines.h"
#include "support/privatebus.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

// bluez on a system bus of the test's own, its object exchange service on the session's bus.
class ShareBluetoothTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void pairedDevicesAreFollowed();
    void theirPropertiesAreFollowed();
    void signalStrengthIsNotAskedAbout();
    void bluezThatRestartsIsReadAgain();
    void nonsenseIsNoDevice();
    void withoutBluezThereIsOneLineOfTheLog();
    void anotherImplementationOfBluez();
    void offeredWhileBothAreThere();
    void aFileIsSent();
    void severalFilesAreSentOneAfterTheOther();
    void throughBeforeTheCallIsAnswered();
    void progressOnlyGoesUp();
    void failures_data();
    void failures();
    void theServiceDiesInMidTransfer();
    void theServiceHangsAndIsKilled_data();
    void theServiceHangsAndIsKilled();
    void stoppedWhileItSends();
    void stoppedBeforeThereIsASession();
    void strangersTransfersAreNotOurs();

private:
    [[nodiscard]] QStringList names(const BluezDirectory &directory) const
    {
        QStringList result;
        for (const BluetoothDevice &device : directory.devices())
            result.append(device.name);
        return result;
    }
    ObexPush *push(const QStringList &paths)
    {
        return new ObexPush(m_session, {u"AA:BB"_s, u"11:22"_s, u"Phone"_s, {}, false}, paths, this);
    }

    PrivateBus m_daemon;
    QString m_systemAddress;
    QDBusConnection m_system{u"none"_s};
    QDBusConnection m_session = QDBusConnection::sessionBus();
    std::unique_ptr<FakeBluez> m_bluez;
    std::unique_ptr<FakeObex> m_obex;
};

void ShareBluetoothTest::initTestCase()
{
    m_systemAddress = m_daemon.start();
    QVERIFY(!m_systemAddress.isEmpty());
    m_system = QDBusConnection::connectToBus(m_systemAddress, u"system"_s);
    QVERIFY(m_system.isConnected());
}

void ShareBluetoothTest::init()
{
    m_bluez = std::make_unique<FakeBluez>(m_systemAddress);
    m_bluez->setAdapter(true);
    m_obex = std::make_unique<FakeObex>(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
}

void ShareBluetoothTest::cleanup()
{
    m_obex.reset();
    m_bluez.reset();
}

void ShareBluetoothTest::pairedDevicesAreFollowed()
{
    m_bluez->addDevice(u"AA:01"_s, {{u"Alias"_s, u"Phone"_s}});
    QVERIFY(m_bluez->appear());
    BluezDirectory directory(m_system);
    QSignalSpy changed(&directory, &BluezDirectory::changed);
    QVERIFY(!directory.isPowered()); // nothing is known at first, and nobody waits for it
    QTRY_COMPARE(names(directory), QStringList{u"Phone"_s});
    QVERIFY(directory.isPowered());
    QCOMPARE(changed.size(), 1);
    m_bluez->addDevice(u"AA:02"_s, {{u"Alias"_s, u"Laptop"_s}});
    QTRY_COMPARE(names(directory), (QStringList{u"Laptop"_s, u"Phone"_s}));
    m_bluez->removeDevice(u"AA:01"_s);
    QTRY_COMPARE(names(directory), QStringList{u"Laptop"_s});
}

void ShareBluetoothTest::theirPropertiesAreFollowed()
{
    m_bluez->addDevice(u"AA:01"_s, {{u"Alias"_s, u"Phone"_s}, {u"Paired"_s, false}});
    QVERIFY(m_bluez->appear());
    BluezDirectory directory(m_system);
    QTRY_VERIFY(directory.isPowered());
    QCOMPARE(names(directory), QStringList());
    const QString path = u"/org/bluez/hci0/dev_AA_01"_s;
    m_bluez->change(path, u"org.bluez.Device1"_s, {{u"Paired"_s, true}});
    QTRY_COMPARE(names(directory), QStringList{u"Phone"_s});
    m_bluez->change(path, u"org.bluez.Device1"_s, {{u"Alias"_s, u"Telephone"_s}});
    QTRY_COMPARE(names(directory), QStringList{u"Telephone"_s});
    m_bluez->setAdapter(false);
    QTRY_VERIFY(!directory.isPowered());
    QCOMPARE(names(directory), QStringList());
}

void ShareBluetoothTest::signalStrengthIsNotAskedAbout()
{
    m_bluez->addDevice(u"AA:01"_s, {{u"Alias"_s, u"Phone"_s}});
    QVERIFY(m_bluez->appear());
    BluezDirectory directory(m_system);
    QTRY_COMPARE(directory.devices().size(), 1);
    const int reads = m_bluez->reads;
    for (int i = 0; i < 100; ++i)
        m_bluez->change(u"/org/bluez/hci0/dev_AA_01"_s, u"org.bluez.Device1"_s, {{u"RSSI"_s, -i}});
    m_bluez->addDevice(u"AA:02"_s, {{u"Alias"_s, u"Laptop"_s}}); // comes after them
    QTRY_COMPARE(directory.devices().size(), 2);
    QVERIFY2(m_bluez->reads <= reads + 2, qPrintable(QString::number(m_bluez->reads - reads)));
}

void ShareBluetoothTest::bluezThatRestartsIsReadAgain()
{
    m_bluez->addDevice(u"AA:01"_s, {{u"Alias"_s, u"Phone"_s}});
    QVERIFY(m_bluez->appear());
    BluezDirectory directory(m_system);
    QTRY_COMPARE(names(directory), QStringList{u"Phone"_s});
    m_bluez->disappear();
    QTRY_VERIFY(!directory.isPowered());
    QCOMPARE(names(directory), QStringList());
    m_bluez->addDevice(u"AA:02"_s, {{u"Alias"_s, u"Laptop"_s}});
    QVERIFY(m_bluez->appear());
    QTRY_COMPARE(names(directory), (QStringList{u"Laptop"_s, u"Phone"_s}));
}

void ShareBluetoothTest::nonsenseIsNoDevice()
{
    m_bluez->nonsense = true;
    QVERIFY(m_bluez->appear());
    BluezDirectory directory(m_system);
    QTRY_VERIFY(m_bluez->reads > 0);
    m_bluez->nonsense = false;
    m_bluez->addDevice(u"AA:01"_s, {{u"Alias"_s, u"Phone"_s}});
    QTRY_COMPARE(names(directory), QStringList{u"Phone"_s});
}

void ShareBluetoothTest::withoutBluezThereIsOneLineOfTheLog()
{
    LogLines log("kestrel.share");
    BluezDirectory directory(m_system);
    QTRY_COMPARE(log.all().size(), 1);
    QVERIFY2(log.all().first().startsWith("nothing is sent by Bluetooth: "_L1),
             qPrintable(log.all().first()));
    QVERIFY(m_bluez->appear());
    QTRY_VERIFY(directory.isPowered());
    m_bluez->disappear();
    QTRY_VERIFY(!directory.isPowered());
    QCOMPARE(log.all().size(), 2);
    QVERIFY2(log.all().last().endsWith("is gone: nothing is sent by Bluetooth"_L1),
             qPrintable(log.all().last()));
}

// The mock that other projects test against.
void ShareBluetoothTest::anotherImplementationOfBluez()
{
    QProcess mock;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, m_systemAddress);
    mock.setProcessEnvironment(environment);
    mock.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    mock.start(u"/usr/bin/python3"_s, {u"-m"_s, u"dbusmock"_s, u"--system"_s, u"--template"_s, u"bluez5"_s});
    QVERIFY(mock.waitForStarted());
    BluezDirectory directory(m_system);
    const auto tell = [this](const QString &method, const QVariantList &arguments) {
        QDBusMessage message
            = QDBusMessage::createMethodCall(u"org.bluez"_s, u"/org/bluez"_s, u"org.bluez.Mock"_s, method);
        message.setArguments(arguments);
        const QDBusMessage reply = m_system.call(message);
        if (reply.type() != QDBusMessage::ReplyMessage)
            qWarning() << reply;
        return reply.type() == QDBusMessage::ReplyMessage;
    };
    QTRY_VERIFY_WITH_TIMEOUT(m_system.interface()->isServiceRegistered(u"org.bluez"_s).value(), 15000);
    QVERIFY(tell(u"AddAdapter"_s, {u"hci0"_s, u"desk"_s}));
    QTRY_VERIFY(directory.isPowered());
    QVERIFY(tell(u"AddDevice"_s, {u"hci0"_s, u"AA:BB:CC:DD:EE:FF"_s, u"Anna"_s}));
    QVERIFY(tell(u"AddDevice"_s, {u"hci0"_s, u"AA:BB:CC:DD:EE:00"_s, u"Stranger"_s}));
    QVERIFY(tell(u"PairDevice"_s, {u"hci0"_s, u"AA:BB:CC:DD:EE:FF"_s, 0x5a020c}));
    QTRY_COMPARE(directory.devices().size(), 1);
    QCOMPARE(directory.devices().first().address, u"AA:BB:CC:DD:EE:FF"_s);
    mock.terminate();
    QVERIFY(mock.waitForFinished());
    QTRY_VERIFY(!directory.isPowered());
}

void ShareBluetoothTest::offeredWhileBothAreThere()
{
    ShareTargets targets(m_session, m_system, this);
    QSignalSpy changed(&targets, &ShareTargets::changed);
    QVERIFY(!targets.hasBluetooth());
    QVERIFY(m_bluez->appear());
    QVERIFY(changed.wait(TestPatience));
    QVERIFY(!targets.hasBluetooth()); // an adapter, but nobody who sends
    QVERIFY(m_obex->appear());
    QTRY_VERIFY(targets.hasBluetooth());
    m_bluez->setAdapter(false);
    QTRY_VERIFY(!targets.hasBluetooth());
    m_bluez->setAdapter(true);
    QTRY_VERIFY(targets.hasBluetooth());
    m_obex->disappear();
    QTRY_VERIFY(!targets.hasBluetooth());
}

void ShareBluetoothTest::aFileIsSent()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/v/a%20b#1?.mp4"_s});
    QSignalSpy progress(sending, &ObexPush::progress);
    QSignalSpy finished(sending, &ObexPush::finished);
    const QPointer<ObexPush> alive(sending);
    sending->start();
    QTRY_COMPARE(m_obex->sent, QStringList{u"/v/a%20b#1?.mp4"_s}); // its path as it stands
    QCOMPARE(m_obex->sessions, QStringList{u"AA:BB 11:22 opp"_s});
    m_obex->status(u"active"_s);
    m_obex->transferred(500);
    QTRY_COMPARE(progress.size(), 1);
    QCOMPARE(progress.first().first().toInt(), 50);
    QCOMPARE(finished.size(), 0);
    m_obex->status(u"complete"_s);
    QVERIFY(finished.wait(TestPatience));
    QTRY_COMPARE(m_obex->removed, QStringList{u"/org/bluez/obex/client/session7"_s});
    QTRY_VERIFY(alive.isNull());
}

void ShareBluetoothTest::severalFilesAreSentOneAfterTheOther()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/a"_s, u"/b"_s});
    QSignalSpy progress(sending, &ObexPush::progress);
    QSignalSpy finished(sending, &ObexPush::finished);
    sending->start();
    QTRY_COMPARE(m_obex->sent.size(), 1);
    m_obex->transferred(1000);
    m_obex->status(u"complete"_s);
    QTRY_COMPARE(m_obex->sent, (QStringList{u"/a"_s, u"/b"_s}));
    QCOMPARE(progress.last().first().toInt(), 50);
    QCOMPARE(finished.size(), 0);
    m_obex->transferred(500);
    QTRY_COMPARE(progress.last().first().toInt(), 75);
    m_obex->status(u"complete"_s);
    QVERIFY(finished.wait(TestPatience));
    QCOMPARE(m_obex->sessions.size(), 1); // one for both
}

void ShareBluetoothTest::throughBeforeTheCallIsAnswered()
{
    QVERIFY(m_obex->appear());
    m_obex->completesAtOnce = true;
    ObexPush *sending = push({u"/a"_s, u"/b"_s});
    QSignalSpy finished(sending, &ObexPush::finished);
    sending->start();
    QVERIFY(finished.wait(TestPatience));
    QCOMPARE(m_obex->sent.size(), 2);
}

void ShareBluetoothTest::progressOnlyGoesUp()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/a"_s});
    QList<int> told;
    connect(sending, &ObexPush::progress, this, [&told](int percent) { told.append(percent); });
    QSignalSpy finished(sending, &ObexPush::finished);
    sending->start();
    QTRY_COMPARE(m_obex->sent.size(), 1);
    for (const quint64 bytes : {100ULL, 101ULL, 90ULL, 200ULL, 5000ULL})
        m_obex->transferred(bytes);
    m_obex->status(u"complete"_s);
    QVERIFY(finished.wait(TestPatience));
    QCOMPARE(told, (QList<int>{10, 20, 100}));
}

void ShareBluetoothTest::failures_data()
{
    QTest::addColumn<QString>("refused");
    QTest::addColumn<bool>("sessionIsRemoved");
    QTest::newRow("the device is out of reach") << u"CreateSession"_s << false;
    QTest::newRow("the file cannot be sent") << u"SendFile"_s << true;
    QTest::newRow("the other side declines") << QString() << true;
}

void ShareBluetoothTest::failures()
{
    QFETCH(QString, refused);
    QFETCH(bool, sessionIsRemoved);
    QVERIFY(m_obex->appear());
    m_obex->refuses = refused;
    ObexPush *sending = push({u"/a"_s, u"/b"_s});
    QSignalSpy finished(sending, &ObexPush::finished);
    QSignalSpy failed(sending, &ObexPush::failed);
    const QPointer<ObexPush> alive(sending);
    sending->start();
    QVERIFY(failed.isEmpty());
    if (refused.isEmpty()) {
        QTRY_COMPARE(m_obex->sent.size(), 1);
        m_obex->status(u"error"_s);
        m_obex->status(u"complete"_s);
    }
    QVERIFY(failed.wait(TestPatience));
    QVERIFY(!failed.first().first().toString().isEmpty());
    QTRY_VERIFY(alive.isNull());
    QTRY_COMPARE(m_obex->removed.size(), sessionIsRemoved ? 1 : 0);
    QCOMPARE(finished.size(), 0);
    QCOMPARE(failed.size(), 1);
}

void ShareBluetoothTest::theServiceDiesInMidTransfer()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/a"_s});
    QSignalSpy failed(sending, &ObexPush::failed);
    sending->start();
    QTRY_COMPARE(m_obex->sent.size(), 1);
    m_obex->disappear();
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed.size(), 1);
    // Nobody is there at all: it fails as well, later.
    ObexPush *next = push({u"/a"_s});
    QSignalSpy nextFailed(next, &ObexPush::failed);
    next->start();
    QVERIFY(nextFailed.isEmpty());
    QVERIFY(nextFailed.wait(TestPatience));
}

void ShareBluetoothTest::theServiceHangsAndIsKilled_data()
{
    QTest::addColumn<QString>("hangs");
    QTest::newRow("before there is a session") << u"CreateSession"_s;
    QTest::newRow("with a session") << u"SendFile"_s;
}

void ShareBluetoothTest::theServiceHangsAndIsKilled()
{
    QFETCH(QString, hangs);
    QVERIFY(m_obex->appear());
    m_obex->hangs = hangs;
    ObexPush *sending = push({u"/a"_s});
    QSignalSpy failed(sending, &ObexPush::failed);
    const QPointer<ObexPush> alive(sending);
    sending->start();
    QTRY_COMPARE(m_obex->unanswered, 1);
    QVERIFY(failed.isEmpty());
    m_obex->disappear();
    QVERIFY(failed.wait(TestPatience));
    QTRY_VERIFY(alive.isNull());
    QCOMPARE(failed.size(), 1);
    // The next one finds the service that was started in its place.
    m_obex->hangs.clear();
    QVERIFY(m_obex->appear());
    ObexPush *next = push({u"/a"_s});
    QSignalSpy finished(next, &ObexPush::finished);
    m_obex->completesAtOnce = true;
    next->start();
    QVERIFY(finished.wait(TestPatience));
}

void ShareBluetoothTest::stoppedWhileItSends()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/a"_s, u"/b"_s});
    QSignalSpy failed(sending, &ObexPush::failed);
    QSignalSpy finished(sending, &ObexPush::finished);
    const QPointer<ObexPush> alive(sending);
    sending->start();
    QTRY_COMPARE(m_obex->sent.size(), 1);
    m_obex->transferred(500);
    sending->stop();
    sending->stop();
    QTRY_COMPARE(m_obex->removed, QStringList{u"/org/bluez/obex/client/session7"_s});
    QTRY_VERIFY(alive.isNull());
    QCOMPARE(failed.size() + finished.size(), 0);
    QCOMPARE(m_obex->sent.size(), 1);
}

// The device is being looked for: the session that comes of it is given back.
void ShareBluetoothTest::stoppedBeforeThereIsASession()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/a"_s});
    const QPointer<ObexPush> alive(sending);
    sending->start();
    sending->stop();
    QTRY_COMPARE(m_obex->removed.size(), 1);
    QTRY_VERIFY(alive.isNull());
    QCOMPARE(m_obex->sent.size(), 0);
    // The service dies instead of answering.
    m_obex->hangs = u"CreateSession"_s;
    ObexPush *next = push({u"/a"_s});
    const QPointer<ObexPush> nextAlive(next);
    QSignalSpy failed(next, &ObexPush::failed);
    next->start();
    QTRY_COMPARE(m_obex->unanswered, 1);
    next->stop();
    m_obex->disappear();
    m_obex.reset();
    QTRY_VERIFY(nextAlive.isNull());
    QCOMPARE(failed.size(), 0);
}

// The desktop's own Bluetooth panel sends something at the same time.
void ShareBluetoothTest::strangersTransfersAreNotOurs()
{
    QVERIFY(m_obex->appear());
    ObexPush *sending = push({u"/a"_s});
    QSignalSpy finished(sending, &ObexPush::finished);
    sending->start();
    QTRY_COMPARE(m_obex->sent.size(), 1);
    m_obex->sent.append(u"/stranger"_s); // what is told now is of the next transfer
    m_obex->status(u"error"_s);
    m_obex->sent.removeLast();
    m_obex->status(u"complete"_s);
    QVERIFY(finished.wait(TestPatience));
}

QTEST_GUILESS_MAIN(ShareBluetoothTest)
#include "share_bluetooth.moc"
