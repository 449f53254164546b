// SPDX-License-Identifier: GPL-3.0-or-later
#include "titleindex.h"

#include <QLocale>

#include <algorithm>
#include <numeric>

namespace {

// Character by character, so that the text keeps its length: the same rule as a case-insensitive
// QString::contains().
void appendFolded(QString &target, const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            const char32_t folded = QChar::toCaseFolded(QChar::surrogateToUcs4(character, text.at(++i)));
            target.append(QChar(QChar::highSurrogate(folded)));
            target.append(QChar(QChar::lowSurrogate(folded)));
        } else {
            target.append(character.toCaseFolded());
        }
    }
}

QString folded(const QString &text)
{
    QString result;
    result.reserve(text.size());
    appendFolded(result, text);
    return result;
}

} // namespace

void TitleIndex::setCollator(const QCollator &collator)
{
    m_collator = collator;
    m_sorted = false;
}

void TitleIndex::reset(const QStringList &titles)
{
    m_titles = titles;
    m_sorted = false;
    m_folded = false;
    m_hits.clear();
}

void TitleIndex::insert(int first, const QStringList &titles)
{
    const int added = int(titles.size());
    QStringList all = m_titles.mid(0, first);
    all.append(titles);
    all.append(m_titles.mid(first));
    m_titles = std::move(all);

    QList<int> rows(added);
    std::iota(rows.begin(), rows.end(), first);
    if (m_folded) {
        m_spans.insert(first, added, Span());
        for (const int row : std::as_const(rows))
            fold(row);
    }
    if (!m_hits.isEmpty()) {
        m_hits.insert(first, added, 0);
        for (const int row : std::as_const(rows))
            m_hits[row] = searchIn(row);
    }
    if (m_sorted) {
        for (int &row : m_order)
            row += row >= first ? added : 0;
        m_ranks.insert(first, added, -1);
        placeRows(rows);
    }
}

void TitleIndex::remove(int first, int last)
{
    const int removed = last - first + 1;
    m_titles.remove(first, removed);
    if (m_folded) {
        for (int row = first; row <= last; ++row)
            m_unused += m_spans.at(row).length;
        m_spans.remove(first, removed);
    }
    if (!m_hits.isEmpty())
        m_hits.remove(first, removed);
    if (m_sorted) {
        m_order.removeIf([=](int row) { return row >= first && row <= last; });
        for (int &row : m_order)
            row -= row > last ? removed : 0;
        m_ranks.remove(first, removed); // gaps in the numbers do no harm
    }
}

void TitleIndex::update(int first, const QStringList &titles)
{
    QList<int> changed;
    for (int i = 0; i < titles.size(); ++i) {
        if (m_titles.at(first + i) != titles.at(i)) {
            m_titles[first + i] = titles.at(i);
            changed.append(first + i);
        }
    }
    if (changed.isEmpty())
        return;
    for (const int row : std::as_const(changed)) {
        if (m_folded) {
            m_unused += m_spans.at(row).length;
            fold(row);
        }
        if (!m_hits.isEmpty())
            m_hits[row] = searchIn(row);
    }
    if (m_sorted) {
        takeFromOrder(changed);
        placeRows(changed);
    }
}

bool TitleIndex::isBefore(int left, int right)
{
    if (!m_sorted)
        sortAll();
    return m_ranks.at(left) < m_ranks.at(right);
}

int TitleIndex::compareTitles(int left, int right) const
{
    return m_collator.compare(m_titles.at(left), m_titles.at(right));
}

void TitleIndex::sortAll()
{
    QList<int> order(m_titles.size());
    std::iota(order.begin(), order.end(), 0);
    QList<int> ranks(m_titles.size(), 0);
    // Sort keys are several times faster than the collator's comparison; in the C locale they do not follow
    // it.
    if (m_collator.locale().language() == QLocale::C) {
        std::stable_sort(order.begin(), order.end(),
                         [this](int left, int right) { return compareTitles(left, right) < 0; });
        for (qsizetype i = 1; i < order.size(); ++i)
            ranks[order.at(i)]
                = ranks.at(order.at(i - 1)) + (compareTitles(order.at(i - 1), order.at(i)) != 0);
    } else {
        std::vector<QCollatorSortKey> keys;
        keys.reserve(size_t(m_titles.size()));
        for (const QString &title : std::as_const(m_titles))
            keys.push_back(m_collator.sortKey(title));
        const auto compare
            = [&keys](int left, int right) { return keys[size_t(left)].compare(keys[size_t(right)]); };
        std::stable_sort(order.begin(), order.end(),
                         [&compare](int left, int right) { return compare(left, right) < 0; });
        for (qsizetype i = 1; i < order.size(); ++i)
            ranks[order.at(i)] = ranks.at(order.at(i - 1)) + (compare(order.at(i - 1), order.at(i)) != 0);
    }
    m_order = std::move(order);
    m_ranks = std::move(ranks);
    m_sorted = true;
}

void TitleIndex::takeFromOrder(const QList<int> &rows)
{
    for (const int row : rows)
        m_ranks[row] = -1;
    m_order.removeIf([this](int row) { return m_ranks.at(row) < 0; });
}

// Puts rows whose rank is -1 into the order by bisection.
void TitleIndex::placeRows(QList<int> rows)
{
    if (rows.size() * 4 > m_order.size()) {
        m_sorted = false; // from scratch is cheaper
        return;
    }
    const auto before = [this](int left, int right) {
        const int order = compareTitles(left, right);
        return order < 0 || (order == 0 && left < right);
    };
    std::sort(rows.begin(), rows.end(), before);
    QList<int> merged;
    merged.reserve(m_order.size() + rows.size());
    auto from = m_order.cbegin();
    for (const int row : std::as_const(rows)) {
        const auto place = std::upper_bound(from, m_order.cend(), row, before);
        std::copy(from, place, std::back_inserter(merged));
        merged.append(row);
        from = place;
    }
    std::copy(from, m_order.cend(), std::back_inserter(merged));
    rank(merged, m_ranks);
    m_order = std::move(merged);
}

void TitleIndex::rank(const QList<int> &order, const QList<int> &oldRanks)
{
    QList<int> ranks(order.size(), 0);
    for (qsizetype i = 1; i < order.size(); ++i) {
        const int previous = order.at(i - 1);
        const int row = order.at(i);
        const bool bothKnown = oldRanks.at(previous) >= 0 && oldRanks.at(row) >= 0;
        const bool same
            = bothKnown ? oldRanks.at(previous) == oldRanks.at(row) : compareTitles(previous, row) == 0;
        ranks[row] = ranks.at(previous) + (same ? 0 : 1);
    }
    m_ranks = std::move(ranks);
}

bool TitleIndex::contains(int row, const QString &text)
{
    if (text.isEmpty())
        return true;
    if (m_hits.size() != m_titles.size() || m_lookedFor != text)
        lookFor(text);
    return m_hits.at(row) != 0;
}

void TitleIndex::lookFor(const QString &text)
{
    if (!m_folded || m_unused > m_text.size() / 2)
        foldAll();
    const QString needle = folded(text);
    // A title without the shorter text cannot hold the longer one.
    const bool narrows = m_hits.size() == m_titles.size() && needle.contains(m_needle);
    m_lookedFor = text;
    m_needle = needle;
    if (!narrows)
        m_hits.fill(1, m_titles.size());
    for (int row = 0; row < m_hits.size(); ++row) {
        if (m_hits.at(row))
            m_hits[row] = searchIn(row);
    }
}

bool TitleIndex::searchIn(int row) const
{
    const Span span = m_spans.at(row);
    return QStringView(m_text).mid(span.offset, span.length).contains(m_needle);
}

void TitleIndex::foldAll()
{
    m_text.clear();
    m_spans.fill(Span(), m_titles.size());
    m_unused = 0;
    m_folded = true;
    for (int row = 0; row < m_titles.size(); ++row)
        fold(row);
}

void TitleIndex::fold(int row)
{
    const qsizetype offset = m_text.size();
    appendFolded(m_text, m_titles.at(row));
    m_spans[row] = {int(offset), int(m_text.size() - offset)};
}
