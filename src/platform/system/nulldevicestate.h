// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "devicestate.h"

// What a machine without the service in question answers, for ever: open, on, no call, not exported, no TV.

class NullLockWatcher : public LockWatcher
{
    Q_OBJECT

public:
    explicit NullLockWatcher(QObject *parent);
    // Open for both locks, unknown for any other number.
    [[nodiscard]] int state(int lock) const override;
};

class NullDisplayWatcher : public DisplayWatcher
{
    Q_OBJECT

public:
    explicit NullDisplayWatcher(QObject *parent);
    [[nodiscard]] int state() const override;
};

class NullCallMonitor : public CallMonitor
{
    Q_OBJECT

public:
    explicit NullCallMonitor(QObject *parent);
    [[nodiscard]] int getState() const override;
};

class NullUsbMode : public UsbMode
{
public:
    [[nodiscard]] bool isMassStorage() const override;
};

// Never has a value: the invalid variant.
class NullContextProperty : public ContextProperty
{
    Q_OBJECT

public:
    NullContextProperty(const QString &key, QObject *parent);
    void subscribe() override;
    void unsubscribe() override;
    [[nodiscard]] QVariant value() const override;

private:
    QString m_key;
};

class NullBacklightControl : public BacklightControl
{
public:
    void set(int mode) override;
};
