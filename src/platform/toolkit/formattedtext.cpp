// SPDX-License-Identifier: GPL-3.0-or-later
#include "formattedtext.h"

#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>

namespace toolkit {

namespace {

constexpr qreal widest = 1e6;

// The part of a fragment's format that a label shows. The font is made whole: a layout does not complete it
// itself.
QTextCharFormat labelFormat(const QTextCharFormat &markup, const QFont &baseFont)
{
    QFont font = baseFont;
    if (markup.hasProperty(QTextFormat::FontWeight))
        font.setWeight(QFont::Weight(std::max(markup.fontWeight(), int(baseFont.weight()))));
    if (markup.hasProperty(QTextFormat::FontItalic))
        font.setItalic(markup.fontItalic());
    if (markup.hasProperty(QTextFormat::FontStrikeOut))
        font.setStrikeOut(markup.fontStrikeOut());
    if (markup.underlineStyle() != QTextCharFormat::NoUnderline)
        font.setUnderline(true);
    QTextCharFormat format;
    format.setFont(font);
    if (markup.hasProperty(QTextFormat::ForegroundBrush))
        format.setForeground(markup.foreground());
    if (markup.hasProperty(QTextFormat::BackgroundBrush))
        format.setBackground(markup.background());
    return format;
}

} // namespace

FormattedText parseRichText(const QString &markup, const QFont &baseFont)
{
    QTextDocument document;
    document.setUndoRedoEnabled(false);
    document.setDefaultFont(baseFont);
    document.setHtml(markup);
    FormattedText result;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockNumber() > 0)
            result.text += QChar(QChar::LineSeparator);
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            result.formats.append({int(result.text.size()), int(fragment.text().size()),
                                   labelFormat(fragment.charFormat(), baseFont)});
            result.text += fragment.text();
        }
    }
    return result;
}

// The formats of the text from `start` to `end`, counted from `start`.
QList<QTextLayout::FormatRange> formatsWithin(const QList<QTextLayout::FormatRange> &formats, int start,
                                              int end)
{
    QList<QTextLayout::FormatRange> within;
    for (QTextLayout::FormatRange range : formats) {
        const int first = std::max(range.start, start);
        const int last = std::min(range.start + range.length, end);
        range.start = first - start;
        range.length = last - first;
        if (range.length > 0)
            within.append(range);
    }
    return within;
}

void insertBreak(FormattedText &text, int position)
{
    text.text.insert(position, QChar(QChar::LineSeparator));
    for (QTextLayout::FormatRange &range : text.formats) {
        if (range.start >= position)
            ++range.start;
        else if (range.start + range.length > position)
            ++range.length;
    }
}

qreal widthOf(const FormattedText &text, int start, int end, const QString &suffix, const QFont &font,
              QTextOption option)
{
    QTextLayout probe(text.text.mid(start, end - start) + suffix, font);
    option.setWrapMode(QTextOption::NoWrap);
    probe.setTextOption(option);
    probe.setFormats(formatsWithin(text.formats, start, end));
    probe.beginLayout();
    QTextLine line = probe.createLine();
    line.setLineWidth(widest);
    probe.endLayout();
    return line.naturalTextWidth();
}

} // namespace toolkit
