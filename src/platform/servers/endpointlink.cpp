// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointlink.h"

#include <QFile>
#include <QHostAddress>
#include <QNetworkReply>
#include <QPointer>
#include <QSslCertificate>
#include <QSslKey>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char loggedIn[] = "kestrelLoggedIn";

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QSslKey keyOf(const QByteArray &pem)
{
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Rsa, QSsl::Ec}) {
        if (const QSslKey key(pem, algorithm); !key.isNull())
            return key;
    }
    return {};
}

} // namespace

EndpointLink::EndpointLink(const ServerSettings &settings, std::unique_ptr<Credentials> credentials)
    : m_settings(settings),
      m_credentials(std::move(credentials)),
      m_tls(QSslConfiguration::defaultConfiguration())
{
    connect(&m_network, &QNetworkAccessManager::authenticationRequired, this, &EndpointLink::logIn);
    if (settings.queryAddress.isEmpty())
        m_fault = u"no address of a SPARQL endpoint is set"_s;
    else
        setUpTls();
}

// A file that cannot be used stops everything: going on without it would trust others than the person said.
void EndpointLink::setUpTls()
{
    if (!m_settings.certificateAuthority.isEmpty()) {
        const auto trusted = QSslCertificate::fromData(contentOf(m_settings.certificateAuthority), QSsl::Pem);
        if (trusted.isEmpty())
            m_fault = u"no certificate authority can be read from %1"_s.arg(m_settings.certificateAuthority);
        m_tls.setCaCertificates(trusted);
    }
    if (m_settings.clientCertificate.isEmpty())
        return;
    const auto chain = QSslCertificate::fromData(contentOf(m_settings.clientCertificate), QSsl::Pem);
    const QString keyFile
        = m_settings.clientKey.isEmpty() ? m_settings.clientCertificate : m_settings.clientKey;
    const QSslKey key = keyOf(contentOf(keyFile));
    if (chain.isEmpty())
        m_fault = u"no certificate can be read from %1"_s.arg(m_settings.clientCertificate);
    else if (key.isNull())
        m_fault = u"no private key can be read from %1"_s.arg(keyFile);
    m_tls.setLocalCertificateChain(chain);
    m_tls.setPrivateKey(key);
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
