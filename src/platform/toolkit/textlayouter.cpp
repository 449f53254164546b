// SPDX-License-Identifier: GPL-3.0-or-later
#include "textlayouter.h"

#include "wordfitter.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QtMath>

#include <algorithm>
#include <tuple>

namespace toolkit {

namespace {

constexpr qreal widest = 1e6;

QTextOption optionFor(const TextLayouter::Settings &settings, const QString &text)
{
    QTextOption option(settings.alignment | Qt::AlignAbsolute);
    option.setWrapMode(settings.wrapMode);
    // A title's own direction, whatever the language of the program is.
    option.setTextDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    option.setUseDesignMetrics(true);
    return option;
}

bool isTabular(QChar character)
{
    return character.isDigit();
}

// What would look lost, or like a fourth point, before an ellipsis.
bool standsAlone(QChar character)
{
    return character.isSpace() || QStringView(u".,\u060c\u2026").contains(character);
}

// Of the ten digits of the writing that the text's digits are of.
qreal widestDigit(const QString &text, const QFont &font)
{
    const QFontMetricsF metrics(font);
    qreal widest = 0;
    for (QChar character : text) {
        if (!isTabular(character) || character.digitValue() < 0)
            continue;
        const char16_t zero = char16_t(character.unicode() - character.digitValue());
        for (char16_t digit = 0; digit <= 9; ++digit)
            widest = std::max(widest, metrics.horizontalAdvance(QChar(char16_t(zero + digit))));
        break;
    }
    return widest;
}

} // namespace

qreal TextLayouter::lineHeight(const Settings &settings) const
{
    return settings.lineHeight > 0 ? settings.lineHeight : QFontMetricsF(settings.font).height();
}

bool TextLayouter::breakLines(QTextLayout &layout, const Settings &settings, int *lastLineStart) const
{
    layout.beginLayout();
    int lines = 0;
    int end = 0;
    for (;;) {
        if (settings.maximumLines > 0 && lines == settings.maximumLines)
            break;
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(settings.width >= 0 ? settings.width : widest);
        *lastLineStart = line.textStart();
        end = line.textStart() + line.textLength();
        ++lines;
    }
    layout.endLayout();
    if (end < layout.text().size())
        return true;
    // One line that must not wrap, or one word wider than the line.
    return settings.width >= 0 && lines > 0
        && layout.lineAt(lines - 1).naturalTextWidth() > settings.width + 0.5;
}

FormattedText TextLayouter::elided(const FormattedText &text, int lastLineStart,
                                   const Settings &settings) const
{
    const QString ellipsis(QChar(0x2026));
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text.text);
    QList<int> cuts{lastLineStart};
    finder.setPosition(lastLineStart);
    for (int position = int(finder.toNextBoundary()); position >= 0;
         position = int(finder.toNextBoundary())) {
        if (text.text.at(position - 1) == QChar::LineSeparator)
            break; // the next paragraph: what follows is not on this line
        cuts.append(position);
    }
    const auto candidate = [&](int cut) {
        FormattedText part{text.text.left(cut), formatsWithin(text.formats, 0, cut)};
        // Also what stands for the rest of a word that was cut itself.
        while (part.text.size() > lastLineStart && standsAlone(part.text.back()))
            part.text.chop(1);
        part.formats = formatsWithin(part.formats, 0, int(part.text.size()));
        part.text += ellipsis;
        // A cut word may be short enough for the line before: the break is held where it was.
        if (lastLineStart > 0) {
            if (part.text.at(lastLineStart - 1).isSpace()) {
                part.text[lastLineStart - 1] = QChar::LineSeparator;
            } else {
                insertBreak(part, lastLineStart);
            }
        }
        return part;
    };
    const auto fits = [&](int cut) {
        return widthOf(text, lastLineStart, cut, ellipsis, settings.font, optionFor(settings, text.text))
            <= settings.width;
    };
    // The longest cut that fits: fits() is true up to some place and false from there on.
    const auto last = std::partition_point(cuts.begin() + 1, cuts.end(), fits) - 1;
    return candidate(*last);
}

void TextLayouter::layOut(const FormattedText &text, const Settings &settings)
{
    const auto make = [&](const FormattedText &from) {
        m_layout = std::make_unique<QTextLayout>(from.text, settings.font);
        m_layout->setCacheEnabled(true);
        m_layout->setTextOption(optionFor(settings, text.text));
        m_layout->setFormats(from.formats);
        int start = 0;
        const bool overflow = breakLines(*m_layout, settings, &start);
        return std::pair(overflow, start);
    };
    m_tabularRuns.clear();
    auto [overflow, start] = make(text);
    const bool mayElide = settings.elide && settings.width >= 0;
    FormattedText fitted = text;
    m_elided = false;
    // A word that is too wide may leave another one further on: each is looked at once.
    for (int from = 0; mayElide && settings.wrapMode == QTextOption::WordWrap;) {
        const auto [wordStart, wordEnd] = tooWideWord(settings, from);
        if (wordEnd < 0)
            break;
        const WordFitter fitter(settings.font, optionFor(settings, text.text), settings.width);
        from = fitter.fit(fitted, wordStart, wordEnd, &m_elided);
        std::tie(overflow, start) = make(fitted);
    }
    if (overflow && mayElide) {
        m_elided = true;
        make(elided(fitted, start, settings));
    }
    m_left = 0;
    if (settings.balanced && settings.alignment & Qt::AlignHCenter && !m_elided)
        balanceLines(settings);
    placeLines(settings);
    if (settings.tabularDigits && text.formats.isEmpty() && m_layout->lineCount() == 1)
        alignDigits(settings);
}

// Into the narrowest lines of which there are no more. A text that has to be broken within words stays as it
// is.
void TextLayouter::balanceLines(const Settings &settings)
{
    const int lines = m_layout->lineCount();
    if (lines < 2)
        return;
    Settings narrower = settings;
    narrower.wrapMode = QTextOption::WordWrap;
    const auto breaksAt = [&](qreal width) {
        narrower.width = width;
        int start = 0;
        return !breakLines(*m_layout, narrower, &start) && m_layout->lineCount() == lines
            && tooWideWord(narrower, 0).second < 0;
    };
    m_layout->setTextOption(optionFor(narrower, m_layout->text()));
    if (!breaksAt(settings.width)) {
        int start = 0;
        m_layout->setTextOption(optionFor(settings, m_layout->text()));
        breakLines(*m_layout, settings, &start);
        return;
    }
    qreal tooNarrow = 0;
    qreal enough = settings.width;
    while (enough - tooNarrow > 1) {
        const qreal width = (enough + tooNarrow) / 2;
        (breaksAt(width) ? enough : tooNarrow) = width;
    }
    breaksAt(enough);
    m_left = (settings.width - enough) / 2;
}

// The first line that begins at `from` or behind it and has but one word, wider than itself; (-1, -1) when
// all fit.
std::pair<int, int> TextLayouter::tooWideWord(const Settings &settings, int from) const
{
    for (int i = 0; i < m_layout->lineCount(); ++i) {
        const QTextLine line = m_layout->lineAt(i);
        if (line.textStart() < from || line.naturalTextWidth() <= settings.width)
            continue;
        int end = line.textStart() + line.textLength();
        while (end > line.textStart() && m_layout->text().at(end - 1).isSpace())
            --end;
        return {line.textStart(), end};
    }
    return {-1, -1};
}

QStringList TextLayouter::lines() const
{
    QStringList result;
    for (int i = 0; i < lineCount(); ++i) {
        const QTextLine line = m_layout->lineAt(i);
        result.append(m_layout->text().mid(line.textStart(), line.textLength()).trimmed());
    }
    return result;
}

void TextLayouter::placeLines(const Settings &settings)
{
    const QFontMetricsF metrics(settings.font);
    const qreal height = lineHeight(settings);
    qreal width = 0;
    for (int i = 0; i < m_layout->lineCount(); ++i) {
        QTextLine line = m_layout->lineAt(i);
        // Lines with a fall-back font keep the rhythm: baselines stand at even distances.
        line.setPosition(
            {m_left, i * height + (height - metrics.height()) / 2 + metrics.ascent() - line.ascent()});
        width = std::max(width, line.naturalTextWidth());
    }
    m_size = QSizeF(width, m_layout->lineCount() * height);
}

// Digits of one width, so that a running time does not tremble: each is centred in the room of the widest.
void TextLayouter::alignDigits(const Settings &settings)
{
    const QString text = m_layout->text();
    QList<QGlyphRun> runs = m_layout->glyphRuns();
    qsizetype glyphs = 0;
    for (const QGlyphRun &run : runs)
        glyphs += run.glyphIndexes().size();
    if (glyphs != text.size() || text.isRightToLeft())
        return; // ligatures or another writing: as the font has it
    const qreal digit = widestDigit(text, settings.font);
    // A run is of one font: the colon between digits of another writing stands in a run of its own. Times
    // read from left to right in every writing, so the glyphs' places give the order of the text.
    struct Glyph
    {
        qreal x;
        qreal advance;
        qsizetype run;
        qsizetype index;
    };
    QList<Glyph> ordered;
    for (qsizetype run = 0; run < runs.size(); ++run) {
        const QList<QPointF> advances
            = runs.at(run).rawFont().advancesForGlyphIndexes(runs.at(run).glyphIndexes());
        const QList<QPointF> positions = runs.at(run).positions();
        for (qsizetype i = 0; i < positions.size(); ++i)
            ordered.append({positions.at(i).x(), advances.at(i).x(), run, i});
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const Glyph &a, const Glyph &b) { return a.x < b.x; });
    QList<QList<QPointF>> places;
    for (const QGlyphRun &run : std::as_const(runs))
        places.append(run.positions());
    qreal x = 0;
    for (qsizetype i = 0; i < ordered.size(); ++i) {
        const Glyph &glyph = ordered.at(i);
        const qreal room = isTabular(text.at(i)) ? digit : glyph.advance;
        places[glyph.run][glyph.index].setX(x + (room - glyph.advance) / 2);
        x += room;
    }
    const qreal width = settings.width >= 0 ? settings.width : x;
    qreal shift = 0;
    if (settings.alignment & Qt::AlignRight)
        shift = width - x;
    else if (settings.alignment & Qt::AlignHCenter)
        shift = (width - x) / 2;
    for (qsizetype run = 0; run < runs.size(); ++run) {
        for (QPointF &place : places[run])
            place.rx() += shift;
        runs[run].setPositions(places.at(run));
    }
    m_tabularRuns = runs;
    m_size.setWidth(x);
}

void TextLayouter::draw(QPainter *painter, const QPointF &position, const QColor &color) const
{
    if (!m_layout)
        return;
    painter->setPen(color);
    if (m_tabularRuns.isEmpty()) {
        m_layout->draw(painter, position);
        return;
    }
    for (const QGlyphRun &run : m_tabularRuns)
        painter->drawGlyphRun(position, run);
}

} // namespace toolkit
