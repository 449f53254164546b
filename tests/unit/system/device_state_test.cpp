// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/desktopnotifications.h"
#include "platform/system/devicestate.h"
#include "platform/system/usernotice.h"

#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

class LockedWatcher : public LockWatcher
{
public:
    using LockWatcher::LockWatcher;
    [[nodiscard]] int state(int) const override { return 1; }
};

class ExportedUsbMode : public UsbMode
{
public:
    [[nodiscard]] bool isMassStorage() const override { return true; }
};

class RecordingNotifications : public NotificationService
{
public:
    void publishDeviceError(const QString &message) override { messages.append(message); }
    QStringList messages;
};

QStringList s_shared;
class RecordingShare : public ShareService
{
public:
    void share(const QStringList &addresses) override { s_shared += addresses; }
};

} // namespace

class DeviceStateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        setDeviceStateOverrides({});
        NotificationService::setInstance(nullptr);
        ShareService::setFactory(nullptr);
    }

    // A machine without any of the services behaves like an open, awake one.
    void aBareMachineIsOpenAndAwake()
    {
        QObject parent;
        const LockWatcher *lock = LockWatcher::create(&parent);
        QCOMPARE(lock->state(0), 0);
        QCOMPARE(lock->state(1), 0);
        QCOMPARE(lock->state(7), 2);
        QCOMPARE(DisplayWatcher::create(&parent)->state(), 1);
        QCOMPARE(CallMonitor::create(&parent)->getState(), 0);
        QCOMPARE(UsbMode::instance()->isMassStorage(), false);
        ContextProperty *property = ContextProperty::create(u"/com/harrow/policy/video_route"_s, &parent);
        property->subscribe();
        QVERIFY(!property->value().isValid());
        property->unsubscribe();
        const std::unique_ptr<BacklightControl> backlight(BacklightControl::create());
        backlight->set(3);
        QCOMPARE(parent.children().size(), 4);
    }

    void overridesReplaceSingleBackEnds()
    {
        DeviceStateOverrides overrides;
        overrides.lock = [](QObject *parent) -> LockWatcher * { return new LockedWatcher(parent); };
        overrides.usbMode = []() -> UsbMode * {
            static ExportedUsbMode mode;
            return &mode;
        };
        setDeviceStateOverrides(overrides);
        QObject parent;
        QCOMPARE(LockWatcher::create(&parent)->state(0), 1);
        QCOMPARE(DisplayWatcher::create(&parent)->state(), 1);
        QCOMPARE(UsbMode::instance()->isMassStorage(), true);
        setDeviceStateOverrides({});
        QCOMPARE(LockWatcher::create(&parent)->state(0), 0);
    }

    void noticesGoToTheLogOrToTheReplacement()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"unseen message: Call under way"_s));
        NotificationService::instance()->publishDeviceError(u"Call under way"_s);
        dynamic_cast<DesktopNotifications &>(*NotificationService::instance()).flush();
        RecordingNotifications recording;
        NotificationService::setInstance(&recording);
        NotificationService::instance()->publishDeviceError(u"again"_s);
        QCOMPARE(recording.messages, QStringList{u"again"_s});

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"not shared"_s));
        std::unique_ptr<ShareService>(ShareService::create())->share({u"file:///a"_s});
        ShareService::setFactory([]() -> ShareService * { return new RecordingShare; });
        std::unique_ptr<ShareService>(ShareService::create())->share({u"file:///b"_s});
        QCOMPARE(s_shared, QStringList{u"file:///b"_s});
    }
};

QTEST_GUILESS_MAIN(DeviceStateTest)
#include "device_state_test.moc"
