// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "commandgate.h"
#include "remoteplayer.h"

#include <QDBusContext>
#include <QDBusObjectPath>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// The object on the bus: answers with the state it was last given, and hands wishes on to the gate after the
// rules of the interface. Names are the interface's. A method that can have no effect answers with an error
// where the interface allows one, else it does nothing.
class MprisObject : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_PROPERTY(bool CanQuit READ yes CONSTANT)
    Q_PROPERTY(bool CanRaise READ yes CONSTANT)
    Q_PROPERTY(bool HasTrackList READ no CONSTANT)
    Q_PROPERTY(QString Identity READ identity CONSTANT)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry CONSTANT)
    Q_PROPERTY(QStringList SupportedUriSchemes READ uriSchemes CONSTANT)
    Q_PROPERTY(QStringList SupportedMimeTypes READ mimeTypes CONSTANT)
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate CONSTANT)
    Q_PROPERTY(double MaximumRate READ rate CONSTANT)
    Q_PROPERTY(bool CanGoNext READ no CONSTANT)
    Q_PROPERTY(bool CanGoPrevious READ no CONSTANT)
    Q_PROPERTY(bool CanPlay READ hasTrack)
    Q_PROPERTY(bool CanPause READ hasTrack)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ yes CONSTANT)

public:
    // `player` outlives this object.
    MprisObject(const RemoteIdentity &identity, RemotePlayer *player, QObject *parent = nullptr);

    void setState(const RemoteState &state);
    // The values of the player interface that are told when they change.
    [[nodiscard]] QVariantMap announcedValues() const;

    [[nodiscard]] static bool yes() { return true; }
    [[nodiscard]] static bool no() { return false; }
    [[nodiscard]] static double rate() { return 1.0; }
    [[nodiscard]] QString identity() const { return m_identity.identity; }
    [[nodiscard]] QString desktopEntry() const { return m_identity.desktopEntry; }
    [[nodiscard]] QStringList uriSchemes() const { return m_identity.uriSchemes; }
    [[nodiscard]] QStringList mimeTypes() const { return m_identity.mimeTypes; }
    [[nodiscard]] QString playbackStatus() const;
    [[nodiscard]] QVariantMap metadata() const;
    [[nodiscard]] double volume() const { return m_state.volume; }
    [[nodiscard]] qlonglong position() const;
    [[nodiscard]] bool hasTrack() const { return m_state.track != 0; }
    [[nodiscard]] bool canSeek() const { return hasTrack() && m_state.canSeek; }
    // 0 means a pause; any other rate than 1 is not to be had.
    void setRate(double rate);
    void setVolume(double volume);

public Q_SLOTS:
    void Raise();
    void Quit();
    void Next() { }
    void Previous() { }
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    void Seek(qlonglong Offset);
    void SetPosition(const QDBusObjectPath &TrackId, qlonglong Position);
    void OpenUri(const QString &Uri);

Q_SIGNALS:
    void Seeked(qlonglong Position);

private:
    [[nodiscard]] QString trackId() const;
    [[nodiscard]] bool plays() const;
    void refuse(const QString &reason);

    RemoteIdentity m_identity;
    RemotePlayer *m_player;
    CommandGate m_gate;
    RemoteState m_state;
};
