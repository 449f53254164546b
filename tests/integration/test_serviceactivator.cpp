// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/serviceactivator.h"
#include "support/storepeercontrol.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString name = u"com.harrow.Kestrel.Store"_s;
constexpr char programVariable[] = "KESTREL_STORE_PROGRAM";
constexpr char withoutBusVariable[] = "KESTREL_TEST_WITHOUT_BUS";

// Lets the bus of this test activate the name for as long as it lives.
class ActivationFile
{
public:
    explicit ActivationFile(const QByteArray &program)
    {
        const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/dbus-1/services"_s;
        QDir().mkpath(folder);
        m_file.setFileName(folder + u"/com.harrow.Kestrel.Store.service"_s);
        m_isWritten = m_file.open(QIODevice::WriteOnly)
            && m_file.write("[D-BUS Service]\nName=com.harrow.Kestrel.Store\nExec=" + program + "\n") > 0;
        m_file.close();
        reload();
    }
    ~ActivationFile()
    {
        m_file.remove();
        reload();
    }
    Q_DISABLE_COPY_MOVE(ActivationFile)
    [[nodiscard]] bool isWritten() const { return m_isWritten; }

private:
    static void reload()
    {
        QDBusConnection::sessionBus().call(
            QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                           u"org.freedesktop.DBus"_s, u"ReloadConfig"_s));
    }
    QFile m_file;
    bool m_isWritten = false;
};

} // namespace

class TestServiceActivator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        if (!qEnvironmentVariableIsSet(withoutBusVariable))
            m_peer = std::make_unique<StorePeerControl>();
    }
    void cleanup() { m_peer.reset(); }

    void startsTheNamedProgram();
    void findsARunningService();
    void findsARunningServiceThatTheBusCannotStart();
    void letsTheBusActivate();
    void fallsBackWhenActivationFails();
    void saysWhatIsMissing();
    void programThatNeverAppears();
    void tellsWhenTheOwnerChanges();
    void withoutABus();

private:
    std::unique_ptr<StorePeerControl> m_peer;
};

void TestServiceActivator::startsTheNamedProgram()
{
    ServiceActivator activator(name, u"kestrel-store"_s);
    QSignalSpy ready(&activator, &ServiceActivator::ready);
    QSignalSpy ownerChanged(&activator, &ServiceActivator::ownerChanged);
    QCOMPARE(activator.programPath(), qEnvironmentVariable(programVariable));
    activator.ensure();
    activator.ensure();
    QCOMPARE(ready.size(), 0);
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(activator.isOwned());
    QVERIFY(m_peer->isRunning());
    QTRY_COMPARE(ownerChanged.value(0).value(0).toBool(), true);
    QCOMPARE(ready.size(), 1);
}

void TestServiceActivator::findsARunningService()
{
    QVERIFY(m_peer->start());
    m_peer->forbidStart();
    ServiceActivator activator(name, u"kestrel-store"_s);
    QSignalSpy ready(&activator, &ServiceActivator::ready);
    for (int times = 1; times <= 2; ++times) {
        activator.ensure();
        QVERIFY(ready.wait(TestPatience));
        QCOMPARE(ready.size(), times);
    }
    QVERIFY(activator.isOwned());
}

// In a build that is not installed no service file gives the name. The second request came while the service
// was running, and the bus refused it all the same; every picture of the list stayed away.
void TestServiceActivator::findsARunningServiceThatTheBusCannotStart()
{
    QVERIFY(m_peer->start());
    m_peer->forbidStart();
    qunsetenv(programVariable);
    ServiceActivator activator(name, u"no-such-program"_s);
    QSignalSpy ready(&activator, &ServiceActivator::ready);
    QSignalSpy failed(&activator, &ServiceActivator::failed);
    for (int times = 1; times <= 2; ++times) {
        activator.ensure();
        QTRY_COMPARE(ready.size() + failed.size(), times);
    }
    QCOMPARE(failed.size(), 0);
}

void TestServiceActivator::letsTheBusActivate()
{
    const ActivationFile file(qgetenv(programVariable));
    QVERIFY(file.isWritten());
    qunsetenv(programVariable);
    ServiceActivator activator(name, u"no-such-program"_s);
    QCOMPARE(activator.programPath(), QString());
    QSignalSpy ready(&activator, &ServiceActivator::ready);
    activator.ensure();
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(activator.isOwned());
    QVERIFY(m_peer->isRunning());
}

// Beside this test program stands the service for tests, under its own name.
void TestServiceActivator::fallsBackWhenActivationFails()
{
    const ActivationFile file("/bin/false");
    QVERIFY(file.isWritten());
    ServiceActivator activator(name, u"kestrel-store-peer"_s);
    QCOMPARE(activator.programPath(), QCoreApplication::applicationDirPath() + u"/kestrel-store-peer"_s);
    qunsetenv(programVariable);
    QSignalSpy ready(&activator, &ServiceActivator::ready);
    activator.ensure();
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(m_peer->isRunning());
}

void TestServiceActivator::saysWhatIsMissing()
{
    qunsetenv(programVariable);
    ServiceActivator activator(u"com.harrow.Kestrel.NoSuchService"_s, u"no-such-program"_s);
    QSignalSpy failed(&activator, &ServiceActivator::failed);
    activator.ensure();
    QVERIFY(failed.wait(TestPatience));
    QVERIFY2(failed[0][0].toString().contains(u"com.harrow.Kestrel.NoSuchService"_s),
             qPrintable(failed[0][0].toString()));
    // It can be asked again.
    activator.ensure();
    QVERIFY(failed.wait(TestPatience));
}

void TestServiceActivator::programThatNeverAppears()
{
    qputenv(programVariable, "/bin/true");
    ServiceActivator activator(name, u"kestrel-store"_s);
    activator.setStartTimeout(300);
    QSignalSpy failed(&activator, &ServiceActivator::failed);
    QSignalSpy ready(&activator, &ServiceActivator::ready);
    activator.ensure();
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed[0][0].toString(), u"com.harrow.Kestrel.Store did not appear on the bus"_s);
    m_peer->allowStart();
    activator.setStartTimeout(10000);
    activator.ensure();
    QVERIFY(ready.wait(TestPatience));
    QCOMPARE(failed.size(), 1);
}

void TestServiceActivator::tellsWhenTheOwnerChanges()
{
    QVERIFY(m_peer->start());
    ServiceActivator activator(name, u"kestrel-store"_s);
    QTRY_VERIFY(activator.isOwned());
    QSignalSpy changed(&activator, &ServiceActivator::ownerChanged);
    m_peer->kill();
    QTRY_VERIFY(!activator.isOwned());
    QVERIFY(m_peer->start());
    QTRY_VERIFY(activator.isOwned());
    QList<bool> told;
    for (const QList<QVariant> &arguments : changed)
        told.append(arguments[0].toBool());
    QCOMPARE(told, QList<bool>({false, true}));
}

// Where there is no session bus at all, which only another process can see.
void TestServiceActivator::withoutABus()
{
    if (!qEnvironmentVariableIsSet(withoutBusVariable)) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent/bus"_s);
        environment.insert(QString::fromLatin1(withoutBusVariable), u"1"_s);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {u"withoutABus"_s});
        QVERIFY(process.waitForFinished());
        QVERIFY2(process.exitCode() == 0, process.readAllStandardOutput().constData());
        return;
    }
    ServiceActivator activator(name, u"kestrel-store"_s);
    QSignalSpy failed(&activator, &ServiceActivator::failed);
    activator.ensure();
    QCOMPARE(failed.size(), 0);
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed[0][0].toString(), u"there is no session bus"_s);
    QVERIFY(!activator.isOwned());
}

QTEST_GUILESS_MAIN(TestServiceActivator)
#include "test_serviceactivator.moc"
