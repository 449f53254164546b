// SPDX-License-Identifier: GPL-3.0-or-later
#include "scrubber.h"

#include <algorithm>

void Scrubber::setBackend(MediaBackend *backend)
{
    m_backend = backend;
    m_active = false;
}

bool Scrubber::canSeek() const
{
    if (!m_backend || !m_backend->isSeekable() || m_backend->duration() <= MediaTime::zero())
        return false;
    const AvloRenderer::State state = m_backend->state();
    return state == AvloRenderer::Playing || state == AvloRenderer::Paused;
}

bool Scrubber::isPresent() const
{
    return m_active && m_backend && m_backend->generation() == m_generation
        && m_backend->state() != AvloRenderer::Stopped;
}

bool Scrubber::begin()
{
    if (m_active || !canSeek())
        return false;
    m_active = true;
    m_moved = false;
    m_generation = m_backend->generation();
    m_origin = m_target = m_backend->heading();
    m_backend->beginScrub();
    return true;
}

void Scrubber::moveTo(MediaTime position)
{
    if (!isPresent())
        return;
    position = std::clamp(position, MediaTime::zero(), m_backend->duration());
    if (position == m_target)
        return;
    m_target = position;
    m_moved = true;
    m_backend->seek(position, MediaBackend::SeekPrecision::KeyFrame);
}

void Scrubber::finish()
{
    const bool present = isPresent();
    m_active = false;
    if (!present)
        return;
    if (m_moved)
        m_backend->seek(m_target, MediaBackend::SeekPrecision::Exact);
    m_backend->endScrub();
}

void Scrubber::cancel()
{
    moveTo(m_origin);
    finish();
}
