// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

// bluez on a system bus, over a connection of its own: hands out the objects that it is given.
class FakeBluez : public QDBusVirtualObject
{
    Q_OBJECT

public:
    using Interfaces = QMap<QString, QVariantMap>;
    using Objects = QMap<QDBusObjectPath, Interfaces>;

    explicit FakeBluez(const QString &busAddress);
    ~FakeBluez() override;

    bool appear();
    void disappear();
    void setAdapter(bool powered); // hci0, 11:22:33:44:55:66
    void addDevice(const QString &address, const QVariantMap &properties); // paired, of hci0
    void removeDevice(const QString &address);
    // Tells it of one object, as bluez does.
    void change(const QString &path, const QString &interface, const QVariantMap &properties);

    Objects objects;
    int reads = 0;
    bool nonsense = false; // answers with something else than asked for

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QString m_name;
    QDBusConnection m_bus;
};

// bluez's object exchange service on a session bus: accepts what it is sent, and tells of the transfers what
// it is told to.
class FakeObex : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit FakeObex(const QString &busAddress);
    ~FakeObex() override;

    bool appear();
    void disappear();
    // Of the last transfer.
    void transferred(quint64 bytes);
    void status(const QString &status);

    QString refuses; // the method that fails
    QString hangs; // the method that is never answered
    int unanswered = 0;
    bool completesAtOnce = false; // before the call that begins the transfer is answered
    quint64 size = 1000;
    QStringList sessions; // "address adapter target"
    QStringList sent; // paths
    QStringList removed; // sessions

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void change(const QVariantMap &properties);
    [[nodiscard]] QString transferPath() const;

    QString m_name;
    QDBusConnection m_bus;
};
