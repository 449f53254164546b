// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <chrono>

using RemoteTime = std::chrono::microseconds;

// Who is controlled.
struct RemoteIdentity
{
    QString name; // as a bus name: "org.example.Program"
    QString identity; // as a person reads it
    QString desktopEntry; // without its suffix
    QStringList uriSchemes; // lower case
    QStringList mimeTypes;
};

// What plays.
struct RemoteState
{
    enum class Status { Stopped, Playing, Paused };

    Status status = Status::Stopped;
    quint64 track = 0; // a number of this playback of this video; 0: there is nothing to play
    QString title;
    QString url;
    QString artUrl; // empty: there is no picture
    RemoteTime length{0}; // 0: unknown
    bool canSeek = false;
    double volume = 1; // 0 to 1

    friend bool operator==(const RemoteState &, const RemoteState &) = default;
};

// The player behind a remote control. Nothing here blocks. Wishes come no faster than CommandGate lets them;
// one that cannot be met now has no effect.
class RemotePlayer
{
public:
    virtual ~RemotePlayer() = default;

    [[nodiscard]] virtual RemoteTime position() const = 0;
    // Where playing will go on: the target of a seek under way, else position().
    [[nodiscard]] virtual RemoteTime heading() const = 0;

    virtual void raise() = 0;
    virtual void quit() = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    // Within 0 and the length, when that is known.
    virtual void seekTo(RemoteTime position) = 0;
    virtual void setVolume(double volume) = 0;
    // An address of one of the schemes of the identity.
    virtual void open(const QString &uri) = 0;
};
