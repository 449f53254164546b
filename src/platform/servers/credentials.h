// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

// How a server is logged on to. All three empty: nobody has stored anything, go without. With an `error`, a
// line for the log, something is stored that could not be used, or the person did not want it used: the other
// two are empty.
struct Login
{
    QString user;
    QString password;
    QString error;
};

// Overwrites the text where nobody else shares it, and empties it. For a password that was used.
void wipe(QString &secret);

// User names and passwords of servers: from the secret service of the session ("org.freedesktop.secrets"),
// where the person may be asked to unlock it, or else from a file that only its owner may read. Never blocks;
// a password gets into no log.
class Credentials : public QObject
{
    Q_OBJECT

public:
    // The session's bus, and $XDG_CONFIG_HOME/kestrel/credentials.
    explicit Credentials(QObject *parent = nullptr);
    Credentials(const QDBusConnection &session, const QString &file, QObject *parent = nullptr);

    // `server` is "host:port" as the credentials are stored under; `user`, where it is not empty, has to be
    // the name stored there. `done` is called once, later, and not at all when this object is destroyed
    // before.
    void find(const QString &server, const QString &user, std::function<void(Login)> done);

    // What stands for the server of an http or https address: "archive.example:443", in lower case, always
    // with the port.
    [[nodiscard]] static QString serverOf(const QUrl &address);

private:
    QDBusConnection m_session;
    QString m_file;
};
