// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/remote/remoteplayer.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>

#include <memory>

class ApplicationController;
class MediaBackend;
class MprisServer;
class PlayerController;
class VideoWidget;
struct VideoInfo;

// The player as media keys, headset buttons and lock screens see it. On the bus from the first video on, so
// that a panel shows nothing before there is something to control, until the program ends: what was left goes
// on at a press of the headset's button. What plays by it takes the roads that a person's taps take.
class RemoteControl : public QObject, private RemotePlayer
{
    Q_OBJECT

public:
    explicit RemoteControl(ApplicationController *controller);
    ~RemoteControl() override;

    // Follows this player from now on. Both outlive this object, or take it off the bus by going.
    void setPlayer(PlayerController *player, VideoWidget *videoWidget);
    // The name on the bus; empty before the first video.
    [[nodiscard]] QString serviceName() const;

private:
    [[nodiscard]] RemoteTime position() const override;
    [[nodiscard]] RemoteTime heading() const override;
    void raise() override;
    void quit() override;
    void play() override;
    void pause() override;
    void stop() override;
    void seekTo(RemoteTime position) override;
    void setVolume(double volume) override;
    void open(const QString &uri) override;

    void beginVideo();
    void followBackend();
    void stateChanged();
    void bufferingChanged(float percent);
    void announceJump();
    void update();
    void updatePicture(const QString &videoUrl);
    [[nodiscard]] bool isPlayerPageOnTop() const;
    [[nodiscard]] MediaBackend *backend() const;

    ApplicationController *m_controller;
    QPointer<PlayerController> m_player;
    QPointer<VideoWidget> m_videoWidget;
    std::unique_ptr<MprisServer> m_server;
    RemoteState m_state;
    QDeadlineTimer m_opening; // an address was asked for whose video has not begun
    bool m_startAnnounced = false; // where the present video began was told
    bool m_stalled = false;
};
