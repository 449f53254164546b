// SPDX-License-Identifier: GPL-3.0-or-later
#include "savename.h"

#include <algorithm>
#include <limits.h>

namespace {

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = char(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// A name on the disk has no folder in it.
QByteArray lastPart(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

// One line, nothing that is not seen, no blanks at its ends.
QString cleaned(const QString &typed)
{
    QString result;
    std::copy_if(typed.begin(), typed.end(), std::back_inserter(result), [](QChar c) {
        return c.category() != QChar::Other_Control && c != QChar::LineSeparator
            && c != QChar::ParagraphSeparator;
    });
    return result.trimmed();
}

QByteArray withExtension(const QByteArray &name, const QByteArray &extension)
{
    return extension.isEmpty() ? name : name + '.' + extension;
}

} // namespace

SaveName::SaveName(const QString &encodedName, const QString &encodedExtension)
    : m_proposedBytes(lastPart(decoded(encodedName))),
      m_extensionBytes(lastPart(decoded(encodedExtension))),
      m_proposed(QString::fromUtf8(m_proposedBytes)),
      m_extension(QString::fromUtf8(m_extensionBytes))
{
}

QByteArray SaveName::decoded(const QString &encoded)
{
    const QByteArray text = encoded.toUtf8();
    QByteArray result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const int high = text.at(i) == '%' && i + 2 < text.size() ? digitOf(text.at(i + 1)) : -1;
        const int low = high >= 0 ? digitOf(text.at(i + 2)) : -1;
        result.append(low >= 0 ? char(high * 16 + low) : text.at(i));
        i += low >= 0 ? 2 : 0;
    }
    return result;
}

SaveName::Fault SaveName::check(const QString &typed) const
{
    const QString name = cleaned(typed);
    if (name.isEmpty())
        return Fault::Empty;
    // A hidden file is in no list of videos.
    if (name.contains(u'/') || name.startsWith(u'.'))
        return Fault::Invalid;
    if (fileName(typed).size() > NAME_MAX)
        return Fault::TooLong;
    return Fault::None;
}

QByteArray SaveName::fileName(const QString &typed) const
{
    const QByteArray name = typed == m_proposed ? m_proposedBytes : cleaned(typed).toUtf8();
    return withExtension(name, m_extensionBytes);
}

QString SaveName::shownName(const QString &typed) const
{
    return QString::fromUtf8(fileName(typed));
}
