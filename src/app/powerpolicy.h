// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class DisplayWatcher;
class IdleInhibitor;
class PlayerController;
class SleepWatcher;
class VideoWidget;

// What playing asks of the device's power: the display stays on while a video with a picture plays to be
// seen, and the device does not sleep before the place in the video is saved.
class PowerPolicy : public QObject
{
    Q_OBJECT

public:
    // `display` is not owned and lives as long.
    PowerPolicy(DisplayWatcher *display, QObject *parent);

    // Neither is owned. Before this nothing plays.
    void setPlayer(PlayerController *controller, VideoWidget *videoWidget);

private:
    void followRenderer();
    void evaluate();
    [[nodiscard]] bool keepsDisplayOn() const;

    void prepareForSleep();
    void placeSaved();
    void sleepWhenSaved();
    void allowSleep();

    SleepWatcher *m_sleep;
    IdleInhibitor *m_idle;
    DisplayWatcher *m_display;
    QPointer<PlayerController> m_controller;
    QPointer<VideoWidget> m_videoWidget;
    QTimer *m_evaluation; // on the next turn of the event loop, once for all that changed
    QTimer *m_sleepGuard; // runs while the device waits to sleep
    bool m_awaitsPause = false; // of the video that played when the sleep was announced
};
