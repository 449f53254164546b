// SPDX-License-Identifier: GPL-3.0-or-later
// The titles that the rows are sorted and filtered by: read from the source and made ready.
#include "filteredmodel.h"

#include "platform/system/background.h"

#include <utility>

namespace {

// Shares nothing with another thread, which the collator below is not made for.
QCollator ownCollator(const QCollator &other)
{
    QCollator own(other.locale());
    own.setCaseSensitivity(other.caseSensitivity());
    own.setNumericMode(other.numericMode());
    own.setIgnorePunctuation(other.ignorePunctuation());
    return own;
}

} // namespace

QStringList FilteredModel::readTitles(int first, int last) const
{
    QStringList titles;
    titles.reserve(last - first + 1);
    const QAbstractItemModel *source = sourceModel();
    for (int row = first; row <= last; ++row)
        titles.append(source->index(row, VideoColumn::Title).data(Qt::DisplayRole).toString());
    return titles;
}

// The source has other rows, within a reset of this model.
void FilteredModel::readAll()
{
    stopPreparing();
    m_rows.clear();
    rowsMoved();
    m_isKnown = sourceRows() <= RowsAtOnce;
    m_isEmptied = !m_isKnown;
    if (m_isKnown) {
        m_titles.reset(sourceRows() > 0 ? readTitles(0, sourceRows() - 1) : QStringList());
        m_isSettled = canArrange();
        m_rows = arranged();
    } else {
        m_isSettled = false;
        m_titles.reset(QStringList()); // its memory
        startReading();
    }
}

void FilteredModel::stopPreparing()
{
    m_turn.stop();
    m_isReading = m_isSorting = false;
    m_read = {};
    m_meanwhile.clear();
}

void FilteredModel::startReading()
{
    stopPreparing();
    m_isReading = true;
    m_read.reserve(sourceRows());
    m_turn.start();
}

void FilteredModel::readSome()
{
    const int first = m_read.count();
    const int last = qMin(first + RowsAtOnce, sourceRows()) - 1;
    const QStringList titles = readTitles(first, last);
    for (const QString &title : titles)
        m_read.append(title);
    if (m_read.count() < sourceRows()) {
        m_turn.start();
        return;
    }
    m_isReading = false;
    TitleIndex index;
    index.reset(std::exchange(m_read, {}));
    startSorting(std::move(index));
}

void FilteredModel::startSorting(TitleIndex titles)
{
    titles.setCollator(ownCollator(*m_collator));
    m_isSorting = true;
    m_sorting.setFuture(inBackground([titles = std::move(titles)]() mutable {
        titles.prepare();
        return std::move(titles);
    }));
}

void FilteredModel::takeSorted()
{
    if (!m_isSorting)
        return;
    m_isSorting = false;
    TitleIndex titles = m_sorting.future().takeResult();
    for (const Change &change : std::exchange(m_meanwhile, {}))
        change(titles);
    m_titles = std::move(titles);
    m_isKnown = true;
    arrange(Announce::Layout);
}

// A change of the source, for all titles that are held.
void FilteredModel::note(const Change &change, bool movesRows)
{
    if (m_isKnown)
        change(m_titles);
    if (m_isReading && movesRows)
        startReading();
    else if (m_isReading || m_isSorting)
        m_meanwhile.push_back(change);
}

// Whether the rows can be arranged in this turn; otherwise what is missing is on its way.
bool FilteredModel::canArrange()
{
    if (!m_isKnown)
        return false;
    if (!m_titles.isSorted() && m_titles.count() > RowsAtOnce) {
        if (!m_isReading && !m_isSorting)
            startSorting(m_titles);
        return false;
    }
    if (m_titles.search(m_filterText, SearchesPerTurn))
        return true;
    m_turn.start();
    return false;
}

void FilteredModel::workOn()
{
    if (m_isReading)
        readSome();
    if (!m_isSettled)
        arrange(Announce::Layout);
}
