// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <glib-object.h>

#include <memory>

struct GObjectUnref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};

// One reference to a GObject, given up at the end of the scope.
template <typename T> using GRef = std::unique_ptr<T, GObjectUnref>;

template <typename T> [[nodiscard]] GRef<T> shareGRef(T *object)
{
    return GRef<T>(static_cast<T *>(g_object_ref(object)));
}

struct GErrorFree
{
    void operator()(GError *error) const { g_error_free(error); }
};
using GErrorRef = std::unique_ptr<GError, GErrorFree>;
