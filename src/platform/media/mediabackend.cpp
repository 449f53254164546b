// SPDX-License-Identifier: GPL-3.0-or-later
#include "mediabackend.h"

#include "playbackbounds.h"

MediaBackend::MediaBackend(QObject *parent) : QObject(parent) { }

MediaBackend::~MediaBackend() = default;

// Playing does not wait where a back end cannot make it.
void MediaBackend::beginScrub()
{
    m_scrubbing = true;
}

void MediaBackend::endScrub()
{
    m_scrubbing = false;
}

// A back end that has no such thing obeys none of these.
void MediaBackend::setRate(qreal rate)
{
    Q_UNUSED(rate)
}

void MediaBackend::selectAudioTrack(const QString &id)
{
    Q_UNUSED(id)
}

void MediaBackend::selectSubtitleTrack(const QString &id)
{
    Q_UNUSED(id)
}

void MediaBackend::setSubtitleScale(qreal scale)
{
    m_subtitleScale = qBound(playbackbounds::SmallestSubtitles, scale, playbackbounds::LargestSubtitles);
    QMetaObject::invokeMethod(this, &MediaBackend::subtitlesChanged, Qt::QueuedConnection);
}

void MediaBackend::setSubtitleDelay(MediaTime delay)
{
    Q_UNUSED(delay)
}

void MediaBackend::setLoop(const std::optional<MediaSection> &section)
{
    Q_UNUSED(section)
}

void MediaBackend::setPlanesWanted(bool wanted)
{
    Q_UNUSED(wanted)
}

void MediaBackend::beginMedia(const QString &uri)
{
    m_uri = uri;
    m_duration = MediaTime::zero();
    m_scrubbing = false;
    ++m_generation;
    QMetaObject::invokeMethod(
        this,
        [this, number = m_generation] {
            if (number == m_generation)
                Q_EMIT begun();
        },
        Qt::QueuedConnection);
}

void MediaBackend::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
}

void MediaBackend::setDuration(MediaTime duration)
{
    if (m_duration == duration)
        return;
    m_duration = duration;
    Q_EMIT durationChanged();
}
