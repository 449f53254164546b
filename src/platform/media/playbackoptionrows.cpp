// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackoptionrows.h"

#include <platform/toolkit/layout.h>
#include <platform/toolkit/painthelpers.h>
#include <platform/toolkit/theme.h>

#include <QFontMetricsF>
#include <QPainter>
#include <QtMath>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using toolkit::Button;
using toolkit::Layout;
using toolkit::LinearLayoutPolicy;

namespace {

constexpr qreal StepSpacing = 8;
constexpr qreal StepsMargin = 16;

QFont valueFont(Qt::Orientation orientation)
{
    return toolkit::Theme::instance()->style(u"PlaybackOptionValueInverted"_s, orientation).font;
}

} // namespace

OptionRow::OptionRow(Kind kind, const QString &title, const QString &value, bool chosen)
    : Button(title),
      m_kind(kind),
      m_value(value),
      m_chosen(chosen)
{
    setStyleName(u"PlaybackOptionRowInverted"_s);
}

QString OptionRow::accessibleName() const
{
    const QString name = m_value.isEmpty() ? text() : u"%1, %2"_s.arg(text(), m_value);
    return m_chosen ? qtTrId("qtn_vide_options_chosen").arg(name) : name;
}

qreal OptionRow::markWidth() const
{
    return m_kind == Kind::Way ? 0 : style().number(u"mark"_s, 28) + style().spacing;
}

void OptionRow::paintLine(QPainter *painter, const QRectF &place, const QFont &font, const QColor &color,
                          const QString &text) const
{
    painter->setFont(font);
    painter->setPen(color);
    painter->setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const Qt::Alignment side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter->drawText(
        place, int(side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip),
        QFontMetricsF(font).elidedText(text, Qt::ElideRight, place.width()));
}

void OptionRow::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    if (isDown())
        toolkit::fillRounded(painter, rect(), style().radius, style().color(u"pressed"_s));
    if (hasFocus())
        toolkit::drawFocus(painter, rect(), style().radius, style().color(u"focus"_s));
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    QRectF place = rect().marginsRemoved(style().margins);
    const qreal mark = markWidth();
    if (m_chosen) {
        const qreal side = style().number(u"mark"_s, 28);
        const QRectF markPlace(mirrored ? place.right() - side : place.left(), place.center().y() - side / 2,
                               side, side);
        toolkit::drawIcon(painter, u"icon-m-kestrel-chosen"_s, markPlace, style().color(u"mark"_s));
    }
    place.adjust(mirrored ? 0 : mark, 0, mirrored ? -mark : 0, 0);
    const QColor color = style().color(isEnabled() ? u"text"_s : u"disabled"_s);
    if (m_value.isEmpty()) {
        paintLine(painter, place, style().font, color, text());
        return;
    }
    const QFont small = valueFont(screenOrientation());
    const qreal first = QFontMetricsF(style().font).height();
    const qreal second = QFontMetricsF(small).height();
    const qreal top = place.center().y() - (first + second) / 2;
    paintLine(painter, {place.x(), top, place.width(), first}, style().font, color, text());
    paintLine(painter, {place.x(), top + first, place.width(), second}, small,
              style().color(isEnabled() ? u"value"_s : u"disabled"_s), m_value);
}

// As high as its lines, however large the text is.
void OptionRow::applyStyle()
{
    Button::applyStyle();
    qreal lines = QFontMetricsF(style().font).height();
    if (!m_value.isEmpty())
        lines += QFontMetricsF(valueFont(screenOrientation())).height();
    const qreal needed = qCeil(lines) + style().margins.top() + style().margins.bottom();
    setMinimumHeight(std::max(minimumHeight(), needed));
    setPreferredHeight(std::max(preferredHeight(), needed));
}

OptionSteps::OptionSteps(const QString &title) : m_title(title), m_label(new toolkit::Label(this))
{
    auto *layout = new Layout(this);
    m_column = new LinearLayoutPolicy(layout, Qt::Vertical);
    m_column->setContentsMargins(StepsMargin, StepSpacing, StepsMargin, StepSpacing);
    m_column->setSpacing(StepSpacing);
    layout->setPolicy(m_column);
    m_label->setStyleName(u"PlaybackOptionValueInverted"_s);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setText(title);
    m_column->addItem(m_label);
}

void OptionSteps::beginRow()
{
    auto *row = new toolkit::Widget(this);
    auto *layout = new Layout(row);
    m_row = new LinearLayoutPolicy(layout, Qt::Horizontal);
    m_row->setSpacing(StepSpacing);
    layout->setPolicy(m_row);
    m_column->addItem(row);
}

void OptionSteps::setValue(const QString &value)
{
    m_label->setText(u"%1: %2"_s.arg(m_title, value));
}

Button *OptionSteps::addStep(const QString &text, const QString &name)
{
    auto *button = new Button(text);
    button->setStyleName(u"PlaybackOptionStepInverted"_s);
    button->setAccessibleName(name);
    // Large letters have room when fewer stand side by side.
    const int inRow = std::max(1, int(button->style().number(u"inRow"_s, 4)));
    if (m_steps.size() % inRow == 0)
        beginRow();
    m_row->addItem(button);
    m_steps.append(button);
    return button;
}

OptionColumn::OptionColumn()
{
    auto *layout = new Layout(this);
    m_policy = new LinearLayoutPolicy(layout, Qt::Vertical);
    m_policy->setStyleName(u"SheetRows"_s);
    layout->setPolicy(m_policy);
}

void OptionColumn::end()
{
    m_policy->addStretch();
}

void OptionColumn::add(toolkit::Widget *row)
{
    m_policy->addItem(row);
    m_rows.append(row);
}
