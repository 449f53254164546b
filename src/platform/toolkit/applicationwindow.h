// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsView>
#include <QString>

#include <memory>

namespace toolkit {

class ApplicationPage;
class SceneManager;
struct ActivationToken;

// The program's window over one scene. Two profiles: handset (full screen; the scene turns between portrait
// and landscape relative to the screen's natural orientation) and desktop (a normal window, first 480 x 854;
// nothing turns by itself, pages are laid out for the window's shape). Logical sizes are those of a screen
// 480 wide in portrait.
class ApplicationWindow : public QGraphicsView
{
    Q_OBJECT

public:
    enum class Profile { Handset, Desktop };
    enum class Transition { Immediate, Animated };
    enum class ToolbarView { Default, Tab };

    explicit ApplicationWindow(QWidget *parent = nullptr);
    ~ApplicationWindow() override;

    // The window that was made last and still exists; null without one.
    [[nodiscard]] static ApplicationWindow *current();

    void setStyleName(const QString &styleName);
    [[nodiscard]] QString styleName() const;
    [[nodiscard]] Profile profile() const;
    // From the settings; automatic otherwise. KESTREL_PROFILE=handset|desktop wins over both.
    void setProfile(Profile profile);

    // 0 is the device's natural landscape, 270 portrait. Recorded also where nothing turns. Every start of a
    // change has a finish. While a text field has the focus, a handset's scene stands upright on the screen,
    // as its on-screen keyboard does; it turns to the recorded angle when the focus goes.
    void setOrientationAngle(int degrees, Transition transition = Transition::Animated);
    [[nodiscard]] int orientationAngle() const;
    void setPortraitOrientation();
    void setLandscapeOrientation();
    void lockOrientationAngle();
    void unlockOrientationAngle();
    [[nodiscard]] bool isOrientationAngleLocked() const;
    // Between the start and the finish of a change.
    [[nodiscard]] bool isTurning() const;
    // The shape that pages are laid out for.
    [[nodiscard]] Qt::Orientation orientation() const;
    // The scene's size in logical pixels, turned.
    [[nodiscard]] QSizeF logicalSize() const;

    [[nodiscard]] bool isInSwitcher() const;
    [[nodiscard]] bool isOnDisplay() const;
    [[nodiscard]] SceneManager *sceneManager() const;
    void setToolbarView(ToolbarView view);
    [[nodiscard]] ToolbarView toolbarView() const;
    void setGlobalAlpha(qreal alpha);
    [[nodiscard]] WId effectiveWindowId() const;

    // Shows a state of the profile: full screen on a handset, a normal window on the desktop.
    void showForProfile();
    // Also what the two of QWidget do here: only the person takes the window of a desktop to full screen.
    void showNormal() { showForProfile(); }
    void showFullScreen();
    void setFullScreen(bool fullScreen); // on the desktop
    void raiseToFront(); // shows, raises, activates
    // The right to the focus that the next raiseToFront() uses.
    void setActivation(const ActivationToken &token);

    // The application menu of the page on top.
    void openMenu();
    void closeMenu();
    [[nodiscard]] bool isMenuOpen() const;

Q_SIGNALS:
    void displayEntered();
    void displayExited();
    void switcherEntered();
    void switcherExited();
    void orientationChangeStarted();
    void orientationChangeFinished();
    void orientationChanged(Qt::Orientation orientation);
    void pageChanged(toolkit::ApplicationPage *page);
    // OpenGL was lost: viewport() is another widget.
    void viewportReplaced();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void setupViewport(QWidget *viewport) override;
    void paintEvent(QPaintEvent *event) override;
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit
