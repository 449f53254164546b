// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "busrelay.h"
#include "kepterrors.h"
#include "playbackfaults.h"
#include "playbackpipeline.h"
#include "playbackseeks.h"
#include "ratechanger.h"
#include "seeklanding.h"
#include "tracklist.h"
#include "streamwatch.h"
#include "videosink.h"

#include <platform/media/avlorenderer.h>
#include <platform/media/videoframe.h>

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>

class SubtitleTap;

// One video in one pipeline. Lives on the control thread, where a state change or a seek may wait for a disk
// or a network; whoever owns it calls its functions there and hears its signals through the event loop.
class PlaybackSession : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QString uri; // as it was given
        MediaTime start{0};
        VideoOutput output;
        double volume = 1;
        double rate = 1;
        QString sound; // the track; empty: by `languages`
        QStringList languages; // of the user
        std::shared_ptr<SubtitleTap> subtitles; // reads them, whichever are shown
    };

    PlaybackSession(const Request &request, VideoSink::Arrived frameArrived);
    ~PlaybackSession() override;

    void start();
    // Playing, or paused on a frame. Asked for before the first frame stands, it holds for then.
    void setPlaying(bool playing);
    void seek(MediaTime position, bool exact);
    // In between playing waits and no state is told.
    void beginScrub();
    void endScrub();
    void setVolume(double volume);
    void setRate(double rate);
    void selectSound(const QString &id);
    void setOutput(const VideoOutput &output);
    void shutDown();

Q_SIGNALS:
    void opened(QSize picture, MediaTime duration, bool seekable);
    void durationFound(MediaTime duration);
    void positionFound(MediaTime position); // while there is no picture
    void playing();
    // On a frame that stays; also after a seek that ended while paused.
    void paused(MediaTime position);
    void seekFinished(bool exact);
    void soundsFound(QList<MediaTrack> tracks, QString heard, double framesPerSecond);
    void chaptersFound(QList<MediaChapter> chapters);
    void buffering(int percent);
    void flowing(); // data came, of which nothing can be shown yet
    void complained(int code, QString text); // something is missing; it plays on
    void ended();
    void failed(int code, QString text);

private:
    enum class Phase { Opening, FindingStart, Ready, Over };
    // The end of what comes at its own time may be lost on the way, and is set by the clock where a server is
    // gone.
    static constexpr std::chrono::seconds EndMargin{3};

    [[nodiscard]] bool build();
    void handleMessage(GstMessage *message);
    void handleError(GstMessage *message);
    [[nodiscard]] bool opensSilently(int code);
    void handleTracks(GstMessage *message);
    [[nodiscard]] bool chooseSound();
    void tellFileChapters();
    void tellSounds();
    void handleBuffering(GstMessage *message);
    void seekDone(bool exact);
    void firstPreroll();
    void becomeReady();
    void applyState();
    void watchStream();
    void waitLessLong();
    void settle();
    void restart(bool withoutAudioDevice);
    void end();
    void fail(int code, const QString &text);
    [[nodiscard]] std::optional<MediaTime> timeLeft() const;
    [[nodiscard]] MediaTime currentPosition() const;
    [[nodiscard]] bool hasPicture() const { return !m_videoSink->pictureSize().isEmpty(); }
    [[nodiscard]] FaultContext context() const;

    Request m_request;
    VideoSink::Arrived m_frameArrived;
    RateChanger m_rateChanger;
    TrackList m_tracks;
    std::unique_ptr<VideoSink> m_videoSink;
    SeekLanding m_landing;
    PlaybackPipeline m_pipeline;
    BusRelay m_messages;
    PlaybackSeeks m_seeks;
    PlaybackFaults m_faults;
    KeptErrors m_keptErrors;
    QTimer m_positionTimer;
    QTimer m_pauseLook; // while a pause is under way
    QTimer m_watchdog; // of a file
    StreamWatch m_streamWatch; // of anything else
    MediaTime m_duration{0};
    Phase m_phase = Phase::Opening;
    bool m_seekable = false;
    bool m_live = false;
    bool m_isPlaylist = false; // a file that lists other addresses
    bool m_wantsPlaying = true;
    bool m_scrubbing = false;
    bool m_bufferFull = true;
    bool m_settled = false; // playing() or paused() was said for what is wanted now
    bool m_withoutAudioDevice = false;
    bool m_didNotOpenWithSound = false;
};
