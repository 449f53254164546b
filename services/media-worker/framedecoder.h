// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"
#include "streamreader.h"

#include <functional>

// Decodes one picture: the key picture that the reader stands at. The decoder is fed that one encoded picture
// and told that the stream ends, so that nothing but it is decoded; only where that yields nothing (pictures
// of two fields, streams that start anywhere) are more given to it.
class FrameDecoder
{
public:
    explicit FrameDecoder(StreamReader &reader) : m_reader(reader) { }

    // False: no software decoder takes this stream.
    [[nodiscard]] bool isPossible();
    // Null when nothing could be decoded.
    [[nodiscard]] SamplePointer decode();
    // Decodes on from here, until a picture is `good` enough (every twelfth is shown to it) or `units` have
    // been decoded; null when none was good.
    [[nodiscard]] SamplePointer decodeUntil(int units, const std::function<bool(GstSample *)> &good);
    // The position of the key picture that decode() began with.
    [[nodiscard]] GstClockTime keyPosition() const { return m_keyPosition; }

private:
    [[nodiscard]] SamplePointer nextKeyUnit();

    StreamReader &m_reader;
    GstClockTime m_keyPosition = GST_CLOCK_TIME_NONE;
};
