// SPDX-License-Identifier: GPL-3.0-or-later
#include "gestureoverlay.h"

#include "percenttext.h"
#include "timetext.h"
#include "volumeicon.h"
#include "wholeseconds.h"

#include <platform/toolkit/locale.h>
#include <platform/toolkit/painthelpers.h>
#include <platform/toolkit/theme.h>

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal IconSize = 32;
constexpr qreal Gap = 16;
constexpr qreal BarHeight = 6;
constexpr qreal LevelBar = 148;
constexpr qreal TimeBar = 200;
constexpr qreal BelowBar = 96; // of the page, at the top
constexpr qreal FromTop = 0.2; // of the height

} // namespace

GestureOverlay::GestureOverlay(QGraphicsItem *parent) : Widget(parent), m_fade(this, "opacity")
{
    setAcceptedMouseButtons(Qt::NoButton);
    setObjectName(u"GestureOverlay"_s);
    m_leaving.setSingleShot(true);
    connect(&m_leaving, &QTimer::timeout, this, [this] { fade(false); });
    connect(&m_fade, &QPropertyAnimation::finished, this, [this] { setVisible(m_shown); });
    setOpacity(0);
    setVisible(false);
    setStyleName(u"KestrelGestureOverlay"_s);
}

GestureOverlay::~GestureOverlay() = default;

void GestureOverlay::setArea(const QRectF &area)
{
    m_area = area;
    layOut();
}

void GestureOverlay::showLevel(Level level, qreal value)
{
    m_iconId = level == Level::Volume ? volumeIcon(value) : u"icon-m-kestrel-brightness"_s;
    m_value = percentText(value);
    m_detail.clear();
    m_fraction = value;
    showContent();
}

void GestureOverlay::showTime(MediaTime target, MediaTime way, MediaTime duration)
{
    const QLocale locale = toolkit::Locale::current();
    m_iconId.clear();
    m_value = timeText(wholeSeconds(target), locale);
    m_detail = signedTimeText(way / std::chrono::seconds(1), locale);
    m_fraction = duration > MediaTime::zero() ? qreal(target.count()) / qreal(duration.count()) : 0;
    showContent();
}

void GestureOverlay::showSpeed(qreal rate)
{
    m_iconId = u"icon-m-kestrel-fast"_s;
    m_value = toolkit::Locale::current().toString(rate, 'g', 3) + u'\u00d7';
    m_detail.clear();
    m_fraction = -1;
    showContent();
}

void GestureOverlay::leave()
{
    if (m_shown)
        m_leaving.start(int(style().number(u"stay"_s, 500)));
}

QString GestureOverlay::text() const
{
    return m_detail.isEmpty() ? m_value : m_value + u' ' + m_detail;
}

void GestureOverlay::showContent()
{
    m_leaving.stop();
    layOut();
    update();
    fade(true);
}

void GestureOverlay::fade(bool in)
{
    if (m_shown == in)
        return;
    m_shown = in;
    setVisible(true);
    m_fade.stop();
    m_fade.setStartValue(opacity());
    m_fade.setEndValue(in ? 1.0 : 0.0);
    const int time = isOnDisplay() ? int(style().number(u"fade"_s, 160)) : 0;
    m_fade.setDuration(toolkit::Theme::instance()->motion(in ? time / 2 : time));
    m_fade.start();
}

void GestureOverlay::applyStyle()
{
    Widget::applyStyle();
    m_timeFont = toolkit::Theme::instance()->style(u"KestrelGestureOverlayTime"_s).font;
    layOut();
}

void GestureOverlay::changeEvent(QEvent *event)
{
    Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        update();
}

// Wide enough for every value of its kind, so that it keeps its place while the value changes.
void GestureOverlay::layOut()
{
    const QMarginsF around = style().margins;
    const QFontMetricsF metrics(style().font);
    QSizeF content;
    if (m_iconId.isEmpty()) {
        const QFontMetricsF large(m_timeFont);
        const qreal texts = large.horizontalAdvance(m_value) + Gap + metrics.horizontalAdvance(m_detail);
        content = QSizeF(std::max(TimeBar, std::ceil(texts / 24) * 24), large.height() + Gap / 2 + BarHeight);
    } else {
        const qreal widest
            = m_fraction < 0 ? metrics.horizontalAdvance(m_value) : metrics.horizontalAdvance(percentText(1));
        content = QSizeF(IconSize + Gap + widest + (m_fraction < 0 ? 0 : LevelBar + Gap),
                         std::max(IconSize, metrics.height()));
    }
    const QSizeF size = content.grownBy(around);
    const qreal top = std::max(BelowBar, m_area.height() * FromTop - size.height() / 2);
    setGeometry(QRectF(
        QPointF(m_area.left() + std::round((m_area.width() - size.width()) / 2), m_area.top() + top), size));
}

void GestureOverlay::paintBar(QPainter *painter, const QRectF &bar) const
{
    toolkit::fillRounded(painter, bar, bar.height() / 2, style().color(u"track"_s));
    const QRectF filled = toolkit::leadingPart(bar, m_fraction, layoutDirection());
    toolkit::fillRounded(painter, filled, bar.height() / 2, style().color(u"accent"_s));
}

void GestureOverlay::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const toolkit::Style &look = style();
    toolkit::fillRounded(painter, rect(), look.radius, look.color(u"background"_s));
    toolkit::drawOutline(painter, rect(), look.radius, look.number(u"outlineWidth"_s),
                         look.color(u"outline"_s));

    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const int leading
        = int((mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute | Qt::AlignVCenter);
    const int trailing
        = int((mirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignAbsolute | Qt::AlignVCenter);
    QRectF content = contentsRect();
    if (m_iconId.isEmpty()) {
        QRectF bar = content;
        bar.setTop(bar.bottom() - BarHeight);
        paintBar(painter, bar);
        content.setBottom(bar.top() - Gap / 2);
        painter->setPen(look.color(u"text"_s));
        painter->setFont(m_timeFont);
        painter->drawText(content, leading, m_value);
        painter->setPen(look.color(u"detail"_s));
        painter->setFont(look.font);
        painter->drawText(content, trailing, m_detail);
        return;
    }
    const QRectF icon(mirrored ? content.right() - IconSize : content.left(),
                      content.center().y() - IconSize / 2, IconSize, IconSize);
    toolkit::drawIcon(painter, m_iconId, icon, look.color(u"icon"_s), layoutDirection());
    if (m_fraction >= 0) {
        const qreal left = mirrored ? icon.left() - Gap - LevelBar : icon.right() + Gap;
        paintBar(painter, QRectF(left, content.center().y() - BarHeight / 2, LevelBar, BarHeight));
    }
    painter->setPen(look.color(u"text"_s));
    painter->setFont(look.font);
    painter->drawText(content, trailing, m_value);
}
