// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpage.h"

#include "navigationbarwidget.h"
#include "playercontroller.h"
#include "playerlog.h"
#include "playeroverlay.h"
#include "windoweventlistener.h"

#include <data/trackerinterface.h>
#include <fileops/filemanager.h>
#include <platform/media/playbackextras.h>
#include <platform/media/playercontrols.h>
#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/keeptranslated.h>
#include <platform/toolkit/spinner.h>

#include <QMetaMethod>
#include <QTimer>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int backGuardMs = 2000;
constexpr int dialogGuardMs = 5000;
constexpr qreal overlayZ = 10;
constexpr qreal spinnerZ = 20;
constexpr qreal opacityInUse = 0.9;

toolkit::ApplicationWindow *activeWindow()
{
    return toolkit::Application::activeApplicationWindow();
}

} // namespace

PlayerPage::PlayerPage(VideoWidget *videoWidget, PlayerController *controller, QGraphicsItem *parent)
    : ApplicationPage(parent),
      m_videoWidget(videoWidget),
      m_controller(controller),
      m_overlay(new PlayerOverlay(this)),
      m_backGuardTimer(new QTimer(this)),
      m_dialogGuard(new QTimer(this)),
      m_windowEvents(new WindowEventListener(this)),
      m_bufferSpinner(new toolkit::Spinner(this))
{
    toolkit::keepTranslated(this, [this] { setTitle(qtTrId("qtn_vide_player")); });
    setPannable(false);
    setEscapeMode(EscapeMode::Back);
    if (m_videoWidget) {
        m_videoWidget->setParentItem(this);
        m_videoWidget->setAccessibleName(title());
    }
    m_overlay->setZValue(overlayZ);
    m_bufferSpinner->setStyleName(u"CommonLargeSpinnerInverted"_s);
    m_bufferSpinner->setZValue(spinnerZ);
    m_bufferSpinner->setAcceptedMouseButtons(Qt::NoButton);
    m_bufferSpinner->hide();
    m_backGuardTimer->setSingleShot(true);
    m_backGuardTimer->setInterval(backGuardMs);
    m_dialogGuard->setSingleShot(true);
    m_dialogGuard->setInterval(dialogGuardMs);
    connect(m_dialogGuard, &QTimer::timeout, this, &PlayerPage::dialogNeverCame);
    setToolbarType(DefaultToolbar);
    setBackButtonType(NormalBackButton);
    createStoredActions();
    updateInfoButton();

    connect(navigationBar(), &NavigationBarWidget::menuButtonClicked, this, &PlayerPage::handleMenuClick);
    connect(this, &ApplicationPage::disappeared, this, &PlayerPage::playerPageNotOnTop);
    connect(this, &ApplicationPage::disappeared, this, &PlayerPage::leaveDialogs);
    connectController();
    connectWindow();
    connect(m_overlay->infoButton(), &toolkit::Button::clicked, this, &PlayerPage::handleInfoButtonClick);
    connect(navigationBar(), &NavigationBarWidget::backButtonClicked, this, &PlayerPage::handleBackButton);
    connect(m_windowEvents, &WindowEventListener::QLBOpens, this, &PlayerPage::qlbOpened);
    if (m_videoWidget)
        connect(m_videoWidget, &VideoWidget::rendererReady, this, &PlayerPage::connectRenderer);
    connectRenderer();
}

PlayerPage::~PlayerPage() = default;

void PlayerPage::connectController()
{
    if (!m_controller)
        return;
    PlayerController *controller = m_controller;
    connect(controller, &PlayerController::isIndexedByTracker, this, &PlayerPage::enableIndexedActions);
    connect(controller, &PlayerController::positionSaved, this, &PlayerPage::playTimeSaved);
    connect(controller, &PlayerController::showBufferIconRequested, this, &PlayerPage::showBufferIcon);
    connect(controller, &PlayerController::hideBufferIconRequested, this, &PlayerPage::hideBufferIcon);
    connect(controller, &PlayerController::deleteBufferIconStatusLabel, this,
            &PlayerPage::deleteBufferStatusLabel);
    connect(controller, &PlayerController::rendererError, this, &PlayerPage::playerError);
    connect(controller, qOverload<QString>(&PlayerController::error), this, &PlayerPage::playerError);
    connect(controller, &PlayerController::playbackEnded, this, &PlayerPage::playbackEnded);
    connect(controller, &PlayerController::playbackIsStarted, this, &PlayerPage::playbackIsStarted);
    connect(controller, &PlayerController::criticalError, this, &PlayerPage::playbackEndedByError);
    // Behind whoever leaves the page because of it.
    connect(controller, &PlayerController::rendererError, this, &PlayerPage::showWayOn, Qt::QueuedConnection);
    connect(controller, qOverload<QString>(&PlayerController::error), this, &PlayerPage::showWayOn,
            Qt::QueuedConnection);
    // Behind the controller, which takes the title first.
    connect(TrackerInterface::instance(), qOverload<QList<QStringList>>(&TrackerInterface::videosChanged),
            this, &PlayerPage::takeNews);
}

void PlayerPage::connectWindow()
{
    if (toolkit::ApplicationWindow *window = activeWindow()) {
        connect(window, &toolkit::ApplicationWindow::displayExited, this, &PlayerPage::playerPageNotOnTop,
                Qt::UniqueConnection);
    }
}

// Each has its own; one may be there before the page.
void PlayerPage::connectRenderer()
{
    if (AvloRenderer *renderer = m_videoWidget ? m_videoWidget->renderer() : nullptr) {
        connect(renderer, &AvloRenderer::stateChanged, this, &PlayerPage::rendererStateChanged,
                Qt::UniqueConnection);
    }
}

void PlayerPage::createContent()
{
    ApplicationPage::createContent();
    connectWindow();
    connect(this, &ApplicationPage::backButtonClicked, this, &PlayerPage::backButton);
    connect(m_backGuardTimer, &QTimer::timeout, this, &PlayerPage::backButtonError);
    if (!m_videoWidget)
        return;
    m_videoWidget->setOptionsOffered(true);
    connect(m_videoWidget->extras(), &PlaybackExtras::takenBesideChanged, m_overlay,
            &PlayerOverlay::setTaken);
    connect(m_videoWidget, &VideoWidget::error, this, &PlayerPage::playerError);
    connect(m_videoWidget, &VideoWidget::error, this, &PlayerPage::showWayOn, Qt::QueuedConnection);
    connect(m_videoWidget, &VideoWidget::controlsVisibilityChangeRequested, this,
            &PlayerPage::controlsVisibilityChanged);
}

NavigationBarWidget *PlayerPage::navigationBar() const
{
    return m_overlay->navigationBar();
}

bool PlayerPage::hasController(const char *function) const
{
    if (!m_controller)
        qCWarning(lcPlayer, "%s playercontroller == NULL", function);
    return m_controller;
}

bool PlayerPage::isPlaying() const
{
    return m_controller && (m_controller->state() == AvloRenderer::Playing || m_controller->isResuming());
}

bool PlayerPage::isInSwitcher() const
{
    return activeWindow() && activeWindow()->isInSwitcher();
}

void PlayerPage::connectBuffering()
{
    connect(m_controller, &PlayerController::buffering, this, &PlayerPage::buffering, Qt::UniqueConnection);
}

void PlayerPage::disconnectBuffering()
{
    disconnect(m_controller, &PlayerController::buffering, this, &PlayerPage::buffering);
}

void PlayerPage::setToolbarType(ToolbarType type)
{
    if (type != DefaultToolbar) {
        qCWarning(lcPlayer, "void PlayerPage::setToolbarType(PlayerPage::ToolbarType) Undefined type!");
        return;
    }
    m_toolbarType = type;
    m_toolbarAllowed = true;
    navigationBar()->setCentralWidget(m_overlay->toolbar());
    navigationBar()->setMenuButtonVisible(true);
    setToolbarVisible(true);
}

void PlayerPage::setBackButtonType(BackButtonType type)
{
    switch (type) {
    case NormalBackButton:
        navigationBar()->setBackButtonIcon(u"icon-m-toolbar-back-white"_s);
        break;
    case TvMainViewBackButton:
        navigationBar()->setBackButtonIcon(u"icon-l-videos-tv-main-view"_s);
        break;
    default:
        qCWarning(lcPlayer, "void PlayerPage::setBackButtonType(PlayerPage::BackButtonType) Undefined type!");
        return;
    }
    m_backButtonType = type;
}

void PlayerPage::setControlsEnabled(bool on)
{
    m_overlay->toolbar()->setEnabled(on);
    navigationBar()->setEnabled(on);
    if (on)
        navigationBar()->setOpacity(opacityInUse);
}

void PlayerPage::setToolbarVisible(bool visible)
{
    m_overlay->toolbar()->setVisible(m_toolbarAllowed && visible);
}

void PlayerPage::showComponents(bool shown)
{
    setComponentsDisplay(AllComponents, shown ? ComponentDisplay::Show : ComponentDisplay::Hide);
    m_overlay->setShown(shown);
}

// A file that was opened from outside has no title in the store: its name stands in.
void PlayerPage::showTitle()
{
    const VideoInfo &video = m_controller->currentVideo();
    m_overlay->setTitle(!video.title.isEmpty() ? video.title : QUrl(video.url).fileName());
    if (m_videoWidget)
        m_videoWidget->setAccessibleName(m_overlay->title());
}

void PlayerPage::takeNews(const QList<QStringList> &rows)
{
    const QString urn = m_controller ? m_controller->currentVideo().urn : QString();
    const auto isCurrent = [&urn](const QStringList &row) { return row.value(VideoColumn::Urn) == urn; };
    if (!urn.isEmpty() && std::any_of(rows.begin(), rows.end(), isCurrent))
        showTitle();
}

// Nobody who shows details: no button that leads to them.
void PlayerPage::updateInfoButton()
{
    m_overlay->infoButton()->setVisible(
        isSignalConnected(QMetaMethod::fromSignal(&PlayerPage::showDetailsPage)));
}

void PlayerPage::connectNotify(const QMetaMethod &signal)
{
    ApplicationPage::connectNotify(signal);
    if (signal == QMetaMethod::fromSignal(&PlayerPage::showDetailsPage))
        updateInfoButton();
}

void PlayerPage::disconnectNotify(const QMetaMethod &signal)
{
    ApplicationPage::disconnectNotify(signal);
    // Later: while a connection is taken apart the connections may not be asked for.
    if (!signal.isValid() || signal == QMetaMethod::fromSignal(&PlayerPage::showDetailsPage))
        QMetaObject::invokeMethod(this, &PlayerPage::updateInfoButton, Qt::QueuedConnection);
}

void PlayerPage::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    ApplicationPage::resizeEvent(event);
    layOut();
}

QList<QRectF> PlayerPage::touchAreas() const
{
    QList<QRectF> areas{QRectF(0, 0, size().width(), navigationBar()->preferredHeight())};
    if (m_videoWidget)
        areas += ::touchAreas(m_videoWidget->controls()->places());
    return areas;
}

void PlayerPage::layOut()
{
    const QRectF page = rect();
    if (m_videoWidget)
        m_videoWidget->setGeometry(page);
    m_overlay->setGeometry(0, 0, page.width(), m_overlay->preferredHeight());
    QRectF spinner(QPointF(), m_bufferSpinner->preferredSize());
    spinner.moveCenter(page.center());
    m_bufferSpinner->setGeometry(spinner);
    if (m_bufferStatusLabel) {
        QRectF label(QPointF(), m_bufferStatusLabel->preferredSize().expandedTo(spinner.size()));
        label.moveCenter(page.center());
        m_bufferStatusLabel->setGeometry(label);
    }
}
