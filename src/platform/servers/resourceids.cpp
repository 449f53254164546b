// SPDX-License-Identifier: GPL-3.0-or-later
#include "resourceids.h"

#include "serverslog.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace {

using Length = quint32;

constexpr size_t s_pieceBytes = size_t(256) << 10;
constexpr size_t s_fewestSlots = 64;

quint32 hashOf(QByteArrayView utf8)
{
    const size_t hash = qHash(utf8, 0);
    return quint32(hash ^ (quint64(hash) >> 32));
}

} // namespace

ResourceIds &ResourceIds::shared()
{
    static ResourceIds ids;
    return ids;
}

QByteArrayView ResourceIds::textOf(quint32 id) const
{
    const char *const iri = m_iris[id - 1];
    Length length = 0;
    std::memcpy(&length, iri, sizeof length);
    return {iri + sizeof length, qsizetype(length)};
}

// The one that it has, or the free one that it would have.
ResourceIds::Slot &ResourceIds::slotOf(QByteArrayView utf8, quint32 hash)
{
    const size_t mask = m_slots.size() - 1;
    size_t at = hash & mask;
    while (m_slots[at].id != 0 && (m_slots[at].hash != hash || textOf(m_slots[at].id) != utf8))
        at = (at + 1) & mask;
    return m_slots[at];
}

void ResourceIds::makeRoom()
{
    if (m_iris.size() + 1 <= m_slots.size() / 4 * 3)
        return;
    std::vector<Slot> slots(std::max(s_fewestSlots, m_slots.size() * 2));
    const size_t mask = slots.size() - 1;
    for (const Slot &slot : m_slots) {
        if (slot.id == 0)
            continue;
        size_t at = slot.hash & mask;
        while (slots[at].id != 0)
            at = (at + 1) & mask;
        slots[at] = slot;
    }
    m_slots = std::move(slots);
}

const char *ResourceIds::keep(QByteArrayView utf8)
{
    const auto length = Length(utf8.size());
    const size_t bytes = sizeof length + length;
    if (bytes > m_freeBytes) {
        m_freeBytes = std::max(bytes, s_pieceBytes);
        m_pieces.push_back(std::make_unique<char[]>(m_freeBytes));
        m_free = m_pieces.back().get();
    }
    char *const place = std::exchange(m_free, m_free + bytes);
    m_freeBytes -= bytes;
    m_bytes += bytes;
    std::memcpy(place, &length, sizeof length);
    std::memcpy(place + sizeof length, utf8.data(), length);
    return place;
}

int ResourceIds::idOf(QByteArrayView utf8)
{
    if (utf8.isEmpty())
        return 0;
    makeRoom();
    const quint32 hash = hashOf(utf8);
    Slot &slot = slotOf(utf8, hash);
    if (slot.id != 0)
        return int(slot.id);
    const bool hasRoom = size_t(utf8.size()) < m_mostBytes - std::min(m_bytes, m_mostBytes)
        && m_iris.size() < size_t(std::numeric_limits<int>::max());
    if (!hasRoom) {
        if (std::exchange(m_mostBytes, 0) != 0)
            qCWarning(serversLog) << "after" << count()
                                  << "videos of a server, no further ones are told apart";
        return 0;
    }
    m_iris.push_back(keep(utf8));
    slot = {hash, quint32(count())};
    return count();
}

QString ResourceIds::iriOf(int id) const
{
    return id > 0 && id <= count() ? QString::fromUtf8(textOf(quint32(id))) : QString();
}
