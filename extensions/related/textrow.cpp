// SPDX-License-Identifier: GPL-3.0-or-later
#include "textrow.h"

#include "shownlines.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

TextRow::TextRow(Kind kind, const QString &text, QGraphicsItem *parent)
    : TouchRow(kind == Kind::Button, parent),
      m_kind(kind),
      m_text(text)
{
}

QAccessible::Role TextRow::accessibleRole() const
{
    const bool isHeading = m_kind == Kind::Title || m_kind == Kind::Heading;
    return isHeading ? QAccessible::Heading : TouchRow::accessibleRole();
}

QFont TextRow::shownFont() const
{
    switch (m_kind) {
    case Kind::Title:
        return scaledFont(font(), 1.4, QFont::Bold);
    case Kind::Heading:
        return scaledFont(font(), 0.9, QFont::DemiBold);
    case Kind::Button:
        return scaledFont(font(), 1.1, QFont::Medium);
    case Kind::Message:
        break;
    }
    return font();
}

qreal TextRow::space() const
{
    return m_kind == Kind::Heading ? 16 : 24;
}

qreal TextRow::heightAt(qreal width) const
{
    const QFont font = shownFont();
    const int lines = ShownLines(m_text, font, width - 2 * Margin, 4).count();
    const qreal height = lines * QFontMetricsF(font).lineSpacing() + space();
    return std::max(height, canBeTapped() ? LowestTapped : 0);
}

void TextRow::paintContent(QPainter *painter, const QRectF &rect)
{
    const bool isQuiet = m_kind == Kind::Heading || m_kind == Kind::Message;
    painter->setPen(palette().color(isQuiet                      ? QPalette::PlaceholderText
                                        : m_kind == Kind::Button ? QPalette::Link
                                                                 : QPalette::WindowText));
    const QFont font = shownFont();
    const ShownLines lines(m_text, font, rect.width(), 4);
    const qreal height = lines.count() * QFontMetricsF(font).lineSpacing();
    lines.paint(painter, {rect.left(), rect.center().y() - height / 2, rect.width(), height},
                layoutDirection());
}
