// SPDX-License-Identifier: GPL-3.0-or-later
#include "librarysnapshot.h"

#include <array>

namespace {

// 0 only for the empty text.
quint32 fingerprint(const QString &text)
{
    if (text.isEmpty())
        return 0;
    const size_t hash = qHash(text, 0x6b65);
    const auto folded = quint32(hash ^ (quint64(hash) >> 32));
    return folded == 0 ? 1 : folded;
}

} // namespace

// The sum: rows of one video come in any order.
void LibrarySnapshot::gather(Video &video, const Row &row)
{
    video.title += fingerprint(row.title);
    video.position += fingerprint(row.position);
    video.fileName += fingerprint(row.fileName);
    video.group = row.group;
}

LibrarySnapshot::Properties LibrarySnapshot::valuesOf(const Video &video)
{
    Properties values;
    values.setFlag(Title, video.title != 0);
    values.setFlag(Position, video.position != 0);
    values.setFlag(FileName, video.fileName != 0);
    return values;
}

LibrarySnapshot::Video &LibrarySnapshot::at(int id)
{
    if (size_t(id) >= m_videos.size())
        m_videos.resize(size_t(id) + 1);
    return m_videos[size_t(id)];
}

void LibrarySnapshot::add(const Row &row)
{
    if (row.id <= 0)
        return;
    Video &video = at(row.id);
    m_count += video.group == NoVideo ? 1 : 0;
    gather(video, row);
}

void LibrarySnapshot::compare(int id, const Video &fresh, Differences &differences)
{
    Video &known = at(id);
    if (known.group == NoVideo) {
        differences.added.append(id);
        ++m_count;
    } else {
        Change change{id, {}, {}, {}};
        change.changed.setFlag(Title, known.title != fresh.title);
        change.changed.setFlag(Position, known.position != fresh.position);
        change.changed.setFlag(FileName, known.fileName != fresh.fileName);
        change.had = change.changed & valuesOf(known);
        change.has = change.changed & valuesOf(fresh);
        if (change.changed)
            differences.changed.append(change);
    }
    known = fresh;
}

LibrarySnapshot::Differences LibrarySnapshot::compare(const QList<Row> &rows, const QSet<int> &groups,
                                                      bool complete)
{
    QHash<int, Video> fresh;
    QList<int> order; // of the answer, so that what is told does not depend on the hash
    for (const Row &row : rows) {
        if (row.id <= 0)
            continue;
        if (!fresh.contains(row.id))
            order.append(row.id);
        gather(fresh[row.id], row);
    }
    Differences differences;
    for (const int id : std::as_const(order))
        compare(id, fresh.value(id), differences);
    if (!complete)
        return differences;
    // A set would take ten times as long to ask a million times.
    std::array<bool, GroupCount> isCompared{};
    for (const int group : groups)
        isCompared[size_t(group)] = true;
    for (size_t i = 1; i < m_videos.size(); ++i) {
        const qint32 group = m_videos[i].group;
        if (group < 0 || !isCompared[size_t(group)] || fresh.contains(int(i)))
            continue;
        m_videos[i] = {};
        --m_count;
        differences.removed.append(int(i));
    }
    return differences;
}

QList<int> LibrarySnapshot::takeUngrouped()
{
    QList<int> gone;
    for (size_t i = 1; i < m_videos.size(); ++i) {
        if (m_videos[i].group != UnknownGroup)
            continue;
        m_videos[i] = {};
        --m_count;
        gone.append(int(i));
    }
    return gone;
}
