// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <gst/gst.h>

// Hooks in elements, which may outlive whoever set them: what a hook needs is kept by the hook itself.

// The element was made by the factory of this name, whatever it is called itself.
[[nodiscard]] bool isMadeBy(GstElement *element, const char *factory);

// Kinds of the stream that flows there; GST_STREAM_TYPE_UNKNOWN before it was said.
[[nodiscard]] GstStreamType streamTypeOf(GstPad *pad);

// Calls `visit` with each element at any depth of the bin that the factory of this name made.
template <typename Visit> void eachMadeBy(GstElement *bin, const char *factory, Visit visit)
{
    GstIterator *found = gst_bin_iterate_all_by_element_factory_name(GST_BIN(bin), factory);
    gst_iterator_foreach(
        found,
        [](const GValue *value, gpointer self) {
            (*static_cast<Visit *>(self))(GST_ELEMENT(g_value_get_object(value)));
        },
        &visit);
    gst_iterator_free(found);
}

// Connects a signal. The last argument of `callback` is a `T *`, which holds as long as the connection.
template <typename T>
void connectKeeping(gpointer object, const char *signal, GCallback callback, T kept,
                    GConnectFlags flags = GConnectFlags(0))
{
    g_signal_connect_data(
        object, signal, callback, new T(std::move(kept)),
        [](gpointer data, GClosure *) { delete static_cast<T *>(data); }, flags);
}

// The same for a probe.
template <typename T> void probeKeeping(GstPad *pad, int types, GstPadProbeCallback callback, T kept)
{
    gst_pad_add_probe(pad, GstPadProbeType(types), callback, new T(std::move(kept)),
                      [](gpointer data) { delete static_cast<T *>(data); });
}
