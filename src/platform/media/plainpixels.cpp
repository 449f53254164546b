// SPDX-License-Identifier: GPL-3.0-or-later
#include "plainpixels.h"

#include <cmath>
#include <cstdint>
#include <vector>

// Twice as fast where the processor has wider registers than every one of its kind.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define FOR_WIDE_REGISTERS __attribute__((target_clones("avx2", "default")))
#else
#define FOR_WIDE_REGISTERS
#endif

namespace plainpixels {

namespace {

// Sixteenths of a level of the screen are reckoned in 16 bits: a sample, raised by SampleBits, times a
// factor, of which the upper half is kept.
constexpr int SampleBits = 7;
constexpr int LevelBits = 4;
constexpr int16_t HalfLevel = 1 << (LevelBits - 1);

struct Factors
{
    int16_t black, luma, redOfCr, greenOfCb, greenOfCr, blueOfCb;
};

// What codedRgb() does, as a matrix: it is linear.
Factors factors(const PictureColours &colours)
{
    constexpr double Unit = 255 * (1 << LevelBits) * double(1 << (16 - SampleBits));
    const Rgb dark = codedRgb({0, 512, 512}, colours);
    // Of one 8-bit step, which is four codes.
    const Rgb luma = codedRgb({4, 512, 512}, colours);
    const Rgb cb = codedRgb({0, 516, 512}, colours);
    const Rgb cr = codedRgb({0, 512, 516}, colours);
    const auto factor = [&](const Rgb &rgb, size_t channel) {
        return int16_t(std::lround((rgb[channel] - dark[channel]) * Unit));
    };
    return {int16_t(colours.fullRange ? 0 : 16),
            factor(luma, 0),
            factor(cr, 0),
            factor(cb, 1),
            factor(cr, 1),
            factor(cb, 2)};
}

inline int16_t times(int16_t value, int16_t factor)
{
    return int16_t((int32_t(value) * factor) >> 16);
}

inline int16_t level(int sixteenths)
{
    const int whole = sixteenths >> LevelBits;
    return int16_t(whole < 0 ? 0 : whole > 255 ? 255 : whole);
}

// Blue and green, red and full alpha: a pixel in two halves, which is how registers are best put together.
inline void put(uint16_t *halves, int16_t red, int16_t green, int16_t blue)
{
    halves[0] = uint16_t(blue | green << 8);
    halves[1] = uint16_t(red | 0xFF00);
}

FOR_WIDE_REGISTERS
void splitChroma(const uint8_t *shared, size_t count, uint8_t *cb, uint8_t *cr)
{
    for (size_t i = 0; i < count; ++i) {
        cb[i] = shared[2 * i];
        cr[i] = shared[2 * i + 1];
    }
}

struct ChromaLines
{
    explicit ChromaLines(size_t count) : red(count), green(count), blue(count) { }
    std::vector<int16_t> red, green, blue;
};

FOR_WIDE_REGISTERS
void chromaShares(const uint8_t *cb, const uint8_t *cr, size_t count, Factors f, int16_t *__restrict red,
                  int16_t *__restrict green, int16_t *__restrict blue)
{
    for (size_t i = 0; i < count; ++i) {
        const auto u = int16_t((cb[i] - 128) * (1 << SampleBits));
        const auto v = int16_t((cr[i] - 128) * (1 << SampleBits));
        red[i] = times(v, f.redOfCr);
        green[i] = int16_t(times(u, f.greenOfCb) + times(v, f.greenOfCr));
        blue[i] = times(u, f.blueOfCb);
    }
}

// Twice as many: each chroma sample lies upon every other pixel.
FOR_WIDE_REGISTERS
void widenFromLeft(const int16_t *__restrict from, size_t count, int16_t *__restrict to)
{
    for (size_t i = 0; i + 1 < count; ++i) {
        to[2 * i] = from[i];
        to[2 * i + 1] = int16_t((from[i] + from[i + 1]) >> 1);
    }
    to[2 * count - 2] = to[2 * count - 1] = from[count - 1];
}

// Each chroma sample lies between two pixels.
FOR_WIDE_REGISTERS
void widenFromMiddle(const int16_t *__restrict from, size_t count, int16_t *__restrict to)
{
    to[0] = from[0];
    for (size_t i = 0; i + 1 < count; ++i) {
        to[2 * i + 1] = int16_t((3 * from[i] + from[i + 1]) >> 2);
        to[2 * i + 2] = int16_t((from[i] + 3 * from[i + 1]) >> 2);
    }
    to[2 * count - 1] = from[count - 1];
}

FOR_WIDE_REGISTERS
void addLuma(const uint8_t *luma, size_t count, Factors f, const int16_t *__restrict red,
             const int16_t *__restrict green, const int16_t *__restrict blue, uint16_t *__restrict out)
{
    for (size_t x = 0; x < count; ++x) {
        const auto grey
            = int16_t(times(int16_t((luma[x] - f.black) * (1 << SampleBits)), f.luma) + HalfLevel);
        put(out + 2 * x, level(int16_t(grey + red[x])), level(int16_t(grey + green[x])),
            level(int16_t(grey + blue[x])));
    }
}

FOR_WIDE_REGISTERS
void convertPacked(const uint8_t *pixels, size_t count, Factors f, uint16_t *__restrict out)
{
    for (size_t x = 0; x < count; ++x) {
        const uint8_t *pixel = pixels + 4 * x;
        const auto grey
            = int16_t(times(int16_t((pixel[1] - f.black) * (1 << SampleBits)), f.luma) + HalfLevel);
        const auto u = int16_t((pixel[2] - 128) * (1 << SampleBits));
        const auto v = int16_t((pixel[3] - 128) * (1 << SampleBits));
        put(out + 2 * x, level(int16_t(grey + times(v, f.redOfCr))),
            level(int16_t(grey + times(u, f.greenOfCb) + times(v, f.greenOfCr))),
            level(int16_t(grey + times(u, f.blueOfCb))));
    }
}

const uint8_t *row(const PlanarPicture::Component &component, int number)
{
    return reinterpret_cast<const uint8_t *>(component.data) + ptrdiff_t(number) * component.stride;
}

} // namespace

bool isConvertible(const PlanarPicture &picture)
{
    return picture.colours.isPlain() && picture.sampleBytes == 1 && picture.chromaShiftX == 1
        && picture.chromaShiftY == 1;
}

void convert(const PlanarPicture &picture, QImage *image)
{
    const Factors f = factors(picture.colours);
    const auto chromaWidth = size_t(picture.chromaSize().width());
    ChromaLines shares(chromaWidth);
    ChromaLines wide(2 * chromaWidth);
    std::vector<uint8_t> cb(chromaWidth);
    std::vector<uint8_t> cr(chromaWidth);
    const auto widen = picture.chromaAtLeft ? widenFromLeft : widenFromMiddle;
    for (int y = 0; y < picture.size.height(); ++y) {
        if (y % 2 == 0) {
            const uint8_t *u = row(picture.components[1], y / 2);
            const uint8_t *v = row(picture.components[2], y / 2);
            if (picture.sharesChromaPlane()) {
                splitChroma(u, chromaWidth, cb.data(), cr.data());
                u = cb.data();
                v = cr.data();
            }
            chromaShares(u, v, chromaWidth, f, shares.red.data(), shares.green.data(), shares.blue.data());
            widen(shares.red.data(), chromaWidth, wide.red.data());
            widen(shares.green.data(), chromaWidth, wide.green.data());
            widen(shares.blue.data(), chromaWidth, wide.blue.data());
        }
        addLuma(row(picture.components[0], y), size_t(picture.size.width()), f, wide.red.data(),
                wide.green.data(), wide.blue.data(), reinterpret_cast<uint16_t *>(image->scanLine(y)));
    }
}

void convert(const Packed &picture, QImage *image)
{
    const Factors f = factors(picture.colours);
    for (int y = 0; y < image->height(); ++y)
        convertPacked(picture.data + ptrdiff_t(y) * picture.stride, size_t(image->width()), f,
                      reinterpret_cast<uint16_t *>(image->scanLine(y)));
}

} // namespace plainpixels
