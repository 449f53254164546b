// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <array>
#include <mutex>

#include <gst/gst.h>

// Plays faster or slower without a seek, so that nothing is decoded twice and nothing stands still: the
// pipeline works at its own speed, and where picture and sound come to their outputs their running time is
// stretched from one and the same place of the video on. The sound keeps its pitch. Lives as long as the
// pipeline; the speed may be set from any thread.
class RateChanger
{
public:
    RateChanger() = default;
    Q_DISABLE_COPY_MOVE(RateChanger)

    // The element where the pictures end; its pad "sink".
    void watchPicture(GstElement *sink);
    // Where the sound ends: this sink and before it, as near as can be, what keeps its pitch. The caller
    // takes it over as it is, floating. Where that is not installed, the sink alone; the speed then stays 1.
    [[nodiscard]] GstElement *createSoundEnd(GstElement *sink);
    // Before another pipeline starts with the same picture sink.
    void reset();

    void setRate(double rate);

private:
    struct Switch
    {
        GstClockTime at; // running time as it comes in
        double rate;
    };
    // What comes in as running time `in` and later is stretched, beginning with `out`.
    struct Stretch
    {
        GstClockTime in = 0;
        GstClockTime out = 0;
        double rate = 1;

        [[nodiscard]] GstClockTime stretched(GstClockTime time) const;
        [[nodiscard]] GstClockTime original(GstClockTime time) const;
    };
    struct Road
    {
        RateChanger *changer = nullptr;
        GstSegment segment = {}; // as it comes in
        bool hasSegment = false;
        bool ended = false;
        bool sending = false;
        GstClockTime reached = 0; // running time, as it comes in
        Stretch stretch;
        QList<Switch> switches; // to come
    };

    void watch(GstElement *element, Road &road);
    static GstPadProbeReturn probed(GstPad *pad, GstPadProbeInfo *info, gpointer data);
    void take(Road &road, GstPad *pad, GstClockTime time, GstClockTime duration);
    [[nodiscard]] GstPadProbeReturn takeEvent(Road &road, GstPad *pad, GstPadProbeInfo *info);
    void takeSegment(Road &road, GstPadProbeInfo *info);
    void takeQuality(const Road &road, GstPadProbeInfo *info) const;
    // True: the speed changed by then.
    static bool switchAt(Road &road, GstClockTime time);
    void begin(Road &road) const;

    mutable std::mutex m_mutex;
    std::array<Road, 2> m_roads; // picture, sound
    double m_rate = 1;
    bool m_fixed = false; // the sound cannot follow
};
