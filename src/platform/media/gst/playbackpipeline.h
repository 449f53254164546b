// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/videoframe.h>

#include <QString>

#include <memory>

#include <gst/gst.h>

class RateChanger;
class TypeReports;

// The elements that play one address, from their making to their closing. Used on the control thread.
class PlaybackPipeline
{
public:
    PlaybackPipeline() = default;
    // Closes; on whatever thread that is.
    ~PlaybackPipeline();
    Q_DISABLE_COPY_MOVE(PlaybackPipeline)

    // False: an element is not installed. The video sink and what changes the speed belong to the caller.
    [[nodiscard]] bool build(const QString &uri, GstElement *videoSink, RateChanger &rateChanger,
                             bool withoutAudioDevice);
    // Opens the address, up to the first picture.
    GstStateChangeReturn start();
    void close();

    // Null before build() and after close().
    [[nodiscard]] GstElement *element() const { return m_playbin; }
    [[nodiscard]] GstElement *audioSink() const { return m_audioSink; }

    // 0 to 1, as heard.
    void setVolume(double volume);
    // 0: unknown.
    [[nodiscard]] MediaTime position() const;
    [[nodiscard]] MediaTime duration() const;
    [[nodiscard]] bool isSeekable() const;
    // Something is to be heard; known once the pipeline stands on its first picture.
    [[nodiscard]] bool hasSound() const;

private:
    GstElement *m_playbin = nullptr;
    GstElement *m_audioSink = nullptr;
    std::shared_ptr<TypeReports> m_typeReports;
};
