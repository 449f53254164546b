// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/fakedevice.h"

#include <QCoreApplication>
#include <QHash>
#include <QPointer>

#include <utility>

namespace fakes {

namespace {

struct Shared
{
    int call = 0;
    QList<Calls *> monitors;
    QHash<QString, QVariant> values;
    QList<Context *> properties;
    QList<int> backlightModes;
    bool backlightFails = false;
};

Shared &shared()
{
    static Shared state;
    return state;
}

// A listener may delete another one.
template <typename Fake> QList<QPointer<Fake>> guarded(const QList<Fake *> &all)
{
    return QList<QPointer<Fake>>(all.begin(), all.end());
}

template <typename Function> void later(Function function)
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), std::move(function), Qt::QueuedConnection);
}

template <typename Factory> void setOverride(Factory DeviceStateOverrides::*member, Factory factory)
{
    DeviceStateOverrides overrides = deviceStateOverrides();
    overrides.*member = factory;
    setDeviceStateOverrides(overrides);
}

} // namespace

Calls::Calls(QObject *parent) : CallMonitor(parent)
{
    shared().monitors.append(this);
}

Calls::~Calls()
{
    shared().monitors.removeAll(this);
}

int Calls::getState() const
{
    return shared().call;
}

void Calls::set(int state)
{
    if (std::exchange(shared().call, state) == state)
        return;
    for (const QPointer<Calls> &monitor : guarded(shared().monitors)) {
        if (monitor)
            Q_EMIT monitor->stateChanged(state);
    }
}

void Calls::setLate(int state)
{
    later([state] { set(state); });
}

void Calls::fail()
{
    set(0);
}

void Calls::install()
{
    setOverride<CallMonitor *(*)(QObject *)>(
        &DeviceStateOverrides::call, [](QObject *parent) -> CallMonitor * { return new Calls(parent); });
}

void Calls::remove()
{
    setOverride<CallMonitor *(*)(QObject *)>(&DeviceStateOverrides::call, nullptr);
    shared().call = 0;
}

Usb &Usb::shared()
{
    static Usb usb;
    return usb;
}

void Usb::onChange(QObject *context, const Listener &listener)
{
    connect(this, &Usb::changed, context, listener);
}

void Usb::set(bool massStorage, Source source)
{
    if (std::exchange(shared().m_massStorage, massStorage) != massStorage)
        Q_EMIT shared().changed(source);
}

void Usb::setLate(bool massStorage)
{
    later([massStorage] { set(massStorage, Source::Reading); });
}

void Usb::fail()
{
    set(false, Source::Reading);
}

void Usb::install()
{
    setOverride<UsbMode *(*)()>(&DeviceStateOverrides::usbMode, []() -> UsbMode * { return &shared(); });
}

void Usb::remove()
{
    setOverride<UsbMode *(*)()>(&DeviceStateOverrides::usbMode, nullptr);
    shared().m_massStorage = false;
}

Context::Context(const QString &key, QObject *parent) : ContextProperty(parent), m_key(key)
{
    shared().properties.append(this);
}

Context::~Context()
{
    shared().properties.removeAll(this);
}

QVariant Context::value() const
{
    return shared().values.value(m_key);
}

void Context::set(const QString &key, const QVariant &value)
{
    if (shared().values.value(key) == value)
        return;
    shared().values.insert(key, value);
    for (const QPointer<Context> &property : guarded(shared().properties)) {
        if (property && property->m_key == key && property->m_subscribed)
            Q_EMIT property->valueChanged();
    }
}

void Context::setLate(const QString &key, const QVariant &value)
{
    later([key, value] { set(key, value); });
}

void Context::fail()
{
    const QStringList keys = shared().values.keys();
    for (const QString &key : keys)
        set(key, QVariant());
}

void Context::install()
{
    setOverride<ContextProperty *(*)(const QString &, QObject *)>(
        &DeviceStateOverrides::context,
        [](const QString &key, QObject *parent) -> ContextProperty * { return new Context(key, parent); });
}

void Context::remove()
{
    setOverride<ContextProperty *(*)(const QString &, QObject *)>(&DeviceStateOverrides::context, nullptr);
    shared().values.clear();
}

void Backlight::set(int mode)
{
    if (!shared().backlightFails)
        shared().backlightModes.append(mode);
}

QList<int> Backlight::modes()
{
    return shared().backlightModes;
}

void Backlight::setFailing(bool failing)
{
    shared().backlightFails = failing;
}

void Backlight::install()
{
    setOverride<BacklightControl *(*)()>(&DeviceStateOverrides::backlight,
                                         []() -> BacklightControl * { return new Backlight; });
}

void Backlight::remove()
{
    setOverride<BacklightControl *(*)()>(&DeviceStateOverrides::backlight, nullptr);
    shared().backlightModes.clear();
    shared().backlightFails = false;
}

Notices::~Notices()
{
    NotificationService::setInstance(nullptr);
}

void Notices::install()
{
    NotificationService::setInstance(this);
}

void Notices::publishDeviceError(const QString &message)
{
    switch (manner) {
    case Manner::AtOnce:
        shown.append(message);
        break;
    case Manner::Late:
        QMetaObject::invokeMethod(
            &m_context, [this, message] { shown.append(message); }, Qt::QueuedConnection);
        break;
    case Manner::Failing:
        unseen.append(message);
        break;
    }
}

} // namespace fakes
