// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/avlorenderer.h>
#include <platform/media/videowidget.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/label.h>

#include <QPointer>

#include <memory>
#include <optional>

class EditManager;
class FileManager;
class NavigationBarWidget;
class PlayerController;
class PlayerOverlay;
class QKeyEvent;
class QTimer;
class SaveAsManager;
class WindowEventListener;

namespace toolkit {
class Spinner;
} // namespace toolkit

// The page on which a video plays. Forwards what the person wants to the player controller and shows what the
// controller tells. Leaving it takes three steps: the page asks to be left (goBack()), playback pauses, and
// when the place in the video is saved, or after two seconds, savingReady() follows.
class PlayerPage : public toolkit::ApplicationPage
{
    Q_OBJECT

public:
    enum BackButtonType {
        NormalBackButton = 0,
        TvMainViewBackButton = 1, // opened from outside: leaving it ends the program
    };
    enum ToolbarType { DefaultToolbar = 0 };

    // Takes `videoWidget` over; the controller, which plays on it, is not owned and may be null.
    PlayerPage(VideoWidget *videoWidget, PlayerController *controller, QGraphicsItem *parent = nullptr);
    ~PlayerPage() override;

    void setToolbarType(ToolbarType type);
    void setBackButtonType(BackButtonType type);
    [[nodiscard]] BackButtonType backButtonType() const { return m_backButtonType; }
    // False where the video lies on a file system that is made up by a program.
    [[nodiscard]] bool saveAllowed() const;
    bool event(QEvent *event) override;
    void setControlsEnabled(bool on);
    void setToolbarVisible(bool visible);

    [[nodiscard]] VideoWidget *videoWidget() const { return m_videoWidget; }
    [[nodiscard]] NavigationBarWidget *navigationBar() const;
    [[nodiscard]] bool offersMenu() const override;
    [[nodiscard]] QList<QRectF> touchAreas() const override;
    void requestMenu() override;
    // The place in the video that was last left is saved, or was given up.
    [[nodiscard]] bool isSavingDone() const { return m_savingDone; }
    // The person agreed that the file goes, and it is on its way.
    [[nodiscard]] bool isDeleting() const;
    // Back on the page from one that covered it: what played before plays again.
    void resetSavedState();
    // Dismisses the menu and the dialogs of the page without their results; nothing is left that one would
    // have resumed.
    void closeDialogs();

Q_SIGNALS:
    void goBack();
    void showDetailsPage();
    void savingReady();
    void playerError(QString message);
    void deleteFile(QString filePath);
    void shareVideo(QString fileUrl);
    void notify(QString notification);

public Q_SLOTS:
    void enableIndexedActions(bool enabled);
    void pageMinimized();
    void pageMaximized();
    void keyEvent(QKeyEvent *eventData);
    void controlsVisibilityChanged(bool visible);
    void massStorageModeChanged(bool mounted);
    void returnFromMassStorageMode();
    void preUnmount();
    void deleteCurrent();
    void deleteDone(bool done);
    void prepareDeletion();
    void playTimeSaved();
    void showBufferIcon();
    void backButton();
    void hideBufferIcon();
    void deleteBufferStatusLabel();
    void shareActionTriggered();
    void editCurrent();
    void editOrSaveAsDone();
    void backButtonError();
    void saveCurrentState();
    void handleInfoButtonClick();
    void buffering(float status);
    void playerPageNotOnTop();
    void playerPageOnTop();
    void handleMenuClick();
    void playbackEnded();
    void playbackEndedByError();
    void shutdown();
    void playbackIsStarted();
    void handleBackButton();
    void saveAsCurrent();
    void qlbOpened(bool open);

protected:
    void createContent() override;
    void connectNotify(const QMetaMethod &signal) override;
    void disconnectNotify(const QMetaMethod &signal) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    // The type of the file system that `path`, in the bytes of the disk, lies on (of statfs); none when it
    // cannot be told.
    [[nodiscard]] virtual std::optional<quint32> fileSystemType(const QByteArray &path) const;

private:
    friend struct PlayerPageProbe;

    [[nodiscard]] bool hasController(const char *function) const;
    // The current video's place is kept: it is in the store, or on the card.
    [[nodiscard]] bool hasPlaceToSave() const;
    // Also about to, after a pause.
    [[nodiscard]] bool isPlaying() const;
    [[nodiscard]] bool isInSwitcher() const;
    void connectController();
    void connectWindow();
    void connectRenderer();
    void rendererStateChanged(AvloRenderer::State state);
    void pauseAndRemember();
    void addMenuAction(const QString &name, void (PlayerPage::*slot)());
    void removeMenuActions();
    void createStoredActions();
    void createSaveAsAction();
    void translateActions();
    // False when one of the page's dialogs is open, or on its way.
    [[nodiscard]] bool beginDialog(const char *function);
    void refuseDialog(const char *function);
    void dialogNeverCame();
    void leaveDialogs();
    void leaveRemoval();
    [[nodiscard]] bool isDialogShown() const;
    [[nodiscard]] bool isDialogUp() const; // one that was only asked for is not
    void connectBuffering();
    void disconnectBuffering();
    void quitWhenSaved();
    // True when the program would have ended.
    bool keepRunning();
    void takeNews(const QList<QStringList> &rows);
    void setControlsAnswering(bool answer);
    void windowUnblocked();
    [[nodiscard]] bool isButtonFocused() const;
    // The person is there to see it.
    [[nodiscard]] bool mayGoOn() const;
    void showComponents(bool shown);
    void showTitle();
    void showWayOn();
    void updateInfoButton();
    void layOut();

    QPointer<VideoWidget> m_videoWidget;
    QPointer<PlayerController> m_controller;
    PlayerOverlay *m_overlay;
    std::unique_ptr<FileManager> m_fileManager; // made on first use, as the others
    EditManager *m_editManager = nullptr;
    SaveAsManager *m_saveAsManager = nullptr;
    QTimer *m_backGuardTimer;
    QTimer *m_dialogGuard; // a dialog that was asked for and does not come
    WindowEventListener *m_windowEvents;
    toolkit::Spinner *m_bufferSpinner;
    QPointer<toolkit::Label> m_bufferStatusLabel;
    AvloRenderer::State m_savedState = AvloRenderer::Stopped;
    bool m_dialogOpen = false;
    bool m_wasPlaying = false;
    bool m_shareOpened = false;
    bool m_minimized = false;
    bool m_savingDone = false;
    bool m_toolbarAllowed = false;
    bool m_endedHideControls = false;
    bool m_qlbOpen = false;
    QString m_deletePath; // the address of the video whose deletion was asked for
    BackButtonType m_backButtonType = NormalBackButton;
    ToolbarType m_toolbarType = DefaultToolbar;
};
