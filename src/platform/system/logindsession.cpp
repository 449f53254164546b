// SPDX-License-Identifier: GPL-3.0-or-later
#include "logindsession.h"

#include "busproperty.h"
#include "systemlog.h"

#include <QDBusObjectPath>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {
const QString ManagerPath = u"/org/freedesktop/login1"_s;
const QString ManagerInterface = u"org.freedesktop.login1.Manager"_s;
const QString SessionInterface = u"org.freedesktop.login1.Session"_s;
constexpr int ConfirmationMs = 5000;
} // namespace

LogindSession::LogindSession(const QDBusConnection &systemBus, QObject *parent)
    : QObject(parent),
      m_logind(systemBus, u"org.freedesktop.login1"_s),
      m_confirmation(this)
{
    m_confirmation.setObjectName(u"lockConfirmation"_s);
    m_confirmation.setSingleShot(true);
    m_confirmation.setInterval(ConfirmationMs);
    connect(&m_confirmation, &QTimer::timeout, this, [this] {
        if (m_lockedHint)
            setLocked(m_lockedHint->value().toBool());
    });
    m_logind.listen(ManagerPath, ManagerInterface, u"SessionNew"_s);
    m_logind.listen(ManagerPath, ManagerInterface, u"SessionRemoved"_s);
    connect(&m_logind, &BusPeer::signalled, this, &LogindSession::hear);
    connect(&m_logind, &BusPeer::appeared, this, &LogindSession::search);
    connect(&m_logind, &BusPeer::vanished, this, [this] {
        qCInfo(systemLog, "no login service: the device counts as unlocked");
        lose();
    });
}

LogindSession::~LogindSession() = default;

// "auto" is the session of this process or, for a program that the user's service manager started, the one on
// the display. Older services know neither; then the process and the environment tell.
void LogindSession::search()
{
    lose();
    const auto question = [](const QString &method, const QVariant &argument) {
        return BusPeer::method(ManagerPath, ManagerInterface, method, {argument});
    };
    m_questions = {question(u"GetSession"_s, u"auto"_s), question(u"GetSessionByPID"_s, uint(getpid()))};
    if (const QString id = qEnvironmentVariable("XDG_SESSION_ID"); !id.isEmpty())
        m_questions.append(question(u"GetSession"_s, id));
    tryNext();
}

void LogindSession::tryNext()
{
    if (m_questions.isEmpty()) {
        qCInfo(systemLog, "no login session tells whether it is locked: the device counts as unlocked");
        lose();
        return;
    }
    m_logind.call(m_questions.takeFirst(), this, [this, search = m_search](const QDBusMessage &reply) {
        if (search != m_search)
            return;
        if (reply.type() == QDBusMessage::ReplyMessage && reply.signature() == u"o"_s)
            adopt(reply.arguments().constFirst().value<QDBusObjectPath>().path());
        else
            tryNext();
    });
}

void LogindSession::adopt(const QString &path)
{
    m_path = path;
    m_logind.listen(path, SessionInterface, u"Lock"_s);
    m_logind.listen(path, SessionInterface, u"Unlock"_s);
    m_lockedHint = std::make_unique<BusProperty>(&m_logind, path, SessionInterface, u"LockedHint"_s,
                                                 QMetaType::fromType<bool>());
    connect(m_lockedHint.get(), &BusProperty::changed, this, &LogindSession::hintChanged);
    connect(
        m_lockedHint.get(), &BusProperty::unreadable, this,
        [this, hint = m_lockedHint.get()](const QString &reason) {
            if (hint != m_lockedHint.get() || hint->value().isValid())
                return;
            qCDebug(systemLog, "session %ls: %ls", qUtf16Printable(m_path), qUtf16Printable(reason));
            const QList<QDBusMessage> questions = m_questions;
            lose();
            m_questions = questions;
            tryNext();
        },
        Qt::QueuedConnection);
}

void LogindSession::lose()
{
    ++m_search;
    m_questions.clear();
    if (!m_path.isEmpty()) {
        m_logind.ignore(m_path, SessionInterface, u"Lock"_s);
        m_logind.ignore(m_path, SessionInterface, u"Unlock"_s);
        m_path.clear();
    }
    m_lockedHint.reset();
    m_confirmation.stop();
    setLocked(false);
}

void LogindSession::hear(const QDBusMessage &message)
{
    const QString member = message.member();
    if (message.path() == m_path && message.interface() == SessionInterface) {
        if (member != u"Lock"_s && member != u"Unlock"_s)
            return;
        request(member == u"Lock"_s);
    } else if (message.path() == ManagerPath && message.signature() == u"so"_s) {
        const QString session = message.arguments().at(1).value<QDBusObjectPath>().path();
        const bool ours = session == m_path && member == u"SessionRemoved"_s;
        const bool hope = m_path.isEmpty() && member == u"SessionNew"_s;
        if (ours || hope)
            search();
    }
}

// Lock and Unlock ask the session's locker, which says by the hint what came of it. Where there is no locker,
// the hint tells that, too: later.
void LogindSession::request(bool lock)
{
    if (lock == m_locked)
        return;
    m_confirmation.start();
    setLocked(lock);
}

void LogindSession::hintChanged(const QVariant &hint)
{
    const bool olderThanRequest = m_confirmation.isActive() && hint.toBool() != m_locked;
    if (!hint.isValid() || olderThanRequest)
        return;
    m_confirmation.stop();
    setLocked(hint.toBool());
}

void LogindSession::setLocked(bool locked)
{
    if (locked == m_locked)
        return;
    m_locked = locked;
    Q_EMIT lockedChanged(locked);
}
