// SPDX-License-Identifier: GPL-3.0-or-later
#include "colormath.h"

#include <QtMath>

#include <algorithm>

namespace toolkit {

namespace {

constexpr int smallestComponent = 0x10;

qreal linear(qreal component)
{
    return component <= 0.04045 ? component / 12.92 : qPow((component + 0.055) / 1.055, 2.4);
}

qreal luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor mixed(const QColor &from, const QColor &to, qreal share)
{
    const auto mix
        = [share](int a, int b) { return std::max(smallestComponent, qRound(a + (b - a) * share)); };
    return QColor(mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue()));
}

} // namespace

qreal contrastRatio(const QColor &a, const QColor &b)
{
    const qreal first = luminance(a);
    const qreal second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor legibleAccent(const QColor &accent, const QColor &background, qreal ratio)
{
    const QColor rgb = accent.toRgb();
    const QColor target = luminance(background) < 0.18 ? QColor(Qt::white) : QColor(Qt::black);
    constexpr int steps = 50;
    for (int step = 0; step < steps; ++step) {
        const QColor candidate = mixed(rgb, target, qreal(step) / steps);
        if (contrastRatio(candidate, background) >= ratio)
            return candidate;
    }
    return mixed(rgb, target, 1);
}

} // namespace toolkit
