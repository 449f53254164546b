// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <optional>

// One object of a D-Bus service as its introspection tells it.
struct BusObject
{
    QStringList interfaces;
    QStringList children; // names, without path
};

// None when it is no introspection text, or too long for one.
[[nodiscard]] std::optional<BusObject> parseIntrospection(const QString &xml);

// Asks the owner of a bus name for all its objects. Whatever it answers, and whether or not it does, the walk
// ends: a limit of time and of objects is kept.
class ObjectWalk : public QObject
{
    Q_OBJECT

public:
    // `owner` is a unique name, so that nobody is started.
    ObjectWalk(const QDBusConnection &bus, const QString &owner, QObject *parent = nullptr);

Q_SIGNALS:
    // Interfaces by object path. Once, through the event loop.
    void finished(const QHash<QString, QStringList> &objects);

private:
    void ask(const QString &path);
    void take(const QString &path, const QString &xml);
    void end();

    QDBusConnection m_bus;
    QString m_owner;
    QHash<QString, QStringList> m_objects;
    QTimer m_deadline;
    int m_asked = 0;
    int m_open = 0; // questions without an answer
    bool m_ended = false;
};
