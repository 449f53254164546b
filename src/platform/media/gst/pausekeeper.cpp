// SPDX-License-Identifier: GPL-3.0-or-later
#include "pausekeeper.h"

#include "playableaddress.h"

#include <platform/media/exactpositions.h>
#include <platform/media/medialog.h>
#include <platform/media/uprightimage.h>

namespace {

constexpr int StillQuality = 88;

bool writeStill(const VideoFrame &frame, const QString &path)
{
    return uprightImage(frame).save(path, "JPG", StillQuality);
}

} // namespace

// Without its exact time a video goes on at a whole second: nothing that the disk must be waited for.
PauseKeeper::PauseKeeper()
    : m_receiver(new QObject, [](QObject *receiver) { receiver->deleteLater(); }),
      m_stills(std::make_shared<PausedStills>()),
      m_positions(lcMedia, OnDisk::Nothing),
      m_thread(QStringLiteral("media-stills"))
{
}

void PauseKeeper::leave(const QString &uri, MediaTime time)
{
    if (!isFileAddress(uri)) // in a stream the same time may be another picture
        return;
    ExactPositions &positions = ExactPositions::shared();
    positions.remember(uri, time);
    m_positions.write(positions.fileName(), positions.serialized());
}

void PauseKeeper::pause(const QString &uri, MediaTime time, const VideoFrame &frame, Written written)
{
    leave(uri, time);
    const QString still = frame.isNull() ? QString() : m_files.next();
    m_thread.post([=, receiver = m_receiver, stills = m_stills, recent = ExactPositions::shared().recent()] {
        const bool ok = !still.isEmpty() && writeStill(frame, still);
        QMetaObject::invokeMethod(
            receiver.get(), [written, path = ok ? still : QString()] { written(path); },
            Qt::QueuedConnection);
        if (ok)
            stills->keep(uri, time, still, recent);
    });
}

void PauseKeeper::find(const QString &uri, MediaTime time, Found found)
{
    m_thread.post([=, receiver = m_receiver, stills = m_stills] {
        const QImage still = stills->at(uri, time);
        if (!still.isNull())
            QMetaObject::invokeMethod(
                receiver.get(), [=] { found(still); }, Qt::QueuedConnection);
    });
}
