// SPDX-License-Identifier: GPL-3.0-or-later
#include "recordedtimes.h"

#include <algorithm>
#include <iterator>

QList<int> RecordedQuestion::answerFrom(const RecordedTimes &times) const
{
    const auto begin = times.lowerBound(from);
    const auto end = times.lowerBound(std::max(from, until));
    // From the middle to both sides, whichever is nearer.
    auto later = times.lowerBound(std::clamp(around, from, std::max(from, until)));
    auto earlier = later;
    QList<int> ids;
    while (ids.size() < most && (earlier != begin || later != end)) {
        const bool isLater
            = earlier == begin || (later != end && later.key() - around <= around - std::prev(earlier).key());
        ids.append(isLater ? *later++ : *--earlier);
    }
    return ids;
}
