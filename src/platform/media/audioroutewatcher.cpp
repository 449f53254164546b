// SPDX-License-Identifier: GPL-3.0-or-later
#include "audioroutewatcher.h"

#include "medialog.h"
#include "pulse/pulseroutewatcher.h"

#include <QAbstractEventDispatcher>

namespace {

AudioRouteWatcher::Factory &factory()
{
    static AudioRouteWatcher::Factory current;
    return current;
}

// The sound server's client runs in the main loop of GLib, which Qt may have been built or told to do
// without.
bool runsOnGLib()
{
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher && dispatcher->inherits("QEventDispatcherGlib");
}

} // namespace

void AudioRouteWatcher::setFactory(Factory newFactory)
{
    factory() = std::move(newFactory);
}

AudioRouteWatcher *AudioRouteWatcher::create(QObject *parent)
{
    if (factory())
        return factory()(parent);
    if (runsOnGLib())
        return new PulseRouteWatcher(parent);
    qCInfo(lcMedia, "no event loop of GLib: unplugged headsets are not noticed");
    return new AudioRouteWatcher(parent);
}
