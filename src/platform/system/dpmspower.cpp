// SPDX-License-Identifier: GPL-3.0-or-later
#include "dpmspower.h"

#include "systemlog.h"

#include <xcb/dpms.h>
#include <xcb/xcbext.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto AskInterval = 2s;
constexpr auto ReplyInterval = 20ms; // what a server takes at most that is not stopped
constexpr char ExtensionName[] = "DPMS";

struct Free
{
    void operator()(void *memory) const { free(memory); }
};
template <typename Reply> using ReplyPointer = std::unique_ptr<Reply, Free>;

// The answered part is false while neither reply nor error has come.
template <typename Reply>
std::pair<bool, ReplyPointer<Reply>> replyTo(xcb_connection_t *connection, unsigned int request)
{
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    const bool answered = xcb_poll_for_reply(connection, request, &reply, &error) != 0;
    free(error);
    return {answered, ReplyPointer<Reply>(static_cast<Reply *>(reply))};
}

} // namespace

DpmsPower::DpmsPower(xcb_connection_t *connection, QObject *parent)
    : QObject(parent),
      m_connection(connection),
      m_timer(this)
{
    connect(&m_timer, &QTimer::timeout, this, &DpmsPower::advance);
}

void DpmsPower::start()
{
    if (m_step != Step::NeverAgain && !m_timer.isActive())
        advance();
}

void DpmsPower::stop()
{
    m_timer.stop();
    setOn(true);
}

void DpmsPower::advance()
{
    if (xcb_connection_has_error(m_connection) != 0)
        m_step = Step::NeverAgain;
    const Step before = m_step;
    switch (m_step) {
    case Step::LookForExtension:
        // The library keeps the first answer for itself. When the second has come the first is there, and
        // nothing waits for it.
        xcb_prefetch_extension_data(m_connection, &xcb_dpms_id);
        m_request = xcb_query_extension(m_connection, sizeof ExtensionName - 1, ExtensionName).sequence;
        m_step = Step::AwaitExtension;
        break;
    case Step::AwaitExtension:
        m_step = awaitExtension();
        break;
    case Step::AskPower:
        m_request = xcb_dpms_info(m_connection).sequence;
        m_step = Step::AwaitPower;
        break;
    case Step::AwaitPower:
        m_step = awaitPower();
        break;
    case Step::NeverAgain:
        break;
    }
    if (m_step == Step::NeverAgain) {
        stop();
        return;
    }
    xcb_flush(m_connection);
    const bool askedNow = m_step != before && m_step != Step::AskPower;
    m_timer.start(askedNow ? ReplyInterval : AskInterval);
}

DpmsPower::Step DpmsPower::awaitExtension()
{
    const auto [answered, reply] = replyTo<xcb_query_extension_reply_t>(m_connection, m_request);
    if (!answered)
        return Step::AwaitExtension;
    if (!reply || !reply->present) {
        qCInfo(systemLog, "the X server does not tell whether it switched the display off: it counts as on");
        return Step::NeverAgain;
    }
    m_request = xcb_dpms_info(m_connection).sequence;
    return Step::AwaitPower;
}

DpmsPower::Step DpmsPower::awaitPower()
{
    const auto [answered, reply] = replyTo<xcb_dpms_info_reply_t>(m_connection, m_request);
    if (!answered)
        return Step::AwaitPower;
    // Power saving that is switched off leaves an old level behind.
    if (reply)
        setOn(reply->state == 0 || reply->power_level == XCB_DPMS_DPMS_MODE_ON);
    return Step::AskPower;
}

void DpmsPower::setOn(bool on)
{
    if (std::exchange(m_on, on) != on)
        Q_EMIT onChanged(on);
}
