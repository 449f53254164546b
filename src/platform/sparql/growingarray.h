// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

// Plain values in a row, for hundreds of megabytes of them: grows with realloc(), which for a large block
// moves pages and copies nothing. A std::vector or QByteArray of 256 MiB that grows holds its thread for 0.2
// s.
template <typename T> class GrowingArray
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    GrowingArray() = default;
    GrowingArray(const GrowingArray &other) { append(other.data(), other.size()); }
    GrowingArray(GrowingArray &&other) noexcept { swap(other); }
    GrowingArray &operator=(GrowingArray other) noexcept
    {
        swap(other);
        return *this;
    }
    ~GrowingArray() = default;

    [[nodiscard]] size_t size() const { return m_size; }
    [[nodiscard]] const T *data() const { return m_values.get(); }
    [[nodiscard]] T *data() { return m_values.get(); }
    [[nodiscard]] const T &operator[](size_t i) const { return m_values.get()[i]; }
    [[nodiscard]] T &operator[](size_t i) { return m_values.get()[i]; }

    // Not of its own.
    void append(const T *values, size_t count)
    {
        if (count == 0)
            return;
        if (m_size + count > m_room)
            grow(std::max(m_size + count, 2 * m_room));
        std::memcpy(m_values.get() + m_size, values, count * sizeof(T));
        m_size += count;
    }
    void append(T value) { append(&value, 1); }
    // To no more than there are.
    void truncate(size_t size) { m_size = size; }

private:
    struct Free
    {
        void operator()(T *values) const { std::free(values); }
    };

    void grow(size_t room)
    {
        void *larger = std::realloc(m_values.get(), room * sizeof(T));
        Q_CHECK_PTR(larger);
        static_cast<void>(m_values.release());
        m_values.reset(static_cast<T *>(larger));
        m_room = room;
    }
    void swap(GrowingArray &other) noexcept
    {
        std::swap(m_values, other.m_values);
        std::swap(m_size, other.m_size);
        std::swap(m_room, other.m_room);
    }

    std::unique_ptr<T, Free> m_values;
    size_t m_size = 0;
    size_t m_room = 0;
};
