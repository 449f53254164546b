// SPDX-License-Identifier: GPL-3.0-or-later
// Tracks, subtitles and loops of the back end that plays nothing.
#include "nullmediabackend.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

bool contains(const QList<MediaTrack> &tracks, const QString &id)
{
    return std::any_of(tracks.begin(), tracks.end(), [&](const MediaTrack &track) { return track.id == id; });
}

} // namespace

void NullMediaBackend::beginTracks()
{
    m_sound = m_current.sounds.isEmpty() ? QString() : m_current.sounds.first().id;
    m_subtitle.clear();
    m_delay = MediaTime::zero();
    if (m_loop.set({}))
        schedule(0ms, [this] { Q_EMIT loopChanged(); });
    schedule(0ms, [this] { Q_EMIT tracksChanged(); });
}

void NullMediaBackend::selectAudioTrack(const QString &id)
{
    if (!contains(m_current.sounds, id))
        return;
    m_sound = id;
    schedule(0ms, [this] { Q_EMIT tracksChanged(); });
}

void NullMediaBackend::selectSubtitleTrack(const QString &id)
{
    if (!id.isEmpty() && !contains(m_current.subtitles, id))
        return;
    m_subtitle = id;
    schedule(0ms, [this] {
        Q_EMIT tracksChanged();
        Q_EMIT subtitlesChanged();
    });
}

void NullMediaBackend::setSubtitleDelay(MediaTime delay)
{
    m_delay = delay;
    schedule(0ms, [this] { Q_EMIT subtitlesChanged(); });
}

void NullMediaBackend::setLoop(const std::optional<MediaSection> &section)
{
    if (m_loop.set(section))
        schedule(0ms, [this] { Q_EMIT loopChanged(); });
}

QList<SubtitleText> NullMediaBackend::subtitles() const
{
    CueStore store;
    store.set(m_current.cues.value(m_subtitle));
    return store.at(m_position - m_delay);
}
