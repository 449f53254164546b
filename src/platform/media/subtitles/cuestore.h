// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitlecue.h"

#include <QMutex>

#include <vector>

// The cues of one track, in the order of their time. Some come all at once, out of a file; some while the
// video plays, on a thread of the pipeline, and again after a seek. May be used from any thread.
class CueStore
{
public:
    void set(const QList<SubtitleCue> &cues);
    void add(const SubtitleCue &cue);
    // What is to be read at this time of the video, the earliest first; at most subtitles::MostAtOnce.
    [[nodiscard]] QList<SubtitleText> at(MediaTime time) const;
    [[nodiscard]] int count() const;

private:
    void append(const SubtitleCue &cue);
    void dropOldest();
    void followEnds(size_t from);

    mutable QMutex m_mutex;
    std::vector<SubtitleCue> m_cues; // by start
    std::vector<MediaTime> m_latestEnds; // of each and all before it
    qint64 m_characters = 0;
};
