// SPDX-License-Identifier: GPL-3.0-or-later
#include "packedtexts.h"

PackedTexts::Span PackedTexts::store(QByteArrayView utf8)
{
    const Span span{quint32(m_bytes.size()), quint32(utf8.size())};
    m_bytes.append(utf8);
    return span;
}

void PackedTexts::set(int row, QByteArrayView utf8)
{
    m_unused += m_spans[size_t(row)].length;
    m_spans[size_t(row)] = store(utf8);
    dropUnused();
}

void PackedTexts::remove(int first, int last)
{
    for (int row = first; row <= last; ++row)
        m_unused += m_spans[size_t(row)].length;
    m_spans.erase(m_spans.begin() + first, m_spans.begin() + last + 1);
    dropUnused();
}

void PackedTexts::dropUnused()
{
    constexpr qsizetype little = 4096;
    if (m_unused < little || m_unused < m_bytes.size() / 2)
        return;
    QByteArray bytes;
    bytes.reserve(m_bytes.size() - m_unused);
    for (Span &span : m_spans) {
        const auto offset = quint32(bytes.size());
        bytes.append(QByteArrayView(m_bytes).sliced(span.offset, span.length));
        span.offset = offset;
    }
    m_bytes = std::move(bytes);
    m_unused = 0;
}
