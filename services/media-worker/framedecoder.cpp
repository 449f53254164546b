// SPDX-License-Identifier: GPL-3.0-or-later
#include "framedecoder.h"

#include "decoderdrive.h"
#include "formats.h"

#include <string_view>

namespace {

// Ten seconds of a stream whose key pictures are not marked.
constexpr int MostUnitsWithoutKey = 300;
// More than the deepest reordering of any codec, and than a pair of fields.
constexpr int UnitsOfSecondTry = 40;

bool isProgressive(const GstCaps *caps)
{
    const char *const mode = gst_structure_get_string(gst_caps_get_structure(caps, 0), "interlace-mode");
    return !mode || std::string_view(mode) == "progressive";
}

bool isKey(GstSample *unit)
{
    return !GST_BUFFER_FLAG_IS_SET(gst_sample_get_buffer(unit), GST_BUFFER_FLAG_DELTA_UNIT);
}

} // namespace

bool FrameDecoder::isPossible()
{
    return Formats::newVideoDecoder(m_reader.videoCaps()) != nullptr;
}

SamplePointer FrameDecoder::nextKeyUnit()
{
    for (int count = 0; count < MostUnitsWithoutKey; ++count) {
        SamplePointer unit = m_reader.nextUnit();
        if (!unit || isKey(unit.get()))
            return unit;
    }
    return m_reader.nextUnit();
}

SamplePointer FrameDecoder::decode()
{
    const SamplePointer key = nextKeyUnit();
    if (!key)
        return nullptr;
    m_keyPosition = GST_BUFFER_PTS(gst_sample_get_buffer(key.get()));
    const GstCaps *const caps = gst_sample_get_caps(key.get());

    ElementPointer decoder = Formats::newVideoDecoder(caps);
    if (!decoder)
        return nullptr;
    if (isProgressive(caps)) {
        DecoderDrive drive(std::move(decoder));
        if (drive.push(key.get()))
            drive.finish();
        if (drive.hasPicture())
            return drive.takePicture();
        decoder = Formats::newVideoDecoder(caps);
    }

    DecoderDrive drive(std::move(decoder));
    bool wanted = drive.push(key.get());
    for (int count = 0; wanted && count < UnitsOfSecondTry; ++count) {
        const SamplePointer unit = m_reader.nextUnit();
        if (!unit)
            break;
        wanted = drive.push(unit.get()) || !drive.hasPicture();
    }
    if (!drive.hasPicture())
        drive.finish();
    return drive.takePicture();
}

SamplePointer FrameDecoder::decodeUntil(int units, const std::function<bool(GstSample *)> &good)
{
    constexpr int Step = 12;
    SamplePointer unit = nextKeyUnit();
    ElementPointer element = unit ? Formats::newVideoDecoder(gst_sample_get_caps(unit.get())) : nullptr;
    if (!element)
        return nullptr;
    DecoderDrive drive(std::move(element), DecoderDrive::Keep::Latest);
    for (int count = 1; unit && count <= units && drive.push(unit.get()); ++count) {
        if (count % Step == 0 && drive.hasPicture()) {
            SamplePointer picture = drive.takePicture();
            if (good(picture.get()))
                return picture;
        }
        unit = m_reader.nextUnit();
    }
    return nullptr;
}
