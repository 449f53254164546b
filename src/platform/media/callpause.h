// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediabackend.h"

class CallMonitor;

// Nothing plays during a phone call: what plays when a call begins is paused, what begins or goes on during
// one is paused at its first frame. Nothing goes on by itself when the call is over.
class CallPause : public QObject
{
    Q_OBJECT

public:
    // `backend` lives longer than this object.
    explicit CallPause(MediaBackend *backend, QObject *parent = nullptr);

Q_SIGNALS:
    // Playing was asked for during the call.
    void refused();

private:
    void callChanged();
    void stateChanged(AvloRenderer::State state);

    MediaBackend *m_backend;
    CallMonitor *m_calls;
    bool m_pausedByCall = false; // asked for, and not yet reached
};
