// SPDX-License-Identifier: GPL-3.0-or-later
#include "requestgate.h"

#include <utility>

using namespace std::chrono_literals;

namespace {
constexpr auto Interval = 100ms; // unnoticed by a person, and ten page changes a second at most
}

RequestGate::RequestGate(const QString &timerName)
{
    m_timer.setObjectName(timerName);
    m_timer.setSingleShot(true);
    m_timer.setInterval(Interval);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { open(); });
}

void RequestGate::pass(std::function<void()> request)
{
    m_newest = std::move(request);
    if (!m_timer.isActive())
        open();
}

void RequestGate::open()
{
    if (!m_newest)
        return;
    m_timer.start();
    std::exchange(m_newest, {})();
}
