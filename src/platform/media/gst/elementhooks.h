// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <gst/gst.h>

// Hooks in elements, which may outlive whoever set them: what a hook needs is kept by the hook itself.

// The element was made by the factory of this name, whatever it is called itself.
[[nodiscard]] bool isMadeBy(GstElement *element, const char *factory);

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
