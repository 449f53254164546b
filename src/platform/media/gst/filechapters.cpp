// SPDX-License-Identifier: GPL-3.0-or-later
#include "filechapters.h"

#include "playableaddress.h"

#include <QByteArrayView>
#include <QFile>
#include <QUrl>
#include <QtEndian>

#include <algorithm>
#include <limits>
#include <optional>

namespace {

constexpr int MostBoxes = 1000; // of one level
constexpr qint64 HeadSize = 8;
constexpr qint64 LongestList = 128 * 1024; // 255 chapters with titles of 255 bytes are less
constexpr qsizetype LongestTitle = 200; // characters
constexpr qint64 TickLength = 100; // nanoseconds

// Where the content of a box lies.
struct Span
{
    qint64 begin;
    qint64 end;
};

std::optional<Span> findBox(QFile &file, const Span &outer, QByteArrayView type)
{
    qint64 at = outer.begin;
    for (int i = 0; i < MostBoxes && at + HeadSize <= outer.end; ++i) {
        if (!file.seek(at))
            return {};
        const QByteArray head = file.read(2 * HeadSize);
        if (head.size() < HeadSize)
            return {};
        qint64 headSize = HeadSize;
        qint64 size = qFromBigEndian<quint32>(head.constData());
        if (size == 1 && head.size() == 2 * HeadSize) { // too large for the usual number
            headSize = 2 * HeadSize;
            size = qFromBigEndian<qint64>(head.constData() + HeadSize);
        } else if (size == 0) {
            size = outer.end - at;
        }
        if (size < headSize || size > outer.end - at)
            return {};
        if (QByteArrayView(head).sliced(4, 4) == type)
            return Span{at + headSize, at + size};
        at += size;
    }
    return {};
}

QList<MediaChapter> readList(const QByteArray &list)
{
    QList<MediaChapter> chapters;
    // Version and flags, in the later version four bytes more, the number of chapters.
    qsizetype at = list.startsWith('\0') ? 4 : 8;
    if (at >= list.size())
        return {};
    const int count = quint8(list.at(at++));
    for (int i = 0; i < count; ++i) {
        constexpr qsizetype Fixed = 9; // a time and the length of a title
        if (list.size() - at < Fixed)
            return {};
        const auto ticks = qFromBigEndian<quint64>(list.constData() + at);
        const qsizetype length = quint8(list.at(at + Fixed - 1));
        at += Fixed;
        if (ticks > quint64(std::numeric_limits<qint64>::max() / TickLength) || list.size() - at < length)
            return {};
        chapters.append({MediaTime(qint64(ticks) * TickLength), MediaTime::zero(),
                         QString::fromUtf8(list.sliced(at, length)).simplified().left(LongestTitle)});
        at += length;
    }
    return chapters;
}

} // namespace

QList<MediaChapter> fileChapters(const QString &uri)
{
    QFile file(QUrl::fromEncoded(playableAddress(uri)).toLocalFile());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    std::optional<Span> box = Span{0, file.size()};
    if (file.peek(HeadSize).mid(4) != "ftyp")
        return {};
    for (const char *type : {"moov", "udta", "chpl"}) {
        box = findBox(file, *box, type);
        if (!box)
            return {};
    }
    if (box->end - box->begin > LongestList || !file.seek(box->begin))
        return {};
    QList<MediaChapter> chapters = readList(file.read(box->end - box->begin));
    std::stable_sort(chapters.begin(), chapters.end(),
                     [](const MediaChapter &a, const MediaChapter &b) { return a.start < b.start; });
    for (qsizetype i = 0; i + 1 < chapters.size(); ++i)
        chapters[i].end = chapters.at(i + 1).start;
    return chapters;
}
