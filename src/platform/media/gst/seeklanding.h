// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/videoframe.h>

#include <atomic>
#include <mutex>
#include <optional>

#include <gst/gst.h>

// Makes seeks exact where a demuxer without an index is not: it may begin at a picture after the place, or at
// one that cannot be decoded without those before. Such a seek is sent to an earlier place, and what lies
// between is decoded and left out, because the streams are told that they begin at the place itself. Pictures
// that a decoder calls incomplete are not shown after a seek. Where pictures or sound end, their sink is told
// so at once, lest the other waits for ever. Lives longer than the pipeline it watches.
class SeekLanding
{
public:
    // Where the first picture after a seek belongs.
    struct Picture
    {
        MediaTime time{0};
        MediaTime length{0}; // 0: unknown
        bool incomplete = false; // others before it could not be decoded
    };

    SeekLanding() = default;
    Q_DISABLE_COPY_MOVE(SeekLanding)

    // The element where the pictures end; its pad "sink".
    void watchPicture(GstElement *sink);
    // Of playbin3, before it starts.
    void watch(GstElement *pipeline);

    // Since a seek the decoder has found nothing that it could begin with, and nothing more comes, because
    // the sound waits for the first picture and has filled its queue.
    [[nodiscard]] bool isDammed(GstElement *pipeline) const;
    // After a seek: from there to the end a decoder could not decode a single picture.
    [[nodiscard]] static bool tellsNoPicture(GstMessage *message);

    // The next seek goes so much before the place that is meant.
    void expect(MediaTime margin);
    // Nothing: there was no picture since.
    [[nodiscard]] std::optional<Picture> picture() const;
    // There was one at some time.
    [[nodiscard]] bool hasPictures() const;
    // The container has no index, and may say so only with an error.
    [[nodiscard]] bool isVague() const;
    // A picture ends only where the next one begins, so that no key frame comes alone.
    [[nodiscard]] bool needsNext() const;
    // Within the picture of that time, also when the seek went to its very end.
    [[nodiscard]] MediaTime inside(MediaTime time) const;

private:
    static void added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer self);
    static void padAdded(GstElement *parser, GstPad *pad, gpointer self);
    static GstPadProbeReturn streamProbed(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static void watchDecoder(GstElement *decoder, SeekLanding *landing);
    static GstBusSyncReply decoderSaid(GstBus *bus, GstMessage *message, gpointer relay);
    static void queueAdded(GstElement *queues, GstPad *pad, gpointer self);
    static GstPadProbeReturn endProbed(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn pictureProbed(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    [[nodiscard]] GstPadProbeReturn take(GstBuffer *buffer);
    [[nodiscard]] bool isWaiting() const;

    mutable std::mutex m_mutex;
    GstSegment m_segment = {}; // of the pictures
    MediaTime m_margin{0};
    std::optional<Picture> m_picture;
    int m_incomplete = 0; // pictures since the seek
    bool m_hasPictures = false;
    bool m_vague = false;
    bool m_needsNext = false;
    bool m_waiting = false; // for the first picture
    std::atomic_bool m_joins = false; // one stream is followed by another
};
