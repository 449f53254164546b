// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "avlorenderer.h"
#include "mediatracks.h"
#include "subtitles/subtitlecue.h"
#include "videoframe.h"

#include <QList>
#include <QObject>
#include <QSize>
#include <QString>

#include <optional>

// What plays: commands in, notifications out. Lives on the GUI thread; no command blocks, every notification
// comes through the event loop and never from inside a command. A command that cannot be carried out yet is
// kept: a pause or a seek that is asked for before the first frame stands is applied when it does.
class MediaBackend : public QObject
{
    Q_OBJECT

public:
    using State = AvloRenderer::State;
    enum class SeekPrecision {
        KeyFrame, // the nearest key frame, at once: while a finger drags
        Exact, // the very frame
    };

    explicit MediaBackend(QObject *parent = nullptr);
    ~MediaBackend() override;

    // Replaces what was played before. Transitioning until the frame at the start stands, then Playing.
    // `startSecond` where a pause left that address (see ExactPositions) means the very frame of that pause.
    virtual void play(const QString &uri, uint startSecond) = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    virtual void stop() = 0;
    // Clamped to the video. While another seek is under way the newest one wins.
    virtual void seek(MediaTime position, SeekPrecision precision) = 0;
    // A finger is put on the time line, and lifted. In between playing waits, in silence, while the state
    // stays what it was and no paused() is told; a seek shows its key frame at once, and where the finger
    // rests the exact frame follows. endScrub() goes to the exact frame of the newest seek and on from there:
    // playing, or paused() there. A pause(), stop() or play() meanwhile ends the scrub by itself.
    virtual void beginScrub();
    virtual void endScrub();
    [[nodiscard]] bool isScrubbing() const { return m_scrubbing; }
    virtual void setVolume(qreal volume) = 0; // 0 to 1, as heard (cubic)
    // 0.25 to 4, the sound at its own pitch; holds until the next play(), which begins at 1.
    virtual void setRate(qreal rate);
    // The sound track, the subtitle track (empty: none); an unknown id is not obeyed. Subtitles are laid out
    // `scale` times as large as usual (0.5 to 3) and come `delay` later than the file says (negative:
    // earlier).
    virtual void selectAudioTrack(const QString &id);
    virtual void selectSubtitleTrack(const QString &id);
    virtual void setSubtitleScale(qreal scale);
    virtual void setSubtitleDelay(MediaTime delay);
    // Nothing: no loop. A seek out of the section ends the loop.
    virtual void setLoop(const std::optional<MediaSection> &section);
    // Where the frames are painted, in device pixels, and whether they cover it (cropped) or fit in it.
    // `rotation` is that of the painted item on the device, clockwise: 0, 90, 180 or 270; frames come turned
    // by it.
    virtual void setOutput(const QSize &size, bool fill, int rotation) = 0;
    // Whether frames may come as the planes of the decoder (VideoFrame::planes), which whoever asked draws by
    // a shader.
    virtual void setPlanesWanted(bool wanted);

    // On every pause, and on every seek that ends while paused, the shown frame is written as an image file.
    void setStillOnPause(bool on) { m_stillOnPause = on; }
    [[nodiscard]] bool stillOnPause() const { return m_stillOnPause; }

    [[nodiscard]] State state() const { return m_state; }
    // The address as it was given to play().
    [[nodiscard]] QString uri() const { return m_uri; }
    // The time of the frame that is shown; after stop() and at the end that of the last one.
    [[nodiscard]] virtual MediaTime position() const = 0;
    // Where playing will go on: the target of a seek under way, else position().
    [[nodiscard]] virtual MediaTime heading() const = 0;
    [[nodiscard]] MediaTime duration() const { return m_duration; } // 0: unknown
    [[nodiscard]] virtual VideoFrame frame() const = 0; // null: no picture
    [[nodiscard]] virtual bool isSeekable() const { return true; }
    [[nodiscard]] virtual qreal volume() const = 0;
    [[nodiscard]] virtual qreal rate() const { return 1; }
    // Known from tracksChanged() on.
    [[nodiscard]] virtual QList<MediaTrack> audioTracks() const { return {}; }
    [[nodiscard]] virtual QList<MediaTrack> subtitleTracks() const { return {}; }
    [[nodiscard]] virtual QString audioTrack() const
    {
        return {};
    } // of those that of the sound that is heard
    [[nodiscard]] virtual QString subtitleTrack() const { return {}; }
    // What of it is to be read at position().
    [[nodiscard]] virtual QList<SubtitleText> subtitles() const { return {}; }
    [[nodiscard]] qreal subtitleScale() const { return m_subtitleScale; }
    [[nodiscard]] virtual MediaTime subtitleDelay() const { return MediaTime::zero(); }
    [[nodiscard]] virtual QList<MediaChapter> chapters() const { return {}; }
    [[nodiscard]] virtual std::optional<MediaSection> loop() const { return {}; }
    // Counts the calls of play(), so that a late answer can be told from one for the present video.
    [[nodiscard]] int generation() const { return m_generation; }

Q_SIGNALS:
    // Another video: play() was called. What was chosen for the one before holds no more.
    void begun();
    void stateChanged(AvloRenderer::State state);
    // Paused, and the place is final: after a pause, or after a seek that ended while paused. Follows
    // stillWritten().
    void paused();
    void endReached(); // after stateChanged(Stopped)
    void failed(AvloError error); // followed by stateChanged(Stopped)
    void complained(AvloError error); // something is missing, and the rest plays on
    void bufferingChanged(float percent);
    void durationChanged();
    // The picture's size in pixels as it should be seen; an empty size: no picture.
    void videoSizeChanged(QSize size);
    void frameChanged();
    void seekFinished();
    void volumeChanged(qreal volume);
    void rateChanged(qreal rate);
    // The tracks, the choice among them, or the chapters.
    void tracksChanged();
    void loopChanged();
    void subtitlesChanged(); // what is to be read, or its size
    void stillWritten(QString uri, QString path);
    // Nothing can be played with this object any more.
    void lost();

protected:
    void beginMedia(const QString &uri);
    void setState(State state);
    void setDuration(MediaTime duration);
    void setScrubbing(bool on) { m_scrubbing = on; }

private:
    QString m_uri;
    MediaTime m_duration{0};
    State m_state = AvloRenderer::Stopped;
    int m_generation = 0;
    qreal m_subtitleScale = 1;
    bool m_stillOnPause = false;
    bool m_scrubbing = false;
};
