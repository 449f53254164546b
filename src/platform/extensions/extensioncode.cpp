// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensioncode.h"

#include <algorithm>

#include <execinfo.h>
#include <link.h>

namespace {

extensioncode::Entries s_entries;

struct Range
{
    std::uintptr_t code;
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

int takeIfIn(dl_phdr_info *object, size_t, void *data)
{
    auto *range = static_cast<Range *>(data);
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto &segment = object->dlpi_phdr[i];
        const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
        const bool isCode = segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0;
        if (!isCode || range->code < begin || range->code >= begin + segment.p_memsz)
            continue;
        range->begin = begin;
        range->end = begin + segment.p_memsz;
        return 1;
    }
    return 0;
}

} // namespace

namespace extensioncode {

Entries &entries()
{
    return s_entries;
}

Entry *find(int marker)
{
    const auto found = std::find_if(s_entries.begin(), s_entries.end(),
                                    [marker](const Entry &entry) { return entry.marker == marker; });
    return found == s_entries.end() ? nullptr : found;
}

void setCode(Entry &entry, const void *addressInLibrary)
{
    Range range{reinterpret_cast<std::uintptr_t>(addressInLibrary)};
    dl_iterate_phdr(takeIfIn, &range);
    entry.begin = range.begin;
    entry.end = range.end;
}

Stack::Stack() : depth(backtrace(addresses.data(), int(addresses.size()))) { }

bool Stack::passes(const Entry &entry) const
{
    const std::uintptr_t begin = entry.begin;
    const std::uintptr_t end = entry.end;
    return std::any_of(addresses.begin(), addresses.begin() + depth, [=](const void *address) {
        const auto at = reinterpret_cast<std::uintptr_t>(address);
        return at >= begin && at < end;
    });
}

} // namespace extensioncode
