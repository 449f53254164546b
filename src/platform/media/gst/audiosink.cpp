// SPDX-License-Identifier: GPL-3.0-or-later
#include "audiosink.h"

#include <platform/media/medialog.h>

#include <atomic>

namespace {

// autoaudiosink would go on to every sink that is installed; where there is no device it loads the clients of
// sound servers that nobody runs, which cost 100 ms, write files and talk on standard error.
constexpr const char *Candidates[] = {"pulsesink", "pipewiresink", "alsasink"};

constexpr const char *SilentMark = "kestrel-silent";

GstElement *opened(const char *factory)
{
    GstElement *sink = gst_element_factory_make(factory, nullptr);
    if (sink == nullptr)
        return nullptr;
    gst_object_ref_sink(sink);
    if (gst_element_set_state(sink, GST_STATE_READY) == GST_STATE_CHANGE_SUCCESS)
        return sink;
    gst_element_set_state(sink, GST_STATE_NULL);
    gst_object_unref(sink);
    return nullptr;
}

// It takes what a device would take: with a sink that takes everything no missing decoder would be missed.
GstElement *createSilence()
{
    GstElement *sink
        = gst_parse_bin_from_description("capsfilter caps=audio/x-raw ! fakesink sync=true", TRUE, nullptr);
    if (sink == nullptr)
        return nullptr;
    gst_object_ref_sink(sink);
    g_object_set_data(G_OBJECT(sink), SilentMark, sink);
    return sink;
}

} // namespace

GstElement *createAudioSink(bool silent)
{
    if (!silent) {
        for (const char *candidate : Candidates) {
            if (GstElement *sink = opened(candidate))
                return sink;
        }
        static std::atomic<bool> told = false;
        if (!told.exchange(true))
            qCInfo(lcMedia, "no audio device: videos play without sound");
    }
    return createSilence();
}

bool isSilentSink(GstElement *sink)
{
    return g_object_get_data(G_OBJECT(sink), SilentMark) != nullptr;
}
