// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"

#include <QStringList>

// One screen saver service: whether it covers the screen. Inactive while nobody tells.
class ScreenSaverWatcher : public QObject
{
    Q_OBJECT

public:
    // The interface is called as the service; `paths` are the objects where it may be found.
    ScreenSaverWatcher(const QDBusConnection &sessionBus, const QString &service, const QStringList &paths,
                       QObject *parent = nullptr);

    [[nodiscard]] bool isActive() const { return m_active; }
    [[nodiscard]] bool isMissing() const { return m_missing; }

Q_SIGNALS:
    void activeChanged(bool active);
    void missing();

private:
    void ask(qsizetype path);
    void hear(const QDBusMessage &message);
    void setActive(bool active);

    QStringList m_paths;
    BusPeer m_service;
    int m_serial = 0; // of what was heard and asked
    bool m_active = false;
    bool m_missing = false;
};
