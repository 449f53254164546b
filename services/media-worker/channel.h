// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/workerprotocol.h"

#include <cstdint>
#include <span>
#include <vector>

// A file handed over with a request; closed at the end of it.
class ReceivedFile
{
public:
    ReceivedFile() = default;
    explicit ReceivedFile(int descriptor) : m_descriptor(descriptor) { }
    ReceivedFile(ReceivedFile &&other) noexcept;
    ReceivedFile &operator=(ReceivedFile &&other) noexcept;
    ~ReceivedFile();

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

// The worker's end of the socket. Every call blocks; false means that the pool is gone.
class Channel
{
public:
    explicit Channel(int socket) : m_socket(socket) { }

    [[nodiscard]] bool sendHello(WorkerProtocol::Jail jail) const;
    [[nodiscard]] bool receive(WorkerProtocol::Request &request, ReceivedFile &file) const;
    [[nodiscard]] bool send(WorkerProtocol::Status status, std::span<const std::uint8_t> metadata,
                            std::uint32_t frameWidth, std::uint32_t frameHeight,
                            std::span<const std::uint8_t> pixels) const;

private:
    [[nodiscard]] bool sendAll(const void *data, std::size_t size) const;

    int m_socket;
};
