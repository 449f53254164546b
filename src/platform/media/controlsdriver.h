// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scrubber.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class PlayerControls;

// Between the controls and the back end: shows what plays, carries out what is asked for, and tells when the
// controls have stood long enough.
class ControlsDriver : public QObject
{
    Q_OBJECT

public:
    explicit ControlsDriver(PlayerControls *controls, QObject *parent = nullptr);

    void setBackend(MediaBackend *backend); // null: none
    void setShown(bool shown);
    // Asked when the controls have stood long enough: whether they are needed for something else than a
    // finger upon them.
    void setNeed(const std::function<bool()> &isNeeded) { m_isNeeded = isNeeded; }
    // They stay for another while.
    void keepShown();
    // By a step of the volume's keys.
    void changeVolume(qreal step);
    // After the end the mark begins the video anew, else where it was stopped.
    void playOrPause();

Q_SIGNALS:
    void hideDue(); // only while playing

private:
    void connectControls();
    void refresh();
    [[nodiscard]] bool isPlaying() const;

    PlayerControls *m_controls;
    QPointer<MediaBackend> m_backend;
    Scrubber m_scrubber;
    std::function<bool()> m_isNeeded;
    bool m_ended = false;
    QTimer m_autoHide;
    QTimer m_refresh; // of the times while the controls are shown
};
