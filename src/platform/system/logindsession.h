// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"

#include <QList>
#include <QTimer>

#include <memory>

class BusProperty;

// The login session of this process, as logind has it: whether it is locked. Not locked while nobody tells.
class LogindSession : public QObject
{
    Q_OBJECT

public:
    explicit LogindSession(const QDBusConnection &systemBus, QObject *parent = nullptr);
    ~LogindSession() override;

    [[nodiscard]] bool isLocked() const { return m_locked; }

Q_SIGNALS:
    void lockedChanged(bool locked);

private:
    void search();
    void tryNext();
    void adopt(const QString &path);
    void lose();
    void hear(const QDBusMessage &message);
    void request(bool lock);
    void hintChanged(const QVariant &hint);
    void setLocked(bool locked);

    BusPeer m_logind;
    QList<QDBusMessage> m_questions; // each names a session; asked in this order
    int m_search = 0; // the number of the present one; answers to an earlier one are dropped
    QString m_path; // of the session
    std::unique_ptr<BusProperty> m_lockedHint;
    QTimer m_confirmation; // whether a request to lock or unlock was followed
    bool m_locked = false;
};
