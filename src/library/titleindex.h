// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCollator>
#include <QList>
#include <QString>
#include <QStringList>

// What sorting and filtering need of the titles of a model, kept a row: the place in collation order and
// whether the title holds the text that is looked for. Both are worked out once and then only where a title
// changed, so that a key press costs one pass over ready-made text instead of a million calls of the
// collator.
class TitleIndex
{
public:
    // Places are worked out anew at the next comparison.
    void setCollator(const QCollator &collator);

    void reset(const QStringList &titles);
    void insert(int first, const QStringList &titles);
    void remove(int first, int last);
    // The titles of the rows from `first` on are these now. Titles that are still the same cost nothing.
    void update(int first, const QStringList &titles);

    [[nodiscard]] int count() const { return int(m_titles.size()); }
    // Strictly before in collation order; equal titles are before neither way.
    [[nodiscard]] bool isBefore(int left, int right);
    // The title holds `text` somewhere, whatever the case. The empty text is in every title.
    [[nodiscard]] bool contains(int row, const QString &text);

private:
    struct Span
    {
        int offset = 0;
        int length = 0;
    };

    void sortAll();
    void placeRows(QList<int> rows);
    void takeFromOrder(const QList<int> &rows);
    [[nodiscard]] int compareTitles(int left, int right) const;
    void rank(const QList<int> &order, const QList<int> &oldRanks);

    void foldAll();
    void fold(int row);
    [[nodiscard]] bool searchIn(int row) const;
    void lookFor(const QString &text);

    QCollator m_collator;
    QStringList m_titles; // share their text with the source's

    bool m_sorted = false;
    QList<int> m_order; // rows in collation order, equal titles by row
    QList<int> m_ranks; // place of each row; equal titles have the same

    bool m_folded = false;
    QString m_text; // the case-folded titles one after another
    QList<Span> m_spans; // where each row's text is
    qsizetype m_unused = 0; // characters of m_text that belong to no row any more

    QString m_lookedFor; // as it was given
    QString m_needle; // case-folded
    QList<quint8> m_hits; // of m_needle; empty when nothing is looked for
};
