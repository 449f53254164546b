// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formattedtext.h"

#include <QGlyphRun>
#include <QStringList>

#include <memory>
#include <utility>

namespace toolkit {

// Lays text out in lines of one height and elides it at the end of the last line that fits. Where it wraps at
// words, a word that is wider than the line is elided, too, unless it can be broken between its parts.
class TextLayouter
{
public:
    struct Settings
    {
        QFont font;
        qreal width = -1; // -1: as wide as the text
        qreal lineHeight = -1; // -1: the font's own
        int maximumLines = 0; // 0: any number
        bool elide = true;
        QTextOption::WrapMode wrapMode = QTextOption::WordWrap;
        Qt::Alignment alignment = Qt::AlignLeft; // horizontal, absolute
        bool tabularDigits = false;
        // Lines of about one length where they are centred, so that no single word is left for the last.
        bool balanced = false;
    };

    void layOut(const FormattedText &text, const Settings &settings);
    // With the painter's pen where the text has no colour of its own.
    void draw(QPainter *painter, const QPointF &position, const QColor &color) const;

    [[nodiscard]] QSizeF size() const { return m_size; }
    [[nodiscard]] int lineCount() const { return m_layout ? m_layout->lineCount() : 0; }
    [[nodiscard]] QStringList lines() const; // as they are shown
    [[nodiscard]] bool isElided() const { return m_elided; }
    [[nodiscard]] QString shownText() const { return m_layout ? m_layout->text() : QString(); }

private:
    [[nodiscard]] qreal lineHeight(const Settings &settings) const;
    // Breaks into lines; returns where the text of line `maximumLines` begins and whether something was left
    // over.
    bool breakLines(QTextLayout &layout, const Settings &settings, int *lastLineStart) const;
    [[nodiscard]] FormattedText elided(const FormattedText &text, int lastLineStart,
                                       const Settings &settings) const;
    [[nodiscard]] std::pair<int, int> tooWideWord(const Settings &settings, int from) const;
    void balanceLines(const Settings &settings);
    void placeLines(const Settings &settings);
    void alignDigits(const Settings &settings);

    std::unique_ptr<QTextLayout> m_layout;
    QList<QGlyphRun> m_tabularRuns; // drawn instead of the layout when not empty
    QSizeF m_size;
    qreal m_left = 0; // of the lines
    bool m_elided = false;
};

} // namespace toolkit
