// SPDX-License-Identifier: GPL-3.0-or-later
#include "elementhooks.h"

#include <cstring>

bool isMadeBy(GstElement *element, const char *factory)
{
    GstElementFactory *made = gst_element_get_factory(element);
    return made != nullptr && std::strcmp(GST_OBJECT_NAME(made), factory) == 0;
}

GstStreamType streamTypeOf(GstPad *pad)
{
    GstStream *stream = gst_pad_get_stream(pad);
    const GstStreamType type
        = stream == nullptr ? GST_STREAM_TYPE_UNKNOWN : gst_stream_get_stream_type(stream);
    gst_clear_object(&stream);
    return type;
}
