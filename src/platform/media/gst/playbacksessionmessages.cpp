// SPDX-License-Identifier: GPL-3.0-or-later
// What a session's pipeline says, and what follows from it.
#include "playbacksession.h"

#include "audiosink.h"
#include "emptystreams.h"
#include "playableaddress.h"

#include <platform/media/medialog.h>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

FaultContext PlaybackSession::context() const
{
    FaultContext context;
    context.network = !isFileAddress(m_request.uri);
    context.opened = m_phase == Phase::Ready;
    context.locked = m_streamWatch.isLocked();
    return context;
}

void PlaybackSession::handleMessage(GstMessage *message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
        handleError(message);
        break;
    case GST_MESSAGE_EOS:
        if (m_seeks.isUnderWay()) // of where it was before
            break;
        if (m_live && timeLeft().value_or(0ns) > EndMargin)
            fail(int(PlaybackFault::ConnectionLost), u"it ends too soon"_s);
        else
            end();
        break;
    case GST_MESSAGE_ASYNC_DONE:
        if (m_phase == Phase::Opening)
            firstPreroll();
        else
            m_seeks.arrive();
        break;
    case GST_MESSAGE_STATE_CHANGED:
        settle();
        break;
    case GST_MESSAGE_BUFFERING:
        handleBuffering(message);
        break;
    case GST_MESSAGE_DURATION_CHANGED:
        if (const MediaTime duration = m_pipeline.duration(); duration > 0ns && duration != m_duration) {
            m_duration = duration;
            m_seeks.setDuration(duration);
            Q_EMIT durationFound(duration);
        }
        break;
    case GST_MESSAGE_CLOCK_LOST:
        gst_element_set_state(m_pipeline.element(), GST_STATE_PAUSED);
        applyState();
        break;
    case GST_MESSAGE_LATENCY:
        gst_bin_recalculate_latency(GST_BIN(m_pipeline.element()));
        break;
    case GST_MESSAGE_ELEMENT:
        if (SeekLanding::tellsNoPicture(message))
            m_seeks.goFurtherBack();
        m_faults.note(message);
        if (tellsEmptyPicture(message))
            waitLessLong();
        if (m_faults.missing() == PlaybackFault::Encrypted) // nothing more would come, not even an error
            fail(int(PlaybackFault::Encrypted), u"it is encrypted"_s);
        break;
    case GST_MESSAGE_STREAM_COLLECTION:
    case GST_MESSAGE_STREAMS_SELECTED:
    case GST_MESSAGE_TOC:
        handleTracks(message);
        break;
    case GST_MESSAGE_NEED_CONTEXT:
        m_faults.noteAskedForKey();
        break;
    default:
        break;
    }
}

void PlaybackSession::handleError(GstMessage *message)
{
    if (m_phase == Phase::Ready && m_faults.isOfNoMatter(message))
        return;
    FaultContext place = context();
    place.audioSink = PlaybackFaults::isFrom(message, m_pipeline.audioSink());
    if (place.audioSink && hasPicture() && !m_withoutAudioDevice) {
        const PlaybackFaults::Report report = m_faults.read(message, place);
        qCWarning(lcMedia, "the audio device failed: the picture goes on without sound");
        Q_EMIT complained(int(report.fault), report.text);
        restart(true);
        return;
    }
    const PlaybackFaults::Report report = m_faults.read(message, place);
    if (!opensSilently(int(report.fault)))
        fail(int(report.fault), report.text);
}

// A device that goes while a video opens (a plug that is pulled, a sound server that starts anew) says so
// with any error, or with none. The same file without it tells whose fault it is.
bool PlaybackSession::opensSilently(int code)
{
    const auto fault = PlaybackFault(code);
    const bool perhaps = fault == PlaybackFault::Internal || fault == PlaybackFault::UnknownFormat
        || fault == PlaybackFault::Resolution || fault == PlaybackFault::NoAudioDevice
        || fault == PlaybackFault::AudioDeviceBusy;
    const bool opens = m_phase == Phase::Opening || m_phase == Phase::FindingStart;
    if (!perhaps || !opens || m_withoutAudioDevice || !isFileAddress(m_request.uri)
        || m_tracks.sounds().isEmpty() || isSilentSink(m_pipeline.audioSink()))
        return false;
    qCWarning(lcMedia, "it does not open with the audio device: once more without sound");
    m_didNotOpenWithSound = true;
    restart(true);
    return true;
}

// Playing waits while the stream's buffer fills; what the user wants stays what it is.
void PlaybackSession::handleBuffering(GstMessage *message)
{
    gint percent = 0;
    gst_message_parse_buffering(message, &percent);
    Q_EMIT buffering(percent);
    const bool full = percent >= 100;
    if (full == m_bufferFull)
        return;
    m_bufferFull = full;
    watchStream();
    applyState();
}
