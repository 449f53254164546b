// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "remoteplayer.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

class BusName;
class MprisObject;

// Offers a player to media keys, headset buttons, lock screens and panels: MPRIS 2.2, root and player
// interface, without the optional track list, playlists, loop and shuffle. While it lives the object
// /org/mpris/MediaPlayer2 is on the bus and its name is asked for.
class MprisServer : public QObject
{
    Q_OBJECT

public:
    // `player` outlives this object.
    MprisServer(const QDBusConnection &bus, const RemoteIdentity &identity, RemotePlayer *player,
                QObject *parent = nullptr);
    ~MprisServer() override;

    // Told to the bus once the event loop turns, as far as it differs from what was told last.
    void setState(const RemoteState &state);
    // The position is another one than the passing of time explains.
    void announceJump(RemoteTime position);
    // The name on the bus; empty until the bus has given one.
    [[nodiscard]] QString serviceName() const;

private:
    void tellChanges();

    QDBusConnection m_bus;
    MprisObject *m_object;
    BusName *m_name = nullptr;
    RemoteState m_state;
    QVariantMap m_told;
    bool m_tellQueued = false;
};
