// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pictureshape.h"

#include <platform/media/pictureconverter.h>
#include <platform/media/videoframe.h>

#include <QMutex>
#include <QSize>

#include <functional>
#include <optional>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

// The end of the video road: brings pictures into the format, size and turn of the screen once, and keeps the
// latest. Ordinary ones are scaled by an element; those of high dynamic range or wide
// gamut come through it as they are and are scaled here; colours and turn are made here. For an output that
// takes planes nothing is converted at all. The element is made, and another output is asked for, on the
// control thread; the notification comes from any thread.
class VideoSink
{
public:
    // Called for every frame once the gate is open, mostly on a streaming thread.
    using Arrived = std::function<void(const VideoFrame &)>;
    explicit VideoSink(Arrived arrived);
    ~VideoSink();
    Q_DISABLE_COPY_MOVE(VideoSink)

    // False: an element that is needed is not installed.
    [[nodiscard]] bool isValid() const { return m_bin != nullptr; }
    [[nodiscard]] GstElement *element() const { return m_bin; }

    // From the next picture on.
    void setOutput(const VideoOutput &output);
    // While closed, frames are kept back: those before the place where playing starts.
    void openGate();
    void closeGate();
    [[nodiscard]] MediaTime latestTime() const;
    // The picture as it should be seen, before scaling; empty: none yet.
    [[nodiscard]] QSize pictureSize() const;

private:
    static GstFlowReturn prerolled(GstAppSink *sink, gpointer self);
    static GstFlowReturn sampled(GstAppSink *sink, gpointer self);
    static GstPadProbeReturn probed(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn asked(GstPad *pad, GstPadProbeInfo *info, gpointer);
    void heed(GstEvent *event);
    void take(GstSample *sample);
    [[nodiscard]] VideoFrame frameOf(GstSample *sample);
    [[nodiscard]] QImage packedImage(GstSample *sample, const std::optional<PictureColours> &colours);
    // What the elements make; of an empty size: leave it as the decoder made it.
    struct Shape
    {
        GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
        QSize size = {};
        bool shrinks = false;
        GstVideoColorimetry colorimetry = {};
    };
    [[nodiscard]] Shape outputShape() const;
    void apply(const Shape &shape);
    void applyOutput();

    GstElement *m_bin = nullptr;
    GstElement *m_fields = nullptr;
    GstElement *m_convert = nullptr;
    GstElement *m_filter = nullptr;
    Arrived m_arrived;
    PictureConverter m_converter; // of the streaming thread

    mutable QMutex m_mutex; // guards what follows: control thread and streaming threads
    VideoFrame m_latest;
    GstVideoInfo m_info;
    GstVideoOrientationMethod m_tagged = GST_VIDEO_ORIENTATION_IDENTITY;
    std::optional<PictureColours> m_colours; // of the video, unless it is RGB
    VideoOutput m_output;
    bool m_outdated = false; // the elements work for another output
    bool m_open = false;
};
