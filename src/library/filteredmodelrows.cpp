// SPDX-License-Identifier: GPL-3.0-or-later
// Which rows of the source are shown in which order, and how changes of that are told.
#include "data/allvideosmodel.h"
#include "filteredmodel.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

// Changes of single rows: beyond that, each is told by itself.
constexpr int MostSingleRows = 64;
// Rows that are moved in memory to tell of rows run by run; beyond that, another layout is told.
constexpr qint64 MostMoves = 8'000'000;

// How many runs of numbers without a gap there are in ascending ones.
int runsIn(const QList<int> &numbers)
{
    int runs = 0;
    for (qsizetype i = 0; i < numbers.size(); ++i)
        runs += i == 0 || numbers.at(i) != numbers.at(i - 1) + 1;
    return runs;
}

std::vector<bool> marks(const QList<int> &rows, int count)
{
    std::vector<bool> isIn(size_t(count), false);
    for (const int row : rows)
        isIn[size_t(row)] = true;
    return isIn;
}

// Places of the rows that are not marked.
QList<int> placesWithout(const QList<int> &rows, const std::vector<bool> &isIn)
{
    QList<int> places;
    for (int place = 0; place < rows.size(); ++place) {
        if (!isIn[size_t(rows.at(place))])
            places.append(place);
    }
    return places;
}

} // namespace

QSet<int> FilteredModel::hiddenRows() const
{
    QSet<int> rows;
    if (m_hiddenItems.isEmpty())
        return rows;
    if (const auto *videos = qobject_cast<AllVideosModel *>(sourceModel())) {
        for (auto url = m_hiddenItems.keyBegin(); url != m_hiddenItems.keyEnd(); ++url) {
            const QList<int> found = videos->rowsOfUrl(*url);
            rows.unite(QSet<int>(found.cbegin(), found.cend()));
        }
        return rows;
    }
    for (int row = 0; row < sourceRows(); ++row) {
        if (m_hiddenItems.contains(sourceModel()->index(row, VideoColumn::Url).data().toString()))
            rows.insert(row);
    }
    return rows;
}

// When canArrange().
QList<int> FilteredModel::arranged()
{
    const QList<int> &order = m_titles.order();
    if (m_filterText.isEmpty() && m_hiddenItems.isEmpty())
        return order;
    const QSet<int> hidden = hiddenRows();
    QList<int> rows;
    for (const int row : order) {
        if ((m_filterText.isEmpty() || m_titles.isHit(row)) && (hidden.isEmpty() || !hidden.contains(row)))
            rows.append(row);
    }
    return rows;
}

void FilteredModel::arrange(Announce announce)
{
    const bool wasSettled = std::exchange(m_isSettled, canArrange());
    if (!m_isSettled)
        return;
    if (std::exchange(m_isEmptied, false)) {
        beginResetModel();
        m_rows = arranged();
        rowsMoved();
        endResetModel();
    } else if (announce == Announce::Layout || !wasSettled) {
        layOut(arranged());
    } else {
        moveTo(arranged());
    }
}

void FilteredModel::layOut(const QList<int> &rows)
{
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    QList<int> sources;
    for (const QModelIndex &index : before)
        sources.append(m_rows.at(index.row()));
    m_rows = rows;
    rowsMoved();
    QModelIndexList after;
    for (qsizetype i = 0; i < before.size(); ++i) {
        const int place = placeOf(sources.at(i));
        after.append(place >= 0 ? createIndex(place, before.at(i).column()) : QModelIndex());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

// Tells what goes, then what has another place, then what comes. Equal lists are found without QList's own
// comparison, which hands the null pointer of an empty list to memcmp().
void FilteredModel::moveTo(const QList<int> &rows)
{
    if (std::ranges::equal(rows, m_rows))
        return;
    const int count = sourceRows();
    const QList<int> gone = placesWithout(m_rows, marks(rows, count));
    const QList<int> come = placesWithout(rows, marks(m_rows, count));
    if (qint64(runsIn(gone) + runsIn(come)) * qMax(rows.size(), m_rows.size()) > MostMoves) {
        layOut(rows);
        return;
    }
    removePlaces(gone);
    QList<int> staying;
    staying.reserve(rows.size() - come.size());
    auto next = come.cbegin();
    for (int place = 0; place < rows.size(); ++place) {
        if (next != come.cend() && *next == place)
            ++next;
        else
            staying.append(rows.at(place));
    }
    if (!std::ranges::equal(staying, m_rows))
        layOut(staying);
    insertPlaces(come, rows);
}

// Ascending ones, run by run from the last.
void FilteredModel::removePlaces(const QList<int> &places)
{
    for (qsizetype end = places.size(); end > 0;) {
        qsizetype begin = end - 1;
        while (begin > 0 && places.at(begin - 1) == places.at(begin) - 1)
            --begin;
        beginRemoveRows({}, places.at(begin), places.at(end - 1));
        m_rows.remove(places.at(begin), end - begin);
        rowsMoved();
        endRemoveRows();
        end = begin;
    }
}

// Ascending ones of `rows`, run by run from the first.
void FilteredModel::insertPlaces(const QList<int> &places, const QList<int> &rows)
{
    for (qsizetype begin = 0; begin < places.size();) {
        qsizetype end = begin + 1;
        while (end < places.size() && places.at(end) == places.at(end - 1) + 1)
            ++end;
        const int first = places.at(begin);
        const int last = places.at(end - 1);
        beginInsertRows({}, first, last);
        m_rows.insert(first, end - begin, 0);
        std::copy(rows.cbegin() + first, rows.cbegin() + last + 1, m_rows.begin() + first);
        rowsMoved();
        endInsertRows();
        begin = end;
    }
}

QList<int> FilteredModel::placesOf(int firstSourceRow, int lastSourceRow) const
{
    QList<int> places;
    for (int place = 0; place < m_rows.size(); ++place) {
        if (m_rows.at(place) >= firstSourceRow && m_rows.at(place) <= lastSourceRow)
            places.append(place);
    }
    return places;
}

int FilteredModel::placeOf(int sourceRow) const
{
    if (m_places.isEmpty()) {
        m_places.fill(-1, sourceRows());
        for (int place = 0; place < m_rows.size(); ++place)
            m_places[m_rows.at(place)] = place;
    }
    return m_places.value(sourceRow, -1);
}

void FilteredModel::rowsMoved()
{
    m_places.clear();
}

// The source's rows from this one on have other numbers.
void FilteredModel::moveSourceRows(int from, int by)
{
    rowsMoved();
    if (std::none_of(m_rows.cbegin(), m_rows.cend(), [from](int row) { return row >= from; }))
        return;
    for (int &row : m_rows)
        row += row >= from ? by : 0;
}

void FilteredModel::sourceInserted(const QModelIndex &parent, int first, int last)
{
    if (parent.isValid())
        return;
    moveSourceRows(first, last - first + 1);
    const QStringList titles = readTitles(first, last);
    note([first, titles](TitleIndex &index) { index.insert(first, titles); }, true);
    arrange(Announce::Rows);
}

void FilteredModel::sourceAboutToRemove(const QModelIndex &parent, int first, int last)
{
    if (parent.isValid())
        return;
    const QList<int> places = placesOf(first, last);
    if (qint64(runsIn(places)) * m_rows.size() <= MostMoves) {
        removePlaces(places);
        return;
    }
    QList<int> staying = m_rows;
    staying.removeIf([=](int row) { return row >= first && row <= last; });
    layOut(staying);
}

void FilteredModel::sourceRemoved(const QModelIndex &parent, int first, int last)
{
    if (parent.isValid())
        return;
    moveSourceRows(last + 1, first - last - 1);
    note([first, last](TitleIndex &index) { index.remove(first, last); }, true);
    arrange(Announce::Rows);
}

void FilteredModel::sourceChanged(const QModelIndex &from, const QModelIndex &to, const QList<int> &roles)
{
    if (!from.isValid() || !to.isValid() || from.parent().isValid())
        return;
    const int first = from.row();
    const int last = to.row();
    if (from.column() <= VideoColumn::Title && to.column() >= VideoColumn::Title) {
        if (last - first >= RowsAtOnce) {
            startReading();
        } else {
            const QStringList titles = readTitles(first, last);
            note([first, titles](TitleIndex &index) { index.update(first, titles); }, false);
            arrange(Announce::Rows);
        }
    }
    if (last - first >= MostSingleRows && !m_rows.isEmpty()) {
        Q_EMIT dataChanged(index(0, from.column()), index(int(m_rows.size()) - 1, to.column()), roles);
        return;
    }
    for (const int place : placesOf(first, last))
        Q_EMIT dataChanged(index(place, from.column()), index(place, to.column()), roles);
}
