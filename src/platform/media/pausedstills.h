// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

#include <QImage>
#include <QString>
#include <QStringList>

// The pictures on which videos were paused last, so that a video that goes on there shows its place before
// anything of it is decoded. Small files in the user's cache, named by address and exact time: a picture of
// another moment of the same video is never taken for the right one. Waits for the disk: to be used on a
// thread that may, and on one at a time.
class PausedStills
{
public:
    // In the user's cache.
    PausedStills();
    explicit PausedStills(const QString &directory);

    // Copies an image file. `recent` are the addresses paused last, newest first: of all others, of those
    // beyond Capacity and of local files that are gone nothing is kept. A still that cannot be written is
    // told in the log, the first of a row.
    void keep(const QString &uri, MediaTime time, const QString &imageFile, const QStringList &recent);
    // Null when none is kept of this very moment, or when the file was changed since.
    [[nodiscard]] QImage at(const QString &uri, MediaTime time) const;

    static constexpr int Capacity = 24;

private:
    void clean(const QStringList &recent, const QString &newest) const;

    QString m_directory;
    bool m_failing = false;
};
