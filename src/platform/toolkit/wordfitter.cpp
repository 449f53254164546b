// SPDX-License-Identifier: GPL-3.0-or-later
#include "wordfitter.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace toolkit {

namespace {

constexpr QChar ellipsis(0x2026);

bool isJoint(QChar character)
{
    const bool opens = character.category() == QChar::Punctuation_Open
        || character.category() == QChar::Punctuation_InitialQuote;
    return !opens && (character.isPunct() || character.isSymbol());
}

// Behind the signs that join the parts of a word, within it.
QList<int> joints(const QString &text, int start, int end)
{
    QList<int> positions;
    for (int position = start + 1; position < end; ++position) {
        if (isJoint(text.at(position - 1)) && !isJoint(text.at(position)))
            positions.append(position);
    }
    return positions;
}

QList<int> graphemes(const QString &text, int start, int end)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(start);
    QList<int> ends;
    for (int position = int(finder.toNextBoundary()); position >= 0 && position < end;
         position = int(finder.toNextBoundary()))
        ends.append(position);
    return ends;
}

// One ellipsis in place of the part.
void leaveOut(FormattedText &text, int start, int end)
{
    text.text.replace(start, end - start, ellipsis);
    const auto moved
        = [=](int position) { return position >= end ? position - (end - start) + 1 : start + 1; };
    QList<QTextLayout::FormatRange> formats;
    for (QTextLayout::FormatRange range : text.formats) {
        const int last = range.start + range.length;
        const int newLast = last <= start ? last : moved(last);
        range.start = range.start <= start ? range.start : moved(range.start);
        range.length = newLast - range.start;
        if (range.length > 0)
            formats.append(range);
    }
    text.formats = formats;
}

} // namespace

WordFitter::WordFitter(const QFont &font, const QTextOption &option, qreal width)
    : m_font(font),
      m_option(option),
      m_width(width)
{
}

bool WordFitter::fits(const FormattedText &text, int start, int end, const QString &suffix) const
{
    return widthOf(text, start, end, suffix, m_font, m_option) <= m_width;
}

// The last of the ends, which are in order, up to which there is room; the start when there is for none.
int WordFitter::lastFitting(const FormattedText &text, int start, const QList<int> &ends,
                            const QString &suffix) const
{
    const auto beyond = std::partition_point(ends.begin(), ends.end(),
                                             [&](int end) { return fits(text, start, end, suffix); });
    return beyond == ends.begin() ? start : *(beyond - 1);
}

int WordFitter::fit(FormattedText &text, int start, int end, bool *wasCut) const
{
    while (start < end && !fits(text, start, end)) {
        const QList<int> parts = joints(text.text, start, end);
        int next = lastFitting(text, start, parts);
        if (next == start) {
            const int partEnd = parts.isEmpty() ? end : parts.first();
            const QList<int> letters = graphemes(text.text, start, partEnd);
            if (letters.isEmpty())
                break; // one letter: there is nothing to leave out
            const int cut = std::max(lastFitting(text, start, letters, ellipsis), letters.first());
            leaveOut(text, cut, partEnd);
            end -= partEnd - cut - 1;
            next = cut + 1;
            *wasCut = true;
        }
        if (next >= end)
            break;
        insertBreak(text, next);
        start = next + 1;
        ++end;
    }
    return end;
}

} // namespace toolkit
