// SPDX-License-Identifier: GPL-3.0-or-later
#include "modemcalls.h"

#include "systemlog.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = QStringLiteral("org.freedesktop.ModemManager1");
const QString managerPath = QStringLiteral("/org/freedesktop/ModemManager1");
const QString voiceInterface = QStringLiteral("org.freedesktop.ModemManager1.Modem.Voice");
const QString callInterface = QStringLiteral("org.freedesktop.ModemManager1.Call");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

constexpr int AnswerTimeout = 5000; // ms
constexpr qsizetype MostCalls = 200; // more than a telephone has; a daemon gone wild has an end there

enum State { Unknown, Dialing, RingingOut, RingingIn, Active, Held, Waiting, Terminated };

QStringList objectPaths(const QVariant &value)
{
    QList<QDBusObjectPath> paths;
    if (value.metaType() == QMetaType::fromType<QDBusArgument>()) {
        const auto argument = value.value<QDBusArgument>();
        if (argument.currentSignature() == "ao"_L1)
            paths = qdbus_cast<QList<QDBusObjectPath>>(argument);
    } else if (value.metaType() == QMetaType::fromType<QList<QDBusObjectPath>>()) {
        paths = value.value<QList<QDBusObjectPath>>();
    }
    QStringList texts;
    for (const QDBusObjectPath &path : std::as_const(paths))
        texts.append(path.path());
    return texts;
}

bool isSilence(const QDBusMessage &error)
{
    return error.errorName() == "org.freedesktop.DBus.Error.NoReply"_L1
        || error.errorName() == "org.freedesktop.DBus.Error.Timeout"_L1;
}

QString objectPath(const QDBusMessage &message)
{
    return message.arguments().value(0).value<QDBusObjectPath>().path();
}

} // namespace

bool ModemCalls::isCall(int state)
{
    switch (state) {
    case Dialing:
    case RingingOut:
    case RingingIn:
    case Active:
    case Held:
    case Waiting:
        return true;
    default:
        return false;
    }
}

ModemCalls::ModemCalls(const QDBusConnection &bus) : m_peer(bus, service)
{
    connect(&m_peer, &BusPeer::appeared, this, &ModemCalls::appeared);
    connect(&m_peer, &BusPeer::vanished, this, &ModemCalls::vanished);
    connect(&m_peer, &BusPeer::signalled, this, &ModemCalls::hear);
    m_peer.listen(managerPath, objectManager, u"InterfacesAdded"_s);
    m_peer.listen(managerPath, objectManager, u"InterfacesRemoved"_s);
    m_peer.listen(QString(), voiceInterface, u"CallAdded"_s);
    m_peer.listen(QString(), voiceInterface, u"CallDeleted"_s);
    m_peer.listen(QString(), callInterface, u"StateChanged"_s);
    m_peer.listen(QString(), propertiesInterface, u"PropertiesChanged"_s, voiceInterface);
    m_peer.listen(QString(), propertiesInterface, u"PropertiesChanged"_s, callInterface);
}

void ModemCalls::appeared()
{
    m_peer.call(
        BusPeer::method(managerPath, objectManager, u"GetManagedObjects"_s), this,
        [this](const QDBusMessage &reply) { managedObjects(reply); }, AnswerTimeout);
}

void ModemCalls::vanished()
{
    qCInfo(systemLog, "no ModemManager on the system bus: no call counts as active");
    m_calls.clear();
    update();
}

void ModemCalls::hear(const QDBusMessage &signal)
{
    const QString member = signal.member();
    if (member == "InterfacesAdded"_L1)
        interfacesAdded(signal);
    else if (member == "InterfacesRemoved"_L1)
        interfacesRemoved(signal);
    else if (member == "CallAdded"_L1)
        callAdded(signal);
    else if (member == "CallDeleted"_L1)
        callDeleted(signal);
    else if (member == "StateChanged"_L1)
        callStateChanged(signal);
    else
        propertiesChanged(signal);
}

void ModemCalls::managedObjects(const QDBusMessage &reply)
{
    if (reply.signature() != "a{oa{sa{sv}}}"_L1) {
        qCWarning(systemLog, "ModemManager does not tell its modems (%ls): calls are known once they change",
                  qUtf16Printable(reply.errorMessage()));
        return;
    }
    const auto modems
        = qdbus_cast<QMap<QDBusObjectPath, QMap<QString, QVariantMap>>>(reply.arguments().at(0));
    for (auto modem = modems.begin(); modem != modems.end(); ++modem)
        takeInterfaces(modem.key().path(), modem.value());
}

void ModemCalls::interfacesAdded(const QDBusMessage &signal)
{
    if (signal.signature() == "oa{sa{sv}}"_L1)
        takeInterfaces(objectPath(signal), qdbus_cast<QMap<QString, QVariantMap>>(signal.arguments().at(1)));
}

// A modem that is gone, or was disabled, ends its calls without another word.
void ModemCalls::interfacesRemoved(const QDBusMessage &signal)
{
    if (signal.signature() == "oas"_L1 && signal.arguments().at(1).toStringList().contains(voiceInterface))
        setCalls(objectPath(signal), {});
}

void ModemCalls::takeInterfaces(const QString &modem, const QMap<QString, QVariantMap> &interfaces)
{
    const auto voice = interfaces.find(voiceInterface);
    if (voice != interfaces.end())
        setCalls(modem, objectPaths(voice->value(u"Calls"_s)));
}

void ModemCalls::setCalls(const QString &modem, const QStringList &calls)
{
    m_calls.removeIf([&modem, &calls](const auto &call) {
        return call.value().modem == modem && !calls.contains(call.key());
    });
    for (const QString &call : calls)
        addCall(modem, call);
    update();
}

void ModemCalls::callAdded(const QDBusMessage &signal)
{
    if (signal.signature() == "o"_L1)
        addCall(signal.path(), objectPath(signal));
}

void ModemCalls::callDeleted(const QDBusMessage &signal)
{
    if (signal.signature() == "o"_L1 && m_calls.remove(objectPath(signal)) != 0)
        update();
}

// The signal and the list both tell of a new call; its state is asked for once.
void ModemCalls::addCall(const QString &modem, const QString &call)
{
    if (call.isEmpty() || m_calls.contains(call) || m_calls.size() >= MostCalls)
        return;
    m_calls.insert(call, {modem, Unknown});
    m_peer.call(
        BusPeer::method(call, propertiesInterface, u"Get"_s, {callInterface, u"State"_s}), this,
        [this, call](const QDBusMessage &reply) {
            if (reply.signature() == "v"_L1)
                setState(call, reply.arguments().at(0).value<QDBusVariant>().variant());
            else if (reply.type() == QDBusMessage::ErrorMessage && !isSilence(reply))
                m_calls.remove(call); // over before it could be asked about
        },
        AnswerTimeout);
}

void ModemCalls::callStateChanged(const QDBusMessage &signal)
{
    // Old state, new state, reason.
    setState(signal.path(), signal.arguments().value(1));
}

void ModemCalls::propertiesChanged(const QDBusMessage &signal)
{
    if (signal.signature() != "sa{sv}as"_L1)
        return;
    const QString interface = signal.arguments().at(0).toString();
    const auto properties = qdbus_cast<QVariantMap>(signal.arguments().at(1));
    if (interface == callInterface && properties.contains(u"State"_s))
        setState(signal.path(), properties.value(u"State"_s));
    else if (interface == voiceInterface && properties.contains(u"Calls"_s))
        setCalls(signal.path(), objectPaths(properties.value(u"Calls"_s)));
}

void ModemCalls::setState(const QString &call, const QVariant &state)
{
    const auto known = m_calls.find(call);
    if (known == m_calls.end())
        return;
    known->state = state.typeId() == QMetaType::Int ? state.toInt() : int(Unknown);
    update();
}

void ModemCalls::update()
{
    const bool active
        = std::any_of(m_calls.cbegin(), m_calls.cend(), [](const Call &call) { return isCall(call.state); });
    if (std::exchange(m_active, active) != active)
        Q_EMIT changed();
}

ModemCallMonitor::ModemCallMonitor(std::shared_ptr<ModemCalls> calls, QObject *parent)
    : CallMonitor(parent),
      m_calls(std::move(calls))
{
    connect(m_calls.get(), &ModemCalls::changed, this, [this] { Q_EMIT stateChanged(getState()); });
}

ModemCallMonitor *ModemCallMonitor::createShared(QObject *parent)
{
    static std::weak_ptr<ModemCalls> shared;
    std::shared_ptr<ModemCalls> calls = shared.lock();
    if (!calls) {
        calls = std::make_shared<ModemCalls>(QDBusConnection::systemBus());
        shared = calls;
    }
    return new ModemCallMonitor(std::move(calls), parent);
}
