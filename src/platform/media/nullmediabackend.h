// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "loopsection.h"
#include "mediabackend.h"
#include "subtitles/cuestore.h"
#include "stillfiles.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <functional>
#include <optional>

// Plays nothing, but behaves: videos of given length, size and speed, delays, faults, buffering, the end.
// Time passes only by advance(). What is due now is delivered through the event loop; what is due later by
// advance().
class NullMediaBackend : public MediaBackend
{
    Q_OBJECT

public:
    // What lies behind an address.
    struct Media
    {
        MediaTime duration = std::chrono::seconds(60);
        QSize size{320, 180}; // empty: audio only
        MediaTime frameDuration = std::chrono::milliseconds(40);
        MediaTime prerollDelay{0}; // from play() to the first frame
        MediaTime pauseDelay{0};
        MediaTime resumeDelay{0};
        MediaTime seekDelay{0};
        MediaTime keyFrameDistance = std::chrono::seconds(1);
        bool hangsOnPause = false; // pause() is never answered
        bool hangsOnPreroll = false;
        bool seekable = true;
        std::optional<AvloError> fault; // fails so ...
        MediaTime faultPosition{-1}; // ... on reaching this position; negative: instead of the first frame
        // On reaching a position playing stalls for `length` while the per cent goes from 0 to 100 in four
        // steps.
        struct Stall
        {
            MediaTime position;
            MediaTime length;
        };
        QList<Stall> stalls;
        QList<MediaTrack> sounds; // the first is heard first
        QList<MediaTrack> subtitles; // none is shown first
        QHash<QString, QList<SubtitleCue>> cues; // of the subtitles, by id
        QList<MediaChapter> chapters;
    };

    explicit NullMediaBackend(QObject *parent = nullptr);
    ~NullMediaBackend() override;

    // Of one address; of every address that has none of its own. Taken over by the next play().
    void setMedia(const QString &uri, const Media &media) { m_media.insert(uri, media); }
    void setDefaultMedia(const Media &media) { m_defaultMedia = media; }
    // Time passes: everything that is due by then happens, in its order, before this returns.
    void advance(MediaTime time);
    // Something is missing, and playing goes on.
    void complain(const AvloError &error);
    // The device behind this back end goes away.
    void lose();
    // What was asked, in order: "play file:///a.mp4 12", "pause", "resume", "stop", "seek 1500" (ms), "volume
    // 0.5", "rate 2", "begin scrub", "end scrub".
    [[nodiscard]] QStringList commands() const { return m_commands; }
    void clearCommands() { m_commands.clear(); }

    void play(const QString &uri, uint startSecond) override;
    void pause() override;
    void resume() override;
    void stop() override;
    void seek(MediaTime position, SeekPrecision precision) override;
    // The exact frame follows a key frame when the finger is lifted; it is not told when the finger rests.
    void beginScrub() override;
    void endScrub() override;
    void setVolume(qreal volume) override;
    void setRate(qreal rate) override;
    void setOutput(const QSize &size, bool fill, int rotation) override;
    void selectAudioTrack(const QString &id) override;
    void selectSubtitleTrack(const QString &id) override;
    void setSubtitleDelay(MediaTime delay) override;
    void setLoop(const std::optional<MediaSection> &section) override;
    [[nodiscard]] QList<MediaTrack> audioTracks() const override { return m_current.sounds; }
    [[nodiscard]] QList<MediaTrack> subtitleTracks() const override { return m_current.subtitles; }
    [[nodiscard]] QString audioTrack() const override { return m_sound; }
    [[nodiscard]] QString subtitleTrack() const override { return m_subtitle; }
    [[nodiscard]] QList<SubtitleText> subtitles() const override;
    [[nodiscard]] MediaTime subtitleDelay() const override { return m_delay; }
    [[nodiscard]] QList<MediaChapter> chapters() const override { return m_current.chapters; }
    [[nodiscard]] std::optional<MediaSection> loop() const override { return m_loop.section(); }
    [[nodiscard]] MediaTime position() const override { return m_position; }
    [[nodiscard]] MediaTime heading() const override
    {
        return m_seekTarget.value_or(m_scrubTarget.value_or(m_position));
    }
    [[nodiscard]] VideoFrame frame() const override { return m_frame; }
    [[nodiscard]] bool isSeekable() const override { return m_current.seekable; }
    [[nodiscard]] qreal volume() const override { return m_volume; }
    [[nodiscard]] qreal rate() const override { return m_rate; }

private:
    struct Event
    {
        MediaTime due;
        std::function<void()> action;
    };
    void beginTracks();
    void changeRate(qreal rate);
    void schedule(MediaTime delay, std::function<void()> action);
    void runDue();
    [[nodiscard]] MediaTime nextHappening() const;
    void reachHappening();
    void firstFrame();
    void arrivePaused();
    void arriveSeek();
    void fail();
    void end();
    void showFrame(MediaTime position);
    void writeStill();
    [[nodiscard]] MediaTime clamped(MediaTime position) const;
    [[nodiscard]] bool isRunning() const;

    QHash<QString, Media> m_media;
    Media m_defaultMedia;
    Media m_current;
    QList<Event> m_events;
    QStringList m_commands;
    StillFiles m_stills;
    VideoFrame m_frame;
    MediaTime m_now{0};
    MediaTime m_position{0}; // of the shown frame
    MediaTime m_exact{0}; // of the running clock
    MediaTime m_reached{-1}; // stalls and faults up to here have happened
    std::optional<MediaTime> m_seekTarget;
    std::optional<MediaTime> m_scrubTarget; // of the newest seek since the finger came down
    QString m_sound;
    QString m_subtitle;
    MediaTime m_delay{0}; // of the subtitles
    LoopSection m_loop;
    qreal m_volume = 1;
    qreal m_rate = 1;
    bool m_ready = false; // the first frame stands
    bool m_wantsPause = false;
    bool m_pausing = false;
    bool m_stalled = false;
    bool m_runQueued = false;
    bool m_seekExact = true; // the newest one
};
