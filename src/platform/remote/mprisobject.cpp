// SPDX-License-Identifier: GPL-3.0-or-later
#include "mprisobject.h"

#include <QDBusError>
#include <QMetaObject>

#include <cmath>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

// The scheme before the colon, in lower case; empty when there is none.
QString schemeOf(const QString &uri)
{
    const qsizetype colon = uri.indexOf(u':');
    return colon > 0 ? uri.left(colon).toLower() : QString();
}

// Offsets come from outside: the sum may not overflow.
RemoteTime sum(RemoteTime time, qlonglong offset)
{
    using Limits = std::numeric_limits<qlonglong>;
    if (offset > 0 && time.count() > Limits::max() - offset)
        return RemoteTime(Limits::max());
    if (offset < 0 && time.count() < Limits::min() - offset)
        return RemoteTime(Limits::min());
    return RemoteTime(time.count() + offset);
}

} // namespace

MprisObject::MprisObject(const RemoteIdentity &identity, RemotePlayer *player, QObject *parent)
    : QObject(parent),
      m_identity(identity),
      m_player(player),
      m_gate(player)
{
}

void MprisObject::setState(const RemoteState &state)
{
    if (state.track != m_state.track)
        m_gate.forgetSeek();
    m_state = state;
}

QString MprisObject::playbackStatus() const
{
    switch (m_state.status) {
    case RemoteState::Status::Playing:
        return u"Playing"_s;
    case RemoteState::Status::Paused:
        return u"Paused"_s;
    case RemoteState::Status::Stopped:
        break;
    }
    return u"Stopped"_s;
}

// Below the program's own name: paths below /org/mpris are the interface's.
QString MprisObject::trackId() const
{
    QString path = u'/' + m_identity.name + u"/Track/%1"_s.arg(m_state.track);
    return path.replace(u'.', u'/').replace(u'-', u'_');
}

QVariantMap MprisObject::metadata() const
{
    if (!hasTrack())
        return {};
    QVariantMap map{{u"mpris:trackid"_s, QVariant::fromValue(QDBusObjectPath(trackId()))}};
    if (m_state.length > RemoteTime::zero())
        map.insert(u"mpris:length"_s, qlonglong(m_state.length.count()));
    const auto insertText = [&map](const QString &name, const QString &text) {
        if (!text.isEmpty())
            map.insert(name, text);
    };
    insertText(u"xesam:title"_s, m_state.title);
    insertText(u"xesam:url"_s, m_state.url);
    insertText(u"mpris:artUrl"_s, m_state.artUrl);
    return map;
}

QVariantMap MprisObject::announcedValues() const
{
    return {{u"PlaybackStatus"_s, playbackStatus()},
            {u"Metadata"_s, metadata()},
            {u"Volume"_s, volume()},
            {u"CanPlay"_s, hasTrack()},
            {u"CanPause"_s, hasTrack()},
            {u"CanSeek"_s, canSeek()}};
}

qlonglong MprisObject::position() const
{
    return hasTrack() ? qMax<qlonglong>(0, m_player->position().count()) : 0;
}

void MprisObject::setRate(double rate)
{
    if (rate == 0.0)
        Pause();
}

void MprisObject::setVolume(double volume)
{
    if (!std::isnan(volume))
        m_gate.setVolume(qBound(0.0, volume, 1.0));
}

void MprisObject::Raise()
{
    m_gate.raise();
}

// After the answer is on its way.
void MprisObject::Quit()
{
    QMetaObject::invokeMethod(
        this, [this] { m_player->quit(); }, Qt::QueuedConnection);
}

bool MprisObject::plays() const
{
    if (const auto wish = m_gate.recentTransport())
        return *wish == CommandGate::Transport::Play;
    return m_state.status == RemoteState::Status::Playing;
}

void MprisObject::Pause()
{
    if (hasTrack())
        m_gate.transport(CommandGate::Transport::Pause);
}

void MprisObject::PlayPause()
{
    if (hasTrack())
        m_gate.transport(plays() ? CommandGate::Transport::Pause : CommandGate::Transport::Play);
    else
        refuse(u"There is nothing to play."_s);
}

void MprisObject::Stop()
{
    if (hasTrack())
        m_gate.transport(CommandGate::Transport::Stop);
}

void MprisObject::Play()
{
    if (hasTrack())
        m_gate.transport(CommandGate::Transport::Play);
}

// Beyond the end it is Next, which has no effect where there is no next video.
void MprisObject::Seek(qlonglong Offset)
{
    if (!canSeek())
        return;
    const RemoteTime target = sum(m_gate.heading(), Offset);
    if (m_state.length == RemoteTime::zero() || target <= m_state.length)
        m_gate.seekTo(qMax(target, RemoteTime::zero()));
}

void MprisObject::SetPosition(const QDBusObjectPath &TrackId, qlonglong Position)
{
    if (!canSeek() || TrackId.path() != trackId() || Position < 0)
        return;
    if (m_state.length == RemoteTime::zero() || RemoteTime(Position) <= m_state.length)
        m_gate.seekTo(RemoteTime(Position));
}

void MprisObject::OpenUri(const QString &Uri)
{
    if (m_identity.uriSchemes.contains(schemeOf(Uri)))
        m_gate.open(Uri);
    else
        refuse(u"Addresses of this kind are not played."_s);
}

void MprisObject::refuse(const QString &reason)
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::NotSupported, reason);
}
