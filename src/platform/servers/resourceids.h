// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

#include <memory>
#include <vector>

// Numbers for IRIs, as the program's lists of changed videos need them and a server does not have them. A
// number belongs to one IRI as long as the process lives, counts from 1, and is given again to nobody: lists
// and changes that are on their way may still name it. So nothing is given back here, and a server whose IRIs
// change all the time makes it grow, by some 30 bytes for each IRI beside its text. Beyond a limit no new one
// gets a number.
class ResourceIds
{
public:
    static constexpr size_t defaultMostBytes = size_t(1) << 30; // 25 million IRIs of the usual length

    ResourceIds() : ResourceIds(defaultMostBytes) { }
    explicit ResourceIds(size_t mostBytes) : m_mostBytes(mostBytes) { }

    // What every connection of this process and the watch over changes share.
    [[nodiscard]] static ResourceIds &shared();

    // The number of the IRI, which gets one now if it has none. 0 for the empty IRI, and when there is no
    // room.
    [[nodiscard]] int idOf(const QString &iri) { return idOf(QByteArrayView(iri.toUtf8())); }
    [[nodiscard]] int idOf(QByteArrayView utf8);
    // Without brackets; null when nothing has this number.
    [[nodiscard]] QString iriOf(int id) const;
    [[nodiscard]] int count() const { return int(m_iris.size()); }

private:
    struct Slot
    {
        quint32 hash = 0;
        quint32 id = 0; // 0: free
    };

    [[nodiscard]] QByteArrayView textOf(quint32 id) const;
    [[nodiscard]] Slot &slotOf(QByteArrayView utf8, quint32 hash);
    void makeRoom();
    [[nodiscard]] const char *keep(QByteArrayView utf8);

    size_t m_mostBytes;
    size_t m_bytes = 0; // of all texts
    std::vector<std::unique_ptr<char[]>> m_pieces;
    char *m_free = nullptr; // in the last piece
    size_t m_freeBytes = 0;
    std::vector<const char *> m_iris; // by number, each the length and the text
    std::vector<Slot> m_slots; // a power of two, at least a quarter of them free
};
