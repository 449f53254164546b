// SPDX-License-Identifier: GPL-3.0-or-later
#include "timebubble.h"

#include <platform/toolkit/painthelpers.h>
#include <platform/toolkit/theme.h>

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal AboveKnob = 28;
constexpr qreal Outside = 8; // kept to the sides of the room
constexpr qreal WidestChapter = 280;

} // namespace

TimeBubble::TimeBubble(QGraphicsItem *parent) : Widget(parent)
{
    setObjectName(u"TimeBubble"_s);
    setAcceptedMouseButtons(Qt::NoButton);
    setStyleName(u"KestrelTimeBubble"_s);
    setVisible(false);
}

TimeBubble::~TimeBubble() = default;

void TimeBubble::show(const QString &time, const QString &chapter, const QPointF &knob, qreal room)
{
    const QFontMetricsF metrics(style().font);
    const QMarginsF around = style().margins;
    const qreal widest = std::min(WidestChapter, room - 2 * Outside - around.left() - around.right());
    m_time = time;
    m_chapter = metrics.elidedText(chapter, Qt::ElideRight, widest);
    // In steps, so that it does not tremble while the digits change.
    const qreal text = std::max(metrics.horizontalAdvance(m_time), metrics.horizontalAdvance(m_chapter));
    const QSizeF size(std::ceil(text / 8) * 8 + around.left() + around.right(),
                      metrics.height() * (m_chapter.isEmpty() ? 1 : 2) + around.top() + around.bottom());
    const qreal left
        = qBound(Outside, knob.x() - size.width() / 2, qMax(Outside, room - Outside - size.width()));
    setGeometry(QRectF(QPointF(left, knob.y() - AboveKnob - size.height()), size));
    setVisible(true);
    update();
}

void TimeBubble::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const toolkit::Style &look = style();
    toolkit::fillRounded(painter, rect(), look.radius, look.color(u"background"_s));
    toolkit::drawOutline(painter, rect(), look.radius, look.number(u"outlineWidth"_s),
                         look.color(u"outline"_s));
    QRectF line = contentsRect();
    if (!m_chapter.isEmpty())
        line.setHeight(line.height() / 2);
    painter->setFont(look.font);
    painter->setPen(look.color(u"text"_s));
    painter->drawText(line, Qt::AlignCenter | Qt::TextSingleLine, m_time);
    if (m_chapter.isEmpty())
        return;
    line.translate(0, line.height());
    painter->setPen(look.color(u"detail"_s));
    painter->drawText(line, Qt::AlignCenter | Qt::TextSingleLine, m_chapter);
}
