// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMultiMap>

// Store ids of videos by when they were recorded, in seconds since 1970.
using RecordedTimes = QMultiMap<qint64, int>;

// Which videos were recorded from one time until before another, those nearest to a third first.
struct RecordedQuestion
{
    qint64 from = 0;
    qint64 until = 0;
    qint64 around = 0;
    int most = 0;

    [[nodiscard]] QList<int> answerFrom(const RecordedTimes &times) const;
};
