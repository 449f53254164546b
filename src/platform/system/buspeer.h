// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>

// One service on a bus as its client sees it: whether it is there, what it signals, what it answers. Never
// waits and never starts the service. Signals and answers are those of the present owner of the name only.
class BusPeer : public QObject
{
    Q_OBJECT

public:
    static constexpr int DefaultTimeout = 25000; // ms
    static constexpr int NoTimeout = 0x7fffffff; // until the service answers or goes

    BusPeer(const QDBusConnection &bus, const QString &name, QObject *parent = nullptr);

    [[nodiscard]] QString name() const { return m_name; }
    [[nodiscard]] bool isPresent() const { return !m_owner.isEmpty(); }
    // This program's own name on the bus.
    [[nodiscard]] QString ownName() const { return m_bus.baseService(); }

    // signalled() tells of that signal, from the present owner and from every later one. An empty path: of
    // every object. With a `firstArgument` only if that text is its first one, so that others wake nobody.
    void listen(const QString &path, const QString &interface, const QString &member,
                const QString &firstArgument = {});
    void ignore(const QString &path, const QString &interface, const QString &member,
                const QString &firstArgument = {});

    using Answer = std::function<void(const QDBusMessage &)>;
    // `answered` gets the reply or the error, unless `context` is gone or the service was replaced meanwhile.
    void call(const QDBusMessage &method, QObject *context, Answer answered, int timeoutMs = DefaultTimeout);
    // Without interest in the answer.
    void send(const QDBusMessage &method);
    // For call() and send().
    [[nodiscard]] static QDBusMessage method(const QString &path, const QString &interface,
                                             const QString &member, const QVariantList &arguments = {});

Q_SIGNALS:
    void appeared(); // also when one owner hands over to the next, after vanished()
    void vanished(); // also once when the service is found missing at the start
    void signalled(const QDBusMessage &message);

private Q_SLOTS:
    void deliver(const QDBusMessage &message) { Q_EMIT signalled(message); }

private:
    struct Rule
    {
        QString path;
        QString interface;
        QString member;
        QStringList arguments; // the first ones must be
        bool operator==(const Rule &) const = default;
    };
    void askOwner();
    void setOwner(const QString &owner);
    void apply(const Rule &rule);
    void withdraw(const Rule &rule);
    [[nodiscard]] QDBusMessage addressed(const QDBusMessage &method) const;

    QDBusConnection m_bus;
    QString m_name;
    QDBusServiceWatcher m_watcher;
    QList<Rule> m_rules;
    QString m_owner; // unique name
    bool m_heard = false; // the bus told of an owner by itself
    bool m_known = false; // vanished() or appeared() was emitted
    int m_generation = 0; // of owners
};
