// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formattedtext.h"

namespace toolkit {

// What becomes of a word that is wider than the line. It goes on in the next line behind a sign that joins
// its parts, as names of files have them; a part that is too wide itself is cut.
class WordFitter
{
public:
    WordFitter(const QFont &font, const QTextOption &option, qreal width);

    // Of the word from `start` to `end`. Answers where it ends then; `wasCut` becomes true when not all of it
    // is left.
    int fit(FormattedText &text, int start, int end, bool *wasCut) const;

private:
    [[nodiscard]] bool fits(const FormattedText &text, int start, int end,
                            const QString &suffix = QString()) const;
    [[nodiscard]] int lastFitting(const FormattedText &text, int start, const QList<int> &ends,
                                  const QString &suffix = QString()) const;

    QFont m_font;
    QTextOption m_option;
    qreal m_width;
};

} // namespace toolkit
