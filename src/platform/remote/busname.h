// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

// Owns a name on the bus while it lives, or, where another program has it, that name with the number of this
// process behind it (".instance123"). Asks the bus without waiting for the answer.
class BusName : public QObject
{
    Q_OBJECT

public:
    BusName(const QDBusConnection &bus, const QString &name, QObject *parent = nullptr);
    ~BusName() override;

    // Empty until the bus has answered, and when it refused.
    [[nodiscard]] QString owned() const { return m_owned; }

Q_SIGNALS:
    void acquired(QString name);

private:
    void request(const QString &name, bool mayFallBack);

    QDBusConnection m_bus;
    QString m_owned;
    QString m_requested;
};
