// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QSet>
#include <QSslServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <memory>

// A server of the network, as small as one can be: answers each path with what is laid down for it, well or
// badly, and keeps what it was asked.
class LocalServer : public QObject
{
public:
    struct Answer
    {
        QByteArray bytes;
        enum class End { Close, Reset, StayOpen } end = End::Close;
        // Byte by byte, so many milliseconds apart.
        int drip = 0;
        // After the bytes again and again, for as long as somebody takes it.
        QByteArray endless = {};
    };

    explicit LocalServer(const QHostAddress &host = QHostAddress(QHostAddress::LocalHost))
        : LocalServer(std::make_unique<QTcpServer>(), host, QStringLiteral("http"))
    {
    }
    explicit LocalServer(const QSslConfiguration &tls)
        : LocalServer(std::make_unique<QSslServer>(), QHostAddress(QHostAddress::LocalHost),
                      QStringLiteral("https"))
    {
        static_cast<QSslServer *>(m_server.get())->setSslConfiguration(tls);
    }

    [[nodiscard]] QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("%1://%2:%3%4")
                        .arg(m_scheme, m_server->serverAddress().toString())
                        .arg(m_server->serverPort())
                        .arg(path));
    }
    // By path; a path without one is never answered.
    QHash<QByteArray, Answer> answers;
    // Whole, with their headers.
    QList<QByteArray> requests;
    qint64 bytesSent = 0;
    int left = 0; // connections that the other side closed
    // Nobody listens from now on.
    void close() { m_server->close(); }

    // The header of a request, in lower case without its name; empty: it has none.
    [[nodiscard]] QByteArray header(qsizetype request, const QByteArray &name) const
    {
        const QList<QByteArray> lines = requests.value(request).split('\n');
        for (const QByteArray &line : lines) {
            if (line.toLower().startsWith(name + ':'))
                return line.mid(name.size() + 1).trimmed();
        }
        return {};
    }

    static QByteArray ok(const QByteArray &body, const QByteArray &headers = {})
    {
        return "HTTP/1.1 200 OK\r\nConnection: close\r\n" + headers
            + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }
    static QByteArray status(int code, const QByteArray &headers = {})
    {
        return "HTTP/1.1 " + QByteArray::number(code) + " Word\r\nConnection: close\r\n" + headers
            + (code == 204 ? QByteArray() : QByteArray("Content-Length: 0\r\n")) + "\r\n";
    }
    static QByteArray redirect(const QByteArray &to) { return status(302, "Location: " + to + "\r\n"); }

private:
    LocalServer(std::unique_ptr<QTcpServer> server, const QHostAddress &host, const QString &scheme)
        : m_scheme(scheme),
          m_server(std::move(server))
    {
        m_server->listen(host);
        connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
            while (QTcpSocket *peer = m_server->nextPendingConnection()) {
                connect(peer, &QTcpSocket::readyRead, this, [this, peer] { answer(peer); });
                connect(peer, &QTcpSocket::disconnected, this,
                        [this, peer] { left += m_ended.remove(peer) ? 0 : 1; });
                answer(peer);
            }
        });
    }

    void answer(QTcpSocket *peer)
    {
        const QByteArray request = peer->peek(100'000);
        if (!request.contains("\r\n\r\n"))
            return;
        (void)peer->readAll();
        requests.append(request);
        const QByteArray path = request.split(' ').value(1).split('?').constFirst();
        if (answers.contains(path))
            send(peer, answers.value(path));
    }

    void send(QTcpSocket *peer, const Answer &answer)
    {
        connect(peer, &QTcpSocket::bytesWritten, this, [this](qint64 bytes) { bytesSent += bytes; });
        if (answer.drip > 0) {
            drip(peer, answer);
            return;
        }
        peer->write(answer.bytes);
        if (!answer.endless.isEmpty()) {
            const auto more = [peer, piece = answer.endless] {
                if (peer->bytesToWrite() < piece.size())
                    peer->write(piece);
            };
            connect(peer, &QTcpSocket::bytesWritten, peer, more);
            return;
        }
        end(peer, answer.end);
    }

    void drip(QTcpSocket *peer, const Answer &answer)
    {
        auto *timer = new QTimer(peer);
        connect(timer, &QTimer::timeout, peer, [this, timer, peer, answer, at = qsizetype(0)]() mutable {
            peer->write(answer.bytes.mid(at++, 1));
            if (at < answer.bytes.size())
                return;
            timer->stop();
            end(peer, answer.end);
        });
        timer->start(answer.drip);
    }

    void end(QTcpSocket *peer, Answer::End end)
    {
        if (end != Answer::End::StayOpen)
            m_ended.insert(peer);
        if (end == Answer::End::Close) {
            peer->disconnectFromHost();
        } else if (end == Answer::End::Reset) {
            peer->flush();
            peer->abort();
        }
    }

    QString m_scheme;
    QSet<QTcpSocket *> m_ended; // by this side
    std::unique_ptr<QTcpServer> m_server; // goes first, while its connections are still counted
};
