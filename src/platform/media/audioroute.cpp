// SPDX-License-Identifier: GPL-3.0-or-later
#include "audioroute.h"

#include <algorithm>

namespace {

const AudioPort *activePort(const AudioSink &sink)
{
    return sink.active >= 0 && sink.active < sink.ports.size() ? &sink.ports.at(sink.active) : nullptr;
}

// The port that was in use was pulled out, and what is in use now is heard by others, or nothing is.
bool lostItsPort(const AudioSink &before, const AudioSink &now)
{
    const AudioPort *used = activePort(before);
    if (!used || !used->pluggable)
        return false;
    const auto same = std::find_if(now.ports.cbegin(), now.ports.cend(),
                                   [used](const AudioPort &port) { return port.name == used->name; });
    if (same != now.ports.cend() && !same->gone)
        return false;
    const AudioPort *active = activePort(now);
    if (active && active->name != used->name)
        return !active->pluggable;
    // Another port will take over and decide it; without one this is all there is.
    return !used->gone
        && std::all_of(now.ports.cbegin(), now.ports.cend(), [](const AudioPort &port) { return port.gone; });
}

} // namespace

bool AudioRoute::setSink(const AudioSink &sink)
{
    const auto known = m_sinks.constFind(sink.index);
    const bool lost = known != m_sinks.cend() && isInUse(sink.index) && lostItsPort(*known, sink);
    m_sinks.insert(sink.index, sink);
    return lost;
}

bool AudioRoute::removeSink(quint32 index)
{
    const AudioSink sink = m_sinks.take(index);
    const bool used = isInUse(index);
    m_streams.removeIf([index](const auto &stream) { return stream.value() == index; });
    return used && !sink.builtIn;
}

bool AudioRoute::setStream(quint32 stream, quint32 sink)
{
    const auto known = m_streams.constFind(stream);
    const bool moved = known != m_streams.cend() && *known != sink;
    const quint32 before = moved ? *known : sink;
    m_streams.insert(stream, sink);
    if (!moved)
        return false;
    leave(before);
    // Servers that do not switch ports move the streams of a device without anything plugged in elsewhere.
    const AudioSink from = m_sinks.value(before);
    const AudioPort *left = activePort(from);
    return left && left->pluggable && left->gone;
}

void AudioRoute::removeStream(quint32 stream)
{
    const auto known = m_streams.constFind(stream);
    if (known == m_streams.cend())
        return;
    leave(*known);
    m_streams.erase(known);
}

void AudioRoute::clear()
{
    m_sinks.clear();
    m_streams.clear();
    m_leftUntil = QDeadlineTimer();
}

bool AudioRoute::isInUse(quint32 sink) const
{
    return m_streams.values().contains(sink) || (sink == m_left && !m_leftUntil.hasExpired());
}

void AudioRoute::leave(quint32 sink)
{
    m_left = sink;
    m_leftUntil.setRemainingTime(m_grace);
}
