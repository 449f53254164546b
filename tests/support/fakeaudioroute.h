// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/audioroutewatcher.h"

#include <QPointer>

// An output that vanishes when the test says so.
class FakeAudioRouteWatcher : public AudioRouteWatcher
{
public:
    using AudioRouteWatcher::AudioRouteWatcher;

    // From now on every watcher is one of these.
    static void install()
    {
        setFactory([](QObject *parent) -> AudioRouteWatcher * {
            newest() = new FakeAudioRouteWatcher(parent);
            return newest();
        });
    }
    static void vanish()
    {
        if (newest())
            Q_EMIT newest()->outputVanished();
    }

private:
    static QPointer<FakeAudioRouteWatcher> &newest()
    {
        static QPointer<FakeAudioRouteWatcher> watcher;
        return watcher;
    }
};
