// SPDX-License-Identifier: GPL-3.0-or-later
#include "../../support/hangms.h"
#include "platform/system/machinesysteminformation.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// A host name service: answers with its properties, or never.
class HostName : public QDBusVirtualObject
{
public:
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        ++calls;
        if (answers)
            connection.send(message.createReply(properties));
        else
            message.setDelayedReply(true);
        return true;
    }

    QVariantMap properties;
    bool answers = true;
    int calls = 0;
};

} // namespace

class SystemInformationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_server = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"server"_s));
        m_client = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"client"_s));
        QVERIFY(m_server->registerVirtualObject(u"/org/freedesktop/hostname1"_s, &m_hostName));
        const QString dmi = m_root.filePath(u"sys/class/dmi/id"_s);
        QVERIFY(QDir().mkpath(dmi));
        for (const auto &[name, text] :
             {std::pair(u"sys_vendor"_s, "Board Maker"), std::pair(u"product_name"_s, "Board 1")}) {
            QFile file(dmi + u'/' + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
        }
    }

    void init()
    {
        m_hostName.properties.clear();
        m_hostName.answers = true;
        QVERIFY(m_server->registerService(u"org.freedesktop.hostname1"_s));
    }
    void cleanup() { m_server->unregisterService(u"org.freedesktop.hostname1"_s); }

    void takesTheHostNameServicesNames()
    {
        m_hostName.properties
            = {{u"HardwareVendor"_s, u"Harrow Optics"_s}, {u"HardwareModel"_s, u"Q5 <pro>"_s}};
        const auto information = make();
        QSignalSpy settled(information.get(), &MachineSystemInformation::settled);
        // At once, before the service has answered.
        QCOMPARE(information->manufacturer(), u"Board%20Maker"_s);
        QVERIFY(settled.wait(TestPatience));
        QCOMPARE(information->manufacturer(), u"Harrow%20Optics"_s);
        QCOMPARE(information->model(), u"Q5%20%3Cpro%3E"_s);
        QCOMPARE(information->value(u"/component/hw-build"_s), QString());
        QCOMPARE(information->value(u"/unknown"_s), QString());
    }

    // Both names come from one source: half an answer is none.
    void keepsTheFirmwaresNamesWhereTheServiceLacksOne()
    {
        m_hostName.properties = {{u"HardwareVendor"_s, QString()}, {u"HardwareModel"_s, u"Q5"_s}};
        const auto information = make();
        QSignalSpy settled(information.get(), &MachineSystemInformation::settled);
        QVERIFY(settled.wait(TestPatience));
        QCOMPARE(information->manufacturer(), u"Board%20Maker"_s);
        QCOMPARE(information->model(), u"Board%201"_s);
    }

    void aMissingServiceIsNoFault()
    {
        m_server->unregisterService(u"org.freedesktop.hostname1"_s);
        const auto information = make();
        QSignalSpy settled(information.get(), &MachineSystemInformation::settled);
        QVERIFY(settled.wait(TestPatience));
        QCOMPARE(information->model(), u"Board%201"_s);
    }

    void aServiceThatHangsHoldsNobodyUp()
    {
        m_hostName.answers = false;
        QElapsedTimer timer;
        timer.start();
        const auto information = make();
        QCOMPARE(information->model(), u"Board%201"_s);
        QVERIFY(timer.elapsed() < HangMs);
    }

    void aMachineThatNobodyKnowsHasStableNames()
    {
        const MachineSystemInformation information(QDBusConnection(u"no such bus"_s), u"/nowhere"_s,
                                                   u"/nowhere"_s);
        QCOMPARE(information.manufacturer(), u"Unknown"_s);
        QCOMPARE(information.model(), u"Unknown"_s);
    }

    void testsReplaceTheInstance()
    {
        const auto information = make();
        SystemInformation::setInstance(information.get());
        QCOMPARE(SystemInformation::instance(), static_cast<SystemInformation *>(information.get()));
        SystemInformation::setInstance(nullptr);
        QVERIFY(SystemInformation::instance() != information.get());
    }

private:
    [[nodiscard]] std::unique_ptr<MachineSystemInformation> make() const
    {
        return std::make_unique<MachineSystemInformation>(*m_client, m_root.filePath(u"sys"_s),
                                                          m_root.filePath(u"proc"_s));
    }

    QTemporaryDir m_root;
    HostName m_hostName;
    std::unique_ptr<QDBusConnection> m_server;
    std::unique_ptr<QDBusConnection> m_client;
};

QTEST_GUILESS_MAIN(SystemInformationTest)
#include "system_information_test.moc"
