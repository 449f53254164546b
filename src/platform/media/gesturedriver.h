// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scrubber.h"
#include "videogestures.h"

#include <QObject>

class GestureOverlay;

// What the gestures on the picture do: a swipe sideways seeks, one up or down dims the picture or changes the
// volume, a long press plays at double speed while it lasts. The overlay shows how far it has come.
class GestureDriver : public QObject
{
    Q_OBJECT

public:
    GestureDriver(VideoGestures *gestures, GestureOverlay *overlay, QObject *parent = nullptr);

    void setBackend(MediaBackend *backend); // null: none
    // 1: the picture as it is; 0: as dark as it gets, which is not black.
    [[nodiscard]] qreal brightness() const { return m_brightness; }
    void forgetBrightness();

Q_SIGNALS:
    void brightnessChanged();

private:
    using Gesture = VideoGestures::Gesture;

    [[nodiscard]] bool permits(Gesture gesture) const;
    void begin(Gesture gesture);
    void move(Gesture gesture, qreal way);
    void end(Gesture gesture, bool undo);
    void seekBy(qreal way);
    void setBrightness(qreal brightness);
    void setVolume(qreal volume);
    void setFast(bool fast);
    [[nodiscard]] qreal lever() const;

    VideoGestures *m_gestures;
    GestureOverlay *m_overlay;
    QPointer<MediaBackend> m_backend;
    Scrubber m_scrubber;
    qreal m_brightness = 1;
    qreal m_levelBefore = 0; // of what the gesture changes
    qreal m_rateBefore = 1;
};
