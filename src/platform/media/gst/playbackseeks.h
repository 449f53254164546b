// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "seeklanding.h"

#include <platform/media/videoframe.h>

#include <QObject>
#include <QTimer>

#include <optional>

#include <gst/gst.h>

// Moves a pipeline: one seek at a time, and of those that are asked for meanwhile the newest.
class PlaybackSeeks : public QObject
{
    Q_OBJECT

public:
    // Times of some containers are rounded to milliseconds, so that the frame before may seem to reach into
    // this one: a place that much inside a frame is surely within it.
    static constexpr MediaTime InsideFrame = std::chrono::milliseconds(1);

    struct Place
    {
        MediaTime position;
        bool exact = true; // the very frame; else the nearest key frame

        [[nodiscard]] bool operator==(const Place &) const = default;
    };

    explicit PlaybackSeeks(SeekLanding &landing, QObject *parent = nullptr);

    // What is moved from here on.
    void setPipeline(GstElement *pipeline);
    // The pipeline is given up: what was under way waits for the next.
    void dropPipeline();
    void setDuration(MediaTime duration) { m_duration = duration; } // 0: unknown

    // At once, or after the one under way. The way to an exact frame, which may be long, is given up for a
    // key frame.
    void go(const Place &place);
    // While on, the exact frame follows where for a moment no newer place is asked for; when it is taken
    // back, at once.
    void setScrubbing(bool on);
    // Until the pipeline can be moved.
    void keep(const Place &place) { m_next = place; }
    [[nodiscard]] std::optional<Place> takeKept() { return std::exchange(m_next, {}); }
    [[nodiscard]] bool isBusy() const { return m_underWay || m_next; }
    [[nodiscard]] bool isUnderWay() const { return m_underWay.has_value(); }
    // The pipeline stands on a picture again.
    void arrive();
    // From there on nothing can be decoded.
    void goFurtherBack();
    // Where the picture of that time is found again. Where pictures have no times of their own (AVI), theirs
    // depend on where decoding began: the picture that a seek led to is found with the same seek.
    [[nodiscard]] MediaTime placeOf(MediaTime shown) const;

Q_SIGNALS:
    // Nothing is under way and nothing waits any more.
    void finished(bool exact);

private:
    void send(const Place &place);
    void refine();
    void sendAgain();
    void lookAfter();
    [[nodiscard]] bool missed();
    void proveMargin();
    [[nodiscard]] bool missedKeyFrame() const;
    [[nodiscard]] bool missedAll();
    [[nodiscard]] bool isFromTheBeginning() const;
    [[nodiscard]] static bool isClose(const SeekLanding::Picture &picture, MediaTime place);
    [[nodiscard]] MediaTime bounded(MediaTime position) const;
    [[nodiscard]] bool isPrerolling() const;

    SeekLanding &m_landing;
    GstElement *m_pipeline = nullptr;
    MediaTime m_duration{0};
    std::optional<Place> m_underWay;
    std::optional<Place> m_next;
    std::optional<Place> m_reached;
    std::optional<MediaTime> m_missedAt; // where the try before this one landed
    std::size_t m_margin = 0; // how far before the place exact seeks of this video go, as a number of Margins
    std::size_t m_provenMargin = 0; // one that did better than those before it
    bool m_needsMore = false; // the seek before needed more than the proven one
    QTimer m_look; // while one is under way
    bool m_dammed = false; // when it was looked at last
    bool m_bridged = false; // the one under way
    QTimer m_rest; // since a key frame was reached
    bool m_scrubbing = false;
    bool m_gaveUp = false; // a seek before the one under way, which may still be answered
};
