// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/virtuososerver.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QThread>

#include <algorithm>
#include <csignal>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_commandMs = 300000;

bool isStopped(qint64 process)
{
    const QString tasks = u"/proc/%1/task"_s.arg(process);
    const QStringList entries = QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::all_of(entries.begin(), entries.end(), [&tasks](const QString &task) {
        QFile file(tasks + u'/' + task + u"/stat"_s);
        const QByteArray line = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray(") T");
        return line.sliced(line.lastIndexOf(')')).startsWith(") T");
    });
}

} // namespace

bool VirtuosoServer::start()
{
    end();
    m_session.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_session.start(QStringLiteral(KESTREL_PYTHON), {QStringLiteral(KESTREL_VIRTUOSO_SERVER)});
    m_facts = answer();
    return m_facts.contains("pid"_L1);
}

bool VirtuosoServer::fill(const QString &graph, int videos)
{
    return !command(u"fill %1 %2"_s.arg(videos).arg(graph)).contains("error"_L1);
}

bool VirtuosoServer::load(const QString &file, const QString &graph)
{
    return !command(u"load %1 %2"_s.arg(file, graph)).contains("error"_L1);
}

QString VirtuosoServer::sql(const QString &statement)
{
    return command(u"sql "_s + statement).value("text"_L1).toString();
}

void VirtuosoServer::kill()
{
    command(u"kill"_s);
}

bool VirtuosoServer::restart()
{
    const QJsonObject facts = command(u"restart"_s);
    if (!facts.contains("pid"_L1))
        return false;
    m_facts = facts;
    return true;
}

void VirtuosoServer::freeze()
{
    ::kill(pid_t(processId()), SIGSTOP);
    // Its threads stop one after the other, and the last one might still answer.
    QDeadlineTimer deadline(s_commandMs);
    while (!isStopped(processId()) && !deadline.hasExpired())
        QThread::yieldCurrentThread();
}

void VirtuosoServer::thaw()
{
    ::kill(pid_t(processId()), SIGCONT);
}

void VirtuosoServer::endTransactions()
{
    constexpr int rollBack = 6;
    sql(u"txn_killall(%1)"_s.arg(rollBack));
}

void VirtuosoServer::end()
{
    if (m_session.state() == QProcess::NotRunning)
        return;
    m_session.closeWriteChannel();
    if (!m_session.waitForFinished()) {
        m_session.kill();
        m_session.waitForFinished();
    }
    m_facts = {};
}

qint64 VirtuosoServer::processId() const
{
    return m_facts.value("pid"_L1).toInteger();
}

QJsonObject VirtuosoServer::command(const QString &line)
{
    m_session.write(line.toUtf8() + '\n');
    return answer();
}

QJsonObject VirtuosoServer::answer()
{
    while (!m_session.canReadLine()) {
        if (!m_session.waitForReadyRead(s_commandMs))
            return {{u"error"_s, u"no answer"_s}};
    }
    const QJsonObject object = QJsonDocument::fromJson(m_session.readLine()).object();
    if (object.contains("error"_L1))
        qWarning("virtuososerver.py: %ls", qUtf16Printable(object.value("error"_L1).toString()));
    return object;
}

QString virtuosoVideo(int number)
{
    return u"urn:uuid:%1-0000-4000-8000-%2"_s.arg(number, 8, 16, QLatin1Char('0'))
        .arg(number, 12, 16, QLatin1Char('0'));
}
