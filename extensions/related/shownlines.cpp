// SPDX-License-Identifier: GPL-3.0-or-later
#include "shownlines.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QRegularExpression>
#include <QTextLayout>

#include <algorithm>

namespace {

// More is never seen, and laying out a text of any length takes time.
constexpr qsizetype mostCharacters = 400;
constexpr QChar mayBreak(0x200b); // of no width

// A name of a file is one word, which is parted behind the signs that join its parts.
QString partedAtJoints(QString text)
{
    static const QRegularExpression joint(QStringLiteral("(?<=[\\p{L}\\p{N}][-_./+])(?=[\\p{L}\\p{N}])"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    return text.replace(joint, mayBreak);
}

QString elided(const QString &text, const QFontMetricsF &metrics, qreal width)
{
    // What would look lost, or like a fourth point, before an ellipsis; in Arabic with the joint between
    // them.
    static const QRegularExpression lost(QStringLiteral("[\\s.,\\x{060c}]+\\x{200d}?\\x{2026}$"));
    const QString line = metrics.elidedText(QString(text).remove(mayBreak).trimmed(), Qt::ElideRight, width);
    return QString(line).replace(lost, QChar(0x2026));
}

} // namespace

QFont scaledFont(QFont font, qreal factor, QFont::Weight weight)
{
    if (font.pixelSize() > 0)
        font.setPixelSize(qRound(font.pixelSize() * factor));
    else
        font.setPointSizeF(font.pointSizeF() * factor);
    font.setWeight(weight);
    return font;
}

ShownLines::ShownLines(const QString &text, const QFont &font, qreal width, int most) : m_font(font)
{
    const QString shown = partedAtJoints(text.left(mostCharacters).simplified());
    m_direction = shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    if (shown.isEmpty())
        return; // a layout makes a line of that, too
    const QFontMetricsF metrics(font);
    const qreal lineWidth = std::max(width, 1.0);
    QTextLayout layout(shown, font);
    layout.setTextOption(QTextOption()); // wraps between words
    layout.beginLayout();
    for (int number = 1; number <= most; ++number) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(lineWidth);
        // A word that is wider than the line has one of its own.
        const int length = number < most ? line.textLength() : -1;
        m_lines.append(elided(shown.mid(line.textStart(), length), metrics, lineWidth));
    }
    layout.endLayout();
}

void ShownLines::paint(QPainter *painter, const QRectF &rect, Qt::LayoutDirection direction) const
{
    const QFontMetricsF metrics(m_font);
    painter->setFont(m_font);
    const Qt::LayoutDirection before = painter->layoutDirection();
    painter->setLayoutDirection(m_direction); // its ellipsis stands where it ends
    // By the page's direction, whatever direction the text itself has.
    const Qt::Alignment side = direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    QRectF line(rect.left(), rect.top(), rect.width(), metrics.lineSpacing());
    // Letters of a font that stands in for this one may reach out of the line.
    const int flags
        = int(side | Qt::AlignAbsolute | Qt::AlignVCenter) | Qt::TextSingleLine | Qt::TextDontClip;
    for (const QString &text : m_lines) {
        painter->drawText(line, flags, text);
        line.translate(0, metrics.lineSpacing());
    }
    painter->setLayoutDirection(before);
}
