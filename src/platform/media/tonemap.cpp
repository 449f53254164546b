// SPDX-License-Identifier: GPL-3.0-or-later
#include "tonemap.h"

#include <algorithm>
#include <cmath>

namespace tonemap {

namespace {

constexpr double ScreenGamma = 2.4; // ITU-R BT.1886
// Of the screen's range in PQ, what is left to light above the peak that the film promises.
constexpr double PromisedShare = 0.995;
constexpr double HlgPeak = 1000; // cd/m2, the nominal display of ITU-R BT.2100
constexpr double HlgSystemGamma = 1.2;

using Matrix = std::array<std::array<double, 3>, 3>;

// Linear light, D65 all (ITU-R BT.2087; SMPTE RP 431-2).
constexpr Matrix Bt2020ToBt709 = {
    {{1.660491, -0.587641, -0.072850}, {-0.124550, 1.132900, -0.008349}, {-0.018151, -0.100579, 1.118730}}};
constexpr Matrix DisplayP3ToBt709
    = {{{1.224940, -0.224940, 0.0}, {-0.042057, 1.042057, 0.0}, {-0.019638, -0.078636, 1.098274}}};

Rgb multiplied(const Matrix &matrix, const Rgb &rgb)
{
    Rgb result{};
    for (size_t row = 0; row < 3; ++row)
        result[row] = matrix[row][0] * rgb[0] + matrix[row][1] * rgb[1] + matrix[row][2] * rgb[2];
    return result;
}

// The inverse of ITU-R BT.2100's transfer: 0 to 1 of the scene.
double sceneOfHlg(double code)
{
    constexpr double A = 0.17883277;
    constexpr double B = 0.28466892;
    constexpr double C = 0.55991073;
    return code <= 0.5 ? code * code / 3 : (std::exp((code - C) / A) + B) / 12;
}

// cd/m2, or for ordinary films parts of white.
Rgb lightOf(const Rgb &coded, const PictureColours &colours)
{
    Rgb light{};
    for (size_t i = 0; i < 3; ++i) {
        const double code = std::clamp(coded[i], 0.0, 1.0);
        switch (colours.transfer) {
        case PictureColours::Transfer::Pq:
            light[i] = lightOfPq(code);
            break;
        case PictureColours::Transfer::Hlg:
            light[i] = sceneOfHlg(code);
            break;
        case PictureColours::Transfer::Sdr:
            light[i] = std::pow(code, ScreenGamma);
            break;
        }
    }
    if (colours.transfer == PictureColours::Transfer::Hlg) {
        const double scene = 0.2627 * light[0] + 0.6780 * light[1] + 0.0593 * light[2];
        const double gain = HlgPeak * std::pow(scene, HlgSystemGamma - 1);
        for (double &channel : light)
            channel *= gain;
    }
    return light;
}

Rgb inBt709(const Rgb &light, PictureColours::Primaries primaries)
{
    switch (primaries) {
    case PictureColours::Primaries::Bt2020:
        return multiplied(Bt2020ToBt709, light);
    case PictureColours::Primaries::DisplayP3:
        return multiplied(DisplayP3ToBt709, light);
    case PictureColours::Primaries::Bt709:
        break;
    }
    return light;
}

} // namespace

double lightOfPq(double code)
{
    constexpr double M1 = 2610.0 / 16384;
    constexpr double M2 = 2523.0 / 4096 * 128;
    constexpr double C1 = 3424.0 / 4096;
    constexpr double C2 = 2413.0 / 4096 * 32;
    constexpr double C3 = 2392.0 / 4096 * 32;
    const double power = std::pow(std::max(code, 0.0), 1 / M2);
    return 10000 * std::pow(std::max(power - C1, 0.0) / (C2 - C3 * power), 1 / M1);
}

double pqOfLight(double light)
{
    constexpr double M1 = 2610.0 / 16384;
    constexpr double M2 = 2523.0 / 4096 * 128;
    constexpr double C1 = 3424.0 / 4096;
    constexpr double C2 = 2413.0 / 4096 * 32;
    constexpr double C3 = 2392.0 / 4096 * 32;
    const double power = std::pow(std::clamp(light / 10000, 0.0, 1.0), M1);
    return std::pow((C1 + C2 * power) / (1 + C3 * power), M2);
}

double compressed(double light, double peak)
{
    static const double screen = pqOfLight(ReferenceWhite);
    const double promised = pqOfLight(std::max(peak, ReferenceWhite));
    const double code = pqOfLight(light);
    const double top = std::min(1.0, screen * PromisedShare / promised);
    const double knee = 1.5 * top - 0.5; // ITU-R BT.2390
    const double in = code / promised;
    if (in > 1) {
        const double beyond = (code - promised) / (1 - promised);
        return lightOfPq(screen * (PromisedShare + (1 - PromisedShare) * std::min(beyond, 1.0)));
    }
    double out = in;
    if (in > knee) {
        const double height = (top - knee) / (1 - knee);
        const double t = (in - knee) / (1 - knee);
        out = knee + (1 - knee) * t / (1 + (1 / height - 1) * t);
    }
    return lightOfPq(out * promised);
}

Rgb shown(const Rgb &coded, const PictureColours &colours)
{
    if (colours.isPlain())
        return coded;
    Rgb light = inBt709(lightOf(coded, colours), colours.primaries);
    double white = 1;
    for (double &channel : light)
        channel = std::max(channel, 0.0);
    if (colours.transfer != PictureColours::Transfer::Sdr) {
        white = ReferenceWhite;
        const double brightest = std::max({light[0], light[1], light[2]});
        const double peak = colours.transfer == PictureColours::Transfer::Hlg ? HlgPeak : colours.peak;
        const double gain = brightest > 0 ? compressed(brightest, peak) / brightest : 1;
        for (double &channel : light)
            channel *= gain;
    }
    Rgb result{};
    for (size_t i = 0; i < 3; ++i)
        result[i] = std::pow(std::min(light[i] / white, 1.0), 1 / ScreenGamma);
    return result;
}

} // namespace tonemap
