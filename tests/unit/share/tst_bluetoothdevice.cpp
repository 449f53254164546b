// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/bluetoothdevice.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QDBusObjectPath adapter(u"/org/bluez/hci0"_s);

BluezObjects withAdapter(bool powered)
{
    return {{adapter,
             {{u"org.bluez.Adapter1"_s, {{u"Address"_s, u"11:22"_s}, {u"Powered"_s, powered}}},
              {u"org.freedesktop.DBus.Introspectable"_s, {}}}}};
}

void add(BluezObjects &objects, const QString &address, const QVariantMap &properties)
{
    QVariantMap all{
        {u"Address"_s, address}, {u"Paired"_s, true}, {u"Adapter"_s, QVariant::fromValue(adapter)}};
    all.insert(properties);
    objects[QDBusObjectPath(u"/org/bluez/hci0/dev_%1"_s.arg(objects.size()))][u"org.bluez.Device1"_s] = all;
}

QStringList names(const BluezObjects &objects)
{
    QStringList result;
    for (const BluetoothDevice &device : pairedDevices(objects))
        result.append(device.name);
    return result;
}

} // namespace

class BluetoothDeviceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAdapterThatIsOn();
    void onlyPairedOnesThatTakeFiles();
    void connectedOnesFirstThenByName();
    void everythingOfADevice();
    void nothingUsefulIsNoDevice();
};

void BluetoothDeviceTest::anAdapterThatIsOn()
{
    QVERIFY(!hasPoweredAdapter({}));
    QVERIFY(!hasPoweredAdapter(withAdapter(false)));
    QVERIFY(hasPoweredAdapter(withAdapter(true)));
    BluezObjects off = withAdapter(false);
    add(off, u"A"_s, {{u"Alias"_s, u"Phone"_s}});
    QCOMPARE(names(off), QStringList());
}

void BluetoothDeviceTest::onlyPairedOnesThatTakeFiles()
{
    BluezObjects objects = withAdapter(true);
    add(objects, u"A"_s, {{u"Alias"_s, u"stranger"_s}, {u"Paired"_s, false}});
    add(objects, u"B"_s,
        {{u"Alias"_s, u"headphones"_s},
         {u"UUIDs"_s, QStringList{u"0000110b-0000-1000-8000-00805f9b34fb"_s}}});
    add(objects, u"C"_s,
        {{u"Alias"_s, u"phone"_s}, {u"UUIDs"_s, QStringList{u"00001105-0000-1000-8000-00805F9B34FB"_s}}});
    add(objects, u"D"_s, {{u"Alias"_s, u"silent"_s}});
    QCOMPARE(names(objects), (QStringList{u"phone"_s, u"silent"_s}));
}

void BluetoothDeviceTest::connectedOnesFirstThenByName()
{
    BluezObjects objects = withAdapter(true);
    add(objects, u"A"_s, {{u"Alias"_s, u"beta"_s}});
    add(objects, u"B"_s, {{u"Alias"_s, u"Zeta"_s}, {u"Connected"_s, true}});
    add(objects, u"C"_s, {{u"Alias"_s, u"Alpha"_s}});
    QCOMPARE(names(objects), (QStringList{u"Zeta"_s, u"Alpha"_s, u"beta"_s}));
}

void BluetoothDeviceTest::everythingOfADevice()
{
    BluezObjects objects = withAdapter(true);
    add(objects, u"AA:BB"_s,
        {{u"Alias"_s, u" Anna's\nphone "_s}, {u"Icon"_s, u"phone"_s}, {u"Connected"_s, true}});
    const BluetoothDevice expected{u"AA:BB"_s, u"11:22"_s, u"Anna's phone"_s, u"phone"_s, true};
    QCOMPARE(pairedDevices(objects), QList<BluetoothDevice>{expected});
    add(objects, u"CC:DD"_s, {});
    QCOMPARE(pairedDevices(objects).last().name, u"CC:DD"_s); // a device without a name is its address
}

void BluetoothDeviceTest::nothingUsefulIsNoDevice()
{
    BluezObjects objects = withAdapter(true);
    add(objects, QString(), {{u"Alias"_s, u"no address"_s}});
    add(objects, u"A"_s, {{u"Adapter"_s, 5}});
    add(objects, u"B"_s,
        {{u"Paired"_s, u"perhaps"_s}, {u"Adapter"_s, QVariant::fromValue(QDBusObjectPath(u"/gone"_s))}});
    QCOMPARE(names(objects), QStringList());
}

QTEST_GUILESS_MAIN(BluetoothDeviceTest)
#include "tst_bluetoothdevice.moc"
