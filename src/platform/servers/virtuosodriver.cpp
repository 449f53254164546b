// SPDX-License-Identifier: GPL-3.0-or-later
#include "virtuosodriver.h"

#include "standarddialect.h"

#include "platform/system/ownprograms.h"

#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

// Each is a connection that the server keeps for us, and some megabytes here.
constexpr std::chrono::milliseconds s_longestIdle{60000};

} // namespace

VirtuosoDriver::VirtuosoDriver(const ServerSettings &settings, const ServerPatience &patience)
    : VirtuosoDriver(settings, patience, std::make_unique<Credentials>(), helperProgram(u"kestrel-odbc"_s))
{
}

VirtuosoDriver::VirtuosoDriver(const ServerSettings &settings, const ServerPatience &patience,
                               std::unique_ptr<Credentials> credentials, const QString &program)
    : ServerDriver(settings, patience),
      m_credentials(std::move(credentials)),
      m_program(program)
{
    m_idleWatch.setInterval(s_longestIdle / 2);
    connect(&m_idleWatch, &QTimer::timeout, this, &VirtuosoDriver::endIdleHelpers);
}

VirtuosoDriver::~VirtuosoDriver() = default;

VirtuosoDriver::Ending VirtuosoDriver::endingOf(OdbcProcess::Ending ending)
{
    switch (ending) {
    case OdbcProcess::Ending::Answered:
        return Ending::Answered;
    case OdbcProcess::Ending::Refused:
        return Ending::Refused;
    case OdbcProcess::Ending::NotReached:
        return Ending::NotReached;
    case OdbcProcess::Ending::Busy:
        return Ending::Busy;
    case OdbcProcess::Ending::Lost:
        return Ending::Lost;
    case OdbcProcess::Ending::Silent:
        break;
    }
    return Ending::Silent;
}

void VirtuosoDriver::send(StatementId id, const StandardStatement &statement, bool isUpdate)
{
    if (settings().odbcServer.isEmpty()) {
        answerLater(id, Ending::Refused, u"no Virtuoso server is set (host:port)"_s);
        return;
    }
    auto job = std::make_unique<Job>();
    job->id = id;
    job->text = statement.text;
    job->idColumns = statement.idColumns;
    job->isUpdate = isUpdate;
    m_waiting.push_back(std::move(job));
    assign();
}

void VirtuosoDriver::cancel(StatementId id)
{
    std::erase_if(m_waiting, [id](const std::unique_ptr<Job> &job) { return job->id == id; });
    for (Helper &helper : m_helpers) {
        if (helper.job && helper.job->id == id) {
            helper.job.reset();
            helper.process->cancel();
        }
    }
}

void VirtuosoDriver::assign()
{
    for (Helper &helper : m_helpers) {
        if (m_waiting.empty())
            return;
        if (!helper.process->isIdle())
            continue;
        helper.job = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (helper.job->isUpdate)
            helper.process->update(helper.job->text);
        else
            helper.process->query(helper.job->text, helper.job->idColumns);
    }
    if (!m_waiting.empty())
        askLogin();
}

void VirtuosoDriver::askLogin()
{
    if (std::exchange(m_isAskingLogin, true))
        return;
    m_credentials->find(settings().odbcServer, settings().user, [this](Login login) {
        m_isAskingLogin = false;
        if (!login.error.isEmpty()) {
            refuseWaiting(login.error);
        } else if (login.user.isEmpty()) {
            refuseWaiting(u"no user name and password are stored for %1"_s.arg(settings().odbcServer));
        } else {
            // As many as are waited for: the driver asks for few at a time.
            for (size_t wanted = m_waiting.size(); wanted > 0; --wanted)
                startHelper(login);
            assign();
        }
        wipe(login.password);
    });
}

void VirtuosoDriver::startHelper(const Login &login)
{
    Helper helper;
    helper.process = std::make_unique<OdbcProcess>(m_program, settings(), login, nullptr);
    OdbcProcess *const process = helper.process.get();
    connect(
        process, &OdbcProcess::finished, this, [this, process] { helperFinished(process); },
        Qt::QueuedConnection);
    connect(
        process, &OdbcProcess::ended, this, [this, process] { helperEnded(process); }, Qt::QueuedConnection);
    m_helpers.push_back(std::move(helper));
    m_idleWatch.start();
}

void VirtuosoDriver::helperFinished(OdbcProcess *process)
{
    Helper *const helper = helperOf(process);
    OdbcProcess::Outcome outcome = process->takeOutcome();
    const std::unique_ptr<Job> job = std::move(helper->job);
    const QPointer<VirtuosoDriver> self(this);
    if (job)
        answered(job->id, {endingOf(outcome.ending), std::move(outcome.rows), outcome.error, {}});
    if (self)
        assign();
}

void VirtuosoDriver::helperEnded(OdbcProcess *process)
{
    const auto at = std::find_if(m_helpers.begin(), m_helpers.end(),
                                 [process](const Helper &helper) { return helper.process.get() == process; });
    m_helpers.erase(at);
    assign();
}

void VirtuosoDriver::endIdleHelpers()
{
    for (const Helper &helper : m_helpers) {
        if (helper.process->isIdle() && helper.process->idleMs() > s_longestIdle.count())
            helper.process->retire();
    }
    if (m_helpers.empty())
        m_idleWatch.stop();
}

void VirtuosoDriver::refuseWaiting(const QString &error)
{
    for (const std::unique_ptr<Job> &job : std::exchange(m_waiting, {}))
        answerLater(job->id, Ending::Refused, error);
}

void VirtuosoDriver::answerLater(StatementId id, Ending ending, const QString &error)
{
    QMetaObject::invokeMethod(
        this,
        [this, id, ending, error] {
            answered(id, {ending, {}, error, {}});
        },
        Qt::QueuedConnection);
}

VirtuosoDriver::Helper *VirtuosoDriver::helperOf(const OdbcProcess *process)
{
    const auto at = std::find_if(m_helpers.begin(), m_helpers.end(),
                                 [process](const Helper &helper) { return helper.process.get() == process; });
    return at == m_helpers.end() ? nullptr : &*at;
}
