// SPDX-License-Identifier: GPL-3.0-or-later
// The tracks and chapters of what a session plays.
#include "chapters.h"
#include "filechapters.h"
#include "playableaddress.h"
#include "playbacksession.h"

#include <algorithm>

void PlaybackSession::handleTracks(GstMessage *message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STREAM_COLLECTION:
        if (m_tracks.takeCollection(message))
            tellSounds();
        break;
    case GST_MESSAGE_STREAMS_SELECTED:
        if (int(m_tracks.takeSelected(message)) + int(m_tracks.refresh()) > 0)
            tellSounds();
        break;
    case GST_MESSAGE_TOC: {
        GstToc *toc = nullptr;
        gst_message_parse_toc(message, &toc, nullptr);
        if (toc == nullptr)
            break;
        Q_EMIT chaptersFound(chaptersOf(toc));
        gst_toc_unref(toc);
        break;
    }
    default:
        break;
    }
}

// Not before the first picture, which waits for no disk.
void PlaybackSession::tellFileChapters()
{
    if (m_phase != Phase::Ready || !isFileAddress(m_request.uri))
        return;
    if (const QList<MediaChapter> chapters = fileChapters(m_request.uri); !chapters.isEmpty())
        Q_EMIT chaptersFound(chapters);
}

void PlaybackSession::tellSounds()
{
    QList<MediaTrack> tracks;
    const QList<trackchoice::Candidate> sounds = m_tracks.sounds();
    for (const trackchoice::Candidate &sound : sounds)
        tracks.append(sound.track);
    Q_EMIT soundsFound(tracks, m_tracks.heard(), m_tracks.framesPerSecond());
}

// Before anything was heard. True: the pipeline was asked for another track than it has decoded.
bool PlaybackSession::chooseSound()
{
    if (m_tracks.refresh())
        tellSounds();
    const QList<trackchoice::Candidate> sounds = m_tracks.sounds();
    if (m_live || sounds.size() < 2)
        return false;
    const bool known = std::any_of(sounds.begin(), sounds.end(), [this](const trackchoice::Candidate &sound) {
        return sound.track.id == m_request.sound;
    });
    if (!m_tracks.select(m_pipeline.element(),
                         known ? m_request.sound : trackchoice::sound(sounds, m_request.languages)))
        return false;
    tellSounds();
    return true;
}

// Of the old one a second is decoded already: a seek to the present place throws that away.
void PlaybackSession::selectSound(const QString &id)
{
    m_request.sound = id;
    if (m_phase != Phase::Ready || !m_tracks.select(m_pipeline.element(), id))
        return;
    tellSounds();
    if (m_seekable)
        seek(currentPosition() + PlaybackSeeks::InsideFrame, true);
}
