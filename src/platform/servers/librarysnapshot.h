// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <vector>

// What was last seen of a library on a server: no texts, but 32 bits of each, so that 16 bytes are kept for a
// video. A change that leaves all 32 bits as they were is not noticed, one in four thousand million.
class LibrarySnapshot
{
public:
    static constexpr int GroupCount = 256;
    static constexpr int UnknownGroup = -1;

    enum Property { Title = 1, Position = 2, FileName = 4 };
    Q_DECLARE_FLAGS(Properties, Property)

    // A row of an answer; a video with more than one title has more than one row.
    struct Row
    {
        int id = 0; // of ResourceIds
        QString title; // as the list shows it: without one, the file's base name
        QString position; // empty: none
        QString fileName;
        int group = UnknownGroup; // 0 to 255
    };

    struct Change
    {
        int id = 0;
        Properties changed;
        Properties had; // of those changed, which had a value before
        Properties has; // and which have one now
    };
    struct Differences
    {
        QList<int> added;
        QList<Change> changed;
        QList<int> removed;
    };

    // Takes the row for what is known already. Rows without an id are ignored.
    void add(const Row &row);

    // Rows that the server gave now for all videos of `groups`. What is known follows. With `complete`, known
    // videos of these groups that have no row are gone.
    [[nodiscard]] Differences compare(const QList<Row> &rows, const QSet<int> &groups, bool complete);
    // Videos that no answer put into a group: none has them.
    [[nodiscard]] QList<int> takeUngrouped();

    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] qsizetype bytes() const { return qsizetype(m_videos.capacity() * sizeof(Video)); }

private:
    static constexpr qint32 NoVideo = -2;

    struct Video
    {
        quint32 title = 0; // 0: none
        quint32 position = 0;
        quint32 fileName = 0;
        qint32 group = NoVideo;
    };

    static void gather(Video &video, const Row &row);
    [[nodiscard]] static Properties valuesOf(const Video &video);
    [[nodiscard]] Video &at(int id);
    void compare(int id, const Video &fresh, Differences &differences);

    std::vector<Video> m_videos; // by id: ids count from 1 without gaps
    int m_count = 0;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(LibrarySnapshot::Properties)
