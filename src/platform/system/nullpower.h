// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "idleinhibitor.h"
#include "sleepwatcher.h"

// A machine whose sleep nobody announces and whose idleness nobody counts.

class NullSleepWatcher : public SleepWatcher
{
    Q_OBJECT

public:
    explicit NullSleepWatcher(QObject *parent);
    [[nodiscard]] bool isHolding() const override { return false; }
    void release() override { }
};

class NullIdleInhibitor : public IdleInhibitor
{
    Q_OBJECT

public:
    explicit NullIdleInhibitor(QObject *parent);
    void setInhibited(bool inhibited, const QString &reason) override;
    [[nodiscard]] bool isInhibited() const override { return m_inhibited; }

private:
    bool m_inhibited = false;
};
