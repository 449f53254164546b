// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QStringList>

class QPainter;
class QRectF;

// A font of the same family; `factor` of its size.
[[nodiscard]] QFont scaledFont(QFont font, qreal factor, QFont::Weight weight);

// A text in lines of a width, none for an empty one, parted between words. What does not fit into the last is
// elided, and so is a word that is wider than a line.
class ShownLines
{
public:
    ShownLines(const QString &text, const QFont &font, qreal width, int most);

    [[nodiscard]] int count() const { return int(m_lines.size()); }
    [[nodiscard]] const QStringList &lines() const { return m_lines; }
    // From the top, at the side where reading starts.
    void paint(QPainter *painter, const QRectF &rect, Qt::LayoutDirection direction) const;

private:
    QFont m_font;
    QStringList m_lines;
    Qt::LayoutDirection m_direction; // of the text itself
};
