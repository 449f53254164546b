// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"
#include "devicestate.h"

#include <memory>

class OutputRoute;

// A key of the policy service "com.harrow.Policy" on the session bus: the object whose path is the key has
// the property "Value" of the interface "com.harrow.Policy.Property". The video route has a value also where
// there is no such service, or where it has none: what the connected outputs say.
class PolicyProperty : public ContextProperty
{
    Q_OBJECT

public:
    PolicyProperty(const QString &key, const QDBusConnection &sessionBus, const QString &sysRoot,
                   QObject *parent);
    ~PolicyProperty() override;

    void subscribe() override;
    // The last value stays.
    void unsubscribe() override;
    // Invalid until the first answer and whenever nobody has a value.
    [[nodiscard]] QVariant value() const override { return m_value; }

private:
    void vanished();
    void propertiesChanged(const QDBusMessage &signal);
    void askValue();
    void takeAnswer(const QDBusMessage &reply);
    void forgetQuestions();
    void takeValue(const QVariant &value, const QString &problem = QString());
    void update();

    QString m_key;
    QDBusConnection m_bus;
    QString m_sysRoot;
    std::unique_ptr<BusPeer> m_policy; // while subscribed
    std::unique_ptr<OutputRoute> m_outputs;
    QVariant m_policyValue;
    QVariant m_value;
    int m_news = 0; // what was heard; an answer that is older than the newest is dropped
    bool m_asking = false;
    bool m_askAgain = false; // when that is answered
    bool m_settled = false; // the policy service has answered, or is known not to
};
