// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointlink.h"

#include "aside.h"
#include "serverslog.h"
#include "tlsfiles.h"

#include <QHostAddress>
#include <QNetworkReply>
#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char loggedIn[] = "kestrelLoggedIn";

} // namespace

EndpointLink::EndpointLink(const ServerSettings &settings, std::unique_ptr<Credentials> credentials)
    : m_settings(settings),
      m_credentials(std::move(credentials)),
      m_tls(QSslConfiguration::defaultConfiguration())
{
    connect(&m_network, &QNetworkAccessManager::authenticationRequired, this, &EndpointLink::logIn);
    if (settings.queryAddress.isEmpty()) {
        m_fault = u"no address of a SPARQL endpoint is set"_s;
    } else if (hasTlsFiles(settings)) {
        m_isReady = false;
        doAside(
            this, [settings] { return readTlsFiles(settings); },
            [this](const TlsFiles &files) {
                m_fault = files.fault;
                files.applyTo(m_tls);
                m_isReady = true;
                Q_EMIT ready();
            });
    }
}

QNetworkRequest EndpointLink::request(const QUrl &address) const
{
    QNetworkRequest request(address);
    request.setRawHeader("Accept", "application/sparql-results+json");
    request.setHeader(QNetworkRequest::UserAgentHeader, u"kestrel"_s);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    // Lists of videos pack so well that Qt takes them for an attack. The parser bounds what it keeps.
    request.setDecompressedSafetyCheckThreshold(-1);
    request.setSslConfiguration(m_tls);
    return request;
}

bool EndpointLink::mayLogIn(const QUrl &address)
{
    return address.scheme() == "https"_L1 || address.host() == "localhost"_L1
        || QHostAddress(address.host()).isLoopback();
}

void EndpointLink::findLogin(const QUrl &address, QObject *asker, std::function<void(QString)> done)
{
    const QString server = Credentials::serverOf(address);
    m_credentials->find(
        server, m_settings.user,
        [this, server, asker = QPointer(asker), done = std::move(done)](Login login) {
            const bool isThere = login.error.isEmpty() && !login.user.isEmpty();
            if (isThere)
                m_logins.insert(server, std::make_shared<KnownLogin>(KnownLogin{login.user, login.password}));
            wipe(login.password);
            if (!asker)
                return;
            if (isThere)
                done({});
            else
                done(login.error.isEmpty() ? u"no user name and password are stored for %1"_s.arg(server)
                                           : login.error);
        });
}

void EndpointLink::forgetLogin(const QUrl &address)
{
    m_logins.remove(Credentials::serverOf(address));
}

int EndpointLink::rowLimit(const QNetworkReply &reply)
{
    const QByteArray header = reply.rawHeader("X-SPARQL-MaxRows").trimmed();
    const int limit = header.toInt(); // 0 for what is no number
    const bool isSensible = header.isEmpty() || limit > 0;
    if (!isSensible && !std::exchange(m_hasToldOfLimit, true))
        qCWarning(serversLog) << "the server names a limit of rows that is none, which is ignored:"
                              << header.left(40);
    return std::max(limit, 0);
}

// Asked again for the same request, the server did not take what it got. What Qt remembers of a login that is
// forgotten stays: it tries that first, and then asks here. (Emptying its memory ends the requests under
// way.)
void EndpointLink::logIn(QNetworkReply *reply, QAuthenticator *authenticator)
{
    const auto login = m_logins.value(Credentials::serverOf(reply->url()));
    if (!login || !mayLogIn(reply->url()) || hasLoggedIn(reply))
        return;
    reply->setProperty(loggedIn, true);
    authenticator->setUser(login->user);
    authenticator->setPassword(login->password);
}

bool EndpointLink::hasLoggedIn(const QNetworkReply *reply)
{
    return reply->property(loggedIn).toBool();
}
