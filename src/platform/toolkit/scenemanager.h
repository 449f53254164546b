// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QEvent>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QSizeF>

#include <memory>

class QGraphicsWidget;

namespace toolkit {

class ApplicationPage;
class ApplicationWindow;
class Banner;
class Popup;

enum class Appearance { Normal, Immediate };

// Which page, and what over it, is on the screen. Pages that are covered are hidden. Appearing a page that is
// already in the history moves it to the top. Dismissing a page that is not on top only takes it out of the
// history.
class SceneManager : public QObject
{
    Q_OBJECT

public:
    explicit SceneManager(ApplicationWindow *window);
    ~SceneManager() override;

    void appearPage(ApplicationPage *page, Appearance appearance = Appearance::Normal);
    // The last page is never dismissed.
    void dismissPage(ApplicationPage *page, Appearance appearance = Appearance::Normal);
    [[nodiscard]] ApplicationPage *currentPage() const;
    [[nodiscard]] QList<ApplicationPage *> history() const;
    // Over everything, outside the history (the memory card's information page).
    void showOverlayPage(ApplicationPage *page);
    void hideOverlayPage(ApplicationPage *page);
    // One at a time, the newest wins; deleted when done.
    void showBanner(Banner *banner);
    // A transition is running; it can be interrupted by the next.
    [[nodiscard]] bool isInTransition() const;
    void finishTransition(); // at once

    // What is seen: the overlay page on top, or else the current page.
    [[nodiscard]] ApplicationPage *visiblePage() const;
    // The parent of everything in the scene, of the scene's size; turned and mirrored with it. Menus, sheets
    // and dialogs go in here with the z value of their layer.
    [[nodiscard]] QGraphicsWidget *root() const;
    enum Layer { PageLayer = 0, OverlayPageLayer = 1000, PopupLayer = 2000, BannerLayer = 3000 };

    // A menu, sheet or dialog calls block() before it shows and unblock() after it has sent its result: the
    // page on top is told with QEvent::WindowBlocked by the first and with QEvent::WindowUnblocked by the
    // last.
    void block();
    void unblock();
    [[nodiscard]] bool isBlocked() const;
    // A sheet or dialog while it is seen: in the root, of the scene's size, and the first to hear of escape.
    // It stays its owner's and leaves the scene with removePopup(), or when the window goes.
    void addPopup(Popup *popup);
    void removePopup(Popup *popup);
    // It covers another part of the scene.
    void popupChanged();

    // For the window.
    void setSceneSize(const QSizeF &size);
    void setOnDisplay(bool onDisplay);
    void sendToPage(QEvent::Type type);
    // False on a page that is on its way out: a second tap must not open things twice.
    [[nodiscard]] bool takesPress(const QPointF &scenePosition) const;
    void escape();

private:
    friend class ApplicationPage;
    void forget(ApplicationPage *page);

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit
