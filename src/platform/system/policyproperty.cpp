// SPDX-License-Identifier: GPL-3.0-or-later
#include "policyproperty.h"

#include "outputroute.h"
#include "systemlog.h"

#include <QDBusArgument>
#include <QDBusVariant>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = QStringLiteral("com.harrow.Policy");
const QString propertyInterface = QStringLiteral("com.harrow.Policy.Property");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString valueName = QStringLiteral("Value");
constexpr int AnswerTimeout = 5000; // ms
constexpr auto VideoRouteKey = "/com/harrow/policy/video_route"_L1;

// Values are simple ones; a structure is nothing that a reader of a key expects.
QVariant simpleValue(const QVariant &value)
{
    QVariant inner = value;
    while (inner.metaType() == QMetaType::fromType<QDBusVariant>())
        inner = inner.value<QDBusVariant>().variant();
    return inner.metaType() == QMetaType::fromType<QDBusArgument>() ? QVariant() : inner;
}

} // namespace

PolicyProperty::PolicyProperty(const QString &key, const QDBusConnection &sessionBus, const QString &sysRoot,
                               QObject *parent)
    : ContextProperty(parent),
      m_key(key),
      m_bus(sessionBus),
      m_sysRoot(sysRoot)
{
}

PolicyProperty::~PolicyProperty() = default;

void PolicyProperty::subscribe()
{
    if (m_policy)
        return;
    if (m_key == VideoRouteKey) {
        m_outputs = std::make_unique<OutputRoute>(m_sysRoot);
        connect(m_outputs.get(), &OutputRoute::changed, this, &PolicyProperty::update);
    }
    m_policy = std::make_unique<BusPeer>(m_bus, service);
    connect(m_policy.get(), &BusPeer::appeared, this, &PolicyProperty::askValue);
    connect(m_policy.get(), &BusPeer::vanished, this, &PolicyProperty::vanished);
    connect(m_policy.get(), &BusPeer::signalled, this, &PolicyProperty::propertiesChanged);
    m_policy->listen(m_key, propertiesInterface, u"PropertiesChanged"_s, propertyInterface);
}

void PolicyProperty::unsubscribe()
{
    m_policy.reset();
    m_outputs.reset();
    m_settled = false;
    forgetQuestions();
}

void PolicyProperty::vanished()
{
    forgetQuestions();
    qCInfo(systemLog, "no policy service on the session bus: %ls is %s", qUtf16Printable(m_key),
           m_outputs ? "what the outputs say" : "without a value");
    takeValue(QVariant());
}

void PolicyProperty::propertiesChanged(const QDBusMessage &signal)
{
    if (signal.signature() != "sa{sv}as"_L1)
        return;
    const auto changed = qdbus_cast<QVariantMap>(signal.arguments().at(1));
    if (changed.contains(valueName)) {
        ++m_news;
        m_askAgain = false;
        takeValue(changed.value(valueName));
    } else if (signal.arguments().at(2).toStringList().contains(valueName)) {
        askValue();
    }
}

// One question at a time, however fast the service talks.
void PolicyProperty::askValue()
{
    if (m_asking) {
        m_askAgain = true;
        return;
    }
    m_asking = true;
    m_policy->call(
        BusPeer::method(m_key, propertiesInterface, u"Get"_s, {propertyInterface, valueName}), this,
        [this, news = m_news](const QDBusMessage &reply) {
            m_asking = false;
            if (std::exchange(m_askAgain, false))
                askValue();
            else if (news == m_news)
                takeAnswer(reply);
        },
        AnswerTimeout);
}

void PolicyProperty::takeAnswer(const QDBusMessage &reply)
{
    if (reply.type() == QDBusMessage::ReplyMessage && reply.signature() == "v"_L1)
        takeValue(reply.arguments().at(0).value<QDBusVariant>().variant());
    else
        takeValue(QVariant(), reply.errorMessage());
}

void PolicyProperty::forgetQuestions()
{
    ++m_news;
    m_asking = false;
    m_askAgain = false;
}

void PolicyProperty::takeValue(const QVariant &value, const QString &problem)
{
    m_policyValue = simpleValue(value);
    m_settled = true;
    if (m_policy->isPresent() && !m_policyValue.isValid())
        qCInfo(systemLog, "the policy service has no value of %ls (%ls)", qUtf16Printable(m_key),
               qUtf16Printable(problem));
    update();
}

void PolicyProperty::update()
{
    if (!m_settled)
        return;
    QVariant value = m_policyValue;
    if (!value.isValid() && m_outputs && !m_outputs->route().isEmpty())
        value = m_outputs->route();
    if (std::exchange(m_value, value) != value)
        Q_EMIT valueChanged();
}
