// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

// videoRoute() of this machine, followed: screens that come, go, move or change their size.
class OutputRoute : public QObject
{
    Q_OBJECT

public:
    explicit OutputRoute(const QString &sysRoot, QObject *parent = nullptr);

    // As of the last look; empty when there is no TV.
    [[nodiscard]] QString route() const { return m_route; }

Q_SIGNALS:
    void changed();

private:
    void lookSoon();
    void look();

    QString m_sysRoot;
    QString m_route;
    QTimer m_soon;
    QTimer m_settled;
};
