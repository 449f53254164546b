// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

// Tells before the device sleeps, and makes it wait a moment. Whoever listens to aboutToSleep() calls
// release() as soon as its work is done; the system waits a few seconds at most. With nobody listening
// nothing waits.
class SleepWatcher : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    // The device does not sleep before release().
    [[nodiscard]] virtual bool isHolding() const = 0;
    // Until the device has slept, or the sleep was called off; then it is held again by itself.
    virtual void release() = 0;
    // `reason` is what the system shows to who asks what delays the sleep.
    [[nodiscard]] static SleepWatcher *create(const QString &reason, QObject *parent);

Q_SIGNALS:
    void aboutToSleep();
    void wokeUp();
};
