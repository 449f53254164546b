// SPDX-License-Identifier: GPL-3.0-or-later
#include "gstmediabackend.h"

#include "controlthread.h"
#include "frameslot.h"
#include "gstsetup.h"
#include "playableaddress.h"
#include "playbacksession.h"
#include "subtitledesk.h"

#include <platform/media/addresstext.h>
#include <platform/media/exactpositions.h>
#include <platform/media/medialog.h>
#include <platform/media/subtitles/languages.h>

#include <QPointer>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr MediaTime SameFrame = 2 * PlaybackSeeks::InsideFrame; // times as near are those of one frame
constexpr auto OpeningLimit = 40s;
constexpr int LoggedLength = 400;

} // namespace

GstMediaBackend::GstMediaBackend(QObject *parent)
    : MediaBackend(parent),
      m_control(std::make_unique<ControlThread>()),
      m_subtitles(new SubtitleDesk(this))
{
    connect(m_subtitles, &SubtitleDesk::tracksChanged, this, [this] { announceTracks(); });
    connect(m_subtitles, &SubtitleDesk::shownChanged, this, &MediaBackend::subtitlesChanged,
            Qt::QueuedConnection);
    m_openingTimer.setSingleShot(true);
    m_openingTimer.setInterval(OpeningLimit);
    connect(&m_openingTimer, &QTimer::timeout, this, [this] { hangCheck(); });
    m_control->post(prepareGStreamer);
}

GstMediaBackend::~GstMediaBackend()
{
    leave();
    endSession();
}

void GstMediaBackend::play(const QString &uri, uint startSecond)
{
    leave();
    endSession();
    beginMedia(uri);
    m_opened = m_seekable = m_hasPicture = false;
    m_frame = VideoFrame();
    m_start = ExactPositions::shared().at(uri, startSecond);
    m_position = m_start;
    m_keeper.find(uri, m_start, [this, number = m_sessionNumber](const QImage &still) {
        if (number == m_sessionNumber)
            showStill(still);
    });
    m_slot = std::make_shared<FrameSlot>(this, [this, number = m_sessionNumber] {
        if (number == m_sessionNumber)
            fetchFrame();
    });
    PlaybackSession::Request request;
    request.uri = uri;
    request.start = m_start % 1s == 0ns ? m_start : m_start + PlaybackSeeks::InsideFrame;
    request.output = {m_outputSize, m_fill, m_rotation, m_planesWanted};
    request.volume = m_volume;
    beginTracks();
    request.subtitles = m_subtitles->tap();
    request.languages = languages::ofUser();
    m_session = new PlaybackSession(request, [slot = m_slot](const VideoFrame &frame) { slot->put(frame); });
    connectSession(m_session);
    connectTracks(m_session);
    m_session->moveToThread(m_control->thread());
    m_openingTimer.start();
    QMetaObject::invokeMethod(
        this,
        [this, number = m_sessionNumber] {
            if (number == m_sessionNumber && !m_opened)
                setState(AvloRenderer::Transitioning);
        },
        Qt::QueuedConnection);
    command([](PlaybackSession *session) { session->start(); });
}

void GstMediaBackend::connectSession(PlaybackSession *session)
{
    on(session, &PlaybackSession::opened, [this](QSize picture, MediaTime duration, bool seekable) {
        m_openingTimer.stop();
        m_opened = true;
        m_seekable = seekable;
        m_hasPicture = !picture.isEmpty();
        setDuration(duration);
        m_subtitles->opened(languageOfSound(), m_framesPerSecond);
        Q_EMIT videoSizeChanged(picture);
    });
    on(session, &PlaybackSession::durationFound, [this](MediaTime duration) { setDuration(duration); });
    on(session, &PlaybackSession::positionFound, [this](MediaTime position) {
        m_position = position;
        followPosition();
    });
    on(session, &PlaybackSession::playing, [this] { setState(AvloRenderer::Playing); });
    on(session, &PlaybackSession::paused, [this](MediaTime position) { arrivePaused(position); });
    on(session, &PlaybackSession::seekFinished, [this](bool exact) {
        if (!m_hasPicture && m_seekTarget) // no frame tells the time
            m_position = *m_seekTarget;
        if (exact || !isScrubbing())
            m_seekTarget.reset();
        Q_EMIT seekFinished();
    });
    on(session, &PlaybackSession::buffering, [this](int percent) {
        if (!m_opened)
            m_openingTimer.start();
        Q_EMIT bufferingChanged(float(percent));
    });
    on(session, &PlaybackSession::flowing, [this] {
        if (!m_opened)
            m_openingTimer.start();
    });
    on(session, &PlaybackSession::complained, [this](int code, const QString &text) {
        Q_EMIT complained(AvloError{code, withoutCredentials(text)});
    });
    on(session, &PlaybackSession::ended, [this] {
        m_position = std::max(m_position, duration());
        endSession();
        const int number = m_sessionNumber;
        setState(AvloRenderer::Stopped);
        if (number == m_sessionNumber)
            Q_EMIT endReached();
    });
    on(session, &PlaybackSession::failed, [this](int code, const QString &reason) {
        const QString text = withoutCredentials(reason);
        qCWarning(lcMedia, "%s: error %d: %s", qUtf8Printable(withoutCredentials(uri()).left(LoggedLength)),
                  code, qUtf8Printable(text.left(LoggedLength)));
        endSession();
        const int number = m_sessionNumber;
        Q_EMIT failed(AvloError{code, text});
        if (number == m_sessionNumber)
            setState(AvloRenderer::Stopped);
    });
}

void GstMediaBackend::command(std::function<void(PlaybackSession *)> action)
{
    if (m_session != nullptr)
        m_control->post([session = m_session, action = std::move(action)] { action(session); });
}

void GstMediaBackend::endSession()
{
    ++m_sessionNumber;
    m_openingTimer.stop();
    m_seekTarget.reset();
    setScrubbing(false);
    if (m_slot)
        std::exchange(m_slot, nullptr)->close();
    if (m_session == nullptr)
        return;
    // Closing may take long, or for ever: the next video has a thread of its own.
    m_control->post([session = std::exchange(m_session, nullptr)] {
        delete session;
        giveMemoryBack();
    });
    m_control->finish();
    m_retired.push_back(std::exchange(m_control, std::make_unique<ControlThread>()));
    m_control->post(initialiseGStreamer);
    std::erase_if(m_retired, [](const auto &control) { return control->isFinished(); });
}

void GstMediaBackend::pause()
{
    command([](PlaybackSession *session) { session->setPlaying(false); });
    endScrub(); // after that, lest it plays on for a moment
}

void GstMediaBackend::resume()
{
    command([](PlaybackSession *session) { session->setPlaying(true); });
}

void GstMediaBackend::stop()
{
    leave();
    endSession();
    QMetaObject::invokeMethod(
        this,
        [this, number = m_sessionNumber] {
            if (number == m_sessionNumber)
                setState(AvloRenderer::Stopped);
        },
        Qt::QueuedConnection);
}

void GstMediaBackend::seek(MediaTime position, SeekPrecision precision)
{
    if (m_session == nullptr || (m_opened && !m_seekable))
        return;
    position = std::max(position, MediaTime::zero());
    if (duration() > 0ns)
        position = std::min(position, duration());
    endLoopOutside(position);
    m_seekTarget = position;
    command([position, exact = precision == SeekPrecision::Exact](PlaybackSession *session) {
        session->seek(position, exact);
    });
}

void GstMediaBackend::beginScrub()
{
    if (isScrubbing() || m_session == nullptr || (m_opened && !m_seekable))
        return;
    setScrubbing(true);
    command([](PlaybackSession *session) { session->beginScrub(); });
}

void GstMediaBackend::endScrub()
{
    if (!isScrubbing())
        return;
    setScrubbing(false);
    command([](PlaybackSession *session) { session->endScrub(); });
}

void GstMediaBackend::setVolume(qreal volume)
{
    volume = qBound(0.0, volume, 1.0);
    if (qFuzzyCompare(1 + volume, 1 + m_volume))
        return;
    m_volume = volume;
    command([volume](PlaybackSession *session) { session->setVolume(volume); });
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT volumeChanged(m_volume); }, Qt::QueuedConnection);
}

void GstMediaBackend::setOutput(const QSize &size, bool fill, int rotation)
{
    m_outputSize = size;
    m_fill = fill;
    m_rotation = rotation;
    sendOutput();
}

void GstMediaBackend::setPlanesWanted(bool wanted)
{
    if (std::exchange(m_planesWanted, wanted) != wanted)
        sendOutput();
}

void GstMediaBackend::sendOutput()
{
    command([output = VideoOutput{m_outputSize, m_fill, m_rotation, m_planesWanted}](
                PlaybackSession *session) { session->setOutput(output); });
}

void GstMediaBackend::fetchFrame()
{
    m_frame = m_slot->fetch();
    if (m_frame.isNull())
        return;
    m_position = m_frame.time;
    Q_EMIT frameChanged();
    followPosition();
}

// What the video was left with stands in for its first frame, which is the same.
void GstMediaBackend::showStill(const QImage &still)
{
    if (!m_frame.isNull())
        return;
    m_frame = VideoFrame{still, m_start, 0};
    Q_EMIT frameChanged();
}

void GstMediaBackend::arrivePaused(MediaTime position)
{
    if (m_hasPicture)
        fetchFrame();
    m_position = settled(position);
    // The still is told also when another video was begun meanwhile: it belongs to its address.
    m_keeper.pause(uri(), m_position, stillOnPause() ? m_frame : VideoFrame(),
                   [this, number = m_sessionNumber, address = uri()](const QString &written) {
                       const QPointer<GstMediaBackend> guard(this);
                       if (!written.isEmpty())
                           Q_EMIT stillWritten(address, written);
                       if (guard && number == m_sessionNumber)
                           Q_EMIT paused();
                   });
    setState(AvloRenderer::Paused);
}

// The frame at which playing began counts from where it was left, time after time.
MediaTime GstMediaBackend::settled(MediaTime position) const
{
    return position >= m_start && position - m_start <= SameFrame ? m_start : position;
}

// In the middle of a video: where it was is kept, as after a pause.
void GstMediaBackend::leave()
{
    if (m_session != nullptr && m_hasPicture && state() == AvloRenderer::Playing)
        m_keeper.leave(uri(), settled(m_position));
}

// Neither a frame nor an error nor a per cent for so long: the control thread itself waits for something.
void GstMediaBackend::hangCheck()
{
    endSession();
    const int number = m_sessionNumber;
    const PlaybackFault fault
        = isFileAddress(uri()) ? PlaybackFault::NotReadable : PlaybackFault::ConnectionLost;
    Q_EMIT failed(AvloError{int(fault), u"no answer within %1 s"_s.arg(OpeningLimit / 1s)});
    if (number == m_sessionNumber)
        setState(AvloRenderer::Stopped);
}
