// SPDX-License-Identifier: GPL-3.0-or-later
#include "playercontroller.h"

#include "playerlog.h"

#include <data/positionjournal.h>
#include <data/thumbnailhelper.h>
#include <data/trackerinterface.h>
#include <data/videoconstants.h>
#include <platform/media/mediabackend.h>
#include <platform/media/rendererregistry.h>
#include <platform/system/devicestate.h>
#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationwindow.h>

#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int noteIntervalMs = 5000; // what a program that is killed loses of a place

toolkit::ApplicationWindow *window()
{
    return toolkit::Application::activeApplicationWindow();
}

} // namespace

PlayerController::PlayerController(VideoWidget *videoWidget, RendererRegistry *registry,
                                   TrackerInterface *store, ThumbnailHelper *thumbnails, QObject *parent)
    : QObject(parent),
      m_videoWidget(videoWidget),
      m_registry(registry),
      m_store(store),
      m_thumbnails(thumbnails),
      m_noteTimer(new QTimer(this))
{
    if (videoWidget) {
        connect(videoWidget, &VideoWidget::rendererReady, this, &PlayerController::fetchRenderer);
        connect(videoWidget, &VideoWidget::paused, this, &PlayerController::paused);
        connect(videoWidget, &VideoWidget::endReached, this, &PlayerController::endReached);
        connect(videoWidget, &VideoWidget::doubleClick, this, &PlayerController::togglePause);
        connect(videoWidget, &VideoWidget::endReached, this, &PlayerController::disableOutputRectangle);
    }
    connect(m_registry, &RendererRegistry::rendererRemoved, this, &PlayerController::removeRenderer);
    m_videoRoute = ContextProperty::create(VIDEO_ROUTE_PROPERTY, this);
    m_videoRoute->subscribe();
    connect(m_videoRoute, &ContextProperty::valueChanged, this, &PlayerController::tvOutvalueChanged);
    connect(m_store, qOverload<QList<QStringList>>(&TrackerInterface::videosChanged), this,
            &PlayerController::takeNews);
    m_noteTimer->setObjectName(u"noteTimer"_s);
    m_noteTimer->setInterval(noteIntervalMs);
    connect(m_noteTimer, &QTimer::timeout, this, &PlayerController::notePlace);
}

PlayerController::~PlayerController()
{
    m_videoRoute->unsubscribe();
}

void PlayerController::play(VideoInfo &video)
{
    saveLastKnownPlace();
    forgetPlace();
    m_stopAtEnd = false;
    if (!std::exchange(m_placeAskedFor, false))
        video.playPosition = unreadPlace(video.urn).value_or(video.playPosition);
    m_pauseThumbnailUri.clear();
    m_video = video;
    m_currentSaved = false;
    callMonitor(); // by the time of an error it knows whether there is a call
    if (m_videoWidget)
        m_videoWidget->reset();
    m_positionFinal = false;
    m_hasPicture = false;
    handleEvent(PlayRequested);
    Q_EMIT isIndexedByTracker(!m_video.urn.isEmpty());
    if (!m_rendererAvailable) {
        qCDebug(lcPlayer, "void PlayerController::play(VideoInfo&) Renderer not found, delaying play");
        m_playPending = true;
        fetchRenderer();
        return;
    }
    if (m_videoWidget) {
        m_videoWidget->setFillMode(m_displayMode == 0);
        m_videoWidget->play(m_video.url, m_startMode == 1 ? m_video.playPosition : 0);
        // One that was to begin anew is still where it was left until something of it is seen.
        m_placeKnown = m_startMode == 1 || m_video.playPosition == 0;
    }
    Q_EMIT deleteBufferIconStatusLabel();
    Q_EMIT playbackIsStarted();
}

void PlayerController::fetchRenderer()
{
    AvloRenderer *renderer = m_videoWidget ? m_videoWidget->renderer() : nullptr;
    if (!renderer)
        return;
    m_renderer = renderer;
    renderer->setProperty(u"current-frame-on-pause"_s, true);
    // Unique: a renderer may be announced after it was found.
    connect(renderer, &AvloRenderer::stateChanged, this, &PlayerController::rendererStateChanged,
            Qt::UniqueConnection);
    connect(renderer, &AvloRenderer::metadataChanged, this, &PlayerController::handleMetadataChange,
            Qt::UniqueConnection);
    connect(renderer, &AvloRenderer::error, this, qOverload<AvloError>(&PlayerController::error),
            Qt::UniqueConnection);
    connect(renderer, &AvloRenderer::bufferingInfo, this, &PlayerController::buffering, Qt::UniqueConnection);
    // Before the widget lets go of it, and of the place with it.
    if (const MediaBackend *backend = m_videoWidget->backend())
        connect(backend, &MediaBackend::lost, this, &PlayerController::saveLastKnownPlace,
                Qt::UniqueConnection);
    m_rendererAvailable = true;
    if (m_playPending) {
        m_videoWidget->setControlsVisible(false);
        play(m_video);
        m_playPending = false;
    }
}

void PlayerController::removeRenderer(QString uuid, QString name)
{
    if (!m_rendererAvailable || uuid != RENDERER_ID)
        return;
    qCWarning(lcPlayer, "void PlayerController::removeRenderer(QString, QString) Renderer was removed");
    Q_EMIT error(qtTrId("qtn_vide_error_generic").replace(u"%1"_s, QString::number(0)));
    m_rendererAvailable = false;
    if (m_renderer)
        m_renderer->disconnect(this);
    m_renderer = nullptr;
    rendererStateChanged(AvloRenderer::Stopped);
}

void PlayerController::endReached()
{
    if (m_videoWidget)
        m_videoWidget->setFrame(QString());
    takeDuration();
    if (m_stopAtEnd) {
        savePosition(m_video.duration);
        stop();
        return;
    }
    m_pauseThumbnailUri = m_video.url;
    savePosition(m_video.duration);
    m_positionFinal = true;
    Q_EMIT playbackEnded();
    removePauseThumbnail();
}

void PlayerController::disableOutputRectangle()
{
    if (!m_renderer || !window())
        return;
    const int width = window()->width();
    const int height = window()->height();
    m_renderer->setProperty(u"render-rectangle"_s,
                            u"0,%1,%2,%1"_s.arg(QString::number(height), QString::number(width)));
}

void PlayerController::setXid(int windowId)
{
    if (m_renderer)
        m_renderer->setProperty(u"xid"_s, windowId);
}

void PlayerController::togglePause()
{
    if (m_state == AvloRenderer::Playing)
        pause();
    else if (m_state == AvloRenderer::Paused)
        resume();
}

void PlayerController::pause()
{
    forgetCommand();
    m_pausing = m_state == AvloRenderer::Playing;
    if (m_videoWidget)
        m_videoWidget->pause();
    else
        qCWarning(lcPlayer, "void PlayerController::pause() Videowidget missing");
}

void PlayerController::resume()
{
    forgetCommand();
    m_resuming = m_state == AvloRenderer::Paused;
    if (m_videoWidget)
        m_videoWidget->resume();
    else
        qCWarning(lcPlayer, "void PlayerController::resume() Videowidget missing");
}

void PlayerController::stop()
{
    saveLastKnownPlace();
    forgetPlace();
    if (m_videoWidget)
        m_videoWidget->stop();
    else
        qCWarning(lcPlayer, "void PlayerController::stop() Videowidget missing");
}

void PlayerController::setControlsVisible(bool visible)
{
    if (m_videoWidget)
        m_videoWidget->setControlsVisible(visible);
}
