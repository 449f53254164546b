// SPDX-License-Identifier: GPL-3.0-or-later
#include "inspection.h"

#include "deadline.h"
#include "fdsource.h"
#include "formats.h"
#include "framedecoder.h"
#include "streamreader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include <sys/stat.h>

using namespace WorkerProtocol;

namespace {

// A seek costs a second look into the file; the first picture is as good as one this close to it.
constexpr GstClockTime NearTheStart = GST_SECOND;
// How long streams are waited for of which nothing was said yet when the first picture was there.
constexpr std::chrono::milliseconds TrackPatience{150};
// Where else to look when the picture that was asked for is dark, as permille of the duration.
constexpr std::array<std::uint64_t, 3> OtherPlaces = {350, 600, 80};

Inspection::Result failure(Status status, const std::string &error)
{
    Inspection::Result result;
    result.status = status;
    result.fields.addText(Field::Error, error);
    return result;
}

Status statusOf(StreamReader::Outcome outcome)
{
    switch (outcome) {
    case StreamReader::Outcome::Ok:
        return Ok;
    case StreamReader::Outcome::Unreadable:
        return Unreadable;
    case StreamReader::Outcome::OutOfTime:
        return OutOfTime;
    case StreamReader::Outcome::NotMedia:
        break;
    }
    return NotMedia;
}

// In thousandths of pictures a second; 0: each comes when it comes, or nobody says.
std::int64_t frameRate(const GstCaps *caps)
{
    gint numerator = 0;
    gint denominator = 1;
    if (!gst_structure_get_fraction(gst_caps_get_structure(caps, 0), "framerate", &numerator, &denominator)
        || numerator <= 0 || denominator <= 0)
        return 0;
    return (std::int64_t(numerator) * 1000 + denominator / 2) / denominator;
}

// Of all that is in the file, in bits a second.
std::int64_t bitRate(int descriptor, GstClockTime duration)
{
    struct stat status = {};
    if (!GST_CLOCK_TIME_IS_VALID(duration) || duration < GST_MSECOND || fstat(descriptor, &status) != 0)
        return 0;
    return static_cast<std::int64_t>(
        gst_util_uint64_scale(static_cast<guint64>(status.st_size), 8 * GST_SECOND, duration));
}

void describeStreams(StreamReader &reader, int descriptor, GstClockTime duration, ReplyWriter &fields)
{
    if (reader.hasVideo()) {
        fields.addText(Field::VideoCodec, TrackCollector::codecName(reader.videoCaps()));
        fields.addNumber(Field::FrameRateMilli,
                         std::min(frameRate(reader.videoCaps()), MaximumFrameRateMilli));
    }
    fields.addNumber(Field::BitRate, std::min(bitRate(descriptor, duration), MaximumBitRate));
    reader.tracks().waitForAll(TrackPatience);
    reader.tracks().writeTo(fields);
}

void describe(StreamReader &reader, GstClockTime duration, ReplyWriter &fields)
{
    const std::uint32_t video = reader.hasVideo() ? HasVideo : 0u;
    const std::uint32_t audio = reader.hasAudio() ? HasAudio : 0u;
    fields.addNumber(Field::Streams, video | audio);
    if (GST_CLOCK_TIME_IS_VALID(duration))
        fields.addNumber(Field::DurationMs, static_cast<std::int64_t>(duration / GST_MSECOND));
    if (reader.hasVideo()) {
        const PictureSize size = displayedSize(reader.videoCaps(), reader.tags().orientation());
        fields.addNumber(Field::Width, size.width);
        fields.addNumber(Field::Height, size.height);
    }
    reader.tags().writeTo(fields);
}

Picture pictureHere(StreamReader &reader, FrameDecoder &decoder, const Request &request)
{
    const SamplePointer decoded = decoder.decode();
    if (!decoded)
        return {};
    const PictureSize cover{static_cast<int>(request.coverWidth), static_cast<int>(request.coverHeight)};
    return makePicture(decoded.get(), reader.tags().orientation(), cover);
}

// A clip whose only key picture is dark (a fade-in): the first picture behind it that is not.
Picture pictureAfterFade(StreamReader &reader, FrameDecoder &decoder, const Request &request)
{
    constexpr int MostUnits = 180;
    const PictureSize cover{static_cast<int>(request.coverWidth), static_cast<int>(request.coverHeight)};
    Picture picture;
    const SamplePointer decoded = decoder.decodeUntil(MostUnits, [&](GstSample *sample) {
        picture = makePicture(sample, reader.tags().orientation(), cover);
        return brightness(picture) >= DarkBrightness;
    });
    return decoded ? std::move(picture) : Picture();
}

// The picture nearest to what was asked for that shows something; the brightest one where all are dark.
Picture findPicture(StreamReader &reader, const Request &request, GstClockTime duration,
                    const Deadline &deadline)
{
    FrameDecoder decoder(reader);
    const GstClockTime length = GST_CLOCK_TIME_IS_VALID(duration) ? duration : 0;
    const GstClockTime asked = gst_util_uint64_scale(length, request.positionPermille, 1000);
    if (asked > NearTheStart || !reader.isAtStart())
        static_cast<void>(reader.seek(asked));
    Picture best = pictureHere(reader, decoder, request);
    GstClockTime seen = decoder.keyPosition();
    for (std::size_t i = 0; i < OtherPlaces.size() && brightness(best) < DarkBrightness; ++i) {
        if (deadline.hasPassed() || !reader.seek(gst_util_uint64_scale(length, OtherPlaces[i], 1000)))
            break;
        Picture other = pictureHere(reader, decoder, request);
        if (decoder.keyPosition() == seen) {
            if (!reader.seek(0))
                break;
            other = pictureAfterFade(reader, decoder, request);
            i = OtherPlaces.size();
        }
        seen = decoder.keyPosition();
        if (!other.isEmpty() && (best.isEmpty() || brightness(other) > brightness(best)))
            best = std::move(other);
    }
    return best;
}

void addPicture(StreamReader &reader, const Request &request, GstClockTime duration, const Deadline &deadline,
                Inspection::Result &result)
{
    if (!reader.hasVideo()) {
        result.status = NoPicture;
        result.fields.addText(Field::Error, "there is no picture in it");
        return;
    }
    result.picture = findPicture(reader, request, duration, deadline);
    if (!result.picture.isEmpty())
        return;
    result.status = deadline.hasPassed() ? OutOfTime : NotMedia;
    result.fields.addText(Field::Error,
                          reader.error().empty() ? "no picture could be decoded" : reader.error());
}

} // namespace

Inspection::Result Inspection::inspect(int descriptor, const Request &request)
{
    guint8 first = 0;
    if (readAt(descriptor, 0, &first, 1) < 0)
        return failure(Unreadable, g_strerror(errno));
    const CapsPointer caps = findType(descriptor);
    const std::string mimeType = Formats::mimeType(caps.get());
    if (mimeType.empty())
        return failure(NotMedia, "not a container that is known here");

    const Deadline deadline(request.timeLimitMs);
    StreamReader reader(descriptor, caps.get(), deadline);
    const StreamReader::Outcome outcome = reader.open();
    // A file that breaks off after its head still has what was read until then.
    if (outcome != StreamReader::Outcome::Ok && !reader.hasVideo())
        return failure(statusOf(outcome), reader.error());
    if (!reader.hasVideo() && !reader.hasAudio())
        return failure(NotMedia, "no stream in it");

    Result result;
    const GstClockTime stated = reader.statedDuration();
    if ((request.flags & WantFrame) != 0)
        addPicture(reader, request, stated, deadline, result);
    const GstClockTime duration = GST_CLOCK_TIME_IS_VALID(stated) ? stated : reader.readToEnd();
    result.fields.addText(Field::MimeType, mimeType);
    describe(reader, duration, result.fields);
    if ((request.flags & WantStreams) != 0)
        describeStreams(reader, descriptor, duration, result.fields);
    return result;
}
