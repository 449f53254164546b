// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbcprocess.h"

#include "credentials.h"
#include "resourceids.h"
#include "serversettings.h"

using namespace Qt::Literals::StringLiterals;
using namespace OdbcProtocol;

namespace {

// A helper looks whether it goes on between two rows. One that waits for the server does not.
constexpr std::chrono::milliseconds s_cancelPatience{1000};
// The server stops a query of its own accord when the time is up, and then keeps the connection.
constexpr std::chrono::milliseconds s_stopPatience{2000};

// Fewer are copied into the buffer of the process, from where nobody can take them out again.
constexpr qsizetype s_sharedBytes = 16 * 1024;
constexpr qsizetype s_longestLogin = 64 * 1024; // that is usual

template <class Value> void appendValue(QByteArray &bytes, const Value &value)
{
    bytes.append(reinterpret_cast<const char *>(&value), sizeof value);
}

void appendText(QByteArray &bytes, const QString &text)
{
    QByteArray utf8 = text.toUtf8();
    appendValue(bytes, quint32(utf8.size()));
    bytes.append(utf8);
    wipe(utf8);
}

OdbcProcess::Ending endingOf(Failure failure)
{
    switch (failure) {
    case Failure::NotReached:
        return OdbcProcess::Ending::NotReached;
    case Failure::Refused:
        return OdbcProcess::Ending::Refused;
    case Failure::Busy:
        return OdbcProcess::Ending::Busy;
    case Failure::Silent:
        return OdbcProcess::Ending::Silent;
    case Failure::Lost:
        break;
    }
    return OdbcProcess::Ending::Lost;
}

// What the driver manager finds its list of drivers by, and nothing that a session has in store.
QStringList helperVariables()
{
    return {u"HOME"_s,        u"PATH"_s,         u"LD_LIBRARY_PATH"_s, u"ODBCINI"_s,      u"ODBCSYSINI"_s,
            u"ODBCINSTINI"_s, u"ASAN_OPTIONS"_s, u"LSAN_OPTIONS"_s,    u"UBSAN_OPTIONS"_s};
}

} // namespace

OdbcProcess::OdbcProcess(const QString &program, const ServerSettings &settings, const Login &login,
                         QObject *parent)
    : QObject(parent),
      m_timeout(settings.timeout),
      m_process(this),
      m_silence(this)
{
    m_sinceAnswer.start();
    m_silence.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] {
        kill(Ending::Silent, u"the server says nothing for %1 s"_s.arg(m_timeout.count() / 1000.0));
    });
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &OdbcProcess::read);
    connect(&m_process, &HelperProcess::ended, this, &OdbcProcess::processEnded);
    m_process.passOn(helperVariables());
    m_process.startHelper(program, {});

    connect(&m_process, &QProcess::bytesWritten, this, [this] {
        if (m_process.bytesToWrite() == 0)
            wipe(m_login.bytes);
    });
    m_login.bytes.reserve(s_longestLogin); // bytes that are moved leave a copy behind
    appendValue(m_login.bytes, quint32(settings.timeout.count()));
    for (const QString *text : {&settings.odbcDriver, &settings.odbcServer, &login.user, &login.password})
        appendText(m_login.bytes, *text);
    m_login.bytes.append(qMax<qsizetype>(0, s_sharedBytes - m_login.bytes.size()), '\0');
    send(Request::Open, m_login.bytes);
    if (m_process.bytesToWrite() == 0)
        wipe(m_login.bytes); // it does not even start
}

OdbcProcess::Unsent::~Unsent()
{
    wipe(bytes);
}

OdbcProcess::~OdbcProcess() = default;

void OdbcProcess::send(Request kind, const QByteArray &bytes)
{
    if (m_process.state() == QProcess::NotRunning)
        return; // its end is about to be noticed
    const Header header{quint32(kind), quint32(bytes.size())};
    m_process.write(reinterpret_cast<const char *>(&header), sizeof header);
    m_process.write(bytes);
}

void OdbcProcess::query(const QString &text, const QList<int> &idColumns)
{
    ask(Request::Query, text, OdbcReplyParser(false, idColumns, ResourceIds::shared()));
}

void OdbcProcess::update(const QString &text)
{
    ask(Request::Update, text, OdbcReplyParser(true, {}, ResourceIds::shared()));
}

void OdbcProcess::ask(Request kind, const QString &text, OdbcReplyParser parser)
{
    m_parser.emplace(std::move(parser));
    m_silence.start(m_timeout + s_stopPatience);
    send(kind, text.toUtf8());
}

void OdbcProcess::cancel()
{
    if (!m_parser)
        return;
    send(Request::Cancel, {});
    m_silence.start(s_cancelPatience);
}

void OdbcProcess::retire()
{
    m_state = State::Ending;
    m_process.closeWriteChannel();
}

void OdbcProcess::read()
{
    const QByteArray bytes = m_process.readAllStandardOutput();
    if (bytes.isEmpty() || m_verdict)
        return;
    if (!m_parser) {
        kill(Ending::Lost, u"kestrel-odbc spoke without being asked"_s);
        return;
    }
    m_silence.start();
    switch (m_parser->feed(bytes)) {
    case OdbcReplyParser::State::Incomplete:
        return;
    case OdbcReplyParser::State::Invalid:
        kill(Ending::Lost, u"the answer of kestrel-odbc is malformed"_s);
        return;
    case OdbcReplyParser::State::Failed:
        finish({endingOf(m_parser->failure()), {}, m_parser->error()});
        return;
    case OdbcReplyParser::State::Done:
        finish({Ending::Answered, m_parser->takeRows(), {}});
        return;
    }
}

void OdbcProcess::kill(Ending ending, const QString &error)
{
    if (m_verdict)
        return;
    m_silence.stop();
    m_state = State::Ending;
    m_verdict = Outcome{ending, {}, error};
    m_process.kill();
}

void OdbcProcess::processEnded()
{
    if (m_state == State::Ended)
        return;
    m_state = State::Ended;
    read(); // what it said last still counts
    if (m_parser) {
        const bool hasStarted = m_parser->isStarted();
        Outcome outcome = m_verdict.value_or(Outcome{Ending::Lost, {}, u"kestrel-odbc ended"_s});
        if (m_process.error() == QProcess::FailedToStart)
            outcome.error = u"kestrel-odbc does not start: "_s + m_process.errorString();
        if (!hasStarted)
            outcome.ending = Ending::NotReached;
        finish(std::move(outcome));
    }
    Q_EMIT ended();
}

void OdbcProcess::finish(Outcome outcome)
{
    m_silence.stop();
    m_sinceAnswer.restart();
    m_parser.reset();
    m_outcome = std::move(outcome);
    Q_EMIT finished();
}
