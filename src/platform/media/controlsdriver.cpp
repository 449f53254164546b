// SPDX-License-Identifier: GPL-3.0-or-later
#include "controlsdriver.h"

#include "playercontrols.h"
#include "wholeseconds.h"

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;

namespace {

constexpr auto AutoHideInterval = 3s;
constexpr auto RefreshInterval = 200ms;

} // namespace

ControlsDriver::ControlsDriver(PlayerControls *controls, QObject *parent)
    : QObject(parent),
      m_controls(controls)
{
    m_autoHide.setObjectName(QStringLiteral("autoHide"));
    m_autoHide.setParent(this);
    m_autoHide.setSingleShot(true);
    m_autoHide.setInterval(AutoHideInterval);
    connect(&m_autoHide, &QTimer::timeout, this, [this] {
        if (m_controls->isHeld() || (m_isNeeded && m_isNeeded()))
            keepShown();
        else if (isPlaying())
            Q_EMIT hideDue();
    });
    m_refresh.setInterval(RefreshInterval);
    connect(&m_refresh, &QTimer::timeout, this, [this] { refresh(); });
    connectControls();
}

void ControlsDriver::connectControls()
{
    connect(m_controls, &PlayerControls::touched, this, [this] { keepShown(); });
    connect(m_controls, &PlayerControls::playPauseRequested, this, [this] { playOrPause(); });
    connect(m_controls, &PlayerControls::seekBegan, this, [this] { m_scrubber.begin(); });
    connect(m_controls, &PlayerControls::seekRequested, this, [this](MediaTime position, bool last) {
        m_scrubber.moveTo(position);
        if (last)
            m_scrubber.finish();
    });
    connect(m_controls, &PlayerControls::seekCancelled, this, [this] { m_scrubber.cancel(); });
    connect(m_controls, &PlayerControls::volumeRequested, this, [this](qreal volume) {
        if (m_backend)
            m_backend->setVolume(volume);
    });
}

void ControlsDriver::setBackend(MediaBackend *backend)
{
    if (m_backend)
        m_backend->disconnect(this);
    m_backend = backend;
    m_ended = false;
    m_scrubber.setBackend(backend);
    if (!backend)
        return;
    connect(backend, &MediaBackend::stateChanged, this, [this](AvloRenderer::State state) {
        if (state != AvloRenderer::Stopped)
            m_ended = false;
        refresh();
        keepShown();
    });
    connect(backend, &MediaBackend::loopChanged, this, [this] { refresh(); });
    connect(backend, &MediaBackend::endReached, this, [this] { m_ended = true; });
}

void ControlsDriver::setShown(bool shown)
{
    m_controls->setShown(shown);
    if (shown)
        m_refresh.start();
    else
        m_refresh.stop();
    refresh();
    keepShown();
}

void ControlsDriver::refresh()
{
    if (!m_backend || !m_controls->isShown())
        return;
    m_controls->setState(m_backend->state());
    m_controls->setTimes(m_backend->heading(), m_backend->duration(), m_backend->isSeekable());
    m_controls->setVolume(m_backend->volume());
    m_controls->setChapters(m_backend->chapters());
    m_controls->setLoop(m_backend->loop());
}

void ControlsDriver::playOrPause()
{
    if (!m_backend)
        return;
    switch (m_backend->state()) {
    case AvloRenderer::Playing:
        m_backend->pause();
        break;
    case AvloRenderer::Paused:
        m_backend->resume();
        break;
    case AvloRenderer::Stopped:
        if (!m_backend->uri().isEmpty())
            m_backend->play(m_backend->uri(), m_ended ? 0 : wholeSeconds(m_backend->position()));
        break;
    case AvloRenderer::Transitioning:
        break;
    }
}

void ControlsDriver::changeVolume(qreal step)
{
    if (!m_backend)
        return;
    // To the next whole step, wherever a finger had left it.
    const qreal steps = std::round(m_backend->volume() / std::abs(step)) + (step > 0 ? 1 : -1);
    m_backend->setVolume(std::clamp(steps * std::abs(step), 0.0, 1.0));
    refresh();
}

bool ControlsDriver::isPlaying() const
{
    return m_backend && m_backend->state() == AvloRenderer::Playing;
}

void ControlsDriver::keepShown()
{
    if (m_controls->isShown() && isPlaying())
        m_autoHide.start();
    else
        m_autoHide.stop();
}
