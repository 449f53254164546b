// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/mockservice.h"
#include "support/privatebus.h"

#include <QDBusConnection>
#include <QString>

#include <memory>

// A bus of the test's own with mocked services on it. `client` is the connection of what is tested.
class MockedBus
{
public:
    MockedBus()
        : m_address(m_bus.start()),
          client(QDBusConnection::connectToBus(m_address, QStringLiteral("client"))),
          m_control(QDBusConnection::connectToBus(m_address, QStringLiteral("control")))
    {
    }
    ~MockedBus()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
        QDBusConnection::disconnectFromBus(QStringLiteral("control"));
    }
    Q_DISABLE_COPY_MOVE(MockedBus)

    [[nodiscard]] bool isUp() const { return client.isConnected() && m_control.isConnected(); }
    // A bus that is not there.
    [[nodiscard]] static QDBusConnection nowhere() { return QDBusConnection(QStringLiteral("nowhere")); }
    [[nodiscard]] std::unique_ptr<MockService> service(const QString &mockTemplate, const QString &name,
                                                       const QString &path) const
    {
        return std::make_unique<MockService>(m_address, m_control, mockTemplate, name, path);
    }

private:
    PrivateBus m_bus;
    QString m_address;

public:
    QDBusConnection client;

private:
    QDBusConnection m_control;
};
