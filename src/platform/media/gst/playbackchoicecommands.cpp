// SPDX-License-Identifier: GPL-3.0-or-later
// How the video is played: speed, tracks, subtitles, sections.
#include "gstmediabackend.h"
#include "playbacksession.h"
#include "subtitledesk.h"

#include <platform/media/playbackbounds.h>

#include <algorithm>

using namespace std::chrono_literals;

void GstMediaBackend::setRate(qreal rate)
{
    rate = qBound(playbackbounds::SlowestRate, rate, playbackbounds::FastestRate);
    if (qFuzzyCompare(rate, m_rate))
        return;
    m_rate = rate;
    command([rate](PlaybackSession *session) { session->setRate(rate); });
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT rateChanged(m_rate); }, Qt::QueuedConnection);
}

// Nothing that was chosen for the video before holds.
void GstMediaBackend::beginTracks()
{
    setRate(1);
    m_sounds.clear();
    m_chapters.clear();
    m_sound.clear();
    m_framesPerSecond = 0;
    if (m_loop.set({}))
        QMetaObject::invokeMethod(this, &MediaBackend::loopChanged, Qt::QueuedConnection);
    m_subtitles->begin(uri());
    announceTracks();
}

void GstMediaBackend::connectTracks(PlaybackSession *session)
{
    on(session, &PlaybackSession::soundsFound,
       [this](const QList<MediaTrack> &tracks, const QString &heard, double framesPerSecond) {
           m_sounds = tracks;
           m_sound = heard;
           m_framesPerSecond = framesPerSecond;
           announceTracks();
       });
    on(session, &PlaybackSession::chaptersFound, [this](const QList<MediaChapter> &chapters) {
        if (m_chapters == chapters)
            return;
        m_chapters = chapters;
        announceTracks();
    });
}

// Much of it comes at once.
void GstMediaBackend::announceTracks()
{
    if (std::exchange(m_tracksAnnounced, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_tracksAnnounced = false;
            Q_EMIT tracksChanged();
        },
        Qt::QueuedConnection);
}

QString GstMediaBackend::languageOfSound() const
{
    const auto heard = std::find_if(m_sounds.begin(), m_sounds.end(),
                                    [this](const MediaTrack &track) { return track.id == m_sound; });
    return heard == m_sounds.end() ? QString() : heard->language;
}

void GstMediaBackend::selectAudioTrack(const QString &id)
{
    command([id](PlaybackSession *session) { session->selectSound(id); });
}

void GstMediaBackend::selectSubtitleTrack(const QString &id)
{
    m_subtitles->select(id);
    announceTracks();
}

void GstMediaBackend::setSubtitleDelay(MediaTime delay)
{
    m_subtitles->setDelay(delay);
}

QList<MediaTrack> GstMediaBackend::subtitleTracks() const
{
    return m_subtitles->tracks();
}

QString GstMediaBackend::subtitleTrack() const
{
    return m_subtitles->selected();
}

QList<SubtitleText> GstMediaBackend::subtitles() const
{
    return m_subtitles->shown();
}

MediaTime GstMediaBackend::subtitleDelay() const
{
    return m_subtitles->delay();
}

void GstMediaBackend::setLoop(const std::optional<MediaSection> &section)
{
    if (!m_loop.set(section))
        return;
    QMetaObject::invokeMethod(this, &MediaBackend::loopChanged, Qt::QueuedConnection);
    followPosition();
}

void GstMediaBackend::endLoopOutside(MediaTime position)
{
    if (m_loop.section() && !m_loop.contains(position))
        setLoop({});
}

// The shown frame is another one.
void GstMediaBackend::followPosition()
{
    m_subtitles->setPosition(m_position);
    if (m_seekTarget || state() != AvloRenderer::Playing || !m_seekable)
        return;
    if (const auto start = m_loop.wayBack(m_position, duration()))
        seek(*start, SeekPrecision::Exact);
}
