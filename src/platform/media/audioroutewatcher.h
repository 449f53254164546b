// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <functional>

// Tells when what this program's sound comes out of is taken away: the plug is pulled, the wireless headset
// goes out of reach. The sound would go on from a loudspeaker for all to hear.
class AudioRouteWatcher : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // The watcher of this machine; one that never tells anything where nothing can be watched; or what
    // setFactory() set (a fake, in tests).
    [[nodiscard]] static AudioRouteWatcher *create(QObject *parent);
    using Factory = std::function<AudioRouteWatcher *(QObject *parent)>;
    static void setFactory(Factory factory);

Q_SIGNALS:
    void outputVanished();
};
