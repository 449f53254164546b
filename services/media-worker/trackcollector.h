// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"
#include "replywriter.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

// Which streams a file holds beside the video that is looked at: how many, in what form, in which languages.
// It is told of them on the threads that they arrive on.
class TrackCollector
{
public:
    // `pad` is where the stream arrives; what is no sound and no subtitles is not counted.
    void add(const GstPad *pad, const GstCaps *caps);
    void event(const GstPad *pad, GstEvent *event);
    void data(const GstPad *pad);
    // Each stream is told in a thread of its own, and sparse ones may not come at all: waits until all have
    // said what they are, or the time is up.
    void waitForAll(std::chrono::milliseconds longest);
    void writeTo(ReplyWriter &reply);

    [[nodiscard]] static bool isAudio(const GstCaps *caps);
    [[nodiscard]] static bool isSubtitle(const GstCaps *caps);
    // A name that people know ("H.264"); else the caps' own without what is said of all of them.
    [[nodiscard]] static std::string codecName(const GstCaps *caps);

private:
    struct Track
    {
        const GstPad *pad; // to know it by
        bool audio;
        std::string codec;
        std::string id = {};
        std::string language = {};
        bool known = false; // nothing more will be said of it
    };
    [[nodiscard]] Track *find(const GstPad *pad);

    std::mutex m_mutex;
    std::condition_variable m_told;
    std::vector<Track> m_tracks;
};
