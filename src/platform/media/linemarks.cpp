// SPDX-License-Identifier: GPL-3.0-or-later
#include "linemarks.h"

#include <algorithm>

QList<qreal> chapterMarks(const QList<MediaChapter> &chapters, MediaTime duration)
{
    QList<qreal> marks;
    for (const MediaChapter &chapter : chapters) {
        if (chapter.start > MediaTime::zero() && chapter.start < duration)
            marks.append(qreal(chapter.start.count()) / qreal(duration.count()));
    }
    return marks;
}

std::optional<LinePart> sectionOnLine(const MediaSection &section, MediaTime duration)
{
    if (duration <= MediaTime::zero() || section.start >= duration || section.end <= section.start)
        return {};
    const auto part = [duration](MediaTime time) { return qreal(time.count()) / qreal(duration.count()); };
    return LinePart{part(section.start), std::min(part(section.end), 1.0)};
}

QString chapterTitle(const QList<MediaChapter> &chapters, MediaTime time)
{
    QString title;
    for (const MediaChapter &chapter : chapters) {
        if (chapter.start <= time && (chapter.end <= chapter.start || time < chapter.end))
            title = chapter.title;
    }
    return title;
}
