// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "remoteplayer.h"

#include <QObject>
#include <QTimer>

#include <optional>

// Between callers on the bus and the player: a wish is handed on at once when there was none for a while;
// those that come thick and fast are merged, the newest of each kind counts. However many there are, the
// player has a handful a second to do, and nothing piles up.
class CommandGate : public QObject
{
    Q_OBJECT

public:
    enum class Transport { Play, Pause, Stop };

    // `player` outlives this object.
    explicit CommandGate(RemotePlayer *player, QObject *parent = nullptr);

    void transport(Transport wish);
    void seekTo(RemoteTime position);
    void setVolume(double volume);
    void open(const QString &uri);
    void raise();
    // The last wish while the player may not have followed it yet.
    [[nodiscard]] std::optional<Transport> recentTransport() const { return m_recentTransport; }
    // Where the player is bound for, wishes that wait included.
    [[nodiscard]] RemoteTime heading() const { return m_seek.value_or(m_player->heading()); }
    // What waits belongs to a video that is no longer there.
    void forgetSeek() { m_seek.reset(); }

    static constexpr std::chrono::milliseconds Interval{40};

private:
    void pass();
    void handOn();

    RemotePlayer *m_player;
    QTimer m_timer; // runs while the gate is shut
    std::optional<Transport> m_transport;
    std::optional<Transport> m_recentTransport;
    std::optional<RemoteTime> m_seek;
    std::optional<double> m_volume;
    std::optional<QString> m_uri;
    bool m_raise = false;
};
