// SPDX-License-Identifier: GPL-3.0-or-later
#include <gio/gio.h>

#include <data/mmcmonitor.h>

#include "support/privatebus.h"

#include <platform/system/devicestate.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// A mount with a root of the test's choice, as far as the monitor looks at one.
struct TestMount
{
    GObject parent;
    GFile *root;
};
struct TestMountClass
{
    GObjectClass parent;
};

static GFile *testMountRoot(GMount *mount)
{
    GFile *root = reinterpret_cast<TestMount *>(mount)->root;
    return root ? G_FILE(g_object_ref(root)) : nullptr;
}

static void testMountInterface(GMountIface *interface)
{
    interface->get_root = testMountRoot;
}

static void testMountFinalize(GObject *object)
{
    g_clear_object(&reinterpret_cast<TestMount *>(object)->root);
}

static void test_mount_class_init(TestMountClass *mountClass)
{
    G_OBJECT_CLASS(mountClass)->dispose = testMountFinalize;
}

static void test_mount_init(TestMount *) { }

static GType test_mount_get_type();
G_DEFINE_TYPE_WITH_CODE(TestMount, test_mount, G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(G_TYPE_MOUNT, testMountInterface))

namespace {

class Mount
{
public:
    explicit Mount(const char *rootUri)
        : m_mount(static_cast<TestMount *>(g_object_new(test_mount_get_type(), nullptr)))
    {
        m_mount->root = rootUri ? g_file_new_for_uri(rootUri) : nullptr;
    }
    ~Mount() { g_object_unref(m_mount); }
    GMount *get() { return G_MOUNT(m_mount); }

private:
    TestMount *m_mount;
};

class Monitor : public MmcMonitor
{
};

class FakeUsbMode : public UsbMode
{
public:
    bool isMassStorage() const override { return massStorage; }
    void onChange(QObject *context, const Listener &listener) override
    {
        m_context = context;
        m_listener = listener;
    }
    void change(bool to, Source source)
    {
        massStorage = to;
        if (m_context)
            m_listener(source);
    }
    bool massStorage = false;

private:
    QPointer<QObject> m_context;
    Listener m_listener;
};

FakeUsbMode usbMode;

} // namespace

class TestMmcMonitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void theStateIsReadAtThatMoment();
    void statesOfTheBusBecomeSignals();
    void massStorageTwiceIsReportedTwice();
    void otherLetterCasesAreIgnored_data();
    void otherLetterCasesAreIgnored();
    void signalsOfOtherServicesAreNotHeard();
    void anExportFromBeforeTheStartIsTold();
    void theCardsMountMakesItAvailable();
    void otherMountsLeaveTheStateAlone_data();
    void otherMountsLeaveTheStateAlone();
    void aDeletedMonitorHearsNoMounts();
    void thereIsOneMonitorForTheProcess();
    void signalsAndSlotsStandInTheirOrder();

private:
    void sayUsbState(const QString &state, const QString &path = u"/com/sorel/usb_moded"_s);

    PrivateBus m_bus;
    QString m_address;
};

void TestMmcMonitor::initTestCase()
{
    m_address = m_bus.start();
    QVERIFY(!m_address.isEmpty());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_address.toUtf8());
    DeviceStateOverrides overrides;
    overrides.usbMode = []() -> UsbMode * { return &usbMode; };
    setDeviceStateOverrides(overrides);
    QDBusConnection daemon = QDBusConnection::connectToBus(m_address, u"usb"_s);
    QVERIFY(daemon.registerService(u"com.sorel.usb_moded"_s));
    QVERIFY(QDBusConnection::systemBus().isConnected());
}

void TestMmcMonitor::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(u"usb"_s);
    setDeviceStateOverrides({});
}

void TestMmcMonitor::sayUsbState(const QString &state, const QString &path)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, u"com.sorel.usb_moded"_s, u"sig_usb_state_ind"_s);
    signal << state;
    QVERIFY(QDBusConnection(u"usb"_s).send(signal));
}

void TestMmcMonitor::theStateIsReadAtThatMoment()
{
    usbMode.massStorage = false;
    QVERIFY(MmcMonitor::isAvailable());
    usbMode.massStorage = true;
    QVERIFY(!MmcMonitor::isAvailable());
    usbMode.massStorage = false;
}

void TestMmcMonitor::statesOfTheBusBecomeSignals()
{
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    QSignalSpy warnings(&monitor, &MmcMonitor::preUnmount);
    sayUsbState(u"pre-unmount"_s);
    QTRY_COMPARE(warnings.size(), 1);
    QCOMPARE(states.size(), 0);
    sayUsbState(u"mass_storage"_s);
    QTRY_COMPARE(states.size(), 1);
    QCOMPARE(states.first().first().toBool(), false);
    QCOMPARE(warnings.size(), 1);
}

void TestMmcMonitor::massStorageTwiceIsReportedTwice()
{
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    sayUsbState(u"mass_storage"_s);
    sayUsbState(u"mass_storage"_s);
    QTRY_COMPARE(states.size(), 2);
    QVERIFY(!states.at(0).first().toBool() && !states.at(1).first().toBool());
}

void TestMmcMonitor::otherLetterCasesAreIgnored_data()
{
    QTest::addColumn<QString>("state");
    QTest::newRow("capitals") << u"MASS_STORAGE"_s;
    QTest::newRow("mixed") << u"Pre-Unmount"_s;
    QTest::newRow("another") << u"charging_only"_s;
    QTest::newRow("nothing") << QString();
}

void TestMmcMonitor::otherLetterCasesAreIgnored()
{
    QFETCH(QString, state);
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    QSignalSpy warnings(&monitor, &MmcMonitor::preUnmount);
    monitor.usbState(state);
    QVERIFY(states.isEmpty() && warnings.isEmpty());
}

void TestMmcMonitor::signalsOfOtherServicesAreNotHeard()
{
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    QSignalSpy warnings(&monitor, &MmcMonitor::preUnmount);
    sayUsbState(u"mass_storage"_s, u"/another"_s);
    sayUsbState(u"pre-unmount"_s); // later on the same bus: once it is here, the other has passed
    QTRY_COMPARE(warnings.size(), 1);
    QCOMPARE(states.size(), 0);
}

// The program starts while the card is at a computer: "available" until the daemon has answered.
void TestMmcMonitor::anExportFromBeforeTheStartIsTold()
{
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    usbMode.change(true, UsbMode::Source::Reading);
    QCOMPARE(states, (QList<QVariantList>{{false}}));
    // Back is what is mounted, not what the daemon thinks.
    usbMode.change(false, UsbMode::Source::Reading);
    // Everybody hears an announcement: it is told by usbState(), once.
    usbMode.change(true, UsbMode::Source::Announcement);
    usbMode.change(false, UsbMode::Source::Announcement);
    QCOMPARE(states.size(), 1);
}

void TestMmcMonitor::theCardsMountMakesItAvailable()
{
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    Mount card("file:///home/user/MyDocs");
    GVolumeMonitor *volumes = g_volume_monitor_get();
    g_signal_emit_by_name(volumes, "mount-added", card.get());
    g_object_unref(volumes);
    QCOMPARE(states.size(), 1);
    QCOMPARE(states.first().first().toBool(), true);
}

void TestMmcMonitor::otherMountsLeaveTheStateAlone_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::newRow("removable card") << QByteArray("file:///media/user/CARD");
    QTest::newRow("below the card") << QByteArray("file:///home/user/MyDocs/Movies");
    QTest::newRow("another name that begins so") << QByteArray("file:///home/user/MyDocs2");
    QTest::newRow("remote") << QByteArray("sftp://host/home/user/MyDocs");
    QTest::newRow("no root") << QByteArray();
}

void TestMmcMonitor::otherMountsLeaveTheStateAlone()
{
    QFETCH(QByteArray, root);
    Monitor monitor;
    QSignalSpy states(&monitor, &MmcMonitor::mmcStateChanged);
    Mount mount(root.isNull() ? nullptr : root.constData());
    QVERIFY(!monitor.isMyDocsMounted(mount.get()));
    MmcMonitor::mountEvent(nullptr, mount.get(), &monitor);
    QCOMPARE(states.size(), 0);
}

void TestMmcMonitor::aDeletedMonitorHearsNoMounts()
{
    auto monitor = std::make_unique<Monitor>();
    GVolumeMonitor *volumes = g_volume_monitor_get();
    monitor.reset();
    Mount card("file:///home/user/MyDocs");
    g_signal_emit_by_name(volumes, "mount-added", card.get());
    QCOMPARE(g_signal_handler_find(volumes, G_SIGNAL_MATCH_FUNC, 0, 0, nullptr,
                                   reinterpret_cast<gpointer>(&MmcMonitor::mountEvent), nullptr),
             0ul);
    g_object_unref(volumes);
}

void TestMmcMonitor::thereIsOneMonitorForTheProcess()
{
    QSignalSpy warnings(MmcMonitor::instance(), &MmcMonitor::preUnmount);
    sayUsbState(u"pre-unmount"_s);
    QTRY_COMPARE(warnings.size(), 1);
    QCOMPARE(MmcMonitor::instance(), MmcMonitor::instance());
    QVERIFY(!MmcMonitor::instance()->parent());
}

void TestMmcMonitor::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = MmcMonitor::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    QCOMPARE(signatures.join('\n'),
             QByteArrayList({"mmcStateChanged(bool)", "preUnmount()", "usbState(QString)",
                             "mountEvent(GVolumeMonitor*,GMount*,gpointer)", "isMyDocsMounted(GMount*)"})
                 .join('\n'));
}

QTEST_GUILESS_MAIN(TestMmcMonitor)
#include "test_mmcmonitor.moc"
