// SPDX-License-Identifier: GPL-3.0-or-later
#include "idlehold.h"

#include "systemlog.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int PatienceMs = 3000;
}

IdleHold::IdleHold(const QDBusConnection &sessionBus, const QString &service, QObject *parent)
    : QObject(parent),
      m_service(sessionBus, service),
      m_patience(this)
{
    m_patience.setObjectName(u"patience"_s);
    m_patience.setSingleShot(true);
    m_patience.setInterval(PatienceMs);
    connect(&m_patience, &QTimer::timeout, this, &IdleHold::helpChanged);
    connect(&m_service, &BusPeer::appeared, this, [this] {
        m_refusalTold = false;
        setState(State::Ready);
        reconcile();
    });
    connect(&m_service, &BusPeer::vanished, this, [this] { setState(State::Missing); });
}

void IdleHold::setWanted(bool wanted, const QString &reason)
{
    m_wanted = wanted;
    m_reason = reason;
    if (!wanted && m_state == State::Refused)
        setState(State::Ready);
    reconcile();
}

bool IdleHold::isOfNoHelp() const
{
    const bool letsWait = m_state == State::Asking && !m_patience.isActive();
    return m_state == State::Missing || m_state == State::Refused || letsWait;
}

void IdleHold::reconcile()
{
    if (m_wanted && m_state == State::Ready) {
        m_patience.start();
        setState(State::Asking);
        ask(m_reason);
    } else if (!m_wanted && m_state == State::Held) {
        giveBack();
        setState(State::Ready);
    }
}

void IdleHold::held()
{
    setState(State::Held);
    reconcile();
}

void IdleHold::refused(const QString &why)
{
    if (!std::exchange(m_refusalTold, true))
        qCInfo(systemLog, "%ls does not keep the display on: %ls", qUtf16Printable(m_service.name()),
               qUtf16Printable(why));
    setState(m_wanted ? State::Refused : State::Ready);
}

void IdleHold::revoked(const QString &why)
{
    if (m_state == State::Held)
        refused(why);
}

void IdleHold::setState(State state)
{
    if (std::exchange(m_state, state) == state)
        return;
    if (state != State::Asking)
        m_patience.stop();
    Q_EMIT helpChanged();
}
