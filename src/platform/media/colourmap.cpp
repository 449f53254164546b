// SPDX-License-Identifier: GPL-3.0-or-later
#include "colourmap.h"

#include "tonemap.h"

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t Kept = 3;
// Codes that no cell with a possible colour reaches.
constexpr double Beyond = 0.2;

// Goes on beyond the possible colours as it comes from within: a node just outside has its share in those
// just inside.
Rgb extended(const Rgb &coded, const PictureColours &colours)
{
    if (colours.isPlain())
        return coded;
    Rgb edge = coded;
    Rgb mirrored = coded;
    double outside = 0;
    for (size_t i = 0; i < edge.size(); ++i) {
        edge[i] = std::clamp(coded[i], 0.0, 1.0);
        mirrored[i] = 2 * edge[i] - coded[i];
        outside = std::max(outside, std::abs(edge[i] - coded[i]));
    }
    if (outside > Beyond)
        return edge;
    Rgb result = tonemap::shown(edge, colours);
    if (outside > 0) {
        const Rgb inner = tonemap::shown(mirrored, colours);
        for (size_t i = 0; i < result.size(); ++i)
            result[i] = 2 * result[i] - inner[i];
    }
    return result;
}

} // namespace

ColourMap::ColourMap(const PictureColours &colours) : m_colours(colours)
{
    m_nodes.reserve(size_t(ChromaNodes * ChromaNodes * LumaNodes * Channels));
    const auto value = [](double channel) {
        return int16_t(std::clamp(std::lround(channel * 255 * Scale), -4000L, 4000L));
    };
    for (int cb = 0; cb < ChromaNodes; ++cb) {
        for (int cr = 0; cr < ChromaNodes; ++cr) {
            for (int y = 0; y < LumaNodes; ++y) {
                const YCbCr code{double(y << LumaBits), double(cb << ChromaBits), double(cr << ChromaBits)};
                const Rgb rgb = extended(codedRgb(code, colours), colours);
                m_nodes.insert(m_nodes.end(), {value(rgb[2]), value(rgb[1]), value(rgb[0]), value(1)});
            }
        }
    }
}

std::shared_ptr<const ColourMap> ColourMap::of(const PictureColours &colours)
{
    static QMutex mutex;
    static std::vector<std::shared_ptr<const ColourMap>> maps;
    QMutexLocker locker(&mutex);
    for (const auto &map : maps) {
        if (map->colours() == colours)
            return map;
    }
    if (maps.size() >= Kept)
        maps.erase(maps.begin());
    maps.push_back(std::make_shared<const ColourMap>(colours));
    return maps.back();
}
