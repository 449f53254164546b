// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QList>
#include <QString>
#include <QTextLayout>
#include <QTextOption>

namespace toolkit {

// Text with its formats, free of markup.
struct FormattedText
{
    QString text; // paragraphs separated by QChar::LineSeparator
    QList<QTextLayout::FormatRange> formats;
};

// Rich text: HTML with an embedded style block; unknown elements (<highlight>) are styled by it. Colours that
// the markup does not name stay open.
[[nodiscard]] FormattedText parseRichText(const QString &markup, const QFont &baseFont);
// The formats of the text from `start` to `end`, counted from `start`.
[[nodiscard]] QList<QTextLayout::FormatRange> formatsWithin(const QList<QTextLayout::FormatRange> &formats,
                                                            int start, int end);
// Begins a line at `position`, whatever room there is on the one before.
void insertBreak(FormattedText &text, int position);
// Of the part from `start` to `end` on one line, with `suffix` behind it.
[[nodiscard]] qreal widthOf(const FormattedText &text, int start, int end, const QString &suffix,
                            const QFont &font, QTextOption option);

} // namespace toolkit
