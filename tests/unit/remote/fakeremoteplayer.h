// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/remote/remoteplayer.h"

#include <QStringList>

// Writes down what it is asked; stands where the test says.
class FakeRemotePlayer : public RemotePlayer
{
public:
    [[nodiscard]] RemoteTime position() const override { return at; }
    [[nodiscard]] RemoteTime heading() const override { return at; }
    void raise() override { asked.append(QStringLiteral("raise")); }
    void quit() override { asked.append(QStringLiteral("quit")); }
    void play() override { asked.append(QStringLiteral("play")); }
    void pause() override { asked.append(QStringLiteral("pause")); }
    void stop() override { asked.append(QStringLiteral("stop")); }
    void seekTo(RemoteTime position) override
    {
        asked.append(QStringLiteral("seek %1").arg(position.count()));
        at = position;
    }
    void setVolume(double volume) override { asked.append(QStringLiteral("volume %1").arg(volume)); }
    void open(const QString &uri) override { asked.append(QStringLiteral("open ") + uri); }

    [[nodiscard]] QStringList take() { return std::exchange(asked, {}); }

    RemoteTime at{0};
    QStringList asked;
};
