// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "credentials.h"
#include "serversettings.h"

#include <QAuthenticator>
#include <QHash>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslConfiguration>
#include <QUrl>

#include <functional>
#include <memory>

// What the requests of one driver to its server share: connections, who we are, whom we trust, and what the
// server turned out to be.
class EndpointLink : public QObject
{
    Q_OBJECT

public:
    EndpointLink(const ServerSettings &settings, std::unique_ptr<Credentials> credentials);

    [[nodiscard]] const ServerSettings &settings() const { return m_settings; }
    [[nodiscard]] QNetworkAccessManager &network() { return m_network; }

    // Until then nothing can be sent: the files of certificates are still being read. ready() tells.
    [[nodiscard]] bool isReady() const { return m_isReady; }
    // Why nothing can be sent at all; null when it can.
    [[nodiscard]] QString fault() const { return m_fault; }

    // With the headers and the TLS settings that every request has.
    [[nodiscard]] QNetworkRequest request(const QUrl &address) const;

    // A password goes only where nobody listens: over TLS, or to this machine.
    [[nodiscard]] static bool mayLogIn(const QUrl &address);
    // Looks for a login of the server at this address. `done` is called later with null when there is one,
    // which requests then use, or else with what is wrong; not at all when `asker` or this is gone.
    void findLogin(const QUrl &address, QObject *asker, std::function<void(QString)> done);
    // The server did not take it: it is looked for anew when it is asked for again.
    void forgetLogin(const QUrl &address);
    // Answers the question of a server, when it is asked for the first time in this request.
    void logIn(QNetworkReply *reply, QAuthenticator *authenticator);
    // Whether the request used a login that was found.
    [[nodiscard]] static bool hasLoggedIn(const QNetworkReply *reply);

    // Where a server said that an address has moved to.
    [[nodiscard]] QUrl placeOf(const QUrl &address) const { return m_moved.value(address, address); }
    void moved(const QUrl &from, const QUrl &to) { m_moved.insert(from, to); }
    void forgetMoves() { m_moved.clear(); }

    // The server reads queries from the address only, as the store library's does: queries go by GET, and it
    // takes no updates.
    [[nodiscard]] bool readsAddressesOnly() const { return m_readsAddressesOnly; }
    void setReadsAddressesOnly() { m_readsAddressesOnly = true; }

    // How many rows the server says that it gives of any answer; 0 when it says nothing, or nothing sensible,
    // which is logged once.
    [[nodiscard]] int rowLimit(const QNetworkReply &reply);

    // How many rows of a list the server gives at a time; 0 as long as it gave whole lists.
    [[nodiscard]] int pageRows() const { return m_pageRows; }
    void setPageRows(int rows) { m_pageRows = rows; }

Q_SIGNALS:
    void ready(); // once

private:
    struct KnownLogin
    {
        QString user;
        QString password;
        ~KnownLogin() { wipe(password); }
    };

    ServerSettings m_settings;
    std::unique_ptr<Credentials> m_credentials;
    QHash<QString, std::shared_ptr<KnownLogin>> m_logins; // by server; wiped once nothing below shares them
    QNetworkAccessManager m_network;
    QSslConfiguration m_tls;
    QString m_fault;
    QHash<QUrl, QUrl> m_moved;
    int m_pageRows = 0;
    bool m_readsAddressesOnly = false;
    bool m_isReady = true;
    bool m_hasToldOfLimit = false;
};
