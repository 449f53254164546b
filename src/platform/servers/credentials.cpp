// SPDX-License-Identifier: GPL-3.0-or-later
#include "credentials.h"

#include "aside.h"
#include "credentialsfile.h"
#include "secretlookup.h"
#include "serverslog.h"

#include <QStandardPaths>
#include <QTimer>

#include <utility>

#include <strings.h>

using namespace Qt::Literals::StringLiterals;

void wipe(QString &secret)
{
    if (secret.isDetached())
        explicit_bzero(secret.data(), size_t(secret.size()) * sizeof(QChar));
    secret.clear();
}

void wipe(QByteArray &secret)
{
    if (secret.isDetached())
        explicit_bzero(secret.data(), size_t(secret.size()));
    secret.clear();
}

Credentials::Credentials(QObject *parent)
    : Credentials(QDBusConnection::sessionBus(),
                  QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                      + u"/kestrel/credentials"_s,
                  parent)
{
}

Credentials::Credentials(const QDBusConnection &session, const QString &file, QObject *parent,
                         const SecretPatience &patience)
    : QObject(parent),
      m_session(session),
      m_file(file),
      m_patience(patience)
{
}

Credentials::~Credentials() = default;

void Credentials::find(const QString &server, const QString &user, std::function<void(Login)> done)
{
    m_requests.push_back({server, user, std::move(done)});
    if (m_requests.size() == 1)
        QTimer::singleShot(0, this, &Credentials::next);
}

void Credentials::next()
{
    const Request &request = m_requests.front();
    if (!m_session.isConnected()) {
        askFile();
        return;
    }
    auto *lookup = new SecretLookup(m_session, request.server, request.user, m_patience, this);
    connect(lookup, &SecretLookup::found, this,
            [this](const Login &login) { finish(login, "the secret service"); });
    connect(lookup, &SecretLookup::nothing, this, &Credentials::askFile);
    connect(lookup, &SecretLookup::failed, this, [this](const QString &why) {
        qCWarning(serversLog, "the secret service is of no use: %ls", qUtf16Printable(why));
        askFile();
    });
    connect(lookup, &SecretLookup::withheld, this, [this](const QString &why) {
        m_mayAsk = false;
        finish({{},
                {},
                u"the password of %1 is in the secret service: %2"_s.arg(m_requests.front().server, why)},
               "the secret service");
    });
    lookup->start(m_mayAsk);
}

void Credentials::askFile()
{
    const Request &request = m_requests.front();
    doAside(
        this,
        [file = m_file, server = request.server, user = request.user] {
            return loginFromFile(file, server, user);
        },
        [this](Login login) { finish(std::move(login), "the file"); });
}

void Credentials::finish(Login login, const char *source)
{
    const Request request = std::move(m_requests.front());
    m_requests.pop_front();
    if (!login.error.isEmpty())
        qCWarning(serversLog, "%ls", qUtf16Printable(login.error));
    else if (!login.user.isEmpty())
        qCInfo(serversLog, "%ls: logging on as %ls, who comes from %s", qUtf16Printable(request.server),
               qUtf16Printable(login.user), source);
    if (!m_requests.empty())
        QTimer::singleShot(0, this, &Credentials::next);
    request.done(std::move(login));
}

QString Credentials::serverOf(const QUrl &address)
{
    const int usual = address.scheme() == "https"_L1 ? 443 : 80;
    const QString host = address.host(QUrl::FullyEncoded).toLower();
    return (host.contains(u':') ? u"[%1]:%2"_s : u"%1:%2"_s).arg(host).arg(address.port(usual));
}
