// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "packedtexts.h"

#include <QCollator>
#include <QList>
#include <QString>
#include <QStringList>

// What sorting and filtering need of the titles of a model, kept a row: the place in collation order and
// whether the title holds the text that is looked for. Both are worked out once and then only where a title
// changed, so that a key press costs one pass over ready-made text instead of a million calls of the
// collator.
//
// A plain value: one of many titles is made ready in another thread and then moved to where it is used.
class TitleIndex
{
public:
    // The order is worked out anew when it is asked for.
    void setCollator(const QCollator &collator);

    void reset(const QStringList &titles);
    void reset(PackedTexts titles);
    // Works out now what the first order() and the first search would.
    void prepare();

    void insert(int first, const QStringList &titles);
    void remove(int first, int last);
    // The titles of the rows from `first` on are these now. Titles that are still the same cost nothing. True
    // when there is another among them.
    bool update(int first, const QStringList &titles);

    [[nodiscard]] int count() const { return m_titles.count(); }
    // False: order() sorts all.
    [[nodiscard]] bool isSorted() const { return m_sorted; }
    // Rows in collation order, equal titles by row.
    [[nodiscard]] const QList<int> &order();
    // The title holds `text` somewhere, whatever the case. The empty text is in every title.
    [[nodiscard]] bool contains(int row, const QString &text);
    // The same of the text that search() knows all rows of.
    [[nodiscard]] bool isHit(int row) const { return m_hits.at(row) != 0; }
    // Looks at some rows more, so that contains() need not look at all of them at once. True when it knows
    // them all.
    [[nodiscard]] bool search(const QString &text, int mostRows);

private:
    void sortAll();
    void placeRows(QList<int> rows);
    void takeFromOrder(const QList<int> &rows);
    [[nodiscard]] bool isBefore(int left, int right) const;

    void foldAll();
    void fold(int row);
    [[nodiscard]] bool searchIn(int row) const;
    [[nodiscard]] bool knows(const QString &text) const;
    void beginSearch(const QString &text);
    void dropSearch();

    QCollator m_collator;
    PackedTexts m_titles;

    bool m_sorted = false;
    QList<int> m_order;

    bool m_folded = false;
    PackedTexts m_foldedTitles;

    QString m_lookedFor; // as it was given
    QByteArray m_needle; // case-folded
    QList<quint8> m_hits; // of m_needle in the rows before m_searched; behind them, which are worth a look
    int m_searched = 0;
};
