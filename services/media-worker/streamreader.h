// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "deadline.h"
#include "gstpointers.h"
#include "tagcollector.h"
#include "trackcollector.h"

#include <atomic>
#include <string>

// Takes a file apart without decoding anything: which streams there are, how long it is, what its tags say,
// and the video stream's encoded pictures one after the other.
class StreamReader
{
public:
    enum class Outcome { Ok, NotMedia, Unreadable, OutOfTime };

    StreamReader(int descriptor, GstCaps *container, const Deadline &deadline);
    ~StreamReader();
    StreamReader(const StreamReader &) = delete;
    StreamReader &operator=(const StreamReader &) = delete;

    // Until the first picture has arrived, or it is clear that there is none.
    [[nodiscard]] Outcome open();

    [[nodiscard]] bool hasVideo() const { return m_videoCaps != nullptr; }
    [[nodiscard]] bool hasAudio() const { return m_hasAudio; }
    [[nodiscard]] const TagCollector &tags() const { return m_tags; }
    [[nodiscard]] TrackCollector &tracks() { return m_tracks; }
    [[nodiscard]] const GstCaps *videoCaps() const;
    [[nodiscard]] const std::string &error() const { return m_error; }
    // What the container says; GST_CLOCK_TIME_NONE when it does not, or says something so short that it may
    // only be how far it was read.
    [[nodiscard]] GstClockTime statedDuration();
    // The end of the last picture, for a recording whose writer was interrupted, or that was streamed into
    // its file. Reads on to the end, unless the file is very long.
    [[nodiscard]] GstClockTime readToEnd();

    // Nothing was read yet but the first picture, which is still to come.
    [[nodiscard]] bool isAtStart() const { return m_firstUnit != nullptr; }
    // To the key picture at or before `position`. False when the container cannot be sought in; the reader is
    // then where it was.
    [[nodiscard]] bool seek(GstClockTime position);
    // Null at the end of the stream, at an error and when the time is up.
    [[nodiscard]] SamplePointer nextUnit();

private:
    static void padAdded(GstElement *bin, GstPad *pad, gpointer reader);
    static gboolean continueAutoplug(GstElement *bin, GstPad *pad, GstCaps *caps, gpointer reader);
    static GstPadProbeReturn otherArrived(GstPad *pad, GstPadProbeInfo *info, gpointer reader);
    void addPad(GstPad *pad);
    void handleTags(GstMessage *message);
    [[nodiscard]] Outcome handleError(GstMessage *message);
    [[nodiscard]] bool isSoundOnly(GstMessage *message);
    [[nodiscard]] Outcome waitForData();
    void collectTags();

    int m_descriptor;
    const Deadline &m_deadline;
    ElementPointer m_pipeline;
    GstElement *m_videoSink = nullptr; // the pipeline's
    BusPointer m_bus;
    TagCollector m_tags;
    TrackCollector m_tracks;
    SamplePointer m_firstUnit; // handed out by the first nextUnit()
    CapsPointer m_videoCaps;
    std::atomic<bool> m_videoTaken = false;
    std::atomic<bool> m_videoExpected = false;
    bool m_allStreams = false;
    bool m_otherData = false;
    std::atomic<bool> m_otherAnnounced = false;
    std::atomic<bool> m_unitAnnounced = false;
    std::atomic<bool> m_hasAudio = false;
    std::string m_error;
};
