// SPDX-License-Identifier: GPL-3.0-or-later
#include "nullmediabackend.h"

#include "exactpositions.h"
#include "playbackbounds.h"

#include <algorithm>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

qint64 milliseconds(MediaTime time)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

} // namespace

NullMediaBackend::NullMediaBackend(QObject *parent) : MediaBackend(parent) { }

NullMediaBackend::~NullMediaBackend() = default;

void NullMediaBackend::play(const QString &uri, uint startSecond)
{
    m_commands.append(u"play %1 %2"_s.arg(uri).arg(startSecond));
    beginMedia(uri);
    m_events.clear();
    m_current = m_media.value(uri, m_defaultMedia);
    m_frame = VideoFrame();
    m_ready = m_wantsPause = m_pausing = m_stalled = false;
    m_seekTarget.reset();
    m_scrubTarget.reset();
    m_reached = MediaTime(-1);
    changeRate(1);
    beginTracks();
    m_position = m_exact = clamped(ExactPositions::shared().at(uri, startSecond));
    schedule(0ms, [this] { setState(AvloRenderer::Transitioning); });
    if (m_current.hangsOnPreroll)
        return;
    if (m_current.fault && m_current.faultPosition < 0ms)
        schedule(m_current.prerollDelay, [this] { fail(); });
    else
        schedule(m_current.prerollDelay, [this] { firstFrame(); });
}

void NullMediaBackend::pause()
{
    m_commands.append(u"pause"_s);
    endScrub();
    m_wantsPause = true;
    if (!m_ready || m_pausing || state() != AvloRenderer::Playing)
        return;
    m_pausing = true;
    if (!m_current.hangsOnPause)
        schedule(m_current.pauseDelay, [this] { arrivePaused(); });
}

void NullMediaBackend::resume()
{
    m_commands.append(u"resume"_s);
    m_wantsPause = false;
    if (!m_ready)
        return;
    if (m_pausing) { // not yet paused: it goes on as if nothing had been asked
        m_pausing = false;
        return;
    }
    schedule(m_current.resumeDelay, [this] {
        if (m_ready && !m_wantsPause)
            setState(AvloRenderer::Playing);
    });
}

void NullMediaBackend::stop()
{
    m_commands.append(u"stop"_s);
    m_events.clear();
    m_ready = m_pausing = m_wantsPause = m_stalled = false;
    m_seekTarget.reset();
    m_scrubTarget.reset();
    setScrubbing(false);
    schedule(0ms, [this] { setState(AvloRenderer::Stopped); });
}

void NullMediaBackend::seek(MediaTime position, SeekPrecision precision)
{
    m_commands.append(u"seek %1"_s.arg(milliseconds(position)));
    if (!m_current.seekable)
        return;
    const bool underWay = m_seekTarget.has_value();
    m_seekTarget = clamped(position);
    if (m_loop.section() && !m_loop.contains(*m_seekTarget))
        setLoop({});
    m_seekExact = precision == SeekPrecision::Exact;
    if (isScrubbing())
        m_scrubTarget = m_seekTarget;
    if (m_ready && !underWay)
        schedule(m_current.seekDelay, [this] { arriveSeek(); });
}

void NullMediaBackend::beginScrub()
{
    if (isScrubbing())
        return;
    m_commands.append(u"begin scrub"_s);
    setScrubbing(true);
}

void NullMediaBackend::endScrub()
{
    if (!isScrubbing())
        return;
    m_commands.append(u"end scrub"_s);
    setScrubbing(false);
    const auto target = std::exchange(m_scrubTarget, {});
    if (!target || !m_ready)
        return;
    const bool there = m_seekExact && !m_seekTarget;
    if (there && state() == AvloRenderer::Paused)
        schedule(0ms, [this] { arrivePaused(); });
    else if (!there && !m_seekTarget)
        schedule(m_current.seekDelay, [this] { arriveSeek(); });
    if (!there)
        m_seekTarget = target;
    m_seekExact = true;
}

void NullMediaBackend::setVolume(qreal volume)
{
    m_volume = qBound(0.0, volume, 1.0);
    m_commands.append(u"volume %1"_s.arg(m_volume));
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT volumeChanged(m_volume); }, Qt::QueuedConnection);
}

void NullMediaBackend::setRate(qreal rate)
{
    m_commands.append(u"rate %1"_s.arg(rate));
    changeRate(qBound(playbackbounds::SlowestRate, rate, playbackbounds::FastestRate));
}

void NullMediaBackend::changeRate(qreal rate)
{
    if (qFuzzyCompare(rate, m_rate))
        return;
    m_rate = rate;
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT rateChanged(m_rate); }, Qt::QueuedConnection);
}

void NullMediaBackend::setOutput(const QSize &size, bool fill, int rotation)
{
    Q_UNUSED(size)
    Q_UNUSED(fill)
    Q_UNUSED(rotation)
}

void NullMediaBackend::complain(const AvloError &error)
{
    schedule(0ms, [this, error] { Q_EMIT complained(error); });
}

void NullMediaBackend::lose()
{
    m_events.clear();
    m_ready = m_pausing = m_wantsPause = m_stalled = false;
    schedule(0ms, [this] { Q_EMIT lost(); });
}

void NullMediaBackend::firstFrame()
{
    m_ready = true;
    if (m_seekTarget)
        m_exact = *m_seekTarget;
    const bool sought = m_seekTarget.has_value();
    m_seekTarget.reset();
    m_reached = m_exact - 1ns;
    setDuration(m_current.duration);
    Q_EMIT videoSizeChanged(m_current.size);
    showFrame(m_exact);
    if (sought)
        Q_EMIT seekFinished();
    if (m_wantsPause)
        arrivePaused();
    else
        setState(AvloRenderer::Playing);
}

void NullMediaBackend::arrivePaused()
{
    if (!m_ready || !m_wantsPause)
        return;
    m_pausing = false;
    const int generationThen = generation();
    setState(AvloRenderer::Paused);
    if (generation() != generationThen || !m_wantsPause)
        return;
    m_exact = m_position;
    ExactPositions::shared().remember(uri(), m_position);
    writeStill();
    Q_EMIT paused();
}

void NullMediaBackend::arriveSeek()
{
    if (!m_seekTarget)
        return;
    const MediaTime target = *std::exchange(m_seekTarget, {});
    const auto keyFrame = (target + m_current.keyFrameDistance / 2) / m_current.keyFrameDistance;
    m_exact = m_seekExact ? target : clamped(keyFrame * m_current.keyFrameDistance);
    m_reached = m_exact - 1ns;
    showFrame(m_exact);
    Q_EMIT seekFinished();
    if (state() == AvloRenderer::Paused && m_wantsPause && !isScrubbing())
        arrivePaused();
}

void NullMediaBackend::fail()
{
    const AvloError error = *m_current.fault;
    m_events.clear();
    m_ready = m_pausing = m_wantsPause = m_stalled = false;
    const int generationThen = generation();
    Q_EMIT failed(error);
    if (generation() == generationThen)
        setState(AvloRenderer::Stopped);
}

void NullMediaBackend::end()
{
    m_events.clear();
    m_ready = m_pausing = m_wantsPause = false;
    m_position = m_current.duration;
    const int generationThen = generation();
    setState(AvloRenderer::Stopped);
    if (generation() == generationThen)
        Q_EMIT endReached();
}

void NullMediaBackend::showFrame(MediaTime position)
{
    const qint64 frameLength = std::max<qint64>(1, m_current.frameDuration.count());
    const qint64 number = position.count() / frameLength;
    const MediaTime time(m_current.size.isEmpty() ? position.count() : number * frameLength);
    if (time == m_position && !m_frame.isNull())
        return;
    m_position = time;
    if (m_current.size.isEmpty())
        return;
    QImage image(m_current.size, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(int(number * 7 % 360), 120, 160));
    m_frame = {image, time};
    Q_EMIT frameChanged();
    if (!m_subtitle.isEmpty())
        Q_EMIT subtitlesChanged();
}

void NullMediaBackend::writeStill()
{
    if (!stillOnPause() || m_frame.isNull())
        return;
    const QString path = m_stills.next();
    if (!path.isEmpty() && m_frame.image.save(path, "JPG", 90))
        Q_EMIT stillWritten(uri(), path);
}

MediaTime NullMediaBackend::clamped(MediaTime position) const
{
    return std::clamp(position, MediaTime::zero(), m_current.duration);
}
