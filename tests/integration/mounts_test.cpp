// SPDX-License-Identifier: GPL-3.0-or-later
// The return of the library needs a volume whose root is exactly the user's documents area, at a fixed
// absolute path. So this program moves into a mount namespace of its own (with a user namespace where it is
// not root), where it mounts and unmounts real file systems there; GIO's real volume monitor sees them in
// /proc/self/mountinfo. Nothing of it is visible outside.
#include <gio/gio.h>

#include "support/mountnamespace.h"
#include "support/privatebus.h"
#include "support/pythonpeer.h"

#include <data/mmcmonitor.h>
#include <data/videoconstants.h>

#include <QDBusConnection>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QByteArray home = "/home/user";
const QByteArray myDocs = "/home/user/MyDocs";

class Monitor : public MmcMonitor
{
};

} // namespace

class MountsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(MYDOCS_URL, u"file://"_s + QString::fromLatin1(myDocs));
        const QString address = m_bus.start();
        QVERIFY(!address.isEmpty());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        QVERIFY(m_daemon.start(u"usb_mode_daemon.py"_s));
        m_volumes = g_volume_monitor_get();
        m_volumesBefore = volumeCount();
        g_signal_connect(m_volumes, "mount-added",
                         G_CALLBACK(+[](GVolumeMonitor *, GMount *mount, gpointer self) {
                             GFile *root = g_mount_get_root(mount);
                             char *uri = g_file_get_uri(root);
                             static_cast<MountsTest *>(self)->m_added.append(QString::fromUtf8(uri));
                             g_free(uri);
                             g_object_unref(root);
                         }),
                         this);
    }

    void cleanupTestCase()
    {
        g_signal_handlers_disconnect_by_data(m_volumes, this);
        g_object_unref(m_volumes);
    }

    void init()
    {
        m_added.clear();
        m_monitor = std::make_unique<Monitor>();
        m_states = std::make_unique<QSignalSpy>(m_monitor.get(), &MmcMonitor::mmcStateChanged);
        m_warnings = std::make_unique<QSignalSpy>(m_monitor.get(), &MmcMonitor::preUnmount);
        QVERIFY(m_daemon.command(u"state pre-unmount"_s));
        QTRY_COMPARE(m_warnings->size(), 1); // the monitor listens by now
        m_warnings->clear();
    }

    void cleanup()
    {
        mounts::unmountAll();
        QTRY_COMPARE(volumeCount(), m_volumesBefore);
    }

    // The person gives the phone to a computer, and takes it back.
    void outAndBack()
    {
        QVERIFY(mounts::mount(myDocs));
        QTRY_COMPARE(states(), QList<bool>{true});
        QVERIFY(m_daemon.command(u"state pre-unmount"_s));
        QTRY_COMPARE(m_warnings->size(), 1);
        QVERIFY(mounts::unmount(myDocs));
        QTRY_COMPARE(volumeCount(), m_volumesBefore);
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QTRY_COMPARE(states(), (QList<bool>{true, false}));
        QVERIFY(m_daemon.command(u"state USB disconnected"_s));
        QVERIFY(mounts::mount(myDocs));
        QTRY_COMPARE(states(), (QList<bool>{true, false, true}));
        QCOMPARE(m_warnings->size(), 1);
    }

    // The daemon has answered after the start, or has come back while the card is at the computer.
    void exportedBeforeAnybodyAnnouncedIt()
    {
        m_daemon.stop();
        QVERIFY(m_daemon.start(u"usb_mode_daemon.py"_s, {u"mass_storage"_s}));
        QTRY_COMPARE(states(), QList<bool>{false});
        QVERIFY(!MmcMonitor::isAvailable());
        QVERIFY(m_daemon.command(u"mode charging_only"_s));
        QVERIFY(m_daemon.command(u"state USB disconnected"_s));
        QTRY_VERIFY(MmcMonitor::isAvailable());
        QCOMPARE(states(), QList<bool>{false}); // the files are not there yet
        QVERIFY(mounts::mount(myDocs));
        QTRY_COMPARE(states(), (QList<bool>{false, true}));
    }

    void aRepeatedStateIsToldAgain()
    {
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QTRY_COMPARE(states(), (QList<bool>{false, false}));
        QVERIFY(mounts::mount(myDocs));
        QTRY_COMPARE(states(), (QList<bool>{false, false, true}));
        QVERIFY(mounts::unmount(myDocs));
        QTRY_COMPARE(volumeCount(), m_volumesBefore);
        QVERIFY(mounts::mount(myDocs));
        QTRY_COMPARE(states(), (QList<bool>{false, false, true, true}));
    }

    void capitalsAreIgnored()
    {
        QVERIFY(m_daemon.command(u"state MASS_STORAGE"_s));
        QVERIFY(m_daemon.command(u"state PRE-UNMOUNT"_s));
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QTRY_COMPARE(states(), QList<bool>{false});
        QCOMPARE(m_warnings->size(), 0);
    }

    void otherMountsLeaveTheStateAlone_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("a removable card") << QByteArray("/media/CARD");
        QTest::newRow("another folder at home") << QByteArray(home + "/Card");
        QTest::newRow("below the card") << QByteArray(myDocs + "/Movies");
        QTest::newRow("a name that begins so") << QByteArray(myDocs + "2");
        QTest::newRow("other letter case") << QByteArray(home + "/mydocs");
    }

    void otherMountsLeaveTheStateAlone()
    {
        QFETCH(QByteArray, path);
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QTRY_COMPARE(states(), QList<bool>{false});
        QVERIFY(mounts::mount(path));
        QTRY_COMPARE(m_added, QStringList{u"file://"_s + QString::fromLatin1(path)});
        QCOMPARE(states(), QList<bool>{false});
    }

private:
    // As the volume monitor knows by now.
    [[nodiscard]] int volumeCount() const
    {
        GList *all = g_volume_monitor_get_mounts(m_volumes);
        const int count = int(g_list_length(all));
        g_list_free_full(all, g_object_unref);
        return count;
    }
    [[nodiscard]] QList<bool> states() const
    {
        QList<bool> list;
        for (const QVariantList &arguments : *m_states)
            list.append(arguments.at(0).toBool());
        return list;
    }

    PrivateBus m_bus;
    PythonPeer m_daemon;
    GVolumeMonitor *m_volumes = nullptr;
    int m_volumesBefore = 0;
    QStringList m_added; // roots, as the volume monitor told them
    std::unique_ptr<Monitor> m_monitor;
    std::unique_ptr<QSignalSpy> m_states;
    std::unique_ptr<QSignalSpy> m_warnings;
};

int main(int argc, char **argv)
{
    // Before anything has a thread.
    if (!mounts::enterNamespace({myDocs, "/media/CARD"})) {
        fprintf(stderr, "mounts_test: this kernel or container lets nobody have a mount namespace\n");
        return 1;
    }
    qputenv("HOME", home); // volumes at home are for the person's eyes, and only those are told
    QCoreApplication application(argc, argv);
    MountsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "mounts_test.moc"
