// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointrequest.h"

#include "endpointlink.h"
#include "onetimebody.h"
#include "resourceids.h"
#include "resultpaging.h"
#include "serverslog.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QUrlQuery>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int sliceMs = 4;
constexpr qint64 pieceBytes = qint64(64) << 10;
constexpr qint64 mostUnreadBytes = qint64(1) << 20; // then the server is made to wait
constexpr qsizetype mostWords = qsizetype(8) << 10;
constexpr int mostRedirects = 5;
constexpr int mostRowsOfAPage = 10000; // Virtuoso refuses to sort more than that
// The description of itself that an endpoint gives where it saw no statement.
constexpr QByteArrayView descriptionNamespace = "http://www.w3.org/ns/sparql-service-description#";

QByteArray form(const char *name, const QString &text)
{
    return QByteArray(name) + '=' + QUrl::toPercentEncoding(text);
}

// Seconds, or a date.
std::chrono::milliseconds retryAfter(const QNetworkReply &reply)
{
    const QByteArray header = reply.rawHeader("Retry-After").trimmed();
    bool isNumber = false;
    const qint64 seconds = header.toLongLong(&isNumber);
    if (isNumber)
        return std::chrono::seconds(std::clamp<qint64>(seconds, 0, 86400));
    const QDateTime when = QDateTime::fromString(QString::fromLatin1(header), Qt::RFC2822Date);
    const qint64 ms = when.isValid() ? QDateTime::currentDateTimeUtc().msecsTo(when) : 0;
    return std::chrono::milliseconds(std::clamp<qint64>(ms, 0, 86400000));
}

// What a server says about a failure goes into one line of a log.
QString oneLine(const QByteArray &words)
{
    QString line;
    for (const QChar c : QString::fromUtf8(words)) {
        const bool isPlain = c.isPrint() && !c.isSpace();
        if (isPlain)
            line.append(c);
        else if (!line.endsWith(u' '))
            line.append(u' ');
        if (line.size() >= 300)
            break;
    }
    return line.trimmed();
}

} // namespace

EndpointRequest::EndpointRequest(EndpointLink &link, const StandardStatement &statement, bool isUpdate,
                                 QObject *parent)
    : QObject(parent),
      m_link(link),
      m_statement(statement),
      m_isUpdate(isUpdate)
{
    m_silence.setSingleShot(true);
    m_silence.setInterval(link.settings().timeout);
    connect(&m_silence, &QTimer::timeout, this, &EndpointRequest::silent);
    m_slice.setSingleShot(true);
    m_slice.setInterval(0);
    connect(&m_slice, &QTimer::timeout, this, &EndpointRequest::readSome);
    // A list of videos is long again when one was too long before.
    if (link.pageRows() > 0 && statement.isOneRowEach && pageOf(statement.text, {}, link.pageRows()))
        m_pageRows = link.pageRows();
    QMetaObject::invokeMethod(this, &EndpointRequest::send, Qt::QueuedConnection);
}

EndpointRequest::~EndpointRequest()
{
    dropReply();
}

void EndpointRequest::dropReply()
{
    m_slice.stop();
    m_silence.stop();
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply.reset();
}

QString EndpointRequest::textToSend() const
{
    return m_pageRows == 0 ? m_statement.text : *pageOf(m_statement.text, m_pageAfter, m_pageRows);
}

void EndpointRequest::send()
{
    dropReply();
    m_updateNetwork.reset();
    m_wasSent = m_hasBytes = m_hasEnded = false;
    m_words.clear();
    if (!m_link.isReady()) {
        connect(&m_link, &EndpointLink::ready, this, &EndpointRequest::send, Qt::SingleShotConnection);
        m_silence.start();
        return;
    }
    if (!m_link.fault().isNull()) {
        end(Ending::Refused, m_link.fault());
        return;
    }
    const ServerSettings &settings = m_link.settings();
    const QUrl &asked
        = m_isUpdate && !settings.updateAddress.isEmpty() ? settings.updateAddress : settings.queryAddress;
    if (m_isUpdate)
        sendUpdate(m_link.placeOf(asked));
    else
        sendQuery(m_link.placeOf(asked));
    watch();
}

void EndpointRequest::sendQuery(const QUrl &address)
{
    m_parser = std::make_unique<SparqlJsonParser>(
        NumberedColumns{m_statement.idColumns, &ResourceIds::shared()}, std::move(m_rows));
    m_rows = {};
    if (m_link.readsAddressesOnly()) {
        QUrl url = address;
        const QString before = address.hasQuery() ? address.query(QUrl::FullyEncoded) + u'&' : QString();
        url.setQuery(before + QString::fromLatin1(form("query", textToSend())));
        m_reply.reset(m_link.network().get(m_link.request(url)));
        return;
    }
    QNetworkRequest request = m_link.request(address);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
    m_reply.reset(m_link.network().post(request, form("query", textToSend())));
}

// Qt sends a request once more, by itself, when a connection that was kept ends under it or what it remembers
// of a login is too old. The server may have done an update by then. So the body can be read once, and again
// only when the server asked who we are; and an update has a connection and a memory of its own, in which
// nothing is old.
void EndpointRequest::sendUpdate(const QUrl &address)
{
    m_updateNetwork = std::make_unique<QNetworkAccessManager>();
    auto owned = std::make_unique<OneTimeBody>(form("update", m_statement.text));
    OneTimeBody *const body = owned.get();
    connect(m_updateNetwork.get(), &QNetworkAccessManager::authenticationRequired, this,
            [this, body](QNetworkReply *reply, QAuthenticator *authenticator) {
                m_link.logIn(reply, authenticator);
                body->allowAgain();
            });
    QNetworkRequest request = m_link.request(address);
    request.setRawHeader("Accept", "*/*");
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
    request.setHeader(QNetworkRequest::ContentLengthHeader, body->size());
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    m_reply.reset(m_updateNetwork->post(request, body));
    owned.release()->setParent(m_reply.get());
}

void EndpointRequest::watch()
{
    QNetworkReply *reply = m_reply.get();
    reply->setReadBufferSize(mostUnreadBytes);
    connect(reply, &QNetworkReply::requestSent, this, [this] {
        m_wasSent = true;
        // One with a body begins after this turn, and has not heard of it yet.
        m_reply->setReadBufferSize(mostUnreadBytes);
    });
    connect(reply, &QNetworkReply::uploadProgress, this, [this] { m_silence.start(); });
    connect(reply, &QNetworkReply::encrypted, this, [this] { m_silence.start(); });
    connect(reply, &QIODevice::readyRead, this, &EndpointRequest::readLater);
    connect(reply, &QNetworkReply::finished, this, [this] {
        m_hasEnded = true;
        readLater();
    });
    m_silence.start();
}

int EndpointRequest::status() const
{
    return m_reply ? m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() : 0;
}

// The server has done the update: what it says of it beyond the headers, if it ever ends, changes nothing.
bool EndpointRequest::isTaken() const
{
    return m_isUpdate && status() >= 200 && status() < 300;
}

// Pieces are read in a turn of their own, so that other events come between.
void EndpointRequest::readLater()
{
    if (!isTaken() || !m_silence.isActive())
        m_silence.start();
    if (!m_slice.isActive())
        m_slice.start();
}

void EndpointRequest::readSome()
{
    if (takeSlice())
        readLater();
    else if (m_hasEnded)
        complete();
}

// Some milliseconds' work. True when there is more to do at once.
bool EndpointRequest::takeSlice()
{
    const bool hasRows = !m_isUpdate && status() >= 200 && status() < 300;
    QElapsedTimer time;
    time.start();
    QByteArray piece(pieceBytes, Qt::Uninitialized);
    while (time.elapsed() < sliceMs) {
        const qint64 size = m_reply->read(piece.data(), piece.size());
        if (size <= 0)
            return false;
        m_hasBytes = true;
        const QByteArrayView bytes = QByteArrayView(piece).first(size);
        if (m_words.size() < mostWords)
            m_words.append(bytes.first(std::min(bytes.size(), mostWords - m_words.size())));
        const bool isUseful = hasRows ? m_parser->feed(bytes) : m_words.size() < mostWords;
        if (!isUseful) {
            m_hasEnded = true; // the rest is of no use
            return false;
        }
    }
    return true;
}

void EndpointRequest::silent()
{
    const bool mayPage = !m_isUpdate && m_wasSent && !m_hasBytes && m_pageRows == 0;
    if (mayPage && pageOn(mostRowsOfAPage, {})) {
        qCInfo(serversLog) << "the server said nothing in the time set: it is asked for parts of the answer";
        return;
    }
    const auto seconds = m_link.settings().timeout.count();
    if (isTaken()) {
        complete();
        return;
    }
    if (!m_link.isReady())
        end(Ending::NotReached, u"the files of certificates could not be read within %1 s"_s.arg(seconds));
    else if (m_wasSent || m_hasBytes)
        end(Ending::Silent, u"the server said nothing for %1 s"_s.arg(seconds));
    else
        end(Ending::NotReached, u"the server could not be reached within %1 s"_s.arg(seconds));
}

void EndpointRequest::complete()
{
    m_silence.stop();
    m_reply->disconnect(this); // it may go on: once is enough
    const int status = this->status();
    const bool isCut = m_reply->error() != QNetworkReply::NoError && status < 300 && !isTaken();
    const bool isBroken = m_parser && !m_parser->error().isNull();
    if (status == 401)
        askedForLogin();
    else if (status >= 300 && status < 400)
        redirected(status);
    else if (status >= 400)
        refused(status);
    else if (status < 200 || (isCut && !isBroken))
        notAnswered();
    else
        answered();
}

void EndpointRequest::answered()
{
    if (!m_isUpdate)
        parsed();
    else if (m_words.contains(descriptionNamespace))
        end(Ending::Refused, u"the server takes no updates at this address"_s);
    else
        end(Ending::Answered);
}

void EndpointRequest::parsed()
{
    const SparqlJsonParser::End state = m_parser->finish();
    if (state == SparqlJsonParser::End::MoreToDo) {
        readLater();
        return;
    }
    if (state == SparqlJsonParser::End::Broken) {
        const bool isLost = m_parser->isCutOff();
        end(isLost ? Ending::Lost : Ending::Refused, m_parser->error());
        return;
    }
    const bool sawNoQuery = m_parser->variables() == QList<QByteArray>{"subject", "predicate", "object"}
        && m_words.contains(descriptionNamespace) && !m_statement.text.contains(u"?subject"_s);
    if (sawNoQuery && !m_link.readsAddressesOnly()) {
        m_link.setReadsAddressesOnly();
        send();
        return;
    }
    RowTable rows = m_parser->takeTable();
    const int given = rows.rows() - m_rowsBefore;
    if (!isCutOff(given)) {
        m_answer.table = std::move(rows);
        end(Ending::Answered);
    } else if (!pageOn(given, std::move(rows))) {
        end(Ending::Refused, u"the server gives no more than %1 rows of an answer"_s.arg(given));
    }
}

// Virtuoso names its own limit where an answer reached it, and says in X-SQL-State that its time was up.
bool EndpointRequest::isCutOff(int rows) const
{
    const int limit = m_link.rowLimit(*m_reply);
    return (m_pageRows > 0 && rows >= m_pageRows) || (limit > 0 && rows >= limit)
        || m_reply->hasRawHeader("X-SQL-State") || status() == 206;
}

// Asks for what comes behind these rows, or for the first page when the rows so far have no order. False when
// that is not possible.
bool EndpointRequest::pageOn(int rowsAtOnce, RowTable rows)
{
    const bool isFirst = m_pageRows == 0;
    rowsAtOnce = std::min(rowsAtOnce, mostRowsOfAPage);
    const QString last = isFirst ? QString() : rows.text(rows.rows() - 1, 0);
    if (rowsAtOnce <= 0 || !pageOf(m_statement.text, last, rowsAtOnce))
        return false;
    if (!isFirst && (last.isEmpty() || last == m_pageAfter))
        return false;
    if (isFirst)
        qCInfo(serversLog) << "the server gives" << rowsAtOnce
                           << "rows at a time: it is asked for one page after the other";
    m_pageRows = isFirst ? rowsAtOnce : std::min(m_pageRows, rowsAtOnce);
    // Not before a page has come: a server that said nothing may have been stopped for a while.
    if (!isFirst && m_statement.isOneRowEach)
        m_link.setPageRows(m_pageRows);
    m_pageAfter = last;
    m_rows = isFirst ? RowTable() : std::move(rows);
    m_rowsBefore = m_rows.rows();
    send();
    return true;
}

void EndpointRequest::askedForLogin()
{
    const QUrl address = m_reply->url();
    const QString server = Credentials::serverOf(address);
    if (!EndpointLink::mayLogIn(address)) {
        end(Ending::Refused, u"%1 asks for a password, which is sent over https only"_s.arg(server));
        return;
    }
    if (EndpointLink::hasLoggedIn(m_reply.get())) {
        m_link.forgetLogin(address);
        end(Ending::Refused, u"%1 did not take the user name and password"_s.arg(server));
        return;
    }
    if (m_parser)
        m_rows = m_parser->takeTable();
    m_link.findLogin(address, this, [this](const QString &error) {
        if (error.isNull())
            send();
        else
            end(Ending::Refused, error);
    });
}

// A server may move a request about within itself, and to TLS, but to nobody else. 303 says that what was
// asked for is done, and that a page tells of it: that is no answer to a statement.
void EndpointRequest::redirected(int status)
{
    static constexpr std::array<int, 4> statuses = {301, 302, 307, 308};
    const QUrl from = m_reply->url().adjusted(m_link.readsAddressesOnly() ? QUrl::RemoveQuery : QUrl::None);
    QUrl target
        = m_reply->url().resolved(QUrl(QString::fromUtf8(m_reply->rawHeader("Location")), QUrl::StrictMode));
    if (m_link.readsAddressesOnly())
        target.setQuery(QString());
    const bool isWeb
        = target.scheme() == "https"_L1 || (target.scheme() == "http"_L1 && from.scheme() == "http"_L1);
    const bool isAllowed = std::find(statuses.begin(), statuses.end(), status) != statuses.end() && isWeb
        && target.host() == from.host() && target.userInfo().isEmpty();
    if (!isAllowed || ++m_redirects > mostRedirects) {
        end(Ending::Refused, u"the server sends us elsewhere, and we do not go there (%1)"_s.arg(status));
        return;
    }
    const ServerSettings &settings = m_link.settings();
    const bool isUpdateAddress = m_isUpdate && !settings.updateAddress.isEmpty();
    m_link.moved(isUpdateAddress ? settings.updateAddress : settings.queryAddress, target);
    if (m_parser)
        m_rows = m_parser->takeTable();
    send();
}

QString EndpointRequest::serversWords() const
{
    const QByteArray type = m_reply->header(QNetworkRequest::ContentTypeHeader).toByteArray();
    const bool isText = type.startsWith("text/plain") || type.isEmpty();
    const QString words = isText ? oneLine(m_words) : QString();
    return words.isEmpty()
        ? oneLine(m_reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString().toUtf8())
        : words;
}

void EndpointRequest::refused(int status)
{
    const QString error = u"the server answers %1: %2"_s.arg(status).arg(serversWords());
    if (status == 503 || status == 429)
        end(Ending::Busy, error, retryAfter(*m_reply));
    else if (status == 502 || status == 504)
        end(Ending::Lost, error);
    else
        end(Ending::Refused, error);
}

void EndpointRequest::notAnswered()
{
    m_link.forgetMoves();
    const QString error = oneLine(m_reply->errorString().toUtf8());
    end(m_wasSent || m_hasBytes ? Ending::Lost : Ending::NotReached, error);
}

void EndpointRequest::end(Ending ending, const QString &error, std::chrono::milliseconds retryAfter)
{
    m_answer.ending = ending;
    m_answer.error = error;
    m_answer.retryAfter = retryAfter;
    m_link.disconnect(this); // it may become ready now
    dropReply();
    Q_EMIT finished();
}
