// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDeadlineTimer>
#include <QHash>
#include <QList>
#include <QString>

// A way out of a sound device.
struct AudioPort
{
    QString name;
    bool pluggable = false; // headphones, a headset, a screen; false: built-in loudspeaker, earpiece
    bool gone = false; // known not to be plugged in
};

struct AudioSink
{
    quint32 index = 0;
    QList<AudioPort> ports;
    qsizetype active = -1; // of the ports; -1: it has none
    // A built-in loudspeaker: it is never pulled out. Where each output of a device is a sink of its own, it
    // goes when something is plugged in.
    bool builtIn = false;
};

// What this program's sound comes out of, kept up by what the sound server tells in its own order: sinks, and
// the streams of this program on them. Each change answers whether it took the output in use away.
class AudioRoute
{
public:
    // After a stream left a sink or ended, the sink still counts as in use for `grace`: the server moves the
    // streams of a sink that goes, or ends them, before it tells that the sink is gone.
    explicit AudioRoute(std::chrono::milliseconds grace = std::chrono::seconds(1)) : m_grace(grace) { }

    [[nodiscard]] bool setSink(const AudioSink &sink);
    [[nodiscard]] bool removeSink(quint32 index);
    [[nodiscard]] bool setStream(quint32 stream, quint32 sink);
    void removeStream(quint32 stream);
    void clear();

private:
    [[nodiscard]] bool isInUse(quint32 sink) const;
    void leave(quint32 sink);

    std::chrono::milliseconds m_grace;
    QHash<quint32, AudioSink> m_sinks;
    QHash<quint32, quint32> m_streams; // sinks, by stream
    quint32 m_left = 0; // while m_leftUntil has not passed
    QDeadlineTimer m_leftUntil;
};
