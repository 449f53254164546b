// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackseeks.h"

#include "endedstreams.h"

#include <platform/media/medialog.h>

#include <array>

using namespace std::chrono_literals;

namespace {

// A seek to the very end would show nothing.
constexpr MediaTime EndMargin = 200ms;
// A finger that searches does not stand still for as long.
constexpr auto RestInterval = 150ms;
constexpr auto LookInterval = 200ms;
// Where there is no index: past most distances of key frames, past all but strange ones, from the beginning.
constexpr std::array<MediaTime, 4> Margins{0s, 3s, 15s, MediaTime::max()};
// Between two pictures times are rounded.
constexpr MediaTime Rounding = 5ms;

} // namespace

PlaybackSeeks::PlaybackSeeks(SeekLanding &landing, QObject *parent)
    : QObject(parent),
      m_landing(landing),
      m_look(this),
      m_rest(this)
{
    m_look.setInterval(LookInterval);
    connect(&m_look, &QTimer::timeout, this, [this] { lookAfter(); });
    m_rest.setSingleShot(true);
    m_rest.setInterval(RestInterval);
    connect(&m_rest, &QTimer::timeout, this, [this] { refine(); });
}

void PlaybackSeeks::setPipeline(GstElement *pipeline)
{
    m_pipeline = pipeline;
}

void PlaybackSeeks::dropPipeline()
{
    m_pipeline = nullptr;
    m_look.stop();
    m_rest.stop();
    if (!m_next)
        m_next = m_underWay;
    m_underWay.reset();
    m_reached.reset();
}

void PlaybackSeeks::go(const Place &place)
{
    m_rest.stop();
    m_next.reset();
    if (m_underWay == place)
        return;
    if (m_underWay && (place.exact || !m_underWay->exact)) {
        m_next = place;
        return;
    }
    m_gaveUp = m_underWay.has_value();
    send(place);
}

void PlaybackSeeks::setScrubbing(bool on)
{
    m_scrubbing = on;
    if (!on)
        refine();
}

// From the key frame on to the exact one.
void PlaybackSeeks::refine()
{
    m_rest.stop();
    const auto &newest = m_next ? m_next : m_underWay ? m_underWay : m_reached;
    if (newest && !newest->exact)
        go({newest->position, true});
}

void PlaybackSeeks::arrive()
{
    if (!m_underWay || (m_gaveUp && isPrerolling()))
        return;
    m_gaveUp = false;
    if (!m_next && (missedKeyFrame() || missed())) {
        sendAgain();
        return;
    }
    m_look.stop();
    m_missedAt.reset();
    m_reached = std::exchange(m_underWay, {});
    if (const auto next = takeKept()) {
        m_margin = m_provenMargin; // whether this place needed more was not asked
        send(*next);
        return;
    }
    if (m_scrubbing && !m_reached->exact)
        m_rest.start();
    Q_EMIT finished(m_reached->exact);
}

void PlaybackSeeks::goFurtherBack()
{
    if (!m_underWay)
        return;
    if (isFromTheBeginning() && !m_next)
        return;
    m_gaveUp = true; // its end may still be told
    if (const auto next = takeKept()) {
        m_missedAt.reset();
        send(*next);
        return;
    }
    if (m_underWay->exact)
        ++m_margin;
    sendAgain();
}

bool PlaybackSeeks::isFromTheBeginning() const
{
    return m_underWay->exact && Margins.at(m_margin) >= bounded(m_underWay->position);
}

// What may come yet has come when it is looked at again.
void PlaybackSeeks::lookAfter()
{
    const bool dammed = m_landing.isDammed(m_pipeline);
    const bool still = std::exchange(m_dammed, dammed) && dammed;
    if (still && (m_next || !isFromTheBeginning()))
        goFurtherBack();
    else if (!m_bridged && (still || !dammed))
        m_bridged = bridgeDam(m_pipeline, dammed ? GST_STREAM_TYPE_VIDEO : GST_STREAM_TYPE_AUDIO);
}

// Where there is no key frame, the very frame, which is looked for from further back.
void PlaybackSeeks::sendAgain()
{
    send({m_underWay->position, true});
}

bool PlaybackSeeks::isPrerolling() const
{
    GstState pending = GST_STATE_VOID_PENDING;
    return gst_element_get_state(m_pipeline, nullptr, &pending, 0) == GST_STATE_CHANGE_ASYNC
        && pending == GST_STATE_PAUSED;
}

// No picture came at all, of a video that has some.
bool PlaybackSeeks::missedKeyFrame() const
{
    return !m_underWay->exact && m_landing.hasPictures() && !m_landing.picture() && !isPrerolling();
}

// Without an index the place may be too near for a key frame before it. Behind the last picture there is
// none.
bool PlaybackSeeks::missedAll()
{
    if (!m_landing.isVague() || !m_landing.hasPictures() || isPrerolling())
        return false;
    if (Margins.at(m_margin) >= bounded(m_underWay->position)) {
        m_margin = m_provenMargin;
        return false;
    }
    ++m_margin;
    return true;
}

// The picture comes after the place: once more, from further back. When that brings nothing else, there is no
// picture at that place.
bool PlaybackSeeks::missed()
{
    const auto picture = m_landing.picture();
    if (!m_underWay->exact)
        return false;
    if (!picture)
        return missedAll();
    if (isClose(*picture, bounded(m_underWay->position))) {
        proveMargin();
        return false;
    }
    const bool again = m_missedAt == picture->time && !picture->incomplete;
    if (again || m_margin + 1 == Margins.size()) {
        m_margin = m_provenMargin;
        return false;
    }
    m_missedAt = picture->time;
    ++m_margin;
    return true;
}

// One place may be missed by chance, such as the last pictures before a key frame that is stored before them.
// Where the place after it is, too, the next ones are looked for from further back at once.
void PlaybackSeeks::proveMargin()
{
    m_needsMore = m_margin > m_provenMargin && !m_needsMore;
    if (m_needsMore)
        m_margin = m_provenMargin;
    m_provenMargin = m_margin;
}

bool PlaybackSeeks::isClose(const SeekLanding::Picture &picture, MediaTime place)
{
    return picture.time - place <= std::max(picture.length / 2, Rounding);
}

MediaTime PlaybackSeeks::placeOf(MediaTime shown) const
{
    const auto picture = m_landing.picture();
    if (m_reached && m_reached->exact && picture && picture->time == shown) {
        const MediaTime place = bounded(m_reached->position);
        if (place < shown && isClose(*picture, place))
            return place;
    }
    return m_landing.inside(shown);
}

MediaTime PlaybackSeeks::bounded(MediaTime position) const
{
    if (m_duration > EndMargin)
        position = std::min(position, m_duration - EndMargin);
    return std::max(position, MediaTime::zero());
}

void PlaybackSeeks::send(const Place &place)
{
    m_underWay = place;
    if (m_margin == 0 && m_landing.isVague())
        m_margin = 1;
    const MediaTime position = bounded(place.position);
    const MediaTime margin = place.exact ? std::min(Margins.at(m_margin), position) : MediaTime::zero();
    m_landing.expect(margin);
    m_dammed = m_bridged = false;
    m_look.start();
    int flags = GST_SEEK_FLAG_FLUSH
        | (place.exact ? GST_SEEK_FLAG_ACCURATE : GST_SEEK_FLAG_KEY_UNIT | GST_SEEK_FLAG_SNAP_NEAREST);
    // A decoder gives out a picture only when it has seen some of those after it; of key frames alone each at
    // once. The exact seek that follows a search ends this.
    if (m_scrubbing && !place.exact && !m_landing.needsNext())
        flags |= GST_SEEK_FLAG_TRICKMODE_KEY_UNITS;
    if (m_pipeline != nullptr
        && gst_element_seek_simple(m_pipeline, GST_FORMAT_TIME, GstSeekFlags(flags),
                                   (position - margin).count()))
        return;
    qCWarning(lcMedia, "a seek to %lld ms was refused", static_cast<long long>(place.position / 1ms));
    m_gaveUp = false;
    arrive();
}
