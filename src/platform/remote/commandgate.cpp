// SPDX-License-Identifier: GPL-3.0-or-later
#include "commandgate.h"

#include <utility>

CommandGate::CommandGate(RemotePlayer *player, QObject *parent) : QObject(parent), m_player(player)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(Interval);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_recentTransport.reset();
        if (m_transport || m_seek || m_volume || m_uri || m_raise)
            handOn();
    });
}

void CommandGate::transport(Transport wish)
{
    m_transport = wish;
    m_recentTransport = wish;
    pass();
}

void CommandGate::seekTo(RemoteTime position)
{
    m_seek = position;
    pass();
}

void CommandGate::setVolume(double volume)
{
    m_volume = volume;
    pass();
}

// Another video: what was wished for the one before is over.
void CommandGate::open(const QString &uri)
{
    m_uri = uri;
    m_transport.reset();
    m_seek.reset();
    pass();
}

void CommandGate::raise()
{
    m_raise = true;
    pass();
}

void CommandGate::pass()
{
    if (!m_timer.isActive())
        handOn();
}

void CommandGate::handOn()
{
    m_timer.start();
    const auto uri = std::exchange(m_uri, {});
    const auto volume = std::exchange(m_volume, {});
    const auto seek = std::exchange(m_seek, {});
    const auto transport = std::exchange(m_transport, {});
    m_recentTransport = transport;
    if (std::exchange(m_raise, false))
        m_player->raise();
    if (uri)
        m_player->open(*uri);
    if (volume)
        m_player->setVolume(*volume);
    if (seek)
        m_player->seekTo(*seek);
    if (transport == Transport::Play)
        m_player->play();
    else if (transport == Transport::Pause)
        m_player->pause();
    else if (transport == Transport::Stop)
        m_player->stop();
}
