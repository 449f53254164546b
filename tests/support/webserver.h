// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QList>
#include <QPointer>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>

// A web server in this process, on a free port of 127.0.0.1: it reads whole requests, and the test says what
// becomes of each.
class WebServer : public QTcpServer
{
    Q_OBJECT

public:
    struct Request
    {
        QByteArray method;
        QByteArray target;
        QHash<QByteArray, QByteArray> headers; // names in lower case
        QByteArray body;
        QPointer<QTcpSocket> socket;

        [[nodiscard]] QByteArray header(const QByteArray &name) const { return headers.value(name); }
    };

    // Answers every request; null: nobody does.
    std::function<void(const Request &)> answer;
    QList<Request> requests;

    [[nodiscard]] bool start(const QSslConfiguration *tls = nullptr, quint16 port = 0)
    {
        m_isSecure = tls != nullptr;
        if (tls)
            m_tls = *tls;
        return listen(QHostAddress::LocalHost, port);
    }

    // A whole answer; the connection is kept.
    static void reply(const Request &request, const QByteArray &status, const QByteArray &body = {},
                      const QByteArray &headers = {})
    {
        if (request.socket)
            request.socket->write("HTTP/1.1 " + status + "\r\nContent-Length: "
                                  + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body);
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = m_isSecure ? new QSslSocket(this) : new QTcpSocket(this);
        socket->setSocketDescriptor(descriptor);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        if (auto *secure = qobject_cast<QSslSocket *>(socket)) {
            secure->setSslConfiguration(m_tls);
            secure->startServerEncryption();
        }
    }

private:
    void read(QTcpSocket *socket)
    {
        QByteArray &bytes = m_unread[socket];
        bytes += socket->readAll();
        const qsizetype end = bytes.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        Request request;
        const QList<QByteArray> lines = bytes.first(end).split('\n');
        const QList<QByteArray> first = lines.constFirst().trimmed().split(' ');
        request.method = first.value(0);
        request.target = first.value(1);
        for (const QByteArray &line : lines.sliced(1)) {
            const qsizetype colon = line.indexOf(':');
            request.headers.insert(line.first(colon).toLower(), line.sliced(colon + 1).trimmed());
        }
        const qsizetype size = end + 4 + request.header("content-length").toLongLong();
        if (bytes.size() < size)
            return;
        request.body = bytes.sliced(end + 4, size - end - 4);
        request.socket = socket;
        bytes.remove(0, size);
        requests.append(request);
        if (answer)
            answer(request);
    }

    QSslConfiguration m_tls;
    bool m_isSecure = false;
    QHash<QTcpSocket *, QByteArray> m_unread;
};
