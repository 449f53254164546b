// SPDX-License-Identifier: GPL-3.0-or-later
#include "titleindex.h"

#include <QLocale>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <vector>

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

QByteArray folded(const QString &text)
{
    QString result;
    result.reserve(text.size());
    appendFolded(result, text);
    return result.toUtf8();
}

} // namespace

void TitleIndex::setCollator(const QCollator &collator)
{
    m_collator = collator;
    m_sorted = false;
}

void TitleIndex::reset(const QStringList &titles)
{
    PackedTexts packed;
    packed.reserve(int(titles.size()));
    for (const QString &title : titles)
        packed.append(title);
    reset(std::move(packed));
}

void TitleIndex::reset(PackedTexts titles)
{
    m_titles = std::move(titles);
    m_sorted = false;
    m_folded = false;
    dropSearch();
}

void TitleIndex::prepare()
{
    if (!m_sorted)
        sortAll();
    if (!m_folded)
        foldAll();
}

void TitleIndex::insert(int first, const QStringList &titles)
{
    const int added = int(titles.size());
    m_titles.insert(first, added);
    for (int i = 0; i < added; ++i)
        m_titles.set(first + i, titles.at(i).toUtf8());

    QList<int> rows(added);
    std::iota(rows.begin(), rows.end(), first);
    if (m_folded) {
        m_foldedTitles.insert(first, added);
        for (const int row : std::as_const(rows))
            fold(row);
    }
    if (knows(m_lookedFor)) {
        m_hits.insert(first, added, 0);
        m_searched += added;
        for (const int row : std::as_const(rows))
            m_hits[row] = searchIn(row);
    } else {
        dropSearch();
    }
    if (m_sorted) {
        for (int &row : m_order)
            row += row >= first ? added : 0;
        placeRows(rows);
    }
}

void TitleIndex::remove(int first, int last)
{
    const int removed = last - first + 1;
    m_titles.remove(first, last);
    if (m_folded)
        m_foldedTitles.remove(first, last);
    if (knows(m_lookedFor)) {
        m_hits.remove(first, removed);
        m_searched -= removed;
    } else {
        dropSearch();
    }
    if (m_sorted) {
        m_order.removeIf([=](int row) { return row >= first && row <= last; });
        for (int &row : m_order)
            row -= row > last ? removed : 0;
    }
}

bool TitleIndex::update(int first, const QStringList &titles)
{
    QList<int> changed;
    for (int i = 0; i < titles.size(); ++i) {
        const QByteArray title = titles.at(i).toUtf8();
        if (m_titles.utf8(first + i) != title) {
            m_titles.set(first + i, title);
            changed.append(first + i);
        }
    }
    if (changed.isEmpty())
        return false;
    if (!knows(m_lookedFor))
        dropSearch();
    for (const int row : std::as_const(changed)) {
        if (m_folded)
            fold(row);
        if (!m_hits.isEmpty())
            m_hits[row] = searchIn(row);
    }
    if (m_sorted) {
        takeFromOrder(changed);
        placeRows(changed);
    }
    return true;
}

const QList<int> &TitleIndex::order()
{
    if (!m_sorted)
        sortAll();
    return m_order;
}

bool TitleIndex::isBefore(int left, int right) const
{
    const int order = m_collator.compare(m_titles.at(left), m_titles.at(right));
    return order < 0 || (order == 0 && left < right);
}

void TitleIndex::sortAll()
{
    m_order.resize(count());
    std::iota(m_order.begin(), m_order.end(), 0);
    // Sort keys are several times faster than the collator's comparison; in the C locale they do not follow
    // it.
    if (m_collator.locale().language() == QLocale::C) {
        std::sort(m_order.begin(), m_order.end(),
                  [this](int left, int right) { return isBefore(left, right); });
    } else {
        std::vector<QCollatorSortKey> keys;
        keys.reserve(size_t(count()));
        for (int row = 0; row < count(); ++row)
            keys.push_back(m_collator.sortKey(m_titles.at(row)));
        std::sort(m_order.begin(), m_order.end(), [&keys](int left, int right) {
            const int order = keys[size_t(left)].compare(keys[size_t(right)]);
            return order < 0 || (order == 0 && left < right);
        });
    }
    m_sorted = true;
}

void TitleIndex::takeFromOrder(const QList<int> &rows)
{
    std::vector<bool> isTaken(size_t(count()), false);
    for (const int row : rows)
        isTaken[size_t(row)] = true;
    m_order.removeIf([&isTaken](int row) { return isTaken[size_t(row)]; });
}

// Puts rows that are not in the order into it by bisection.
void TitleIndex::placeRows(QList<int> rows)
{
    if (rows.size() * 4 > m_order.size()) {
        m_sorted = false; // from scratch is cheaper
        return;
    }
    const auto before = [this](int left, int right) { return isBefore(left, right); };
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
    m_order = std::move(merged);
}

bool TitleIndex::contains(int row, const QString &text)
{
    if (text.isEmpty())
        return true;
    if (!knows(text))
        static_cast<void>(search(text, count()));
    return m_hits.at(row) != 0;
}

// With the hits of all rows at hand.
bool TitleIndex::knows(const QString &text) const
{
    return !m_hits.isEmpty() && m_searched == m_hits.size() && m_lookedFor == text;
}

void TitleIndex::dropSearch()
{
    m_hits.clear();
    m_searched = 0;
}

void TitleIndex::beginSearch(const QString &text)
{
    if (!m_folded)
        foldAll();
    const QByteArray needle = folded(text);
    // A title without the shorter text cannot hold the longer one.
    const bool narrows = m_hits.size() == count() && needle.contains(m_needle);
    m_lookedFor = text;
    m_needle = needle;
    if (!narrows)
        m_hits.fill(1, count());
    m_searched = 0;
}

bool TitleIndex::search(const QString &text, int mostRows)
{
    if (text.isEmpty() || knows(text) || count() == 0)
        return true;
    if (m_hits.size() != count() || m_lookedFor != text)
        beginSearch(text);
    for (; m_searched < count() && mostRows > 0; ++m_searched) {
        if (!m_hits.at(m_searched))
            continue;
        m_hits[m_searched] = searchIn(m_searched);
        --mostRows;
    }
    return m_searched == count();
}

bool TitleIndex::searchIn(int row) const
{
    return m_foldedTitles.utf8(row).contains(m_needle);
}

void TitleIndex::foldAll()
{
    m_foldedTitles = {};
    m_foldedTitles.reserve(count());
    for (int row = 0; row < count(); ++row)
        m_foldedTitles.append(folded(m_titles.at(row)));
    m_folded = true;
}

void TitleIndex::fold(int row)
{
    m_foldedTitles.set(row, folded(m_titles.at(row)));
}
