// SPDX-License-Identifier: GPL-3.0-or-later
#include "libraryfile.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <vector>

#include <link.h>

namespace {

constexpr int OwnClass = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;

template <typename Record> bool readInto(QFile &file, Record *records, size_t count)
{
    const auto size = qint64(sizeof(Record) * count);
    return file.read(reinterpret_cast<char *>(records), size) == size;
}

} // namespace

bool isWholeLibrary(const QString &path)
{
    QFile file(path);
    ElfW(Ehdr) header = {};
    if (!file.open(QIODevice::ReadOnly) || !readInto(file, &header, 1)
        || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != OwnClass
        || header.e_phentsize != sizeof(ElfW(Phdr)))
        return true;
    std::vector<ElfW(Phdr)> segments(header.e_phnum);
    if (!file.seek(qint64(header.e_phoff)) || !readInto(file, segments.data(), segments.size()))
        return false;
    const auto size = quint64(file.size());
    return std::all_of(segments.begin(), segments.end(), [size](const ElfW(Phdr) & segment) {
        return segment.p_type != PT_LOAD
            || (segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset);
    });
}
