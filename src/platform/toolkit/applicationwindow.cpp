// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationwindow_p.h"

#include "accessibility.h"
#include "applicationpage.h"
#include "theme.h"
#include "windowframe.h"

#include <optional>
#include <utility>

namespace toolkit {

namespace {

constexpr int turnMilliseconds = 240;
constexpr QSize firstDesktopSize(480, 854);
constexpr int desktopFrame = 64; // height kept free for the window's title bar

QPointer<ApplicationWindow> theWindow;

std::optional<ApplicationWindow::Profile> profileOfEnvironment()
{
    const QByteArray name = qgetenv("KESTREL_PROFILE").toLower();
    if (name == "handset")
        return ApplicationWindow::Profile::Handset;
    if (name == "desktop")
        return ApplicationWindow::Profile::Desktop;
    return std::nullopt;
}

} // namespace

QSize ApplicationWindow::Private::screenSize() const
{
    return q->screen() != nullptr ? q->screen()->size() : firstDesktopSize;
}

ApplicationWindow::Profile ApplicationWindow::Private::automaticProfile() const
{
    return profileOfEnvironment().value_or(profileForScreen(screenSize()));
}

int ApplicationWindow::Private::shownAngle() const
{
    return profile == Profile::Handset && textFocus.isHeld() ? uprightAngle(screenSize()) : angle;
}

// Lays the pages out for the window's shape and the orientation, at once.
void ApplicationWindow::Private::relayout()
{
    const WindowGeometry before = geometry;
    geometry = windowGeometry(profile, screenSize(), q->size(), shownAngle());
    if (!turn.isRunning())
        turn.setRotation(geometry.rotation);
    else
        place(turn.rotation());
    if (geometry == before)
        return;
    scene.setSceneRect(QRectF(QPointF(), geometry.logicalSize));
    if (manager != nullptr)
        manager->setSceneSize(geometry.logicalSize);
    if (geometry.orientation() != before.orientation())
        Q_EMIT q->orientationChanged(geometry.orientation());
}

void ApplicationWindow::Private::turnScene(Transition transition)
{
    if (!turn.begin())
        return;
    relayout();
    if (geometry.rotation != qRound(turn.rotation())) {
        manager->finishTransition(); // one movement at a time
        input.cancel(); // what is under a finger that is down is another thing now
    }
    const bool seen = transition == Transition::Animated && q->isOnDisplay();
    turn.turnTo(geometry.rotation, seen ? Theme::instance()->motion(turnMilliseconds) : 0);
}

void ApplicationWindow::Private::place(qreal rotation)
{
    const QTransform transform = sceneTransform(geometry, q->size(), rotation);
    q->setTransform(QTransform(transform.m11(), transform.m12(), transform.m21(), transform.m22(), 0, 0));
    // The view puts the corner of its scene rectangle into its own corner: a vanishing rectangle at the point
    // that belongs there places the scene exactly, whatever its rotation.
    q->setSceneRect(QRectF(transform.inverted().map(QPointF()), QSizeF(1e-6, 1e-6)));
}

void ApplicationWindow::Private::followScreen()
{
    QScreen *screen = q->screen();
    if (screen != followedScreen) {
        if (followedScreen != nullptr)
            followedScreen->disconnect(q);
        followedScreen = screen;
        if (screen != nullptr)
            connect(screen, &QScreen::geometryChanged, q, [this] { followScreen(); });
        if (!profileIsChosen && profile != automaticProfile()) {
            profile = automaticProfile();
            if (q->isVisible())
                q->showForProfile();
        }
    }
    followScale();
    // A compositor that turns the screen tells how the device is held.
    if (profile == Profile::Handset && !locked)
        q->setOrientationAngle(uprightAngle(screenSize()), Transition::Immediate);
    relayout();
}

void ApplicationWindow::Private::firstSize()
{
    QSize size = firstDesktopSize;
    if (q->screen() != nullptr)
        size = size.boundedTo(q->screen()->availableSize() - QSize(0, desktopFrame))
                   .expandedTo(QSize(320, 320));
    q->resize(size);
}

// On a handset the program is left with the focus; on the desktop only when its window can no longer be seen.
void ApplicationWindow::Private::activationChanged()
{
    const bool active = presence.isOnDisplay() && (profile == Profile::Desktop || q->isActiveWindow());
    if (active == pageActive || presence.isBeingReplaced())
        return;
    pageActive = active;
    manager->sendToPage(active ? QEvent::WindowActivate : QEvent::WindowDeactivate);
}

ApplicationWindow::ApplicationWindow(QWidget *parent)
    : QGraphicsView(parent),
      d(std::make_unique<Private>(this))
{
    theWindow = this;
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setLayoutDirection(Qt::LeftToRight); // the pages mirror themselves, the view does not move
    setTransformationAnchor(NoAnchor);
    setResizeAnchor(NoAnchor);
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    setViewportUpdateMode(SmartViewportUpdate);
    setBackgroundBrush(Qt::black);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // drawBackground() or a page paints all of it
    d->installViewport();
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(240, 240);
    // Few items exist, and they move all the time.
    d->scene.setItemIndexMethod(QGraphicsScene::NoIndex);
    setScene(&d->scene);

    connect(&d->turn, &SceneTurn::rotationChanged, this, [this](qreal rotation) { d->place(rotation); });
    connect(&d->turn, &SceneTurn::started, this, &ApplicationWindow::orientationChangeStarted);
    connect(&d->turn, &SceneTurn::finished, this, &ApplicationWindow::orientationChangeFinished);
    connect(&d->textFocus, &TextFocus::changed, this, [this] {
        if (d->profile == Profile::Handset && d->angle != uprightAngle(d->screenSize()))
            d->turnScene(Transition::Animated);
    });
    d->manager = std::make_unique<SceneManager>(this);
    connect(&d->presence, &WindowPresence::onDisplayChanged, this, [this](bool on) {
        d->manager->setOnDisplay(on);
        if (on)
            Q_EMIT displayEntered();
        else
            Q_EMIT displayExited();
        d->activationChanged();
    });
    connect(&d->presence, &WindowPresence::inSwitcherChanged, this, [this](bool in) {
        if (in)
            Q_EMIT switcherEntered();
        else
            Q_EMIT switcherExited();
        viewport()->update();
    });
    connect(&d->presence, &WindowPresence::replaced, this, [this] { d->activationChanged(); });
    connect(Theme::instance(), &Theme::themeChangeCompleted, this, [this] {
        if (!d->styleName.isEmpty())
            setStyleName(d->styleName);
    });
    keepFrameInTheme(this);
    accessibility::follow(this);
    setFocus(); // the input method speaks to the widget with the focus
    d->profile = d->automaticProfile();
    d->angle = d->profile == Profile::Handset ? uprightAngle(d->screenSize()) : 270;
    d->firstSize();
    d->relayout();
}

ApplicationWindow::~ApplicationWindow()
{
    d->presence.disconnect(this);
    d->turn.disconnect(this);
    d->textFocus.disconnect(this);
    d->manager.reset(); // pages belong to others: they leave the scene before it goes
    setScene(nullptr);
}

ApplicationWindow *ApplicationWindow::current()
{
    return theWindow;
}

void ApplicationWindow::setStyleName(const QString &styleName)
{
    d->styleName = styleName;
    // What is seen around a page that turns is as dark as the page.
    const ApplicationPage *page = d->manager ? d->manager->visiblePage() : nullptr;
    const Style style
        = Theme::instance()->style(styleName, orientation(), page != nullptr && page->isInverted());
    const QBrush brush = style.color(QStringLiteral("background"), Qt::black);
    if (brush != backgroundBrush())
        setBackgroundBrush(brush);
}

QString ApplicationWindow::styleName() const
{
    return d->styleName;
}

ApplicationWindow::Profile ApplicationWindow::profile() const
{
    return d->profile;
}

void ApplicationWindow::setProfile(Profile profile)
{
    d->profileIsChosen = true;
    profile = profileOfEnvironment().value_or(profile);
    if (d->profile == profile)
        return;
    d->profile = profile;
    if (isVisible())
        showForProfile();
    if (profile == Profile::Desktop)
        d->firstSize();
    d->relayout();
    d->activationChanged();
}

void ApplicationWindow::setOrientationAngle(int degrees, Transition transition)
{
    const int angle = normalizedAngle(degrees);
    if (angle == d->angle) {
        if (transition == Transition::Immediate)
            d->turn.finish();
        return;
    }
    d->angle = angle;
    d->turnScene(transition);
}

int ApplicationWindow::orientationAngle() const
{
    return d->angle;
}

void ApplicationWindow::setPortraitOrientation()
{
    setOrientationAngle(270);
}

void ApplicationWindow::setLandscapeOrientation()
{
    setOrientationAngle(0);
}

void ApplicationWindow::lockOrientationAngle()
{
    d->locked = true;
}

void ApplicationWindow::unlockOrientationAngle()
{
    d->locked = false;
    d->followScreen();
}

bool ApplicationWindow::isOrientationAngleLocked() const
{
    return d->locked;
}

bool ApplicationWindow::isTurning() const
{
    return d->turn.isRunning();
}

Qt::Orientation ApplicationWindow::orientation() const
{
    return d->geometry.orientation();
}

QSizeF ApplicationWindow::logicalSize() const
{
    return d->geometry.logicalSize;
}

bool ApplicationWindow::isInSwitcher() const
{
    return d->presence.isInSwitcher();
}

bool ApplicationWindow::isOnDisplay() const
{
    return d->presence.isOnDisplay();
}

SceneManager *ApplicationWindow::sceneManager() const
{
    return d->manager.get();
}

void ApplicationWindow::setToolbarView(ToolbarView view)
{
    d->toolbarView = view;
}

ApplicationWindow::ToolbarView ApplicationWindow::toolbarView() const
{
    return d->toolbarView;
}

void ApplicationWindow::setGlobalAlpha(qreal alpha)
{
    if (!qFuzzyCompare(windowOpacity(), alpha)) // not every window system has it, and those complain
        setWindowOpacity(alpha);
}

WId ApplicationWindow::effectiveWindowId() const
{
    return effectiveWinId();
}

void ApplicationWindow::showForProfile()
{
    if (d->profile == Profile::Handset || d->fullScreenWanted) {
        // On a bare X server nobody else gives it the screen.
        if (!isVisible() && d->profile == Profile::Handset)
            setGeometry(screen()->geometry());
        QGraphicsView::showFullScreen();
    } else {
        QGraphicsView::showNormal();
    }
    if (!d->wasShown) {
        d->wasShown = true;
        activateWindow(); // keys arrive also where no window manager gives the focus
    }
}

// On the desktop a window that is there stays as the person has it: maximised, or put away.
void ApplicationWindow::showFullScreen()
{
    if (d->profile == Profile::Handset || !isVisible())
        showForProfile();
}

void ApplicationWindow::setFullScreen(bool fullScreen)
{
    d->fullScreenWanted = fullScreen;
    if (isVisible())
        showForProfile();
}

void ApplicationWindow::raiseToFront()
{
    showForProfile();
    raise();
    activate(this, std::exchange(d->activation, {}));
}

void ApplicationWindow::setActivation(const ActivationToken &token)
{
    d->activation = token;
}

// Filling a large screen takes as long as painting a video's frame: not where a page at rest hides it.
void ApplicationWindow::drawBackground(QPainter *painter, const QRectF &rect)
{
    const ApplicationPage *page = d->manager ? d->manager->currentPage() : nullptr;
    constexpr QMarginsF Rounding(1, 1, 1, 1);
    const bool hidden = page != nullptr && page->isVisible() && page->effectiveOpacity() >= 1
        && page->isOpaque() && page->mapRectToScene(page->rect()).marginsAdded(Rounding).contains(rect);
    if (!hidden)
        QGraphicsView::drawBackground(painter, rect);
}

} // namespace toolkit
