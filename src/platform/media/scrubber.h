// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediabackend.h"

#include <QPointer>

// A seek by hand, from the moment a finger takes hold of the time until it lets go: the playback waits, the
// picture follows, and goes on from where the finger left it, or from where it was when the seek is undone.
class Scrubber
{
public:
    void setBackend(MediaBackend *backend);

    // False where nothing can be sought.
    bool begin();
    void moveTo(MediaTime position);
    void finish();
    void cancel();

    [[nodiscard]] bool canSeek() const;
    [[nodiscard]] bool isActive() const { return m_active; }
    // Where it began, and where it has come to; both hold until the next one begins.
    [[nodiscard]] MediaTime origin() const { return m_origin; }
    [[nodiscard]] MediaTime target() const { return m_target; }

private:
    // Of the video with which it began: another one is not sought in.
    [[nodiscard]] bool isPresent() const;

    QPointer<MediaBackend> m_backend;
    MediaTime m_origin{0};
    MediaTime m_target{0};
    int m_generation = 0;
    bool m_active = false;
    bool m_moved = false;
};
