// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>

#include <memory>

struct GObjectUnref
{
    void operator()(void *object) const { g_object_unref(object); }
};

// Holds one reference.
template <typename T> using GObjectRef = std::unique_ptr<T, GObjectUnref>;

template <typename T> GObjectRef<T> sharedRef(T *object)
{
    return GObjectRef<T>(static_cast<T *>(g_object_ref(object)));
}
