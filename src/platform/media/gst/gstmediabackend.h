// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pausekeeper.h"

#include <platform/media/loopsection.h>
#include <platform/media/mediabackend.h>

#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class ControlThread;
class FrameSlot;
class PlaybackSession;
class SubtitleDesk;

// Plays with GStreamer: one playbin3 a video, worked on a thread of its own, decoders by rank (hardware
// first), frames scaled once to the size on the screen and painted where the pipeline left them.
class GstMediaBackend : public MediaBackend
{
    Q_OBJECT

public:
    explicit GstMediaBackend(QObject *parent = nullptr);
    ~GstMediaBackend() override;

    void play(const QString &uri, uint startSecond) override;
    void pause() override;
    void resume() override;
    void stop() override;
    void seek(MediaTime position, SeekPrecision precision) override;
    void beginScrub() override;
    void endScrub() override;
    void setVolume(qreal volume) override;
    void setRate(qreal rate) override;
    void selectAudioTrack(const QString &id) override;
    void selectSubtitleTrack(const QString &id) override;
    void setSubtitleDelay(MediaTime delay) override;
    void setLoop(const std::optional<MediaSection> &section) override;
    void setOutput(const QSize &size, bool fill, int rotation) override;
    void setPlanesWanted(bool wanted) override;
    [[nodiscard]] MediaTime position() const override { return m_position; }
    [[nodiscard]] MediaTime heading() const override { return m_seekTarget.value_or(m_position); }
    [[nodiscard]] VideoFrame frame() const override { return m_frame; }
    [[nodiscard]] bool isSeekable() const override { return m_seekable; }
    [[nodiscard]] qreal volume() const override { return m_volume; }
    [[nodiscard]] qreal rate() const override { return m_rate; }
    [[nodiscard]] QList<MediaTrack> audioTracks() const override { return m_sounds; }
    [[nodiscard]] QList<MediaTrack> subtitleTracks() const override;
    [[nodiscard]] QString audioTrack() const override { return m_sound; }
    [[nodiscard]] QString subtitleTrack() const override;
    [[nodiscard]] QList<SubtitleText> subtitles() const override;
    [[nodiscard]] MediaTime subtitleDelay() const override;
    [[nodiscard]] QList<MediaChapter> chapters() const override { return m_chapters; }
    [[nodiscard]] std::optional<MediaSection> loop() const override { return m_loop.section(); }

private:
    // The session's signals come from the control thread; those of one that was ended meanwhile are dropped.
    template <typename Signal, typename Action>
    void on(PlaybackSession *session, Signal signal, Action action)
    {
        connect(
            session, signal, this,
            [this, action, number = m_sessionNumber](auto... values) {
                if (number == m_sessionNumber)
                    action(values...);
            },
            Qt::QueuedConnection);
    }
    void connectSession(PlaybackSession *session);
    void connectTracks(PlaybackSession *session);
    void beginTracks();
    [[nodiscard]] QString languageOfSound() const;
    void announceTracks();
    void followPosition();
    void endLoopOutside(MediaTime position);
    void command(std::function<void(PlaybackSession *)> action);
    void endSession();
    void sendOutput();
    void fetchFrame();
    void showStill(const QImage &still);
    void arrivePaused(MediaTime position);
    [[nodiscard]] MediaTime settled(MediaTime position) const;
    void leave();
    void hangCheck();

    std::unique_ptr<ControlThread> m_control; // of the present video
    std::vector<std::unique_ptr<ControlThread>> m_retired; // closing the ones before
    std::shared_ptr<FrameSlot> m_slot;
    PlaybackSession *m_session = nullptr; // lives on the control thread
    int m_sessionNumber = 0; // what belongs to an older session is dropped
    PauseKeeper m_keeper;
    VideoFrame m_frame;
    QTimer m_openingTimer;
    SubtitleDesk *m_subtitles;
    QList<MediaTrack> m_sounds;
    QList<MediaChapter> m_chapters;
    QString m_sound;
    LoopSection m_loop;
    double m_framesPerSecond = 0; // 0: unknown
    bool m_tracksAnnounced = false;
    MediaTime m_position{0};
    MediaTime m_start{0};
    std::optional<MediaTime> m_seekTarget;
    QSize m_outputSize;
    int m_rotation = 0;
    qreal m_volume = 1;
    qreal m_rate = 1;
    bool m_fill = false;
    bool m_planesWanted = false;
    bool m_opened = false;
    bool m_seekable = false;
    bool m_hasPicture = false;
};
