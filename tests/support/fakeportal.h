// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QVariantMap>

// The desktop portal's Email and OpenURI on a session bus, over a connection of its own: answers when and as
// it is told to.
class FakePortal : public QDBusVirtualObject
{
    Q_OBJECT

public:
    enum class Manner {
        Answers, // the handle, then the response
        ResponseFirst,
        Waits, // the handle; the response with respond()
        Refuses, // with an error in place of the handle
        Silent, // nothing at all
        OwnHandle // like Answers, on an object that the caller did not name
    };
    struct Call
    {
        QString method;
        QString window;
        QString address; // of OpenURI
        QVariantMap options;
        QList<QByteArray> files; // what could be read from the descriptors
        QString handle;
        QString caller;
    };

    explicit FakePortal(const QString &busAddress);
    ~FakePortal() override;

    bool appear();
    void disappear();
    void respond(uint code); // to the last call

    Manner manner = Manner::Answers;
    uint code = 0;
    QStringList interfaces{QStringLiteral("org.freedesktop.portal.Email"),
                           QStringLiteral("org.freedesktop.portal.OpenURI")};
    QList<Call> calls;

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void property(const QDBusMessage &message);
    void request(const QDBusMessage &message);

    QString m_name;
    QDBusConnection m_bus;
};
