// SPDX-License-Identifier: GPL-3.0-or-later
#include "gstsetup.h"

#include "videosink.h"

#include <mutex>

#include <gst/gst.h>
#include <malloc.h>

// It calls itself done before it has read all plug-ins, which takes seconds the first time: every other
// thread, of another back end or of the next video, must wait for the end of that.
void initialiseGStreamer()
{
    static std::once_flag initialised;
    std::call_once(initialised, [] { gst_init(nullptr, nullptr); });
}

void prepareGStreamer()
{
    initialiseGStreamer();
    if (GstElement *playbin = gst_element_factory_make("playbin3", nullptr))
        gst_object_unref(gst_object_ref_sink(playbin));
    const VideoSink sink([](const VideoFrame &) {});
    for (const char *name : {"pulsesink", "filesrc", "typefind", "qtdemux", "h264parse", "avdec_h264"}) {
        if (GstElement *element = gst_element_factory_make(name, nullptr))
            gst_object_unref(gst_object_ref_sink(element));
    }
}

// What a video leaves free lies scattered over the heaps that its threads used, which keep it.
void giveMemoryBack()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}
