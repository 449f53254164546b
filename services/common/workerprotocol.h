// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

// What goes over the socket between the pool and a worker. Both ends are built together and run on one
// machine, so the integers are native. The pool trusts nothing that comes back: see workerreplyparser.h.
namespace WorkerProtocol {

constexpr int SocketDescriptor = 3; // where a worker finds its end
constexpr std::uint32_t HelloMagic = 0x4b4d5748;
constexpr std::uint32_t RequestMagic = 0x4b4d5752;
constexpr std::uint32_t ReplyMagic = 0x4b4d5741;

constexpr std::uint32_t MaximumMetadataBytes = 64 * 1024;
constexpr std::uint32_t MaximumSide = 16384;
constexpr std::uint64_t MaximumPixels = 8192ull * 4320;
constexpr std::int64_t MaximumFrameRateMilli = 1'000'000;
constexpr std::int64_t MaximumBitRate = std::int64_t(1) << 40;
constexpr int MaximumTracks = 4096;
constexpr std::size_t MaximumTextBytes = 4096;
constexpr std::size_t MaximumSynopsisBytes = 16384;

// The exit status of a worker that an allocation failed in.
constexpr int ExitOutOfMemory = 77;
// The jail could not be put up: nothing was read.
constexpr int ExitNoJail = 78;

enum Jail : std::uint32_t { JailNone = 0, JailSeccomp = 1, JailLandlock = 2, JailBubblewrap = 3 };

// The first thing that a worker sends; the pool asks for its credentials along with it.
struct Hello
{
    std::uint32_t magic = HelloMagic;
    std::uint32_t jail = JailNone;
};

enum RequestFlag : std::uint32_t { WantMetadata = 1, WantFrame = 2, WantStreams = 4 };

// Carries the open file as SCM_RIGHTS.
struct Request
{
    std::uint32_t magic = RequestMagic;
    std::uint32_t flags = 0;
    std::uint32_t coverWidth = 0; // 0: the picture's own size
    std::uint32_t coverHeight = 0;
    std::uint32_t positionPermille = 0;
    std::uint32_t timeLimitMs = 0; // after this the worker gives up by itself
};

enum Status : std::uint32_t { Ok = 0, Unreadable = 1, NotMedia = 2, NoPicture = 3, OutOfTime = 4 };

// Followed by metadataBytes of fields, then by frameWidth * frameHeight pixels of four bytes (blue, green,
// red, unused).
struct Reply
{
    std::uint32_t magic = ReplyMagic;
    std::uint32_t status = Ok;
    std::uint32_t metadataBytes = 0;
    std::uint32_t frameWidth = 0; // 0 x 0: no frame
    std::uint32_t frameHeight = 0;
};

enum class Field : std::uint16_t {
    DurationMs = 1, // every number is an i64
    Streams, // StreamFlag bits
    Width,
    Height,
    MimeType, // texts are UTF-8
    Title,
    ShowName,
    Season,
    Episode,
    Synopsis,
    CameraMake,
    CameraModel,
    CreatedMs, // since 1970 UTC
    Error,
    FrameRateMilli, // thousandths of pictures a second; 0 unknown
    BitRate, // bits a second, of the whole file; 0 unknown
    VideoCodec, // names that people know
    AudioCodecs, // separated by commas, each once; so are languages
    AudioTracks,
    AudioLanguages, // ISO codes, of the tracks that tell theirs
    SubtitleTracks,
    SubtitleLanguages,
    Last = SubtitleLanguages,
};

enum StreamFlag : std::uint32_t { HasVideo = 1, HasAudio = 2 };

struct FieldHeader
{
    std::uint16_t field = 0;
    std::uint16_t length = 0;
};

} // namespace WorkerProtocol
