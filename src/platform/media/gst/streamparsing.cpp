// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamparsing.h"

#include "elementhooks.h"

namespace {

constexpr guint64 ShortestInterleave = 1500 * GST_MSECOND;

// From 1.26 on decodebin3 looks for a decoder before a parser inside of it has said what the stream is, and
// finds none (FLV).
bool mayParse()
{
    guint major = 0;
    guint minor = 0;
    guint micro = 0;
    guint nano = 0;
    gst_version(&major, &minor, &micro, &nano);
    return major == 1 && minor < 26;
}

// Taken apart by the source, each stream ends on a thread of its own. decodebin3 1.22 sends the last of these
// ends to all streams from there; a seek that meets them waits for that thread, which waits for the seek. It
// also learns of the streams one after the other, and a late word of the first ones takes the sound away
// again.
void setUp(GstBin *playbin, GstBin *bin, GstElement *element, gpointer self)
{
    (void)playbin;
    (void)bin;
    (void)self;
    if (isMadeBy(element, "urisourcebin"))
        g_object_set(element, "parse-streams", FALSE, nullptr);
}

// decodebin3 makes it as short as what the decoders say they hold. A transport stream whose sound comes half
// a second early then fills the queue of the sound before the decoder of the pictures has what it needs.
void keepLong(GObject *queue, GParamSpec *property, gpointer self)
{
    (void)property;
    (void)self;
    guint64 length = 0;
    g_object_get(queue, "min-interleave-time", &length, nullptr);
    if (length < ShortestInterleave)
        g_object_set(queue, "min-interleave-time", ShortestInterleave, nullptr);
}

void setUpQueue(GstElement *queue)
{
    // What a camera writes at 100 Mbit/s may have more than the usual ten megabytes of pictures before the
    // sound that belongs to them. The time remains the limit.
    g_object_set(queue, "max-size-bytes", 0u, nullptr);
    g_signal_connect(queue, "notify::min-interleave-time", G_CALLBACK(keepLong), nullptr);
    keepLong(G_OBJECT(queue), nullptr, nullptr);
}

} // namespace

void parseInDecoder(GstElement *playbin)
{
    if (mayParse())
        g_signal_connect(playbin, "deep-element-added", G_CALLBACK(setUp), nullptr);
    eachMadeBy(playbin, "multiqueue", setUpQueue);
}
