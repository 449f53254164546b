// SPDX-License-Identifier: GPL-3.0-or-later
#include "worker.h"

#include "channel.h"
#include "formats.h"
#include "inspection.h"
#include "jail.h"

#include <gst/gst.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include <malloc.h>
#include <unistd.h>

using namespace std::string_literals;

namespace {

struct Options
{
    std::string pluginFolder;
    bool bubblewrap = false;
    bool writeRegistry = false;
};

bool parse(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--plugins" && i + 1 < argc)
            options.pluginFolder = argv[++i];
        else if (argument == "--bubblewrap")
            options.bubblewrap = true;
        else if (argument == "--write-registry")
            options.writeRegistry = true;
        else
            return false;
    }
    return !options.pluginFolder.empty();
}

[[noreturn]] void endWithoutMemory()
{
    constexpr std::string_view text = "kestrel-media-worker: out of memory\n";
    [[maybe_unused]] const ssize_t ignored = write(STDERR_FILENO, text.data(), text.size());
    _exit(WorkerProtocol::ExitOutOfMemory);
}

// GLib ends the process where an allocation fails; only its message tells that from other faults.
GLogWriterOutput writeLog(GLogLevelFlags level, const GLogField *fields, gsize count, gpointer)
{
    for (gsize i = 0; i < count; ++i) {
        if (std::strcmp(fields[i].key, "MESSAGE") != 0
            || (level & (G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL)) == 0)
            continue;
        const auto *message = static_cast<const char *>(fields[i].value);
        if (std::strstr(message, "failed to allocate"))
            endWithoutMemory();
        std::fprintf(stderr, "kestrel-media-worker: %s\n", message);
    }
    return G_LOG_WRITER_HANDLED;
}

// A registry of its own, with the claimed plug-ins only: a twentieth of the machine's, so it is read in no
// time, and what is not in it cannot be loaded.
void setUpPlugins(const Options &options)
{
    const std::string registry = options.pluginFolder + "/registry.bin";
    const std::string plugins = options.pluginFolder + "/plugins";
    g_setenv("GST_REGISTRY", registry.c_str(), TRUE);
    g_setenv("GST_PLUGIN_SYSTEM_PATH_1_0", plugins.c_str(), TRUE);
    g_setenv("GST_PLUGIN_PATH_1_0", "", TRUE);
    g_setenv("GST_REGISTRY_FORK", "no", TRUE);
    g_setenv("GST_REGISTRY_UPDATE", options.writeRegistry ? "yes" : "no", TRUE);
    // The jail holds no writable and executable memory; the scaler has compiled loops for that case.
    g_setenv("ORC_CODE", "backup", TRUE);
}

int serve(const Channel &channel, WorkerHook hook)
{
    for (;;) {
        WorkerProtocol::Request request;
        ReceivedFile file;
        if (!channel.receive(request, file))
            return 0;
        if (hook)
            hook(file.descriptor());
        const Inspection::Result result = Inspection::inspect(file.descriptor(), request);
        if (!channel.send(result.status, result.fields.bytes(),
                          static_cast<std::uint32_t>(result.picture.size.width),
                          static_cast<std::uint32_t>(result.picture.size.height), result.picture.pixels))
            return 0;
    }
}

} // namespace

int runWorker(int argc, char **argv, WorkerHook hook)
{
    Options options;
    if (!parse(argc, argv, options)) {
        std::fputs("usage: kestrel-media-worker --plugins DIR [--bubblewrap | --write-registry]\n", stderr);
        return 2;
    }
    std::set_new_handler(endWithoutMemory);
    // Each further arena reserves 64 MiB of the address space that the pool allows.
    mallopt(M_ARENA_MAX, 2);
    g_log_set_writer_func(writeLog, nullptr, nullptr);
    setUpPlugins(options);
    GError *error = nullptr;
    if (!gst_init_check(nullptr, nullptr, &error)) {
        std::fprintf(stderr, "kestrel-media-worker: %s\n", error ? error->message : "no GStreamer");
        return 1;
    }
    if (options.writeRegistry)
        return 0;

    Formats::keepClaimedOnly();
    const WorkerProtocol::Jail jail = enterJail(options.pluginFolder, options.bubblewrap);
    if (jail == WorkerProtocol::JailNone)
        _exit(WorkerProtocol::ExitNoJail);
    const Channel channel(WorkerProtocol::SocketDescriptor);
    const int status = channel.sendHello(jail) ? serve(channel, hook) : 0;
    // Nothing is worth tidying up: what the process held goes with it, at once.
    _exit(status);
}
