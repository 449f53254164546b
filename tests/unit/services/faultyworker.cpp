// SPDX-License-Identifier: GPL-3.0-or-later
// A worker that does what a hostile file would make it do: the file's first line says what.
#include "media-worker/worker.h"

#include "common/workerprotocol.h"

#include <atomic>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::string_view Mark = "KESTREL-FAULT ";
constexpr int Socket = WorkerProtocol::SocketDescriptor;

[[noreturn]] void eatMemory()
{
    std::vector<std::string> pieces;
    for (;;)
        pieces.emplace_back(std::size_t(8) << 20, 'x');
}

[[noreturn]] void spin()
{
    for (std::atomic<unsigned> turns = 0;; ++turns) { }
}

void answer(std::uint32_t metadataBytes, std::uint32_t width, std::uint32_t height)
{
    WorkerProtocol::Reply reply;
    reply.metadataBytes = metadataBytes;
    reply.frameWidth = width;
    reply.frameHeight = height;
    send(Socket, &reply, sizeof reply, MSG_NOSIGNAL);
}

void flood()
{
    const std::vector<char> noise(1 << 20, 'n');
    while (send(Socket, noise.data(), noise.size(), MSG_NOSIGNAL) > 0) { }
}

void misbehave(int descriptor)
{
    static int files = 0;
    const bool used = ++files > 1;
    char head[64] = {};
    if (pread(descriptor, head, sizeof head - 1, 0) <= 0 || !std::string_view(head).starts_with(Mark))
        return;
    const std::string_view text(head);
    const std::string_view what = text.substr(Mark.size(), text.find('\n') - Mark.size());
    if (what == "crash")
        __builtin_trap();
    else if (what == "hang" || (what == "hang-used" && used))
        for (;;)
            poll(nullptr, 0, -1);
    else if (what == "spin")
        spin();
    else if (what == "memory")
        eatMemory();
    else if (what == "huge-frame")
        answer(0, 0xffffffff, 0xffffffff);
    else if (what == "huge-metadata")
        answer(0xfffffff0, 0, 0);
    else if (what == "flood")
        flood();
    else if (what == "exit")
        _exit(3);
}

} // namespace

int main(int argc, char *argv[])
{
    return runWorker(argc, argv, misbehave);
}
