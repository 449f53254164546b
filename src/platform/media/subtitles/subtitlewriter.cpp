// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitlewriter.h"

#include <algorithm>

namespace subtitles {

namespace {

// Not what no font shows.
bool isShown(QChar character)
{
    const char16_t code = character.unicode();
    return (code >= 0x20 || code == u'\t') && code != 0x7f && code != 0xfeff && code != 0xfffe
        && code != 0xffff;
}

} // namespace

bool Writer::looksAsLast() const
{
    if (m_text.spans.isEmpty())
        return false;
    const SubtitleSpan &last = m_text.spans.last();
    return last.start + last.length == m_text.words.size() && last.bold == bold && last.italic == italic
        && last.underlined == underlined;
}

void Writer::add(QChar character)
{
    if (isFull())
        return;
    if (character == u'\n') {
        const bool begun = !m_text.words.isEmpty() && !m_text.words.endsWith(u'\n');
        if (begun && m_lines < MostLines) {
            ++m_lines;
            m_text.words.append(character);
        } else if (begun) {
            m_text.words.append(u' ');
        }
        return;
    }
    if (!isShown(character))
        return;
    const bool blank = character.isSpace() && character != QChar::Nbsp;
    if (blank && (m_text.words.isEmpty() || m_text.words.endsWith(u'\n')))
        return;
    if (bold || italic || underlined) {
        if (looksAsLast())
            ++m_text.spans.last().length;
        else if (m_text.spans.size() < MostSpans)
            m_text.spans.append({int(m_text.words.size()), 1, bold, italic, underlined});
    }
    m_text.words.append(blank ? QChar(u' ') : character);
}

void Writer::add(QStringView text)
{
    for (const QChar character : text)
        add(character);
}

SubtitleText Writer::take()
{
    qsizetype end = m_text.words.size();
    while (end > 0 && m_text.words.at(end - 1).isSpace())
        --end;
    m_text.words.truncate(end);
    if (end > 0 && m_text.words.at(end - 1).isHighSurrogate())
        m_text.words.truncate(--end);
    for (SubtitleSpan &span : m_text.spans)
        span.length = std::min(span.length, int(end) - span.start);
    m_text.spans.removeIf([](const SubtitleSpan &span) { return span.length <= 0; });
    m_text.above = above;
    return std::exchange(m_text, {});
}

} // namespace subtitles
