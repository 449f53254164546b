// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "rowlookup.h"
#include "thumbnaillisting.h"
#include "videoinfo.h"

#include <platform/sparql/rowtable.h>

#include <QHash>
#include <QStringList>

#include <array>
#include <memory>
#include <vector>

// The rows of the library, columns of VideoColumn. What was loaded stays packed as it came from the store,
// and a text is made of it when it is asked for; a row that came later or was changed has texts of its own.
//
// Each row has a key that it keeps and that no other row gets: loaded rows count from 0, those that come
// later go on from there. Rows are in the order of their keys.
class LibraryRows
{
public:
    using Table = std::shared_ptr<const RowTable>;

    LibraryRows() = default;
    // Any thread may make them; takes a second a million rows. With `hasTitles`, an empty title stays empty
    // instead of being the file's base name.
    LibraryRows(Table table, ThumbnailListing thumbnails, bool hasTitles);

    [[nodiscard]] int count() const { return int(m_keys.size()); }
    // Null beyond the rows and columns.
    [[nodiscard]] QString text(int row, int column) const;
    // The first row with this text in Urn, Url or TrackerId; -1 when there is none.
    [[nodiscard]] int find(int column, const QString &text) const;
    // All such rows, in order.
    [[nodiscard]] QList<int> findAll(int column, const QString &text) const;
    // The rows with the same texts as this one, itself included, in order.
    [[nodiscard]] QList<int> equalRows(int row) const;

    // Eight texts; the thumbnails of the row stay.
    void replace(int row, const QStringList &texts);
    void setThumbnail(int row, int column, const QString &path);
    // Eight texts or ten; those that are missing are empty.
    void append(const QStringList &texts);
    void remove(int row);
    // In order and each once.
    void remove(const QList<int> &rows);

private:
    static constexpr std::array<int, 3> lookedUp{VideoColumn::Urn, VideoColumn::Url, VideoColumn::TrackerId};

    [[nodiscard]] QString loadedText(int key, int column) const;
    [[nodiscard]] QString textOfKey(int key, int column) const;
    [[nodiscard]] bool isText(int key, int column, const QString &text, QByteArrayView utf8) const;
    // -1 when the row was removed.
    [[nodiscard]] int rowOf(int key) const;
    [[nodiscard]] QStringList texts(int row) const;
    [[nodiscard]] const RowLookup &lookup(int column) const;
    template <typename Visit> void visitRows(int column, const QString &text, Visit visit) const;
    void note(int key);
    void noteAllAnew();

    Table m_table;
    ThumbnailListing m_thumbnails;
    bool m_hasTitles = true;
    std::vector<int> m_keys; // of the rows
    QHash<int, QStringList> m_own; // ten texts by key, where they are not those that were loaded
    int m_nextKey = 0;
    std::array<RowLookup, lookedUp.size()> m_lookups;
};
