// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/mediatracks.h>

#include <QList>
#include <QString>

// The chapters of an MP4 file, by the list that most of them carry ("chpl"): the demuxer (1.22) tells none.
// Empty for any other file, and for a list that is damaged. Waits for the disk; reads the list and the heads
// of the boxes on the way to it.
[[nodiscard]] QList<MediaChapter> fileChapters(const QString &uri);
