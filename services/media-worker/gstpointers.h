// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

#include <memory>

struct GstDeleter
{
    void operator()(GstMiniObject *object) const { gst_mini_object_unref(object); }
    void operator()(GstCaps *caps) const { gst_caps_unref(caps); }
    void operator()(GstSample *sample) const { gst_sample_unref(sample); }
    void operator()(GstBuffer *buffer) const { gst_buffer_unref(buffer); }
    void operator()(GstMessage *message) const { gst_message_unref(message); }
    void operator()(GstTagList *tags) const { gst_tag_list_unref(tags); }
    void operator()(GstBus *bus) const { gst_object_unref(bus); }
    void operator()(GstPad *pad) const { gst_object_unref(pad); }
    void operator()(GstDateTime *time) const { gst_date_time_unref(time); }
    void operator()(GDateTime *time) const { g_date_time_unref(time); }
    void operator()(GError *error) const { g_error_free(error); }
    void operator()(gchar *text) const { g_free(text); }
    // An element ends its work before it is let go.
    void operator()(GstElement *element) const
    {
        gst_element_set_state(element, GST_STATE_NULL);
        gst_object_unref(element);
    }
};

using CapsPointer = std::unique_ptr<GstCaps, GstDeleter>;
using SamplePointer = std::unique_ptr<GstSample, GstDeleter>;
using BufferPointer = std::unique_ptr<GstBuffer, GstDeleter>;
using MessagePointer = std::unique_ptr<GstMessage, GstDeleter>;
using TagListPointer = std::unique_ptr<GstTagList, GstDeleter>;
using BusPointer = std::unique_ptr<GstBus, GstDeleter>;
using PadPointer = std::unique_ptr<GstPad, GstDeleter>;
using ElementPointer = std::unique_ptr<GstElement, GstDeleter>;
using ErrorPointer = std::unique_ptr<GError, GstDeleter>;
using TextPointer = std::unique_ptr<gchar, GstDeleter>;
