// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"
#include "platform/toolkit/widget.h"

#include <QModelIndex>
#include <QPointF>
#include <QString>

#include <memory>

class AllVideosModel;
class EditManager;
class FileManager;
class FilteredModel;
class FilterWidget;
class LocalVideoItemCreator;
class QActionGroup;
class QKeyEvent;
class QTimer;

namespace toolkit {
class Action;
class ImageWidget;
class Label;
class Layout;
class LinearLayoutPolicy;
class List;
class ObjectMenu;
class PannableViewport;
class Spinner;
} // namespace toolkit

// The body of the library page: the list of videos, the text that stands there when the list is empty, and
// the filter field, which the page places above, and the menu of a video. Turns taps, long taps and typing
// into requests.
class MyAllVideosWidget : public toolkit::Widget
{
    Q_OBJECT

public:
    enum ViewState { Unknown = 0, EmptyCollection = 1, NoResults = 2, ListShown = 3, Unreachable = 4 };

    explicit MyAllVideosWidget(QGraphicsItem *parent = nullptr);
    ~MyAllVideosWidget() override;

    // Empties and hides the filter field.
    void resetFilter();
    void keyEvent(QKeyEvent *event);
    // A key that nothing on the page took; true when it was one of the widget's: find, escape from the
    // filter, and those of the list while the list has not the focus.
    [[nodiscard]] bool takeKey(QKeyEvent *event);
    // The file at this address is being deleted: its row goes at once.
    void hideDeletedFile(const QString &url);
    // The object menu, the title editor's sheet and the question whether to delete go away, unanswered.
    void closeDialogs();
    [[nodiscard]] FilterWidget *filterWidget() const { return m_filter; }

    // Off while a video plays.
    void setAutoUpdate(bool on) { m_autoUpdate = on; }
    [[nodiscard]] bool autoUpdate() const { return m_autoUpdate; }
    // The last request to play was turned down because of a call.
    void setCallRefused(bool refused) { m_callRefused = refused; }
    [[nodiscard]] bool isCallRefused() const { return m_callRefused; }

    [[nodiscard]] int viewState() const { return m_viewState; }
    // The store reads the video folders: an empty collection says how far it has come.
    void setScanProgress(bool scanning, uint seen, uint done);
    // The store does not answer: before any list was loaded, this and not an empty collection is told.
    void setLibraryReachable(bool reachable);
    [[nodiscard]] bool hasLoaded() const { return m_hasLoaded; }
    [[nodiscard]] toolkit::List *list() const { return m_list; }
    [[nodiscard]] AllVideosModel *model() const { return m_model; }
    [[nodiscard]] FilteredModel *proxy() const { return m_proxy; }
    [[nodiscard]] toolkit::ObjectMenu *objectMenu() const { return m_objectMenu; }
    // Null until the first use.
    [[nodiscard]] EditManager *editManager() const { return m_editManager; }
    [[nodiscard]] FileManager *fileManager() const { return m_fileManager.get(); }

Q_SIGNALS:
    void playVideo(VideoInfo &info);
    void notify(QString message);
    void shareVideo(QString filePath);
    void detailsActionClicked(QString urn);
    // The filter field is to be shown, holding `firstChar` when that is not empty, or hidden.
    void showTextEdit(QString firstChar, bool show);
    void contentVisible(bool visible);

public Q_SLOTS:
    void itemClicked(const QModelIndex &index);
    void itemLongTapped(const QModelIndex &index, const QPointF &pos);
    void deleteVideoAction();
    void detailsVideoAction();
    void shareVideoAction();
    void editVideoAction();
    void goingBack();
    void mmcStateChanged(bool mounted);
    void modelRowCountChanged();
    void deleteDone(bool deleteItem);
    void liveFilteringTextChanged();
    void liveFilteringClearClicked();
    void liveFilteringFocusChanged();
    void filterTimeout();
    // The page was panned: pulling it down from its very top brings the filter field.
    void VKBFilter(const QPointF &pos);
    void videoListEntered();
    void panningStarted();
    void modelDataChanged(const QModelIndex &from, const QModelIndex &to);
    void blockPlay();
    void unblockPlay();

protected:
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void applyStyle() override;

private:
    void createList();
    void createEmptyState();
    void createFilterField();
    void connectThumbnails();
    void connectList();
    void connectWindow();
    void createObjectMenu();
    toolkit::Action *addMenuAction(const QString &name, void (MyAllVideosWidget::*slot)());
    void translateObjectMenu();
    void translateList();
    void translateEmptyState();
    void showListObjectMenu(const QPointF &pos);
    [[nodiscard]] static bool isOnThisMachine(const QModelIndex &index);
    // As if it had been chosen from the menu of that video.
    void actOn(const QModelIndex &index, void (MyAllVideosWidget::*action)());
    [[nodiscard]] bool isEditSheetDisplayed() const;

    void setViewState(int state);
    void showList();
    void showLabel();
    void placeSpacer(bool shown);
    // The state that the rows, the filter field and its text ask for.
    void chooseViewState();
    // Whether rows are still being sorted or searched; the state is chosen when they are not any more.
    [[nodiscard]] bool awaitsRows();
    void rowsArranged();
    [[nodiscard]] bool isFilterShown() const;
    [[nodiscard]] bool isFilterIdle() const; // hidden or empty
    [[nodiscard]] QString textBelow() const;
    void showEmptyState();
    void placeEmptyState();
    void refillCells();
    void focusList();
    [[nodiscard]] bool canFilter() const;

    toolkit::List *m_list = nullptr;
    toolkit::Label *m_emptyLabel = nullptr;
    toolkit::ImageWidget *m_emptyMark = nullptr; // above the text
    toolkit::Label *m_scanLabel = nullptr; // below it
    toolkit::Spinner *m_waitingRing = nullptr; // while the first list is long in coming
    toolkit::Widget *m_spacer = nullptr;
    FilterWidget *m_filter = nullptr;
    toolkit::Layout *m_layout = nullptr;
    toolkit::LinearLayoutPolicy *m_policy = nullptr;
    AllVideosModel *m_model = nullptr;
    FilteredModel *m_proxy = nullptr;
    LocalVideoItemCreator *m_cellCreator = nullptr;
    QTimer *m_filterTimer = nullptr;
    toolkit::ObjectMenu *m_objectMenu = nullptr;
    QActionGroup *m_menuActions = nullptr;
    EditManager *m_editManager = nullptr;
    std::unique_ptr<FileManager> m_fileManager;
    int m_viewState = Unknown;
    bool m_stateIsDue = false; // once the rows stand
    bool m_hasLoaded = false; // a list, be it an empty one
    bool m_isReachable = true;
    uint m_scanSeen = 0; // files in the folders, as far as is known; 0 while none are read
    uint m_scanDone = 0;
    QString m_menuUrn; // of the video whose menu was opened last
    QString m_pendingDeleteUrl; // of the video that is being deleted
    QString m_pendingDeleteUrn;
    QString m_savedFilterText; // kept while the memory card is away
    bool m_mmcAvailable;
    bool m_playBlocked = false;
    QPointF m_lastPanPosition;
    bool m_autoUpdate = true;
    bool m_callRefused = false;
    toolkit::PannableViewport *m_viewport = nullptr; // the nearest around, once the list was shown
};
