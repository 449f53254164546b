// SPDX-License-Identifier: GPL-3.0-or-later
// How the controls over the picture look: where each stands, the scrim, the times.
#include "playercontrols.h"

#include "controlslider.h"
#include "timetext.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/locale.h>

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal VolumeLine = 4;
constexpr qreal VolumeKnob = 18;

// As the widest of the texts that a video of this length shows, so that nothing moves while the seconds
// count.
QString widestText(MediaTime duration, const QLocale &locale)
{
    const qint64 seconds = duration / std::chrono::seconds(1);
    return timeText(seconds >= 36000 ? 80000 : seconds >= 3600 ? 8 * 3600 : 8 * 60 + 8, locale, true);
}

} // namespace

void PlayerControls::applyStyle()
{
    Widget::applyStyle();
    const toolkit::Style &look = style();
    const QColor track = look.color(u"track"_s, QColor(255, 255, 255, 76));
    const QColor focus = look.color(u"text"_s, Qt::white);
    m_seekSlider->setColors(track, look.color(u"accent"_s, Qt::white));
    m_seekSlider->setMetrics(look.number(u"seekLine"_s, 6), look.number(u"seekKnob"_s, 26));
    m_seekSlider->setFocusColor(focus);
    m_seekSlider->setSectionColors(look.color(u"loop"_s, track), look.color(u"loopEnds"_s, Qt::white));
    m_volumeSlider->setColors(track, look.color(u"text"_s, Qt::white));
    m_volumeSlider->setMetrics(VolumeLine, VolumeKnob);
    m_volumeSlider->setFocusColor(look.color(u"accent"_s, Qt::white));
    measureTexts();
}

void PlayerControls::measureTexts()
{
    const QFontMetricsF metrics(style().font);
    m_textSize = QSizeF(metrics.horizontalAdvance(widestText(m_duration, toolkit::Locale::current())),
                        metrics.height());
    layOut();
    update();
}

void PlayerControls::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    layOut();
}

void PlayerControls::changeEvent(QEvent *event)
{
    Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        layOut();
}

void PlayerControls::layOut()
{
    ControlsMetrics metrics;
    metrics.area = size();
    metrics.mark = m_playButton->preferredSize();
    metrics.margin = style().margins.left();
    metrics.text = m_textSize;
    metrics.seekBand = style().number(u"seekBand"_s, metrics.seekBand);
    metrics.direction = layoutDirection();
    metrics.hasFullScreen = m_fullScreen != FullScreen::NotOffered;
    m_layout = controlsLayout(metrics);
    m_playButton->setGeometry(m_layout.mark);
    m_seekSlider->setGeometry(m_layout.seek);
    m_volumeButton->setGeometry(m_layout.volumeButton);
    m_volumeSlider->setGeometry(m_layout.volume);
    m_optionsButton->setGeometry(m_layout.options);
    m_fullScreenButton->setGeometry(m_layout.fullScreen);
}

void PlayerControls::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const QColor dark = style().color(u"scrim"_s, QColor(0, 0, 0, 204));
    QColor clear = dark;
    clear.setAlpha(0);
    const qreal height = qMin(m_layout.scrimHeight, size().height());
    const QRectF scrim(0, size().height() - height, size().width(), height);
    QLinearGradient gradient(scrim.topLeft(), scrim.bottomLeft());
    gradient.setColorAt(0, clear);
    gradient.setColorAt(1, dark);
    painter->fillRect(scrim, gradient);

    painter->setFont(style().font);
    const Qt::Alignment leading = layoutDirection() == Qt::LeftToRight ? Qt::AlignLeft : Qt::AlignRight;
    const Qt::Alignment trailing = layoutDirection() == Qt::LeftToRight ? Qt::AlignRight : Qt::AlignLeft;
    painter->setPen(style().color(u"text"_s, Qt::white));
    painter->drawText(m_layout.elapsed, int(leading | Qt::AlignAbsolute | Qt::AlignVCenter), m_elapsedText);
    painter->setPen(style().color(u"remaining"_s, Qt::lightGray));
    painter->drawText(m_layout.remaining, int(trailing | Qt::AlignAbsolute | Qt::AlignVCenter),
                      m_remainingText);
}
