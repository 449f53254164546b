// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"

#include <QTimer>

// One service that can keep the session awake. Asks it for one thing at a time, and compares what it has with
// what is wanted whenever an answer has come: however fast the wish changes and however late the answers are,
// in the end they agree.
class IdleHold : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Unknown, // whether the service is there
        Missing,
        Ready, // there, and nothing is asked of it
        Asking,
        Held,
        Refused, // until it is no longer wanted, or the service is started again
    };

    // `reason` is shown to the person.
    void setWanted(bool wanted, const QString &reason);
    [[nodiscard]] State state() const { return m_state; }
    // Another service had better be asked: this one is missing, refuses, or lets wait.
    [[nodiscard]] bool isOfNoHelp() const;

Q_SIGNALS:
    void helpChanged();

protected:
    IdleHold(const QDBusConnection &sessionBus, const QString &service, QObject *parent);

    [[nodiscard]] BusPeer &service() { return m_service; }
    // Sends the request and gives its answer to held() or refused(), in time.
    virtual void ask(const QString &reason) = 0;
    // Takes the request back that was answered with held().
    virtual void giveBack() = 0;
    void held();
    void refused(const QString &why);
    // What the service holds for this program ended by the service's own will.
    void revoked(const QString &why);

private:
    void reconcile();
    void setState(State state);

    BusPeer m_service;
    QTimer m_patience;
    QString m_reason;
    State m_state = State::Unknown;
    bool m_wanted = false;
    bool m_refusalTold = false;
};
