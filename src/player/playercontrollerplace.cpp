// SPDX-License-Identifier: GPL-3.0-or-later
// Where the video is, and how that comes into the store.
#include "playercontroller.h"

#include <data/positionjournal.h>
#include <data/resumerule.h>
#include <data/thumbnailhelper.h>
#include <data/trackerinterface.h>
#include <platform/media/mediabackend.h>

#include <QTimer>

void PlayerController::setJournal(PositionJournal *journal)
{
    m_journal = journal;
}

void PlayerController::paused()
{
    if (m_renderer)
        m_renderer->getPosition(this, SLOT(savePosition(uint)));
}

void PlayerController::savePosition(uint position)
{
    if (m_positionFinal)
        return;
    takeDuration();
    m_video.playPosition = resumePosition(m_video.duration, position);
    m_positionFinal = isLeftAtEnd(m_video.duration, position);
    if (m_journal)
        m_journal->save(m_video);
    else
        m_store->setPlayedTime(m_video.urn, m_video.playPosition);
    if (m_video.playPosition == 0) {
        m_pauseThumbnailUri = m_video.url;
        removePauseThumbnail();
    }
    m_lastSavedVideo = m_video;
    m_savedPlaces.insert(m_video.urn, m_video.playPosition);
    m_currentSaved = true;
    Q_EMIT positionSaved();
}

bool PlayerController::saveLastKnownPlace()
{
    const std::optional<uint> position = lastKnownPosition();
    if (!position || m_positionFinal || (m_currentSaved && *position == m_video.playPosition))
        return false;
    savePosition(*position);
    return true;
}

// Where playing would go on: also the target of a seek that is under way. What the widget has is of another
// video until it has begun this one.
std::optional<uint> PlayerController::lastKnownPosition() const
{
    const MediaBackend *backend = m_videoWidget ? m_videoWidget->backend() : nullptr;
    const bool known = m_placeKnown && m_state != AvloRenderer::Stopped && !m_video.urn.isEmpty();
    if (!known || !backend || backend->uri() != m_video.url)
        return {};
    return uint(std::chrono::duration_cast<std::chrono::seconds>(backend->heading()).count());
}

// A record from the library may lag behind the place that was saved just now, and so may the store behind
// what a program that was killed had noted.
std::optional<quint32> PlayerController::unreadPlace(const QString &urn) const
{
    const auto saved = m_savedPlaces.constFind(urn);
    if (!urn.isEmpty() && saved != m_savedPlaces.constEnd())
        return *saved;
    return m_journal ? m_journal->leftPlace(urn) : std::nullopt;
}

void PlayerController::forgetSavedPlace()
{
    m_placeAskedFor = true;
}

// The store may not know how long a video is; the renderer does once it has opened it.
void PlayerController::takeDuration()
{
    const MediaBackend *backend = m_videoWidget ? m_videoWidget->backend() : nullptr;
    if (m_video.duration == 0 && backend && backend->uri() == m_video.url)
        m_video.duration = m_videoWidget->duration();
}

// The current state says whether the widget knows where the video is.
void PlayerController::followPlace()
{
    const bool plays = m_state == AvloRenderer::Playing;
    if (m_state == AvloRenderer::Stopped)
        forgetPlace();
    // One that stops at its first frame was left before it was seen.
    else if (m_state == AvloRenderer::Paused || (plays && m_pendingAction != StopWhenPlaying))
        m_placeKnown = true;
    if (plays && !m_noteTimer->isActive())
        m_noteTimer->start();
    else if (m_state == AvloRenderer::Paused)
        m_noteTimer->stop();
}

void PlayerController::forgetPlace()
{
    m_placeKnown = false;
    m_noteTimer->stop();
    forgetCommand();
}

void PlayerController::notePlace()
{
    const std::optional<uint> position = lastKnownPosition();
    if (!position || m_positionFinal || !m_journal)
        return;
    takeDuration();
    m_journal->note(m_video, *position);
}

void PlayerController::removePauseThumbnail()
{
    m_thumbnails->deletePauseThumbnail(m_video.url);
}

// It may be renamed while it plays.
void PlayerController::takeNews(const QList<QStringList> &rows)
{
    for (const QStringList &row : rows) {
        const VideoInfo news = videoInfoFromRow(row);
        if (news.urn.isEmpty() || news.title.isEmpty())
            continue;
        for (VideoInfo *video : {&m_video, &m_lastSavedVideo}) {
            if (video->urn == news.urn)
                video->title = news.title;
        }
    }
}
