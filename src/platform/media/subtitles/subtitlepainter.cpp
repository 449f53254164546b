// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitlepainter.h"

#include <QPainter>
#include <QTextLayout>
#include <QtMath>

#include <algorithm>

namespace subtitles {

namespace {

constexpr qreal OutlineShare = 0.16; // of the font's size, on both sides together
constexpr qreal LargestSide = 8192; // device pixels

QList<QTextLayout::FormatRange> formats(const SubtitleText &text, const QPen &outline)
{
    QTextCharFormat usual;
    usual.setForeground(outline.style() == Qt::NoPen ? QBrush(Qt::white) : QBrush(outline.color()));
    usual.setTextOutline(outline);
    QList<QTextLayout::FormatRange> ranges{{0, int(text.words.size()), usual}};
    for (const SubtitleSpan &span : text.spans) {
        QTextCharFormat format = usual;
        if (span.bold)
            format.setFontWeight(QFont::Bold);
        format.setFontItalic(span.italic);
        format.setFontUnderline(span.underlined);
        ranges.append({span.start, span.length, format});
    }
    return ranges;
}

QSizeF layOut(QTextLayout &layout, qreal width)
{
    QTextOption option;
    option.setAlignment(Qt::AlignHCenter);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LayoutDirectionAuto);
    layout.setTextOption(option);
    qreal height = 0;
    qreal widest = 0;
    layout.beginLayout();
    for (;;) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
        widest = std::max(widest, line.naturalTextWidth());
    }
    layout.endLayout();
    return {widest, height};
}

} // namespace

Drawn draw(const SubtitleText &text, const QFont &font, qreal width, qreal scale)
{
    QString words = text.words;
    words.replace(u'\n', QChar::LineSeparator); // in one layout, so that spans run on
    QTextLayout layout(words, font);
    const qreal outlineWidth = font.pixelSize() * OutlineShare;
    layout.setFormats(formats(text, Qt::NoPen));
    const qreal margin = outlineWidth / 2 + 2;
    const QSizeF inner = layOut(layout, std::max(1.0, width - 2 * margin));
    const QSizeF size(std::max(1.0, width), inner.height() + 2 * margin);
    const QSizeF pixels = (size * scale).boundedTo({LargestSide, LargestSide});
    QImage image(QSize(qCeil(pixels.width()), qCeil(pixels.height())), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.scale(scale, scale);
    const QPointF corner(margin, margin);
    QPen outline(Qt::black, outlineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    layout.setFormats(formats(text, outline));
    layOut(layout, std::max(1.0, width - 2 * margin));
    layout.draw(&painter, corner);
    layout.setFormats(formats(text, Qt::NoPen));
    layOut(layout, std::max(1.0, width - 2 * margin));
    layout.draw(&painter, corner);
    return {image, size};
}

} // namespace subtitles
