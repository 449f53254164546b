// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/fakedevice.h"

#include <QSignalSpy>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

// The device that tests set behaves as the machine's own back ends do.
class FakeDeviceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void calls()
    {
        fakes::Calls::install();
        const std::unique_ptr<CallMonitor> monitor(CallMonitor::create(nullptr));
        QSignalSpy changes(monitor.get(), &CallMonitor::stateChanged);
        fakes::Calls::setLate(1);
        QCOMPARE(monitor->getState(), 0);
        QTRY_COMPARE(monitor->getState(), 1);
        const std::unique_ptr<CallMonitor> second(CallMonitor::create(nullptr));
        QCOMPARE(second->getState(), 1);
        fakes::Calls::set(1);
        fakes::Calls::fail();
        QCOMPARE(monitor->getState(), 0);
        QCOMPARE(changes, (QList<QVariantList>{{1}, {0}}));
        fakes::Calls::remove();
    }

    void usbMode()
    {
        fakes::Usb::install();
        QObject context;
        int changes = 0;
        UsbMode::instance()->onChange(&context, [&changes](UsbMode::Source) { ++changes; });
        fakes::Usb::setLate(true);
        QVERIFY(!UsbMode::instance()->isMassStorage());
        QTRY_VERIFY(UsbMode::instance()->isMassStorage());
        fakes::Usb::fail();
        QVERIFY(!UsbMode::instance()->isMassStorage());
        QCOMPARE(changes, 2);
        fakes::Usb::remove();
    }

    void keys()
    {
        fakes::Context::install();
        const std::unique_ptr<ContextProperty> route(ContextProperty::create(u"/route"_s, nullptr));
        const std::unique_ptr<ContextProperty> other(ContextProperty::create(u"/other"_s, nullptr));
        QSignalSpy changes(route.get(), &ContextProperty::valueChanged);
        fakes::Context::set(u"/route"_s, u"tvout"_s);
        QCOMPARE(changes.size(), 0); // not subscribed
        route->subscribe();
        fakes::Context::setLate(u"/route"_s, u"builtin"_s);
        QCOMPARE(route->value().toString(), u"tvout"_s);
        QTRY_COMPARE(route->value().toString(), u"builtin"_s);
        fakes::Context::fail();
        QCOMPARE(changes.size(), 2);
        QVERIFY(!route->value().isValid() && !other->value().isValid());
        fakes::Context::remove();
    }

    void backlight()
    {
        fakes::Backlight::install();
        const std::unique_ptr<BacklightControl> control(BacklightControl::create());
        control->set(3);
        fakes::Backlight::setFailing(true);
        control->set(1);
        QCOMPARE(fakes::Backlight::modes(), QList<int>{3});
        fakes::Backlight::remove();
    }

    void notices()
    {
        fakes::Notices notices;
        notices.install();
        NotificationService::instance()->publishDeviceError(u"a"_s);
        notices.manner = fakes::Notices::Manner::Late;
        NotificationService::instance()->publishDeviceError(u"b"_s);
        QCOMPARE(notices.shown, QStringList{u"a"_s});
        QTRY_COMPARE(notices.shown, (QStringList{u"a"_s, u"b"_s}));
        notices.manner = fakes::Notices::Manner::Failing;
        NotificationService::instance()->publishDeviceError(u"c"_s);
        QCOMPARE(notices.unseen, QStringList{u"c"_s});
    }

    // One fake leaves the others where they are.
    void fakesStandBesideEachOther()
    {
        fakes::Calls::install();
        fakes::Usb::install();
        fakes::Calls::remove();
        fakes::Usb::set(true);
        QVERIFY(UsbMode::instance()->isMassStorage());
        fakes::Usb::remove();
        QVERIFY(!deviceStateOverrides().usbMode && !deviceStateOverrides().call);
    }
};

QTEST_GUILESS_MAIN(FakeDeviceTest)
#include "fake_device_test.moc"
