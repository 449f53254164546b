// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>

class BusPeer;

// One property of a service, followed: read when the service appears, by signal from then on. A value of
// another type than the expected one counts as none.
class BusProperty : public QObject
{
    Q_OBJECT

public:
    // `peer` outlives this.
    BusProperty(BusPeer *peer, const QString &path, const QString &interface, const QString &name,
                QMetaType type, QObject *parent = nullptr);
    ~BusProperty() override;

    // Invalid until it is known and when the service has gone.
    [[nodiscard]] QVariant value() const { return m_value; }
    // Asks again. An answer that a signal has overtaken is dropped.
    void read();

Q_SIGNALS:
    void changed(const QVariant &value);
    // Asked for, and the service has no such thing.
    void unreadable(const QString &reason);

private:
    void hear(const QDBusMessage &message);
    void take(const QVariant &value);
    void forget();

    BusPeer *m_peer;
    QString m_path;
    QString m_interface;
    QString m_name;
    QMetaType m_type;
    QVariant m_value;
    int m_serial = 0; // of what was heard and asked
};
