// SPDX-License-Identifier: GPL-3.0-or-later
#include "libraryrows.h"

#include "trackeranswers.h"

#include <platform/sparql/loosetext.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

size_t hashOf(QByteArrayView utf8)
{
    return qHashBits(utf8.data(), size_t(utf8.size()), QHashSeed::globalSeed());
}

} // namespace

LibraryRows::LibraryRows(Table table, ThumbnailListing thumbnails, bool hasTitles)
    : m_table(std::move(table)),
      m_thumbnails(std::move(thumbnails)),
      m_hasTitles(hasTitles),
      m_keys(size_t(m_table->rows())),
      m_nextKey(m_table->rows())
{
    std::iota(m_keys.begin(), m_keys.end(), 0);
    noteAllAnew();
}

QString LibraryRows::text(int row, int column) const
{
    if (row < 0 || row >= count() || column < 0 || column >= VideoColumn::Count)
        return {};
    return textOfKey(m_keys[size_t(row)], column);
}

QString LibraryRows::textOfKey(int key, int column) const
{
    if (!m_own.isEmpty()) {
        if (const auto own = m_own.constFind(key); own != m_own.constEnd())
            return own->at(column);
    }
    return loadedText(key, column);
}

QString LibraryRows::loadedText(int key, int column) const
{
    if (column == VideoColumn::PauseThumbnail)
        return m_thumbnails.pausePath(m_table->text(key, VideoColumn::Url));
    if (column == VideoColumn::DefaultThumbnail)
        return m_thumbnails.defaultPath(m_table->text(key, VideoColumn::Url));
    QString text = m_table->text(key, column);
    if (column == VideoColumn::Title && text.isEmpty() && !m_hasTitles)
        return TrackerAnswers::titleOrBaseName(text, m_table->text(key, VideoColumn::FileName));
    return text;
}

QStringList LibraryRows::texts(int row) const
{
    QStringList texts;
    texts.reserve(VideoColumn::Count);
    for (int column = 0; column < VideoColumn::Count; ++column)
        texts.append(text(row, column));
    return texts;
}

int LibraryRows::rowOf(int key) const
{
    // Where it would be had no row gone.
    if (size_t(key) < m_keys.size() && m_keys[size_t(key)] == key)
        return key;
    const auto place = std::lower_bound(m_keys.cbegin(), m_keys.cend(), key);
    return place != m_keys.cend() && *place == key ? int(place - m_keys.cbegin()) : -1;
}

const RowLookup &LibraryRows::lookup(int column) const
{
    const auto place = std::find(lookedUp.cbegin(), lookedUp.cend(), column);
    return m_lookups[size_t(place - lookedUp.cbegin())];
}

bool LibraryRows::isText(int key, int column, const QString &text, QByteArrayView utf8) const
{
    if (!m_own.isEmpty()) {
        if (const auto own = m_own.constFind(key); own != m_own.constEnd())
            return own->at(column) == text;
    }
    return m_table && m_table->utf8(key, column) == utf8;
}

template <typename Visit> void LibraryRows::visitRows(int column, const QString &text, Visit visit) const
{
    const QByteArray utf8 = toLooseUtf8(text);
    if (text.isEmpty()) {
        for (int row = 0; row < count(); ++row) {
            if (isText(m_keys[size_t(row)], column, text, utf8))
                visit(row);
        }
        return;
    }
    lookup(column).visit(hashOf(utf8), [&](int key) {
        if (!isText(key, column, text, utf8))
            return;
        if (const int row = rowOf(key); row >= 0)
            visit(row);
    });
}

int LibraryRows::find(int column, const QString &text) const
{
    int first = -1;
    visitRows(column, text, [&first](int row) { first = first < 0 ? row : qMin(first, row); });
    return first;
}

QList<int> LibraryRows::findAll(int column, const QString &text) const
{
    QList<int> rows;
    visitRows(column, text, [&rows](int row) { rows.append(row); });
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end()); // a key may be noted more than once
    return rows;
}

QList<int> LibraryRows::equalRows(int row) const
{
    const QStringList wanted = texts(row);
    QList<int> rows = findAll(VideoColumn::Urn, wanted.at(VideoColumn::Urn));
    rows.removeIf([&](int other) { return texts(other) != wanted; });
    return rows;
}

// Puts the key where its texts are looked for. Not where they are empty: as many may be as there are rows,
// each in the way of the next.
void LibraryRows::note(int key)
{
    const bool isFull = std::any_of(m_lookups.cbegin(), m_lookups.cend(),
                                    [](const RowLookup &lookup) { return lookup.isFull(); });
    if (isFull) {
        noteAllAnew();
        return;
    }
    const auto own = m_own.constFind(key);
    for (size_t i = 0; i < lookedUp.size(); ++i) {
        const int column = lookedUp[i];
        const bool isOwn = own != m_own.constEnd();
        const QByteArray ownText = isOwn ? toLooseUtf8(own->at(column)) : QByteArray();
        const QByteArrayView text = isOwn ? QByteArrayView(ownText) : m_table->utf8(key, column);
        if (!text.isEmpty())
            m_lookups[i].insert(hashOf(text), key);
    }
}

void LibraryRows::noteAllAnew()
{
    for (RowLookup &lookup : m_lookups)
        lookup.clear(m_keys.size());
    for (const int key : m_keys)
        note(key);
}

void LibraryRows::replace(int row, const QStringList &texts)
{
    const int key = m_keys[size_t(row)];
    QStringList own = this->texts(row);
    bool isFoundElsewhere = false;
    for (int column = 0; column < VideoColumn::RowSize; ++column) {
        const bool isLookedUp = std::find(lookedUp.cbegin(), lookedUp.cend(), column) != lookedUp.cend();
        isFoundElsewhere = isFoundElsewhere || (isLookedUp && own.at(column) != texts.value(column));
        own[column] = texts.value(column);
    }
    m_own.insert(key, own);
    if (isFoundElsewhere)
        note(key);
}

void LibraryRows::setThumbnail(int row, int column, const QString &path)
{
    QStringList own = texts(row);
    own[column] = path;
    m_own.insert(m_keys[size_t(row)], own);
}

void LibraryRows::append(const QStringList &texts)
{
    QStringList own;
    own.reserve(VideoColumn::Count);
    for (int column = 0; column < VideoColumn::Count; ++column)
        own.append(texts.value(column));
    const int key = m_nextKey++;
    m_own.insert(key, own);
    m_keys.push_back(key);
    note(key);
}

void LibraryRows::remove(int row)
{
    remove(QList<int>{row});
}

void LibraryRows::remove(const QList<int> &rows)
{
    if (rows.isEmpty())
        return;
    auto gone = rows.cbegin();
    auto kept = m_keys.begin() + *gone;
    for (size_t row = size_t(*gone); row < m_keys.size(); ++row) {
        if (gone != rows.cend() && size_t(*gone) == row) {
            m_own.remove(m_keys[row]);
            ++gone;
        } else {
            *kept++ = m_keys[row];
        }
    }
    m_keys.erase(kept, m_keys.end());
}
