// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "idlehold.h"

// The screen saver service: a cookie that is handed back.
class ScreenSaverIdleHold : public IdleHold
{
    Q_OBJECT

public:
    explicit ScreenSaverIdleHold(const QDBusConnection &sessionBus, QObject *parent = nullptr);

protected:
    void ask(const QString &reason) override;
    void giveBack() override;

private:
    void askAt(qsizetype path, const QString &reason);

    QString m_path; // of the object that gave the cookie
    uint m_cookie = 0;
};
