// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "activationtoken.h"
#include "applicationmenu.h"
#include "applicationwindow.h"
#include "scenemanager.h"
#include "sceneturn.h"
#include "textfocus.h"
#include "windowgeometry.h"
#include "windowinput.h"
#include "windowpresence.h"

#include <QGraphicsScene>
#include <QPointer>
#include <QScreen>

namespace toolkit {

class ApplicationWindow::Private
{
public:
    explicit Private(ApplicationWindow *window)
        : q(window),
          textFocus(&scene),
          presence(window),
          input(window)
    {
    }

    [[nodiscard]] QSize screenSize() const;
    [[nodiscard]] Profile automaticProfile() const;
    // The angle that the scene is shown at: the wanted one, but upright on the screen while a text field has
    // the focus, since an on-screen keyboard stands upright on it.
    [[nodiscard]] int shownAngle() const;
    void relayout();
    void turnScene(Transition transition);
    void place(qreal rotation);
    void followScreen();
    void followScale();
    void takeScaleOfScreen(qreal before);
    void firstSize();
    void activationChanged();
    void installViewport();
    void leaveOpenGl(const QString &reason);
    void makeNativeWindowAnew();

    ApplicationWindow *q;
    QGraphicsScene scene;
    TextFocus textFocus;
    SceneTurn turn;
    WindowPresence presence;
    std::unique_ptr<SceneManager> manager;
    QPointer<QScreen> followedScreen;
    qreal followedScale = 0; // device pixels per pixel of the screen; 0: none known yet
    WindowInput input;
    ToolbarView toolbarView = ToolbarView::Default;
    QPointer<ApplicationMenu> menu;
    QString styleName;
    ActivationToken activation;
    WindowGeometry geometry;
    Profile profile = Profile::Desktop;
    bool profileIsChosen = false;
    int angle = 270;
    bool locked = false;
    bool fullScreenWanted = false; // on the desktop, by the user
    bool wasShown = false;
    bool pageActive = false;
};

} // namespace toolkit
