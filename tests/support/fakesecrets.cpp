// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakesecrets.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QTimer>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

struct FakeSecret
{
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
};
using FakeSecretMap = QMap<QDBusObjectPath, FakeSecret>;

namespace {

const QString root = u"/org/freedesktop/secrets"_s;
const QString itemPrefix = root + u"/collection/login/"_s;
const QString promptPath = root + u"/prompt/p1"_s;
using Attributes = QMap<QString, QString>;
using Paths = QList<QDBusObjectPath>;

int numberOf(const QString &path)
{
    return path.mid(itemPrefix.size()).toInt();
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const FakeSecret &secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, FakeSecret &secret)
{
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument;
}

FakeSecrets::FakeSecrets(const QString &busAddress)
    : m_name(QUuid::createUuid().toString()),
      m_bus(QDBusConnection::connectToBus(busAddress, m_name))
{
    qDBusRegisterMetaType<Attributes>();
    qDBusRegisterMetaType<FakeSecret>();
    qDBusRegisterMetaType<FakeSecretMap>();
    m_bus.registerVirtualObject(root, this, QDBusConnection::SubPath);
}

FakeSecrets::~FakeSecrets()
{
    vanish();
}

bool FakeSecrets::appear()
{
    return m_bus.registerService(u"org.freedesktop.secrets"_s);
}

void FakeSecrets::vanish()
{
    QDBusConnection::disconnectFromBus(m_name);
    m_bus = QDBusConnection(m_name); // the last to hold it: now it is closed
}

QString FakeSecrets::introspect(const QString &) const
{
    return {};
}

bool FakeSecrets::fails(const QDBusMessage &message)
{
    if (message.member() != faultAt)
        return false;
    switch (fault) {
    case Fault::None:
        return false;
    case Fault::Silent:
        break;
    case Fault::Error:
        m_bus.send(message.createErrorReply(u"org.freedesktop.DBus.Error.Failed"_s, u"No."_s));
        break;
    case Fault::Garbage:
        m_bus.send(message.createReply(QVariantList{7, u"seven"_s}));
        break;
    case Fault::Gone:
        QTimer::singleShot(0, this, &FakeSecrets::vanish);
        break;
    }
    return true;
}

bool FakeSecrets::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    calls.append(message.member());
    message.setDelayedReply(true);
    if (fails(message))
        return true;
    const QVariantList arguments = answer(message);
    m_bus.send(message.createReply(arguments));
    if (message.member() == "Prompt"_L1 && person != Person::Waits)
        complete(message.service(), person == Person::Declines);
    return true;
}

QVariantList FakeSecrets::answer(const QDBusMessage &message)
{
    const QString method = message.member();
    if (method == "OpenSession"_L1)
        return {QVariant::fromValue(QDBusVariant(QString())),
                QVariant::fromValue(QDBusObjectPath(root + u"/session/s1"_s))};
    if (method == "SearchItems"_L1)
        return search(message);
    if (method == "Unlock"_L1)
        return unlock(message);
    if (method == "GetSecrets"_L1)
        return secrets(message);
    if (method == "Get"_L1)
        return {QVariant::fromValue(
            QDBusVariant(QVariant::fromValue(items.value(numberOf(message.path())).attributes)))};
    return {};
}

QVariantList FakeSecrets::search(const QDBusMessage &message) const
{
    const auto wanted = qdbus_cast<Attributes>(message.arguments().constFirst());
    Paths open;
    Paths locked;
    for (qsizetype number = 0; number < items.size(); ++number) {
        const Item &item = items.at(number);
        bool fits = true;
        for (auto [name, value] : wanted.asKeyValueRange())
            fits = fits && item.attributes.value(name) == value;
        if (fits)
            (item.isLocked ? locked : open).append(QDBusObjectPath(itemPrefix + QString::number(number)));
    }
    return {QVariant::fromValue(open), QVariant::fromValue(locked)};
}

QVariantList FakeSecrets::unlock(const QDBusMessage &message)
{
    m_toUnlock = qdbus_cast<Paths>(message.arguments().constFirst()).constFirst().path();
    return {QVariant::fromValue(Paths()), QVariant::fromValue(QDBusObjectPath(promptPath))};
}

QVariantList FakeSecrets::secrets(const QDBusMessage &message) const
{
    FakeSecretMap map;
    const auto session = message.arguments().at(1).value<QDBusObjectPath>();
    for (const QDBusObjectPath &path : qdbus_cast<Paths>(message.arguments().constFirst())) {
        const Item item = items.value(numberOf(path.path()));
        if (!item.isLocked)
            map.insert(path, {session, {}, item.secret.toUtf8(), u"text/plain"_s});
    }
    return {QVariant::fromValue(map)};
}

void FakeSecrets::complete(const QString &caller, bool isDismissed)
{
    if (!isDismissed)
        items[numberOf(m_toUnlock)].isLocked = false;
    QDBusMessage signal = QDBusMessage::createTargetedSignal(
        caller, promptPath, u"org.freedesktop.Secret.Prompt"_s, u"Completed"_s);
    signal << isDismissed
           << QVariant::fromValue(QDBusVariant(
                  QVariant::fromValue(isDismissed ? Paths() : Paths{QDBusObjectPath(m_toUnlock)})));
    m_bus.send(signal);
}
