// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"
#include "replywriter.h"

#include <string>

// Gathers what the file says about itself. Titles of single streams ("Commentary") are not the video's title,
// so the container's tags go before those of the video stream, and other streams' are not taken at all.
class TagCollector
{
public:
    // `fromVideo`: the tags came with the video stream.
    void add(const GstTagList *tags, bool fromVideo);
    void writeTo(ReplyWriter &reply) const;

    // Clockwise quarter turns 0 to 3, after an optional left-right flip.
    struct Orientation
    {
        int quarterTurns = 0;
        bool flipped = false;
    };
    [[nodiscard]] Orientation orientation() const;

private:
    [[nodiscard]] std::string text(const char *tag) const;
    [[nodiscard]] int number(const char *tag) const;

    TagListPointer m_container{gst_tag_list_new_empty()};
    TagListPointer m_video{gst_tag_list_new_empty()};
};
