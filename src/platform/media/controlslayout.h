// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRectF>
#include <QSizeF>
#include <Qt>

// What the places of the player's controls follow from. Logical pixels.
struct ControlsMetrics
{
    QSizeF area;
    QSizeF mark; // of play and pause
    qreal margin = 24; // at the sides
    QSizeF text; // the widest of the times
    qreal seekBand = 56; // the height in which a finger finds the seek line
    Qt::LayoutDirection direction = Qt::LeftToRight;
    bool hasFullScreen = false; // the button at the end of the volume's row
};

// Where the controls stand: the mark in the middle; above the foot the seek line between its times, or below
// them where it would be short; the volume and the buttons below.
struct ControlsLayout
{
    QRectF mark;
    QRectF elapsed;
    QRectF seek;
    QRectF remaining;
    QRectF volumeButton;
    QRectF volume;
    QRectF options;
    QRectF fullScreen;
    qreal scrimHeight = 0; // from the foot up
};

[[nodiscard]] ControlsLayout controlsLayout(const ControlsMetrics &metrics);
// What of it a finger looks for, and the times: the mark, and the rows at the foot as one.
[[nodiscard]] QList<QRectF> touchAreas(const ControlsLayout &layout);
