// SPDX-License-Identifier: GPL-3.0-or-later
#include "secretlookup.h"

#include "serverslog.h"

#include "platform/system/buspeer.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QMap>

#include <strings.h>

using namespace Qt::Literals::StringLiterals;

namespace {

using Attributes = QMap<QString, QString>;

const QString secretsName = u"org.freedesktop.secrets"_s;
const QString secretsPath = u"/org/freedesktop/secrets"_s;
const QString serviceInterface = u"org.freedesktop.Secret.Service"_s;
const QString promptInterface = u"org.freedesktop.Secret.Prompt"_s;
const QString itemInterface = u"org.freedesktop.Secret.Item"_s;
const QString noPrompt = u"/"_s;

QList<QDBusObjectPath> pathsIn(const QVariant &value)
{
    return qdbus_cast<QList<QDBusObjectPath>>(value);
}

bool saysNoService(const QDBusMessage &reply)
{
    static const QStringList names{
        u"org.freedesktop.DBus.Error.ServiceUnknown"_s, u"org.freedesktop.DBus.Error.NameHasNoOwner"_s,
        u"org.freedesktop.DBus.Error.Spawn.ServiceNotFound"_s, u"org.freedesktop.DBus.Error.Disconnected"_s};
    return reply.type() == QDBusMessage::ErrorMessage && names.contains(reply.errorName());
}

// The value of the item in a "a{o(oayays)}"; false when it is not among them.
bool readSecret(const QDBusMessage &reply, const QDBusObjectPath &item, QString *secret)
{
    const auto map = reply.arguments().constFirst().value<QDBusArgument>();
    bool isThere = false;
    map.beginMap();
    while (!map.atEnd()) {
        QDBusObjectPath path;
        QDBusObjectPath session;
        QByteArray parameters;
        QByteArray value;
        QString contentType;
        map.beginMapEntry();
        map >> path;
        map.beginStructure();
        map >> session >> parameters >> value >> contentType;
        map.endStructure();
        map.endMapEntry();
        if (path == item) {
            *secret = QString::fromUtf8(value);
            isThere = true;
        }
        explicit_bzero(value.data(), size_t(value.size()));
    }
    map.endMap();
    return isThere;
}

} // namespace

SecretLookup::SecretLookup(const QDBusConnection &session, const QString &server, const QString &user,
                           const SecretPatience &patience, QObject *parent)
    : QObject(parent),
      m_bus(session),
      m_server(server),
      m_user(user),
      m_patience(patience),
      m_watcher(secretsName, session, QDBusServiceWatcher::WatchForUnregistration),
      m_service(secretsName)
{
    qDBusRegisterMetaType<Attributes>();
    m_promptTime.setSingleShot(true);
    m_promptTime.setInterval(patience.prompt);
    connect(&m_promptTime, &QTimer::timeout, this, [this] {
        dismissPrompt();
        if (end())
            Q_EMIT withheld(u"nobody has unlocked it"_s);
    });
    // A call that is under way ends with an error; a prompt would be waited for.
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        if (!m_prompt.isEmpty())
            fail(u"it went away"_s);
    });
}

SecretLookup::~SecretLookup()
{
    dismissPrompt();
}

void SecretLookup::start(bool mayAsk)
{
    m_mayAsk = mayAsk;
    // Unencrypted: who can read this user's bus can ask the service, too.
    call(secretsPath, serviceInterface, u"OpenSession"_s,
         {u"plain"_s, QVariant::fromValue(QDBusVariant(QString()))}, u"vo"_s, &SecretLookup::opened);
}

void SecretLookup::call(const QString &path, const QString &interface, const QString &method,
                        const QVariantList &arguments, const QString &signature, Reply answered)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_service, path, interface, method);
    message.setArguments(arguments);
    // What a prompt may take, the answer to showing it may take.
    const int patience = m_prompt.isEmpty() ? int(m_patience.call.count()) : BusPeer::NoTimeout;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, patience), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, method, signature, answered, watcher] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (m_ended)
            return;
        if (saysNoService(reply) && m_session.path().isEmpty() && end())
            Q_EMIT nothing();
        else if (reply.type() != QDBusMessage::ReplyMessage)
            fail(u"%1: %2"_s.arg(reply.errorName(), reply.errorMessage()));
        else if (reply.signature() != signature)
            fail(u"it answers %1 with \"%2\""_s.arg(method, reply.signature()));
        else
            (this->*answered)(reply);
    });
}

void SecretLookup::opened(const QDBusMessage &reply)
{
    m_service = reply.service();
    m_session = reply.arguments().at(1).value<QDBusObjectPath>();
    Attributes attributes{{u"application"_s, u"com.harrow.kestrel"_s}, {u"server"_s, m_server}};
    if (!m_user.isEmpty())
        attributes.insert(u"user"_s, m_user);
    call(secretsPath, serviceInterface, u"SearchItems"_s, {QVariant::fromValue(attributes)}, u"aoao"_s,
         &SecretLookup::searched);
}

void SecretLookup::searched(const QDBusMessage &reply)
{
    const QList<QDBusObjectPath> open = pathsIn(reply.arguments().at(0));
    m_locked = pathsIn(reply.arguments().at(1));
    if (open.size() + m_locked.size() > 1)
        qCInfo(serversLog, "several passwords are stored for %ls: the first one counts",
               qUtf16Printable(m_server));
    if (!open.isEmpty()) {
        take(open.constFirst());
    } else if (m_locked.isEmpty()) {
        if (end())
            Q_EMIT nothing();
    } else {
        call(secretsPath, serviceInterface, u"Unlock"_s,
             {QVariant::fromValue(QList<QDBusObjectPath>{m_locked.constFirst()})}, u"aoo"_s,
             &SecretLookup::unlocked);
    }
}

void SecretLookup::unlocked(const QDBusMessage &reply)
{
    const QString prompt = reply.arguments().at(1).value<QDBusObjectPath>().path();
    if (prompt == noPrompt) {
        take(m_locked.constFirst());
        return;
    }
    watchPrompt(prompt);
    if (!m_mayAsk) {
        dismissPrompt();
        if (end())
            Q_EMIT withheld(u"it is locked, and was not unlocked when that was asked for"_s);
        return;
    }
    m_promptTime.start();
    call(prompt, promptInterface, u"Prompt"_s, {QString()}, QString(), &SecretLookup::promptShown);
}

void SecretLookup::promptShown(const QDBusMessage &)
{
    // Completed() follows when the person has answered.
}

void SecretLookup::watchPrompt(const QString &path)
{
    m_prompt = path;
    m_bus.connect(m_service, path, promptInterface, u"Completed"_s, this, SLOT(prompted(QDBusMessage)));
}

void SecretLookup::forgetPrompt()
{
    if (m_prompt.isEmpty())
        return;
    m_bus.disconnect(m_service, m_prompt, promptInterface, u"Completed"_s, this,
                     SLOT(prompted(QDBusMessage)));
    m_prompt.clear();
    m_promptTime.stop();
}

void SecretLookup::dismissPrompt()
{
    if (!m_prompt.isEmpty())
        m_bus.send(QDBusMessage::createMethodCall(m_service, m_prompt, promptInterface, u"Dismiss"_s));
    forgetPrompt();
}

void SecretLookup::prompted(const QDBusMessage &message)
{
    if (m_ended || m_prompt.isEmpty() || message.path() != m_prompt)
        return;
    const bool isDismissed = message.arguments().value(0, true).toBool();
    forgetPrompt();
    if (!isDismissed)
        take(m_locked.constFirst());
    else if (end())
        Q_EMIT withheld(u"it was not unlocked"_s);
}

void SecretLookup::take(const QDBusObjectPath &item)
{
    m_item = item;
    if (m_user.isEmpty())
        call(item.path(), u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {itemInterface, u"Attributes"_s},
             u"v"_s, &SecretLookup::named);
    else
        askSecret();
}

void SecretLookup::named(const QDBusMessage &reply)
{
    const auto attributes
        = qdbus_cast<Attributes>(reply.arguments().constFirst().value<QDBusVariant>().variant());
    m_user = attributes.value(u"user"_s);
    if (m_user.isEmpty())
        fail(u"what it has for %1 is without the attribute \"user\""_s.arg(m_server));
    else
        askSecret();
}

void SecretLookup::askSecret()
{
    call(secretsPath, serviceInterface, u"GetSecrets"_s,
         {QVariant::fromValue(QList<QDBusObjectPath>{m_item}), QVariant::fromValue(m_session)},
         u"a{o(oayays)}"_s, &SecretLookup::told);
}

void SecretLookup::told(const QDBusMessage &reply)
{
    Login login;
    if (!readSecret(reply, m_item, &login.password)) {
        fail(u"it does not give the password of %1"_s.arg(m_server));
        return;
    }
    login.user = m_user;
    if (end())
        Q_EMIT found(login);
    wipe(login.password);
}

bool SecretLookup::end()
{
    if (std::exchange(m_ended, true))
        return false;
    forgetPrompt();
    if (!m_session.path().isEmpty())
        m_bus.send(QDBusMessage::createMethodCall(m_service, m_session.path(),
                                                  u"org.freedesktop.Secret.Session"_s, u"Close"_s));
    deleteLater();
    return true;
}

void SecretLookup::fail(const QString &why)
{
    dismissPrompt();
    if (end())
        Q_EMIT failed(why);
}
