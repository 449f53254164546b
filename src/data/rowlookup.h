// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstddef>
#include <vector>

// Keys (from 0) by the hash of a text. Holds neither texts nor hashes, four bytes a slot: whoever asks
// compares the texts, and keys that do not fit any more may stay in it.
class RowLookup
{
public:
    // Without keys, and room for so many.
    void clear(size_t keys)
    {
        m_slots.assign(std::bit_ceil(keys + keys / 2 + 8), -1);
        m_taken = 0;
    }

    // Another key would make it slow: clear() and insert() what is still of use.
    [[nodiscard]] bool isFull() const { return 4 * (m_taken + 1) > 3 * m_slots.size(); }

    // Not when it is full.
    void insert(size_t hash, int key)
    {
        size_t slot = hash & mask();
        while (m_slots[slot] >= 0)
            slot = (slot + 1) & mask();
        m_slots[slot] = key;
        ++m_taken;
    }

    // Calls `visit` with each key that may have the text of this hash.
    template <typename Visit> void visit(size_t hash, Visit visit) const
    {
        if (m_slots.empty())
            return;
        for (size_t slot = hash & mask(); m_slots[slot] >= 0; slot = (slot + 1) & mask())
            visit(m_slots[slot]);
    }

private:
    [[nodiscard]] size_t mask() const { return m_slots.size() - 1; }

    std::vector<int> m_slots; // a power of two; -1: free
    size_t m_taken = 0;
};
