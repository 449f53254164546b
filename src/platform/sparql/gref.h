// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>

#include <QString>

#include <utility>

namespace sparql {

// Holds one reference to a GObject.
template <typename T> class GRef
{
public:
    GRef() = default;
    // Takes over the caller's reference.
    static GRef taken(T *object)
    {
        GRef ref;
        ref.m_object = object;
        return ref;
    }
    // Adds a reference of its own.
    static GRef shared(T *object) { return taken(object ? static_cast<T *>(g_object_ref(object)) : nullptr); }

    GRef(const GRef &other) : GRef(shared(other.m_object)) { }
    GRef(GRef &&other) noexcept : m_object(std::exchange(other.m_object, nullptr)) { }
    GRef &operator=(GRef other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~GRef()
    {
        if (m_object)
            g_object_unref(m_object);
    }

    [[nodiscard]] T *get() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

private:
    T *m_object = nullptr;
};

// Takes the place of a GError * that a call fills in.
class GFailure
{
public:
    GFailure() = default;
    Q_DISABLE_COPY_MOVE(GFailure)
    ~GFailure() { g_clear_error(&m_error); }

    GError **operator&()
    {
        return &m_error;
    } // NOLINT(google-runtime-operator): reads as it does with a GError *
    explicit operator bool() const { return m_error != nullptr; }
    [[nodiscard]] QString message() const
    {
        return m_error ? QString::fromUtf8(m_error->message).simplified() : QString();
    }
    [[nodiscard]] const GError *get() const { return m_error; }

private:
    GError *m_error = nullptr;
};

} // namespace sparql
