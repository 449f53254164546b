// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controlsdriver.h"
#include "gesturedriver.h"
#include "gestureoverlay.h"
#include "mediabackend.h"
#include "playbackextras.h"
#include "playercontrols.h"
#include "rendererholder.h"
#include "videogestures.h"
#include "videosurface.h"
#include "videowidget.h"
#include "windowwatch.h"

#include <optional>

class VideoWidget::Private
{
public:
    explicit Private(VideoWidget *widget)
        : q(widget),
          surface(widget),
          controls(new PlayerControls(widget)),
          overlay(new GestureOverlay(widget)),
          driver(controls, widget),
          gestures(widget),
          gestureDriver(&gestures, overlay)
    {
    }

    void connectHolder();
    void connectBackend();
    void connectGestures();
    void connectWindow();
    void changeControls(bool visible);
    void toggleControls();
    void pointerMoved();
    void showFullScreenState();
    void toggleFullScreen();
    void watchOutput();
    // What else than a finger keeps the controls: a gesture, the pointer upon one of them, a sheet, a reader.
    [[nodiscard]] bool needsControls() const;
    [[nodiscard]] bool isPointerOnControl() const;
    [[nodiscard]] MediaBackend *backend() const { return holder.backend(); }

    VideoWidget *q;
    VideoSurface surface;
    PlayerControls *controls;
    GestureOverlay *overlay;
    ControlsDriver driver;
    VideoGestures gestures;
    GestureDriver gestureDriver;
    WindowWatch watch;
    RendererHolder holder;
    std::unique_ptr<PlaybackExtras> extras; // made when the rest is
    struct Request
    {
        QString uri;
        uint position;
    };
    std::optional<Request> waitingRequest; // play() before there was a renderer
    bool busy = false;
    bool shownByPointer = false; // the controls: the click that follows was meant for them
};
