// SPDX-License-Identifier: GPL-3.0-or-later
#include "shownlines.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace {

// More is never seen, and laying out a text of any length takes time.
constexpr qsizetype mostCharacters = 400;

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
    const QString shown = text.left(mostCharacters).simplified();
    m_direction = shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    const QFontMetricsF metrics(font);
    QTextLayout layout(shown, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (int number = 1; number <= most; ++number) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(std::max(width, 1.0));
        const QString rest = shown.mid(line.textStart());
        m_lines.append(number < most ? rest.left(line.textLength()).trimmed()
                                     : metrics.elidedText(rest, Qt::ElideRight, std::max(width, 1.0)));
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
