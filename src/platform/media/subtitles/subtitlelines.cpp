// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitlelines.h"

namespace subtitles {

bool Lines::next(QStringView *line)
{
    if (m_at >= m_text.size())
        return false;
    qsizetype end = m_at;
    while (end < m_text.size() && m_text.at(end) != u'\n' && m_text.at(end) != u'\r')
        ++end;
    *line = m_text.mid(m_at, end - m_at);
    const bool both = end + 1 < m_text.size() && m_text.at(end) == u'\r' && m_text.at(end + 1) == u'\n';
    m_at = end + (both ? 2 : 1);
    return true;
}

QStringList formatFields(QStringView line)
{
    QStringList names = line.mid(line.indexOf(u':') + 1, LongestHead).toString().toLower().split(u',');
    for (QString &name : names)
        name = name.trimmed();
    return names;
}

QList<QStringView> splitFields(QStringView text, qsizetype count)
{
    QList<QStringView> fields;
    while (fields.size() + 1 < count) {
        const qsizetype comma = text.indexOf(u',');
        if (comma < 0)
            break;
        fields.append(text.left(comma));
        text = text.mid(comma + 1);
    }
    fields.append(text);
    return fields;
}

QString withoutCodes(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == u'{' && i + 2 < text.size() && text.at(i + 2) == u':') {
            const qsizetype end = text.indexOf(u'}', i);
            if (end < 0)
                break;
            i = end;
            continue;
        }
        result.append(text.at(i));
    }
    return result;
}

} // namespace subtitles
