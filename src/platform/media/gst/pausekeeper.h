// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controlthread.h"

#include <platform/media/pausedstills.h>
#include <platform/media/stillfiles.h>
#include <platform/media/videoframe.h>
#include <platform/system/filewriter.h>

#include <QImage>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

// Keeps what a video is left with: the exact time, and the picture, as a file for whoever asks for one and
// for the moment at which it goes on. Pictures are coded, written and read on a thread of its own; answers
// come through the event loop, and none comes after the end of this object.
class PauseKeeper
{
public:
    using Written = std::function<void(const QString &path)>;
    using Found = std::function<void(const QImage &still)>;

    PauseKeeper();
    Q_DISABLE_COPY_MOVE(PauseKeeper)

    // Left without a pause: its time is kept.
    void leave(const QString &uri, MediaTime time);
    // Its time, and unless it is null the frame; `written` hears of the frame's file, or of an empty name.
    void pause(const QString &uri, MediaTime time, const VideoFrame &frame, Written written);
    // The picture that was kept of that very moment; not called when there is none.
    void find(const QString &uri, MediaTime time, Found found);

private:
    // The thread may outlive this: it shares what it uses.
    std::shared_ptr<QObject> m_receiver; // of its answers
    std::shared_ptr<PausedStills> m_stills; // for the thread only
    StillFiles m_files;
    FileWriter m_positions;
    ControlThread m_thread;
};
