// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"
#include "devicestate.h"

// What the USB mode daemon of this family of devices says. Without it nothing is exported.
class UsbModedDaemon : public QObject, public UsbMode
{
    Q_OBJECT

public:
    explicit UsbModedDaemon(const QDBusConnection &bus);

    [[nodiscard]] bool isMassStorage() const override { return m_massStorage; }
    void onChange(QObject *context, const Listener &listener) override;

Q_SIGNALS:
    void changed(UsbMode::Source source);

private:
    void vanished();
    void stateIndicated(const QDBusMessage &signal);
    void askMode();
    void takeMode(const QDBusMessage &reply);
    void setMassStorage(bool massStorage, Source source);

    BusPeer m_peer;
    int m_news = 0; // what was heard; an answer that is older than the newest is dropped
    bool m_asking = false;
    bool m_askAgain = false; // when that is answered
    bool m_massStorage = false;
};
