// SPDX-License-Identifier: GPL-3.0-or-later
#include "channel.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

ReceivedFile::ReceivedFile(ReceivedFile &&other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

ReceivedFile &ReceivedFile::operator=(ReceivedFile &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ReceivedFile::~ReceivedFile()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

bool Channel::sendAll(const void *data, std::size_t size) const
{
    const auto *bytes = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t sent = ::send(m_socket, bytes, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

bool Channel::sendHello(WorkerProtocol::Jail jail) const
{
    const WorkerProtocol::Hello hello{.jail = jail};
    return sendAll(&hello, sizeof hello);
}

// A request is sent in one piece and read in one piece: it is smaller than any socket buffer.
bool Channel::receive(WorkerProtocol::Request &request, ReceivedFile &file) const
{
    iovec part = {&request, sizeof request};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    ssize_t received = 0;
    do {
        received = recvmsg(m_socket, &message, MSG_CMSG_CLOEXEC | MSG_WAITALL);
    } while (received < 0 && errno == EINTR);
    const cmsghdr *const header = CMSG_FIRSTHDR(&message);
    if (header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
        file = ReceivedFile(descriptor);
    }
    return received == sizeof request && request.magic == WorkerProtocol::RequestMagic
        && file.descriptor() >= 0;
}

bool Channel::send(WorkerProtocol::Status status, std::span<const std::uint8_t> metadata,
                   std::uint32_t frameWidth, std::uint32_t frameHeight,
                   std::span<const std::uint8_t> pixels) const
{
    WorkerProtocol::Reply reply;
    reply.status = status;
    reply.metadataBytes = static_cast<std::uint32_t>(metadata.size());
    reply.frameWidth = frameWidth;
    reply.frameHeight = frameHeight;
    return sendAll(&reply, sizeof reply) && sendAll(metadata.data(), metadata.size())
        && sendAll(pixels.data(), pixels.size());
}
