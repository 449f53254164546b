// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QUrl>

// Clips made with ffmpeg whose every frame tells its own number: sixteen upright bars, bar k bright when bit
// k is set.
namespace testclips {

constexpr int Bars = 16;
constexpr int FramesPerSecond = 25;

inline bool run(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("ffmpeg"),
                  QStringList{QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-y")}
                      + arguments);
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

// Each bar is reckoned as one pixel: a formula for all of them takes longer than the encoder.
inline QStringList numberedPicture(int seconds, int width = 320, int height = 180)
{
    return {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
            QStringLiteral("color=black:s=16x2:r=%3:d=%4,format=yuv420p,"
                           "geq=lum='255*mod(floor(N/pow(2,X)),2)':cb=128:cr=128,"
                           "scale=%1:%2:flags=neighbor,setsar=1")
                .arg(width)
                .arg(height)
                .arg(FramesPerSecond)
                .arg(seconds)};
}

inline QStringList tone(int seconds)
{
    return {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
            QStringLiteral("sine=frequency=440:duration=%1").arg(seconds)};
}

inline QStringList h264()
{
    return {QStringLiteral("-c:v"), QStringLiteral("libx264"), QStringLiteral("-g"),
            QStringLiteral("50"),   QStringLiteral("-preset"), QStringLiteral("veryfast")};
}

// The number that a shown frame tells; the bars lie within `area` of the image.
inline int frameNumber(const QImage &image, const QRect &area)
{
    int number = 0;
    for (int bar = 0; bar < Bars; ++bar) {
        const int x = area.left() + (2 * bar + 1) * area.width() / (2 * Bars);
        if (qGray(image.pixel(x, area.center().y())) > 127)
            number |= 1 << bar;
    }
    return number;
}

inline int frameNumber(const QImage &image)
{
    return image.isNull() ? -1 : frameNumber(image, image.rect());
}

inline QString address(const QString &path)
{
    return QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded());
}

} // namespace testclips
