// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <atomic>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

// Answers one request, on a thread of its own, with the beginning of a list and then as fast as it can with
// more, until nobody takes it.
class Flood
{
public:
    static constexpr qint64 most = qint64(64) << 20;

    explicit Flood(const QByteArray &beginning)
    {
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in here = {};
        socklen_t size = sizeof here;
        here.sin_family = AF_INET;
        here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *address = reinterpret_cast<sockaddr *>(&here);
        if (::bind(m_listener, address, size) == 0 && ::listen(m_listener, 1) == 0
            && ::getsockname(m_listener, address, &size) == 0)
            m_port = ntohs(here.sin_port);
        m_thread = std::thread([this, beginning] { answer(beginning); });
    }
    ~Flood()
    {
        m_mayFlood = true;
        ::shutdown(m_listener, SHUT_RDWR);
        if (m_thread.joinable())
            m_thread.join();
        ::close(m_listener);
    }
    Q_DISABLE_COPY_MOVE(Flood)

    [[nodiscard]] int port() const { return m_port; }
    // Waits until nothing is taken for two seconds, or all of it was. Bytes.
    [[nodiscard]] qint64 taken()
    {
        m_mayFlood = true;
        m_thread.join();
        return m_taken;
    }

private:
    void answer(const QByteArray &beginning)
    {
        const int peer = ::accept(m_listener, nullptr, nullptr);
        char request[4096];
        if (peer < 0)
            return;
        if (::recv(peer, request, sizeof request, 0) > 0)
            ::send(peer, beginning.constData(), size_t(beginning.size()), MSG_NOSIGNAL);
        while (!m_mayFlood)
            std::this_thread::yield();
        const QByteArray more(65536, ' ');
        pollfd ready = {peer, POLLOUT, 0};
        while (m_taken<most && ::poll(&ready, 1, 2000)> 0) {
            const ssize_t sent
                = ::send(peer, more.constData(), size_t(more.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent < 0)
                break;
            m_taken += sent;
        }
        ::close(peer);
    }

    int m_listener = -1;
    int m_port = 0;
    std::atomic<bool> m_mayFlood = false;
    std::atomic<qint64> m_taken = 0;
    std::thread m_thread;
};
