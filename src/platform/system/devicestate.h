// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

class IdleInhibitor;
class SleepWatcher;

// Sources of device state. Each answers at once from a cache that begins with: unlocked, display on, no call,
// not mass storage, no TV; the truth follows by change signal. create() gives the back end of this machine,
// or a null one.

// Locks: 0 the device lock, 1 the key lock. States: 0 open, 1 locked, 2 unknown.
class LockWatcher : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    [[nodiscard]] virtual int state(int lock) const = 0;
    [[nodiscard]] static LockWatcher *create(QObject *parent);

Q_SIGNALS:
    void stateChanged(int lock, int state);
};

// Display states: 0 off, 1 on, 2 dimmed.
class DisplayWatcher : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    [[nodiscard]] virtual int state() const = 0;
    [[nodiscard]] static DisplayWatcher *create(QObject *parent);

Q_SIGNALS:
    void stateChanged(int state);
};

// Calls: 0 none is active.
class CallMonitor : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    [[nodiscard]] virtual int getState() const = 0;
    [[nodiscard]] static CallMonitor *create(QObject *parent);

Q_SIGNALS:
    void stateChanged(int state);
};

// USB mode: whether the user partition is exported to a computer right now.
class UsbMode
{
public:
    virtual ~UsbMode() = default;
    [[nodiscard]] virtual bool isMassStorage() const = 0;
    // How a change became known: by a signal that everybody hears, or because the mode was asked for.
    enum class Source { Announcement, Reading };
    using Listener = std::function<void(Source)>;
    // Calls `listener` after every change of the answer, also when the first truth about the device comes in,
    // as long as `context` lives. A mode that never changes never calls.
    virtual void onChange(QObject *context, const Listener &listener);
    [[nodiscard]] static UsbMode *instance();
};

// One key of the system's published key-value store.
class ContextProperty : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    virtual void subscribe() = 0;
    virtual void unsubscribe() = 0;
    [[nodiscard]] virtual QVariant value() const = 0;
    [[nodiscard]] static ContextProperty *create(const QString &key, QObject *parent);

Q_SIGNALS:
    void valueChanged();
};

// Content-adaptive backlight. Modes: 1 user interface, 3 moving image.
class BacklightControl
{
public:
    virtual ~BacklightControl() = default;
    virtual void set(int mode) = 0;
    [[nodiscard]] static BacklightControl *create();
};

// Replaces every back end above by fakes that a test holds. One process-wide set; empty members mean the
// machine's own.
struct DeviceStateOverrides
{
    LockWatcher *(*lock)(QObject *parent) = nullptr;
    DisplayWatcher *(*display)(QObject *parent) = nullptr;
    CallMonitor *(*call)(QObject *parent) = nullptr;
    UsbMode *(*usbMode)() = nullptr;
    ContextProperty *(*context)(const QString &key, QObject *parent) = nullptr;
    BacklightControl *(*backlight)() = nullptr;
    SleepWatcher *(*sleep)(QObject *parent) = nullptr;
    IdleInhibitor *(*idle)(QObject *parent) = nullptr;
};
void setDeviceStateOverrides(const DeviceStateOverrides &overrides);
[[nodiscard]] DeviceStateOverrides deviceStateOverrides();
