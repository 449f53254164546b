// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

// Texts by row, one behind the other as UTF-8 with eight bytes beside each: a tenth of as many QStrings. 4
// GiB of them at most.
class PackedTexts
{
public:
    void reserve(int rows) { m_spans.reserve(size_t(rows)); }
    void append(const QString &text) { m_spans.push_back(store(text.toUtf8())); }
    void append(const QByteArray &utf8) { m_spans.push_back(store(utf8)); }
    // Empty texts, to be set.
    void insert(int first, int count) { m_spans.insert(m_spans.begin() + first, size_t(count), Span()); }
    void set(int row, QByteArrayView utf8);
    void remove(int first, int last);

    [[nodiscard]] int count() const { return int(m_spans.size()); }
    // Until the texts change.
    [[nodiscard]] QByteArrayView utf8(int row) const
    {
        const Span span = m_spans[size_t(row)];
        return {m_bytes.constData() + span.offset, qsizetype(span.length)};
    }
    [[nodiscard]] QString at(int row) const { return QString::fromUtf8(utf8(row)); }

private:
    struct Span
    {
        quint32 offset = 0;
        quint32 length = 0;
    };

    [[nodiscard]] Span store(QByteArrayView utf8);
    void dropUnused();

    QByteArray m_bytes;
    std::vector<Span> m_spans;
    qsizetype m_unused = 0; // bytes that belong to no row any more
};
