// SPDX-License-Identifier: GPL-3.0-or-later
#include "powerpolicy.h"

#include "applog.h"
#include "platform/media/videowidget.h"
#include "platform/sparql/outstandingupdates.h"
#include "platform/system/devicestate.h"
#include "platform/system/idleinhibitor.h"
#include "platform/system/sleepwatcher.h"
#include "player/playercontroller.h"

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int DisplayOff = 0;
constexpr int SleepGuard = 2000; // ms; the system itself waits for 5 s

QTimer *singleShot(QObject *parent, const QString &name, int interval)
{
    auto *timer = new QTimer(parent);
    timer->setObjectName(name);
    timer->setSingleShot(true);
    timer->setInterval(interval);
    return timer;
}

} // namespace

PowerPolicy::PowerPolicy(DisplayWatcher *display, QObject *parent)
    : QObject(parent),
      m_sleep(SleepWatcher::create(qtTrId("qtn_vide_power_saving_place"), this)),
      m_idle(IdleInhibitor::create(this)),
      m_display(display),
      m_evaluation(singleShot(this, u"evaluation"_s, 0)),
      m_sleepGuard(singleShot(this, u"sleepGuard"_s, SleepGuard))
{
    connect(m_evaluation, &QTimer::timeout, this, &PowerPolicy::evaluate);
    connect(m_display, &DisplayWatcher::stateChanged, m_evaluation, qOverload<>(&QTimer::start));
    connect(m_sleep, &SleepWatcher::aboutToSleep, this, &PowerPolicy::prepareForSleep);
    connect(m_sleep, &SleepWatcher::wokeUp, m_sleepGuard, &QTimer::stop);
    connect(m_sleepGuard, &QTimer::timeout, this, [this] {
        qCWarning(appLog,
                  "the place in the video may not be saved: the device sleeps before the store answers");
        allowSleep();
    });
    connect(&OutstandingUpdates::instance(), &OutstandingUpdates::noneLeft, this,
            &PowerPolicy::sleepWhenSaved);
}

void PowerPolicy::setPlayer(PlayerController *controller, VideoWidget *videoWidget)
{
    m_controller = controller;
    m_videoWidget = videoWidget;
    connect(videoWidget, &VideoWidget::rendererReady, this, &PowerPolicy::followRenderer);
    connect(videoWidget, &VideoWidget::displayEntered, m_evaluation, qOverload<>(&QTimer::start));
    connect(videoWidget, &VideoWidget::displayExited, m_evaluation, qOverload<>(&QTimer::start));
    // Queued: by then the controller, which hears of the pause first, has its answer on the place.
    connect(videoWidget, &VideoWidget::paused, this, &PowerPolicy::placeSaved, Qt::QueuedConnection);
    followRenderer();
}

void PowerPolicy::followRenderer()
{
    const AvloRenderer *renderer = m_videoWidget->renderer();
    if (!renderer)
        return;
    connect(renderer, &AvloRenderer::stateChanged, m_evaluation, qOverload<>(&QTimer::start));
    connect(renderer, &AvloRenderer::metadataChanged, m_evaluation, qOverload<>(&QTimer::start));
    connect(renderer, &QObject::destroyed, m_evaluation, qOverload<>(&QTimer::start));
    m_evaluation->start();
}

void PowerPolicy::evaluate()
{
    if (m_controller && m_controller->state() == AvloRenderer::Stopped) {
        m_awaitsPause = false;
        sleepWhenSaved();
    }
    const bool keep = keepsDisplayOn();
    if (keep != m_idle->isInhibited())
        m_idle->setInhibited(keep, qtTrId("qtn_vide_power_playing"));
}

// A video that waits for its data goes on counting as before: a session without input for long would go dark
// the moment it is let go.
bool PowerPolicy::keepsDisplayOn() const
{
    if (!m_controller || !m_videoWidget || !m_videoWidget->renderer() || !m_controller->hasPicture())
        return false;
    const AvloRenderer::State state = m_controller->state();
    const bool waits = state == AvloRenderer::Transitioning && m_idle->isInhibited();
    const bool isLit = m_display->state() != DisplayOff || m_controller->isTvOut();
    return (state == AvloRenderer::Playing || waits) && m_videoWidget->isOnDisplay() && isLit;
}

// The place at once, then again with the still of the frame when the video stands. One that has not begun yet
// does not begin while the device sleeps either, and has no new place.
void PowerPolicy::prepareForSleep()
{
    if (!m_controller || !m_videoWidget) {
        m_sleep->release();
        return;
    }
    m_sleepGuard->start();
    const AvloRenderer::State state = m_controller->state();
    const bool plays = state == AvloRenderer::Playing;
    m_awaitsPause = plays && !m_controller->currentVideo().urn.isEmpty();
    if (plays || state == AvloRenderer::Transitioning)
        m_controller->pause();
    if (plays || state == AvloRenderer::Paused)
        m_controller->saveLastKnownPlace();
    sleepWhenSaved();
}

void PowerPolicy::placeSaved()
{
    m_awaitsPause = false;
    sleepWhenSaved();
}

void PowerPolicy::sleepWhenSaved()
{
    if (m_sleepGuard->isActive() && !m_awaitsPause && OutstandingUpdates::instance().count() == 0)
        allowSleep();
}

void PowerPolicy::allowSleep()
{
    m_sleepGuard->stop();
    m_awaitsPause = false;
    m_sleep->release();
}
