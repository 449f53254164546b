// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/mediatracks.h>
#include <platform/media/subtitles/cuestore.h>
#include <platform/media/subtitles/subtitleparser.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include <gst/gst.h>

// The text tracks within a video, all of them, read where they leave the demultiplexer: however they are
// switched nothing in the pipeline changes, and what belongs to the present place is known already. Shared by
// the pipeline's threads and its owner's.
class SubtitleTap : public std::enable_shared_from_this<SubtitleTap>
{
public:
    struct Track
    {
        MediaTrack track;
        bool isDefault = false; // the file would have it shown
        std::shared_ptr<CueStore> cues;
    };

    // `found`: a track came, or more is known of one. Called on any thread.
    explicit SubtitleTap(std::function<void()> found) : m_found(std::move(found)) { }

    void watch(GstElement *pipeline);
    // Nothing is told from here on.
    void close();
    [[nodiscard]] QList<Track> tracks() const;

private:
    struct Stream;
    static void elementAdded(GstBin *bin, GstBin *sub, GstElement *element, gpointer data);
    static void padAdded(GstElement *demuxer, GstPad *pad, gpointer data);
    static GstPadProbeReturn probed(GstPad *pad, GstPadProbeInfo *info, gpointer data);
    void take(Stream &stream, GstPad *pad, GstBuffer *buffer);

    mutable std::mutex m_mutex;
    std::function<void()> m_found;
    std::vector<std::shared_ptr<Stream>> m_streams;
};
