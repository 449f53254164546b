// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

class ObjectWalk;

// Whether the desktop's file index runs in this session, whether what it knows is whole, and where it answers
// questions: its own endpoint and those that it has for removable devices, which come and go. It is never
// started from here.
class DesktopIndex : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Looking, // not known yet
        Absent,
        Busy, // it runs, but is still reading folders, or does not answer
        Ready,
    };

    explicit DesktopIndex(const QDBusConnection &bus, QObject *parent = nullptr);

    void start();
    [[nodiscard]] State state() const { return m_state; }
    // The unique name of the process that has the index; empty: none has.
    [[nodiscard]] QString owner() const { return m_owner; }
    // Object paths; empty while it is absent.
    [[nodiscard]] QStringList endpoints() const { return m_endpoints; }

public Q_SLOTS:
    // Something may have changed which endpoints there are.
    void lookAgain();

Q_SIGNALS:
    void stateChanged();
    void endpointsChanged();

private Q_SLOTS:
    void onProgress(const QString &status, double progress, int remaining);

private:
    void askOwner(const QString &name);
    void setOwnerOf(const QString &name, const QString &owner);
    void chooseOwner();
    void walk();
    void takeObjects(const QHash<QString, QStringList> &objects);
    void askStatus(const QString &miner);
    void setStatus(const QString &status);
    void setState(State state);
    void setEndpoints(const QStringList &endpoints);
    void follow(bool on);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_names;
    QHash<QString, QString> m_owners; // by well-known name; null: not known yet
    QString m_owner;
    QPointer<ObjectWalk> m_walk;
    QStringList m_endpoints;
    QTimer m_againTimer;
    QTimer m_retryTimer;
    State m_state = State::Looking;
};
