// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <deque>
#include <functional>

// How a server is logged on to. All three empty: nobody has stored anything, go without. With an `error`,
// which is in the log already, something is stored that could not be used, or the person did not want it
// used: the other two are empty then.
struct Login
{
    QString user;
    QString password;
    QString error;
};

// Overwrites the text where nobody else shares it, and empties it. For a password that was used.
void wipe(QString &secret);
void wipe(QByteArray &secret);

// How long the secret service is waited for.
struct SecretPatience
{
    std::chrono::milliseconds call{25000}; // it may have to be started
    std::chrono::milliseconds prompt{180000}; // by the person who is asked to unlock it
};

// User names and passwords of servers: from the secret service of the session ("org.freedesktop.secrets"),
// where the person may be asked to unlock it, or, when there is none or it has nothing for the server, from a
// file that only its owner may read (credentialsfile.h). Never blocks; a password gets into no log.
class Credentials : public QObject
{
    Q_OBJECT

public:
    // The session's bus, and $XDG_CONFIG_HOME/kestrel/credentials.
    explicit Credentials(QObject *parent = nullptr);
    Credentials(const QDBusConnection &session, const QString &file, QObject *parent = nullptr,
                const SecretPatience &patience = {});
    ~Credentials() override;

    // `server` is "host:port" as the credentials are stored under; `user`, where it is not empty, has to be
    // the name stored there. `done` is called once, later, and not at all when this object is destroyed
    // before. One server after the other, so that the person is asked one thing at a time; who has let a
    // question go is not asked again by this object.
    void find(const QString &server, const QString &user, std::function<void(Login)> done);

    // What stands for the server of an http or https address: "archive.example:443", in lower case, always
    // with the port.
    [[nodiscard]] static QString serverOf(const QUrl &address);

private:
    struct Request
    {
        QString server;
        QString user;
        std::function<void(Login)> done;
    };
    void next();
    void askFile();
    void finish(Login login, const char *source);

    QDBusConnection m_session;
    QString m_file;
    SecretPatience m_patience;
    std::deque<Request> m_requests; // the first is under way
    bool m_mayAsk = true; // the person
};
