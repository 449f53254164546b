// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// UTF-8 that also keeps half a pair of surrogates, as three bytes that plain UTF-8 has no use for. What was
// typed or cut badly comes back as it was.
inline QByteArray toLooseUtf8(const QString &text)
{
    if (text.isValidUtf16())
        return text.toUtf8();
    QByteArray utf8;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        if (unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            utf8 += text.mid(i++, 2).toUtf8();
        } else if (unit.isSurrogate()) {
            utf8 += char(0xed);
            utf8 += char(0x80 | ((unit.unicode() >> 6) & 0x3f));
            utf8 += char(0x80 | (unit.unicode() & 0x3f));
        } else {
            utf8 += QString(unit).toUtf8();
        }
    }
    return utf8;
}

inline QString fromLooseUtf8(QByteArrayView utf8)
{
    const auto halfAt = [utf8](qsizetype i) {
        return i + 2 < utf8.size() && quint8(utf8[i]) == 0xed && quint8(utf8[i + 1]) >= 0xa0;
    };
    QString text;
    qsizetype begin = 0;
    for (qsizetype i = utf8.indexOf(char(0xed)); i >= 0; i = utf8.indexOf(char(0xed), i + 1)) {
        if (!halfAt(i))
            continue;
        text += QString::fromUtf8(utf8.sliced(begin, i - begin));
        text += QChar(char16_t(0xd000 | ((quint8(utf8[i + 1]) & 0x3f) << 6) | (quint8(utf8[i + 2]) & 0x3f)));
        begin = i + 3;
        i += 2;
    }
    return begin == 0 ? QString::fromUtf8(utf8) : text + QString::fromUtf8(utf8.sliced(begin));
}
