// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbacksession.h"

#include "audiosink.h"
#include "endedstreams.h"
#include "localfile.h"
#include "playableaddress.h"
#include "subtitletap.h"

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto OpeningLimit = 10s; // of a file, which gives its first frame sooner or never
constexpr auto EmptyLimit = 2s; // of a file whose picture has ended without a frame; another one may come yet
constexpr auto PlaylistLimit = 3500ms; // of a list of addresses, which nothing takes for a video
constexpr auto PositionInterval = 250ms;
constexpr auto PauseInterval = 200ms; // whoever has something to stand on has it sooner

} // namespace

PlaybackSession::PlaybackSession(const Request &request, VideoSink::Arrived frameArrived)
    : m_request(request),
      m_frameArrived(std::move(frameArrived)),
      m_messages(this,
                 [this](GstMessage *message) {
                     if (m_phase != Phase::Over)
                         handleMessage(message);
                 }),
      m_seeks(m_landing, this),
      m_keptErrors(this),
      m_positionTimer(this),
      m_pauseLook(this),
      m_watchdog(this),
      m_streamWatch(this)
{
    connect(&m_seeks, &PlaybackSeeks::finished, this, &PlaybackSession::seekDone);
    m_positionTimer.setInterval(PositionInterval);
    connect(&m_positionTimer, &QTimer::timeout, this,
            [this] { Q_EMIT positionFound(m_pipeline.position()); });
    m_pauseLook.setInterval(PauseInterval);
    connect(&m_pauseLook, &QTimer::timeout, this, [this] {
        if (bridgeDam(m_pipeline.element(), GST_STREAM_TYPE_VIDEO | GST_STREAM_TYPE_AUDIO))
            m_pauseLook.stop();
    });
    connect(&m_keptErrors, &KeptErrors::kept, this, &PlaybackSession::handleError);
    m_watchdog.setSingleShot(true);
    connect(&m_watchdog, &QTimer::timeout, this, [this] {
        if (!opensSilently(int(PlaybackFault::UnknownFormat)))
            fail(int(PlaybackFault::UnknownFormat), u"nothing comes"_s);
    });
    connect(&m_streamWatch, &StreamWatch::flowing, this, &PlaybackSession::flowing);
    connect(&m_streamWatch, &StreamWatch::driedUp, this, [this] {
        if (m_live && timeLeft().value_or(EndMargin) < EndMargin)
            end();
        else
            fail(int(m_phase == Phase::Ready ? PlaybackFault::ConnectionLost : PlaybackFault::NoConnection),
                 u"nothing comes"_s);
    });
}

PlaybackSession::~PlaybackSession()
{
    shutDown();
}

void PlaybackSession::start()
{
    if (!isPlayableAddress(playableAddress(m_request.uri))) {
        fail(int(PlaybackFault::BadAddress), u"not an address"_s);
        return;
    }
    const LocalFile file = isFileAddress(m_request.uri) ? localFile(m_request.uri) : LocalFile::Ordinary;
    if (file == LocalFile::NoFile) {
        fail(int(PlaybackFault::NotReadable), u"not a file"_s);
        return;
    }
    m_isPlaylist = file == LocalFile::Playlist;
    m_videoSink = std::make_unique<VideoSink>(m_frameArrived);
    m_videoSink->setOutput(m_request.output);
    if (!m_videoSink->isValid() || !build()) {
        fail(int(PlaybackFault::Internal), u"an element of GStreamer is not installed"_s);
        return;
    }
    m_rateChanger.watchPicture(m_videoSink->element());
    m_landing.watchPicture(m_videoSink->element());
    watchStream();
    switch (m_pipeline.start()) {
    case GST_STATE_CHANGE_NO_PREROLL:
        m_live = true;
        firstPreroll();
        break;
    case GST_STATE_CHANGE_FAILURE: // an error message tells why; it stands in the queue before this
        QMetaObject::invokeMethod(
            this, [this] { fail(int(PlaybackFault::Internal), u"the pipeline does not start"_s); },
            Qt::QueuedConnection);
        break;
    default:
        break;
    }
}

bool PlaybackSession::build()
{
    if (!m_pipeline.build(m_request.uri, m_videoSink->element(), m_rateChanger, m_withoutAudioDevice))
        return false;
    m_tracks.reset();
    if (m_request.subtitles)
        m_request.subtitles->watch(m_pipeline.element());
    m_rateChanger.reset();
    m_rateChanger.setRate(m_request.rate);
    m_pipeline.setVolume(m_request.volume);
    m_messages.attach(m_pipeline.element());
    m_landing.watch(m_pipeline.element());
    m_seeks.setPipeline(m_pipeline.element());
    m_streamWatch.attach(m_pipeline.element());
    m_keptErrors.attach(m_pipeline.element());
    return true;
}

void PlaybackSession::shutDown()
{
    m_phase = Phase::Over;
    m_positionTimer.stop();
    m_pauseLook.stop();
    watchStream();
    m_keptErrors.detach();
    m_messages.drop();
    m_seeks.dropPipeline();
    m_pipeline.close();
    m_messages.detach();
}

void PlaybackSession::setPlaying(bool playing)
{
    if (m_wantsPlaying == playing)
        return;
    m_wantsPlaying = playing;
    m_settled = false;
    watchStream();
    if (playing && m_withoutAudioDevice && m_phase == Phase::Ready) // a pause ago; it may be back
        restart(false);
    else
        applyState();
}

void PlaybackSession::setVolume(double volume)
{
    m_request.volume = volume;
    m_pipeline.setVolume(volume);
}

// What comes at its own time comes no faster.
void PlaybackSession::setRate(double rate)
{
    m_request.rate = rate;
    if (!m_live)
        m_rateChanger.setRate(rate);
}

void PlaybackSession::setOutput(const VideoOutput &output)
{
    m_request.output = output;
    if (m_videoSink)
        m_videoSink->setOutput(output);
}

void PlaybackSession::seek(MediaTime position, bool exact)
{
    if (m_phase == Phase::Over || (m_phase == Phase::Ready && !m_seekable))
        return;
    if (m_phase != Phase::Ready) {
        m_seeks.keep({position, exact});
        return;
    }
    m_settled = false;
    m_seeks.go({position, exact});
}

void PlaybackSession::beginScrub()
{
    m_scrubbing = true;
    m_seeks.setScrubbing(true);
    applyState();
}

void PlaybackSession::endScrub()
{
    m_scrubbing = false;
    m_seeks.setScrubbing(false);
    m_settled = m_settled && !m_wantsPlaying; // a paused video that was not moved has told so
    applyState();
}

void PlaybackSession::seekDone(bool exact)
{
    if (m_phase == Phase::Over)
        return;
    if (m_phase == Phase::FindingStart)
        becomeReady();
    Q_EMIT seekFinished(exact);
    applyState();
}

// The pipeline stands on the video's first frame, which nobody has seen: from here it can be moved.
void PlaybackSession::firstPreroll()
{
    if (m_faults.missing() == PlaybackFault::CodecMissing && !hasPicture()) {
        fail(int(PlaybackFault::CodecMissing), u"no decoder for the picture"_s);
        return;
    }
    if (!m_live && !hasPicture() && !m_pipeline.hasSound()) {
        fail(int(m_faults.missing().value_or(PlaybackFault::UnknownFormat)), u"nothing to see or to hear"_s);
        return;
    }
    m_duration = m_pipeline.duration();
    m_seeks.setDuration(m_duration);
    m_seekable = !m_live && m_pipeline.isSeekable();
    // A file that has become shorter than where it was left begins anew.
    const MediaTime start = m_duration > 0ns && m_request.start >= m_duration ? 0ns : m_request.start;
    const MediaTime place = m_seeks.takeKept().value_or(PlaybackSeeks::Place{start, true}).position;
    const bool otherSound = chooseSound();
    if (m_seekable && (place > 0ns || otherSound)) {
        m_phase = Phase::FindingStart;
        m_seeks.go({place, true});
        return;
    }
    becomeReady();
    applyState();
}

void PlaybackSession::becomeReady()
{
    m_phase = Phase::Ready;
    m_keptErrors.detach();
    watchStream();
    Q_EMIT opened(m_videoSink->pictureSize(), m_duration, m_seekable);
    m_videoSink->openGate();
    QMetaObject::invokeMethod(this, &PlaybackSession::tellFileChapters, Qt::QueuedConnection);
    if (std::exchange(m_didNotOpenWithSound, false) && hasPicture())
        Q_EMIT complained(int(PlaybackFault::NoAudioDevice), u"it does not open with the audio device"_s);
    if (hasPicture())
        return;
    m_positionTimer.start();
    if (isSilentSink(m_pipeline.audioSink()))
        Q_EMIT complained(int(PlaybackFault::NoAudioDevice), u"no audio device, and nothing else to play"_s);
}

void PlaybackSession::applyState()
{
    if (m_phase != Phase::Ready)
        return;
    m_pauseLook.stop();
    const bool run = m_wantsPlaying && !m_scrubbing && (m_bufferFull || m_live);
    if (gst_element_set_state(m_pipeline.element(), run ? GST_STATE_PLAYING : GST_STATE_PAUSED)
        != GST_STATE_CHANGE_ASYNC)
        settle();
    else if (!run && !m_seeks.isBusy())
        m_pauseLook.start();
}

// Says once what was reached, when nothing is under way any more.
void PlaybackSession::settle()
{
    if (m_phase != Phase::Ready || m_settled || m_scrubbing || m_seeks.isBusy())
        return;
    GstState current = GST_STATE_NULL;
    GstState pending = GST_STATE_NULL;
    gst_element_get_state(m_pipeline.element(), &current, &pending, 0);
    if (pending != GST_STATE_VOID_PENDING)
        return;
    m_pauseLook.stop();
    if (m_wantsPlaying && current == GST_STATE_PLAYING) {
        m_settled = true;
        Q_EMIT playing();
    } else if (!m_wantsPlaying && current == GST_STATE_PAUSED) {
        m_settled = true;
        Q_EMIT paused(currentPosition());
    }
}

// From where it stands, with another audio output.
void PlaybackSession::restart(bool withoutAudioDevice)
{
    const MediaTime position = m_phase == Phase::Ready ? currentPosition() : m_request.start;
    m_videoSink->closeGate();
    shutDown();
    m_request.start = position;
    m_withoutAudioDevice = withoutAudioDevice;
    m_bufferFull = true;
    m_phase = Phase::Opening;
    if (build())
        m_pipeline.start();
    watchStream();
}

// Whoever pauses waits for nothing.
void PlaybackSession::watchStream()
{
    const bool opens = m_phase == Phase::Opening || m_phase == Phase::FindingStart;
    if (isFileAddress(m_request.uri)) {
        if (!opens)
            m_watchdog.stop();
        else if (!m_watchdog.isActive())
            m_watchdog.start(m_isPlaylist ? PlaylistLimit : OpeningLimit);
        return;
    }
    const bool runsDry = m_phase == Phase::Ready && m_wantsPlaying && (!m_bufferFull || m_live);
    m_streamWatch.expect(opens || runsDry);
}

void PlaybackSession::waitLessLong()
{
    if (m_watchdog.isActive() && m_watchdog.remainingTimeAsDuration() > EmptyLimit)
        m_watchdog.start(EmptyLimit);
}

void PlaybackSession::fail(int code, const QString &text)
{
    if (m_phase == Phase::Over)
        return;
    m_phase = Phase::Over;
    Q_EMIT failed(code, text);
    shutDown();
}

void PlaybackSession::end()
{
    m_phase = Phase::Over;
    Q_EMIT ended();
    shutDown();
}

// Nothing where that is not known.
std::optional<MediaTime> PlaybackSession::timeLeft() const
{
    const MediaTime duration = m_pipeline.duration();
    if (m_phase != Phase::Ready || !hasPicture() || duration == 0ns)
        return {};
    return duration - m_videoSink->latestTime();
}

MediaTime PlaybackSession::currentPosition() const
{
    return hasPicture() ? m_seeks.placeOf(m_videoSink->latestTime()) : m_pipeline.position();
}
