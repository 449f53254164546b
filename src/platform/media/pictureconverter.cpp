// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictureconverter.h"

#include "colourmap.h"
#include "plainpixels.h"
#include "planescaler.h"

#include <QSemaphore>
#include <QThread>
#include <QTransform>

#include <algorithm>
#include <cstring>

namespace {

constexpr int MostThreads = 4;
constexpr int KeptImages = 4;
constexpr qint64 PixelsOfAThread = 300'000; // fewer are not worth waking another one

// Eight at once: the four values of a node and of the next brighter one.
using Pair = int16_t __attribute__((vector_size(16)));
using Node = int16_t __attribute__((vector_size(8)));

Pair load(const int16_t *node)
{
    Pair pair;
    std::memcpy(&pair, node, sizeof pair);
    return pair;
}

// Between the eight nodes around a code, one axis after the other.
quint32 mapped(const int16_t *nodes, int y, int cb, int cr)
{
    constexpr int RowStep = ColourMap::LumaNodes * ColourMap::Channels;
    constexpr int SheetStep = RowStep * ColourMap::ChromaNodes;
    constexpr int ChromaMask = (1 << ColourMap::ChromaBits) - 1;
    constexpr int LumaMask = (1 << ColourMap::LumaBits) - 1;
    const int16_t *corner = nodes + (cb >> ColourMap::ChromaBits) * SheetStep
        + (cr >> ColourMap::ChromaBits) * RowStep + (y >> ColourMap::LumaBits) * ColourMap::Channels;
    const auto atCr = int16_t(cr & ChromaMask);
    const auto atCb = int16_t(cb & ChromaMask);
    const auto atY = int16_t(y & LumaMask);
    const Pair p00 = load(corner);
    const Pair p01 = load(corner + RowStep);
    const Pair p10 = load(corner + SheetStep);
    const Pair p11 = load(corner + SheetStep + RowStep);
    const Pair low = p00 + (((p01 - p00) * atCr) >> ColourMap::ChromaBits);
    const Pair high = p10 + (((p11 - p10) * atCr) >> ColourMap::ChromaBits);
    const Pair both = low + (((high - low) * atCb) >> ColourMap::ChromaBits);
    Node dark;
    Node bright;
    std::memcpy(&dark, &both, sizeof dark);
    std::memcpy(&bright, reinterpret_cast<const char *>(&both) + sizeof dark, sizeof bright);
    const Node value = (dark + (((bright - dark) * atY) >> ColourMap::LumaBits) + ColourMap::Scale / 2)
        >> ColourMap::ScaleBits;
    const auto channel = [&value](int number) { return quint32(std::clamp<int>(value[number], 0, 255)); };
    return 0xFF000000u | channel(2) << 16 | channel(1) << 8 | channel(0);
}

// What every thread needs to know to make some of the lines.
struct Work
{
    const PlanarPicture &picture;
    const ColourMap &map;
    uchar *pixels;
    qsizetype bytesPerLine;
    int width;
    ScaleTaps lumaAcross, lumaDown, chromaAcross, chromaDown;

    Work(const PlanarPicture &picture, const ColourMap &map, QImage &image);
    [[nodiscard]] ScalePlane plane(int component) const;
    void makeLines(int begin, int end) const;
};

// A chroma sample upon the first luma sample of its group, instead of in its middle, lies a little before
// that.
double chromaShift(bool atFirst, int shift)
{
    return atFirst ? 0.5 - 0.5 / (1 << shift) : 0;
}

double span(int luma, int shift)
{
    return double(luma) / (1 << shift);
}

Work::Work(const PlanarPicture &picture, const ColourMap &map, QImage &image)
    : picture(picture),
      map(map),
      pixels(image.bits()),
      bytesPerLine(image.bytesPerLine()),
      width(image.width()),
      lumaAcross(picture.size.width(), picture.size.width(), image.width(), 0),
      lumaDown(picture.size.height(), picture.size.height(), image.height(), 0),
      chromaAcross(picture.chromaSize().width(), span(picture.size.width(), picture.chromaShiftX),
                   image.width(), chromaShift(picture.chromaAtLeft, picture.chromaShiftX)),
      chromaDown(picture.chromaSize().height(), span(picture.size.height(), picture.chromaShiftY),
                 image.height(), chromaShift(picture.chromaAtTop, picture.chromaShiftY))
{
}

ScalePlane Work::plane(int component) const
{
    const PlanarPicture::Component &from = picture.components[size_t(component)];
    return {from.data,           from.stride,
            from.step,           (component == 0 ? picture.size : picture.chromaSize()).width(),
            picture.sampleBytes, picture.lowBit + picture.depth - 10};
}

void Work::makeLines(int begin, int end) const
{
    PlaneScaler luma(plane(0), lumaAcross, lumaDown);
    PlaneScaler blue(plane(1), chromaAcross, chromaDown);
    PlaneScaler red(plane(2), chromaAcross, chromaDown);
    constexpr int Top = 1023;
    for (int line = begin; line < end; ++line) {
        const int16_t *y = luma.line(line);
        const int16_t *cb = blue.line(line);
        const int16_t *cr = red.line(line);
        auto *out = reinterpret_cast<quint32 *>(pixels + line * bytesPerLine);
        for (int x = 0; x < width; ++x)
            out[x] = mapped(map.nodes(), y[x] & Top, cb[x] & Top, cr[x] & Top);
    }
}

} // namespace

PictureConverter::PictureConverter()
{
    m_pool.setMaxThreadCount(std::clamp(QThread::idealThreadCount(), 1, MostThreads));
}

QImage PictureConverter::freeImage(const QSize &size)
{
    m_images.removeIf([&size](const QImage &image) { return image.size() != size; });
    for (QImage &image : m_images) {
        if (image.isDetached())
            return std::exchange(image, QImage());
    }
    return QImage(size, QImage::Format_RGB32);
}

void PictureConverter::keep(const QImage &image)
{
    m_images.removeIf([](const QImage &kept) { return kept.isNull(); });
    if (m_images.size() < KeptImages)
        m_images.append(image);
}

QImage PictureConverter::convert(const PlanarPicture &picture, const QSize &size)
{
    QImage image = freeImage(size);
    if (image.isNull())
        return {};
    if (size == picture.size && plainpixels::isConvertible(picture))
        plainpixels::convert(picture, &image);
    else
        map(picture, &image);
    keep(image);
    return image;
}

QImage PictureConverter::convert(const plainpixels::Packed &picture, const QSize &size)
{
    QImage image = freeImage(size);
    if (image.isNull())
        return {};
    plainpixels::convert(picture, &image);
    keep(image);
    return image;
}

void PictureConverter::map(const PlanarPicture &picture, QImage *image)
{
    const auto map = ColourMap::of(picture.colours);
    const Work work(picture, *map, *image);
    const int lines = image->height();
    const qint64 pixels
        = std::max(qint64(image->width()) * lines, qint64(picture.size.width()) * picture.size.height() / 4);
    const int parts = int(std::clamp<qint64>(pixels / PixelsOfAThread, 1, m_pool.maxThreadCount()));
    QSemaphore done;
    for (int part = 1; part < parts; ++part) {
        m_pool.start([&work, &done, lines, part, parts] {
            work.makeLines(lines * part / parts, lines * (part + 1) / parts);
            done.release();
        });
    }
    work.makeLines(0, lines / parts);
    done.acquire(parts - 1);
}

QImage PictureConverter::turned(const QImage &image, bool mirrored, int quarters)
{
    if (!mirrored && quarters == 0)
        return image;
    const QImage upright = mirrored ? image.mirrored(true, false) : image;
    return quarters == 0 ? upright : upright.transformed(QTransform().rotate(90 * quarters));
}
