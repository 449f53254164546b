// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "testclips.h"

#include <QColor>
#include <QFile>
#include <QList>
#include <QSize>

#include <array>
#include <cmath>
#include <functional>

// Clips whose every sample is laid down by the test: written as raw planes, kept without loss.
namespace pictureclips {

struct Kind
{
    double red = 0.2126; // weights in luma
    double blue = 0.0722;
    bool full = false;
    int depth = 8;
    QString matrix = QStringLiteral("bt709"); // as ffmpeg names them; empty: not told
    QString transfer = QStringLiteral("bt709");
    QString primaries = QStringLiteral("bt709");
};

using Coded = std::array<double, 3>; // R'G'B', 0 to 1

// Y', Cb, Cr by the definitions of ITU-R BT.601, BT.709 and BT.2020, 8.x: quantisation.
inline std::array<int, 3> codes(const Coded &rgb, const Kind &kind)
{
    const double y = kind.red * rgb[0] + (1 - kind.red - kind.blue) * rgb[1] + kind.blue * rgb[2];
    const double cb = (rgb[2] - y) / (2 * (1 - kind.blue));
    const double cr = (rgb[0] - y) / (2 * (1 - kind.red));
    const int unit = 1 << (kind.depth - 8);
    const int top = (1 << kind.depth) - 1;
    const auto chroma = [&](double value) { return qMin(int(std::lround(value * top)) + 128 * unit, top); };
    if (kind.full)
        return {int(std::lround(y * top)), chroma(cb), chroma(cr)};
    return {int(std::lround((219 * y + 16) * unit)), int(std::lround((224 * cb + 128) * unit)),
            int(std::lround((224 * cr + 128) * unit))};
}

// Ten equal frames of 4:2:0; `colour` tells the R'G'B' of a place.
inline bool write(const QString &path, const QSize &size, const Kind &kind,
                  const std::function<Coded(int x, int y)> &colour, const QStringList &more = {})
{
    QByteArray frame;
    const auto put = [&](int value) {
        frame.append(char(value & 0xFF));
        if (kind.depth > 8)
            frame.append(char(value >> 8));
    };
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            put(codes(colour(x, y), kind)[0]);
    }
    for (size_t component = 1; component < 3; ++component) {
        for (int y = 0; y < size.height(); y += 2) {
            for (int x = 0; x < size.width(); x += 2)
                put(codes(colour(x, y), kind)[component]);
        }
    }
    QFile raw(path + QStringLiteral(".raw"));
    if (!raw.open(QIODevice::WriteOnly) || raw.write(frame.repeated(10)) < 0)
        return false;
    raw.close();
    QStringList arguments{QStringLiteral("-f"),
                          QStringLiteral("rawvideo"),
                          QStringLiteral("-pix_fmt"),
                          kind.depth > 8 ? QStringLiteral("yuv420p10le") : QStringLiteral("yuv420p"),
                          QStringLiteral("-s"),
                          QStringLiteral("%1x%2").arg(size.width()).arg(size.height()),
                          QStringLiteral("-i"),
                          raw.fileName()};
    if (!kind.matrix.isEmpty()) {
        arguments += {QStringLiteral("-vf"),
                      QStringLiteral("setparams=range=%1:colorspace=%2:color_trc=%3:color_primaries=%4")
                          .arg(kind.full ? QStringLiteral("pc") : QStringLiteral("tv"), kind.matrix,
                               kind.transfer, kind.primaries),
                      QStringLiteral("-color_range"),
                      kind.full ? QStringLiteral("pc") : QStringLiteral("tv"),
                      QStringLiteral("-colorspace"),
                      kind.matrix,
                      QStringLiteral("-color_trc"),
                      kind.transfer,
                      QStringLiteral("-color_primaries"),
                      kind.primaries};
    }
    if (more.isEmpty())
        arguments += {QStringLiteral("-c:v"), QStringLiteral("ffv1")};
    const bool made = testclips::run(arguments + more + QStringList{path});
    return raw.remove() && made;
}

// White, yellow, cyan, green, magenta, red, blue, black, each of `level`.
inline Coded bar(int number, double level)
{
    constexpr std::array<int, 8> Bits{7, 6, 3, 2, 5, 4, 1, 0};
    const int bits = Bits[size_t(number)];
    return {bits & 4 ? level : 0, bits & 2 ? level : 0, bits & 1 ? level : 0};
}

inline int largestDifference(QRgb one, QRgb other)
{
    return qMax(qAbs(qRed(one) - qRed(other)),
                qMax(qAbs(qGreen(one) - qGreen(other)), qAbs(qBlue(one) - qBlue(other))));
}

inline QString text(QRgb colour)
{
    return QColor(colour).name();
}

} // namespace pictureclips
