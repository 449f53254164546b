// SPDX-License-Identifier: GPL-3.0-or-later
#include "webfetch.h"

#include <QDateTime>
#include <QLocale>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QTimeZone>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

QNetworkRequest requestFor(const QUrl &url, const QByteArray &accept)
{
    QNetworkRequest request(url);
    request.setRawHeader("Accept", accept);
    // Without it the language of the person would be told.
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("User-Agent", "Kestrel");
    // A few packed bytes may be gigabytes.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false); // one question, one answer
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(WebFetch::mostRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

} // namespace

WebFetch::WebFetch(QNetworkAccessManager &network, const QUrl &url, const QByteArray &accept, Limits limits,
                   QObject *parent)
    : QObject(parent),
      m_reply(network.get(requestFor(url, accept))),
      m_largest(limits.bytes)
{
    m_reply->setReadBufferSize(limits.bytes + 1);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &WebFetch::checkSize);
    connect(m_reply, &QNetworkReply::readyRead, this, &WebFetch::take);
    connect(m_reply, &QNetworkReply::finished, this, &WebFetch::end);
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] { giveUp(u"the answer does not come"_s); });
    m_patience.start(limits.ms);
}

WebFetch::~WebFetch()
{
    cancel();
}

void WebFetch::cancel()
{
    m_patience.stop();
    disconnect();
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
    }
    deleteLater();
}

// What says how large it is does not even begin to come.
void WebFetch::checkSize()
{
    if (m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > m_largest)
        giveUp(u"the answer is too large"_s);
}

void WebFetch::take()
{
    m_body += m_reply->read(m_largest + 1 - m_body.size());
    if (m_body.size() > m_largest)
        giveUp(u"the answer is too large"_s);
}

// Its end follows.
void WebFetch::giveUp(const QString &reason)
{
    if (!m_error.isEmpty())
        return;
    m_error = reason;
    m_body.clear();
    m_reply->abort();
}

void WebFetch::end()
{
    m_patience.stop();
    m_status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_error.isEmpty() && m_status >= 400)
        m_error = u"the server says %1"_s.arg(m_status);
    else if (m_error.isEmpty() && m_reply->error() != QNetworkReply::NoError)
        m_error = m_reply->errorString();
    if (m_error.isEmpty())
        take();
    Q_EMIT finished();
}

qint64 WebFetch::restSeconds() const
{
    if (!m_reply || (m_status != 429 && m_status != 503))
        return 0;
    const QByteArray value = m_reply->rawHeader("Retry-After").trimmed();
    bool isNumber = false;
    const qint64 seconds = value.toLongLong(&isNumber);
    if (isNumber)
        return std::max<qint64>(seconds, 0);
    // Or a date, always of Greenwich.
    QDateTime date
        = QLocale::c().toDateTime(QString::fromLatin1(value), u"ddd, dd MMM yyyy HH:mm:ss 'GMT'"_s);
    date.setTimeZone(QTimeZone::utc());
    return date.isValid() ? std::max<qint64>(QDateTime::currentDateTimeUtc().secsTo(date), 0) : 0;
}
