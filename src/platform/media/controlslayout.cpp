// SPDX-License-Identifier: GPL-3.0-or-later
#include "controlslayout.h"

#include <algorithm>

namespace {

constexpr qreal ScrimHeight = 170;
constexpr qreal SeekMiddle = 76; // above the foot
constexpr qreal VolumeMiddle = 28;
constexpr qreal VolumeWidth = 136;
constexpr qreal VolumeGap = 8;
constexpr qreal ButtonSize = 48;
constexpr qreal ButtonOverhang = 12; // so that the mark in a button stands at the margin
constexpr qreal TextGap = 16;
constexpr qreal RowHeight = 48;
constexpr qreal ShortestSeek = 200;

} // namespace

QList<QRectF> touchAreas(const ControlsLayout &layout)
{
    return {layout.mark,
            layout.seek | layout.elapsed | layout.remaining | layout.volumeButton | layout.fullScreen};
}

ControlsLayout controlsLayout(const ControlsMetrics &metrics)
{
    const qreal width = metrics.area.width();
    const qreal height = metrics.area.height();
    ControlsLayout layout;
    layout.mark = QRectF(QPointF(), metrics.mark);
    layout.mark.moveCenter(QPointF(width / 2, height / 2));

    const qreal beside = metrics.margin + metrics.text.width() + TextGap;
    const bool stacked = width - 2 * beside < ShortestSeek;
    const qreal side = stacked ? metrics.margin : beside;
    layout.seek = QRectF(side, height - SeekMiddle - metrics.seekBand / 2, std::max(0.0, width - 2 * side),
                         metrics.seekBand);
    const qreal textMiddle = stacked ? layout.seek.top() + metrics.seekBand / 8 - metrics.text.height() / 2
                                     : layout.seek.center().y();
    layout.elapsed = QRectF(metrics.margin, textMiddle - RowHeight / 2, metrics.text.width(), RowHeight);
    layout.remaining = layout.elapsed;
    layout.remaining.moveRight(width - metrics.margin);
    layout.scrimHeight = ScrimHeight + (stacked ? metrics.text.height() : 0);

    const qreal buttonTop = height - VolumeMiddle - ButtonSize / 2;
    layout.volumeButton = QRectF(metrics.margin - ButtonOverhang, buttonTop, ButtonSize, ButtonSize);
    layout.volume = QRectF(layout.volumeButton.right() + VolumeGap, height - VolumeMiddle - RowHeight / 2,
                           VolumeWidth, RowHeight);
    layout.fullScreen = layout.volumeButton;
    layout.fullScreen.moveRight(width - layout.volumeButton.left());
    layout.options = layout.fullScreen;
    if (metrics.hasFullScreen)
        layout.options.translate(-ButtonSize - VolumeGap, 0);

    if (metrics.direction == Qt::RightToLeft) {
        for (QRectF *place : {&layout.elapsed, &layout.remaining, &layout.volumeButton, &layout.volume,
                              &layout.fullScreen, &layout.options})
            place->moveLeft(width - place->right());
    }
    return layout;
}
