// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <data/videoinfo.h>
#include <platform/media/avlorenderer.h>
#include <platform/media/videowidget.h>

#include <QHash>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

class BacklightControl;
class CallMonitor;
class ContextProperty;
class PositionJournal;
class QTimer;
class RendererRegistry;
class ThumbnailHelper;
class TrackerInterface;

// Drives playback: starts and stops the renderer behind the page's video widget, turns what it reports into
// signals, saves the place in the store and the still of the stopped frame, and follows the TV route, the
// locks and the display.
class PlayerController : public QObject
{
    Q_OBJECT

public:
    // What a playback does by itself on reaching `Playing`.
    enum PendingAction { StopWhenPlaying = 0, PauseWhenPlaying = 2, NoAction = 100 };

    // Happenings that move the buffer icon and the widget's busy state.
    enum Event {
        PlayRequested = 0,
        PlayingReached = 1,
        ErrorHappened = 2,
        TransitionBegan = 3,
        TransitionEnded = 4,
        PageMinimized = 5,
        PageMaximized = 6,
        BackPressed = 7,
        BufferingBelowFull = 8,
        BufferingFull = 9,
        BackFromMassStorage = 10,
        BufferIconHidden = 11,
        PausedReached = 12,
    };

    // None of the collaborators is owned; `videoWidget` may be null.
    PlayerController(VideoWidget *videoWidget, RendererRegistry *registry, TrackerInterface *store,
                     ThumbnailHelper *thumbnails, QObject *parent);
    ~PlayerController() override;

    // Plays the video; its position becomes the last saved one when that is newer than the record.
    void play(VideoInfo &video);
    // The next play() begins where its record says, whatever was saved since.
    void forgetSavedPlace();
    // Where the current video is, as far as the widget knows, is saved unless that is what was saved last:
    // before another one takes its place, and wherever no answer of the renderer can be waited for. True when
    // it was saved. Nothing for what is not in the store.
    bool saveLastKnownPlace();
    // Not owned; null: none. From now on it notes where the video is while it plays, and what is saved is
    // saved by it.
    void setJournal(PositionJournal *journal);
    void handleEvent(int event);
    void displayStatusChanged(bool on);
    [[nodiscard]] bool isTvOut() const;
    void setXid(int windowId);

    void setStartMode(int mode) { m_startMode = mode; } // 1: from the saved position
    void setDisplayMode(int mode) { m_displayMode = mode; } // 0: fill
    void setPendingAction(int action) { m_pendingAction = action; }
    void setStopAtEnd(bool stop) { m_stopAtEnd = stop; }
    void setPauseWhenPlaying(bool pause) { m_pauseWhenPlaying = pause; }
    void setQlbOpen(bool open) { m_qlbOpen = open; }

    [[nodiscard]] AvloRenderer::State state() const { return m_state; }
    [[nodiscard]] bool isDisplayOff() const { return m_displayOff; }
    [[nodiscard]] bool isDeviceLocked() const { return m_deviceLocked; }
    [[nodiscard]] bool stopAtEnd() const { return m_stopAtEnd; }
    [[nodiscard]] bool suppressBusyOff() const { return m_suppressBusyOff; }
    [[nodiscard]] bool hasPicture() const { return m_hasPicture; }
    // resume() was called, and it does not play yet; pause(), and it still does.
    [[nodiscard]] bool isResuming() const { return m_resuming; }
    [[nodiscard]] bool isPausing() const { return m_pausing; }
    // Goes on when the pause that is on its way has arrived, unless something else is asked for before.
    void resumeWhenPaused() { m_resumeWhenPaused = m_pausing; }
    // The record last given to play(), with the place saved since.
    [[nodiscard]] const VideoInfo &currentVideo() const { return m_video; }
    // The current video as it was last saved; the current record until that has happened once.
    [[nodiscard]] const VideoInfo &lastVideo() const { return m_currentSaved ? m_lastSavedVideo : m_video; }

    void resetIndicatorFlags();
    void setControlsVisible(bool visible);

Q_SIGNALS:
    void error(QString message);
    void positionSaved();
    void deleteBufferIconStatusLabel();
    void pauseThumbnailUpdated();
    void rendererError(QString message);
    void isIndexedByTracker(bool indexed);
    void buffering(float percent);
    void playbackEnded();
    void playbackIsStarted();
    void showBufferIconRequested();
    void hideBufferIconRequested();
    void criticalError();
    void deviceDisplayStatusOff();

public Q_SLOTS:
    void resume();
    void pause();
    void stop();
    void togglePause();
    void deviceLockStatusChanged(bool locked);
    void disableOutputRectangle();
    void tvOutvalueChanged();
    void savePosition(uint position);
    void paused();
    void fetchRenderer();
    void removeRenderer(QString uuid, QString name);
    void rendererStateChanged(AvloRenderer::State state);
    void handleMetadataChange(QString metadata, QList<QVariant> values);
    void error(AvloError e);
    void endReached();

private:
    void playingReached();
    void actOnPendingAction();
    void pauseUnlessWatched();
    [[nodiscard]] bool isPlayingPicture() const;
    void setBacklight(int mode);
    void indicatePlayRequest();
    void indicatePlaying();
    void indicateError();
    void indicateTransition();
    void indicateTransitionEnd();
    void indicateMinimized();
    void indicateMaximized();
    void indicateBack();
    void indicateBuffering();
    void indicateBuffered();
    void indicateMassStorageEnd();
    void indicateIconHidden();
    void indicatePause();
    void setBusy(bool busy);
    void setBusyOff();
    void showBufferIcon();
    CallMonitor *callMonitor();
    void removePauseThumbnail();
    [[nodiscard]] std::optional<uint> lastKnownPosition() const;
    [[nodiscard]] std::optional<quint32> unreadPlace(const QString &urn) const;
    void takeDuration();
    void followPlace();
    void forgetPlace();
    void forgetCommand();
    void notePlace();
    void takeNews(const QList<QStringList> &rows);

    QPointer<VideoWidget> m_videoWidget;
    RendererRegistry *m_registry;
    QPointer<AvloRenderer> m_renderer;
    bool m_rendererAvailable = false;
    bool m_playPending = false;
    VideoInfo m_video;
    VideoInfo m_lastSavedVideo;
    TrackerInterface *m_store;
    AvloRenderer::State m_state = AvloRenderer::Stopped;
    QString m_pauseThumbnailUri;
    int m_pendingAction = NoAction;
    int m_startMode = 1;
    int m_displayMode = 1;
    ContextProperty *m_videoRoute;
    std::unique_ptr<BacklightControl> m_backlight;
    CallMonitor *m_callMonitor = nullptr;
    ThumbnailHelper *m_thumbnails;
    bool m_deviceLocked = false;
    bool m_displayOff = false;
    bool m_positionFinal = false;
    bool m_stopAtEnd = false;
    bool m_indicatorShown = false;
    bool m_minimized = false;
    bool m_held = false;
    bool m_transitioning = false;
    bool m_suppressBusyOff = false;
    bool m_pauseWhenPlaying = false;
    bool m_hasPicture = false;
    int m_lastEvent = PlayRequested;
    bool m_qlbOpen = false;
    bool m_currentSaved = false; // m_lastSavedVideo is the current video's
    bool m_placeKnown = false; // what the widget tells is where the current video was left
    bool m_placeAskedFor = false; // by whoever asks for the next video
    bool m_resuming = false;
    bool m_pausing = false;
    bool m_resumeWhenPaused = false;
    QHash<QString, quint32> m_savedPlaces; // by this controller, by URN
    QPointer<PositionJournal> m_journal;
    QTimer *m_noteTimer;
};
