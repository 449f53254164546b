// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"
#include "devicestate.h"

#include <QHash>

#include <memory>

// The voice calls of all modems that ModemManager has: whether there is one. Shared by all call monitors, so
// that each new one knows at once what the others know.
class ModemCalls : public QObject
{
    Q_OBJECT

public:
    explicit ModemCalls(const QDBusConnection &bus);

    [[nodiscard]] bool isActive() const { return m_active; }

    // A call in one of ModemManager's states (0 to 7). Dialing, ringing in and out, active and held are
    // calls. So is a waiting one: it rings as soon as the call ends that it waits for, and between the two
    // there is no moment to play in. An unknown one is not dialled yet, a terminated one is over; any other
    // number counts as unknown.
    [[nodiscard]] static bool isCall(int state);

Q_SIGNALS:
    void changed();

private:
    struct Call
    {
        QString modem;
        int state = 0;
    };
    void appeared();
    void vanished();
    void hear(const QDBusMessage &signal);
    void interfacesAdded(const QDBusMessage &signal);
    void interfacesRemoved(const QDBusMessage &signal);
    void callAdded(const QDBusMessage &signal);
    void callDeleted(const QDBusMessage &signal);
    void callStateChanged(const QDBusMessage &signal);
    void propertiesChanged(const QDBusMessage &signal);
    void managedObjects(const QDBusMessage &reply);
    void takeInterfaces(const QString &modem, const QMap<QString, QVariantMap> &interfaces);
    void setCalls(const QString &modem, const QStringList &calls);
    void addCall(const QString &modem, const QString &call);
    void setState(const QString &call, const QVariant &state);
    void update();

    BusPeer m_peer;
    QHash<QString, Call> m_calls; // by object path
    bool m_active = false;
};

// 1 while there is a call, else 0.
class ModemCallMonitor : public CallMonitor
{
    Q_OBJECT

public:
    ModemCallMonitor(std::shared_ptr<ModemCalls> calls, QObject *parent);
    // Over the calls on the system bus, which live as long as one monitor does.
    static ModemCallMonitor *createShared(QObject *parent);

    [[nodiscard]] int getState() const override { return m_calls->isActive() ? 1 : 0; }

private:
    std::shared_ptr<ModemCalls> m_calls;
};
