// SPDX-License-Identifier: GPL-3.0-or-later
#include "callpause.h"

#include <platform/system/devicestate.h>

CallPause::CallPause(MediaBackend *backend, QObject *parent)
    : QObject(parent),
      m_backend(backend),
      m_calls(CallMonitor::create(this))
{
    connect(m_calls, &CallMonitor::stateChanged, this, &CallPause::callChanged);
    connect(m_backend, &MediaBackend::stateChanged, this, &CallPause::stateChanged);
}

void CallPause::callChanged()
{
    if (m_calls->getState() == 0) {
        m_pausedByCall = false;
        return;
    }
    const AvloRenderer::State state = m_backend->state();
    if (state != AvloRenderer::Playing && state != AvloRenderer::Transitioning)
        return;
    m_pausedByCall = true;
    m_backend->pause();
}

void CallPause::stateChanged(AvloRenderer::State state)
{
    if (state == AvloRenderer::Paused || state == AvloRenderer::Stopped)
        m_pausedByCall = false;
    if (state != AvloRenderer::Playing || m_calls->getState() == 0)
        return;
    m_backend->pause();
    // Who asked for it before the call began hears of the call from the telephone.
    if (!m_pausedByCall)
        Q_EMIT refused();
}
