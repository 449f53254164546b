// SPDX-License-Identifier: GPL-3.0-or-later
#include "networksource.h"

#include "elementhooks.h"

namespace {

// A connection that is silent for so long is opened again where it was. One more time would take longer than
// anybody waits.
constexpr guint HttpTimeout = 12; // s
constexpr gint HttpRetries = 1;
constexpr guint64 RtspTimeout = 10'000'000; // us

// The name alone: neither the version, the machine nor the libraries are the server's business.
constexpr const char *UserAgent = "Kestrel";

void setUp(GstElement *playbin, GstElement *source, gpointer self)
{
    (void)playbin;
    (void)self;
    if (isMadeBy(source, "souphttpsrc"))
        g_object_set(source, "user-agent", UserAgent, "timeout", HttpTimeout, "retries", HttpRetries,
                     nullptr);
    else if (isMadeBy(source, "rtspsrc"))
        g_object_set(source, "user-agent", UserAgent, "tcp-timeout", RtspTimeout, nullptr);
}

} // namespace

void setUpNetworkSources(GstElement *pipeline)
{
    g_signal_connect(pipeline, "source-setup", G_CALLBACK(setUp), nullptr);
}
