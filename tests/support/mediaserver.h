// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/pythonpeer.h"

#include <QFile>
#include <QTemporaryDir>

// A web server or an RTSP server of the test's own, as a program of its own: tests/support/peers says what
// they can do wrong.
class MediaServer
{
public:
    bool startWeb(const QString &folder, const QString &certificate = {})
    {
        m_scheme = certificate.isEmpty() ? QStringLiteral("http") : QStringLiteral("https");
        QStringList arguments{folder, m_state.path()};
        if (!certificate.isEmpty())
            arguments.append(certificate);
        return m_peer.start(QStringLiteral("mediaserver.py"), arguments);
    }
    bool startRtsp(const QString &film)
    {
        m_scheme = QStringLiteral("rtsp");
        return m_peer.start(QStringLiteral("rtspserver.py"), {m_state.path(), film});
    }
    [[nodiscard]] QString port() const { return read(QStringLiteral("port")); }
    // "plain/clip.mp4"; `user` is "name:password".
    [[nodiscard]] QString address(const QString &path, const QString &user = {}) const
    {
        return addressAt(port(), path, user);
    }
    // Of an RTSP server that lets in nobody without a name; `kind` is "guarded" or "digest".
    [[nodiscard]] QString guardedAddress(const QString &user,
                                         const QString &kind = QStringLiteral("guarded")) const
    {
        return addressAt(read(kind + QStringLiteral("-port")), kind, user);
    }
    // A line a request, with its User-Agent and Range.
    [[nodiscard]] QStringList requests() const
    {
        return read(QStringLiteral("requests")).split(u'\n', Qt::SkipEmptyParts);
    }
    [[nodiscard]] qint64 bytesSent()
    {
        return command(QStringLiteral("sent")) ? read(QStringLiteral("sent")).toLongLong() : -1;
    }
    bool command(const QString &line) { return m_peer.command(line); }
    void stop() { m_peer.stop(); }
    // It keeps its connections and says nothing more.
    void freeze() { m_peer.freeze(); }

private:
    [[nodiscard]] QString addressAt(const QString &port, const QString &path, const QString &user) const
    {
        const QString guest = user.isEmpty() ? QString() : user + u'@';
        return m_scheme + QStringLiteral("://") + guest + QStringLiteral("127.0.0.1:") + port + u'/' + path;
    }
    [[nodiscard]] QString read(const QString &name) const
    {
        QFile file(m_state.filePath(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QTemporaryDir m_state;
    PythonPeer m_peer;
    QString m_scheme;
};
