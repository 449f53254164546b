// SPDX-License-Identifier: GPL-3.0-or-later
#include "gesturedriver.h"

#include "gestureoverlay.h"
#include "playbackbounds.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr qreal FastRate = 2;
constexpr qreal LeverPart = 0.7; // of the height: from nothing to all
constexpr qreal LongestLever = 480; // logical pixels

// What a swipe over the whole width passes over: all of a short clip, a part of a film that is still found
// with a finger.
MediaTime swipeSpan(MediaTime duration)
{
    const MediaTime span = std::clamp<MediaTime>(duration / 4, 1min, 15min);
    return std::min(span, duration);
}

} // namespace

GestureDriver::GestureDriver(VideoGestures *gestures, GestureOverlay *overlay, QObject *parent)
    : QObject(parent),
      m_gestures(gestures),
      m_overlay(overlay)
{
    gestures->setPermission([this](Gesture gesture) { return permits(gesture); });
    connect(gestures, &VideoGestures::began, this, [this](Gesture gesture) { begin(gesture); });
    connect(gestures, &VideoGestures::moved, this,
            [this](Gesture gesture, qreal way) { move(gesture, way); });
    connect(gestures, &VideoGestures::ended, this, [this](Gesture gesture) { end(gesture, false); });
    connect(gestures, &VideoGestures::cancelled, this, [this](Gesture gesture) { end(gesture, true); });
}

void GestureDriver::setBackend(MediaBackend *backend)
{
    m_gestures->cancel();
    if (m_backend)
        m_backend->disconnect(this);
    m_backend = backend;
    m_scrubber.setBackend(backend);
    if (!backend)
        return;
    // A call, or the end: nothing is left to be played fast or sought in.
    connect(backend, &MediaBackend::stateChanged, this, [this](AvloRenderer::State state) {
        const bool lost = m_gestures->gesture() == Gesture::Fast ? state != AvloRenderer::Playing
                                                                 : state == AvloRenderer::Stopped;
        if (lost)
            m_gestures->cancel();
    });
}

bool GestureDriver::permits(Gesture gesture) const
{
    if (!m_backend)
        return false;
    switch (gesture) {
    case Gesture::Seek:
        return m_scrubber.canSeek();
    case Gesture::Fast: // what comes at its own time, as a broadcast does, comes no faster
        return m_scrubber.canSeek() && m_backend->state() == AvloRenderer::Playing;
    case Gesture::Dim:
    case Gesture::Volume:
        return m_backend->state() != AvloRenderer::Stopped;
    case Gesture::None:
        break;
    }
    return false;
}

void GestureDriver::begin(Gesture gesture)
{
    switch (gesture) {
    case Gesture::Seek:
        m_scrubber.begin();
        break;
    case Gesture::Dim:
        m_levelBefore = m_brightness;
        break;
    case Gesture::Volume:
        m_levelBefore = m_backend->volume();
        break;
    case Gesture::Fast:
        setFast(true);
        break;
    case Gesture::None:
        break;
    }
}

// From nothing to all of a level.
qreal GestureDriver::lever() const
{
    return std::clamp(m_overlay->area().height() * LeverPart, 1.0, LongestLever);
}

void GestureDriver::move(Gesture gesture, qreal way)
{
    if (!m_backend)
        return;
    switch (gesture) {
    case Gesture::Seek:
        seekBy(way);
        break;
    case Gesture::Dim:
        setBrightness(m_levelBefore + way / lever());
        break;
    case Gesture::Volume:
        setVolume(m_levelBefore + way / lever());
        break;
    case Gesture::Fast:
    case Gesture::None:
        break;
    }
}

// Along the seek line: towards its end is onwards.
void GestureDriver::seekBy(qreal way)
{
    const qreal onwards = m_overlay->layoutDirection() == Qt::RightToLeft ? -way : way;
    const MediaTime span = swipeSpan(m_backend->duration());
    const qreal part = onwards / std::max(1.0, m_overlay->area().width());
    m_scrubber.moveTo(m_scrubber.origin() + MediaTime(qint64(part * qreal(span.count()))));
    m_overlay->showTime(m_scrubber.target(), m_scrubber.target() - m_scrubber.origin(),
                        m_backend->duration());
}

void GestureDriver::setBrightness(qreal brightness)
{
    brightness = std::clamp(brightness, 0.0, 1.0);
    m_overlay->showLevel(GestureOverlay::Level::Brightness, brightness);
    if (brightness == m_brightness)
        return;
    m_brightness = brightness;
    Q_EMIT brightnessChanged();
}

void GestureDriver::forgetBrightness()
{
    if (std::exchange(m_brightness, 1) != 1)
        Q_EMIT brightnessChanged();
}

void GestureDriver::setVolume(qreal volume)
{
    volume = std::clamp(volume, 0.0, 1.0);
    m_backend->setVolume(volume);
    m_overlay->showLevel(GestureOverlay::Level::Volume, volume);
}

// Of what was chosen as fast as that, or faster, the double.
void GestureDriver::setFast(bool fast)
{
    if (!fast) {
        m_backend->setRate(m_rateBefore);
        return;
    }
    m_rateBefore = m_backend->rate();
    const qreal rate
        = m_rateBefore < FastRate ? FastRate : std::min(m_rateBefore * 2, playbackbounds::FastestRate);
    m_backend->setRate(rate);
    m_overlay->showSpeed(rate);
}

// Whoever takes the finger away did not mean a place in the video: it goes on where it was. A level that was
// seen and heard while it changed stays.
void GestureDriver::end(Gesture gesture, bool undo)
{
    m_overlay->leave();
    if (gesture == Gesture::Seek) {
        if (undo || m_scrubber.target() == m_scrubber.origin())
            m_scrubber.cancel();
        else
            m_scrubber.finish();
    } else if (gesture == Gesture::Fast && m_backend) {
        setFast(false);
    }
}
