// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitlecharset.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include <iconv.h>

using namespace Qt::Literals::StringLiterals;

namespace subtitles {

namespace {

constexpr qsizetype Sample = 4096; // bytes that are looked at

QString decodedBy(QStringConverter::Encoding encoding, const QByteArray &bytes)
{
    QStringDecoder decoder(encoding);
    return decoder(bytes);
}

// The byte order where it is UTF-16 without a mark.
std::optional<QStringConverter::Encoding> wideEncoding(const QByteArray &bytes)
{
    std::array<qsizetype, 2> zeros{};
    const qsizetype count = std::min(bytes.size(), Sample);
    for (qsizetype i = 0; i < count; ++i)
        zeros.at(size_t(i % 2)) += bytes.at(i) == 0 ? 1 : 0;
    if (zeros.at(1) > count / 8 && zeros.at(0) < zeros.at(1) / 8)
        return QStringConverter::Utf16LE;
    if (zeros.at(0) > count / 8 && zeros.at(1) < zeros.at(0) / 8)
        return QStringConverter::Utf16BE;
    return {};
}

// What cannot be converted becomes a question mark.
QString converted(const QByteArray &bytes, const QByteArray &charset)
{
    const iconv_t converter = iconv_open("UTF-16LE", charset.constData());
    if (converter == reinterpret_cast<iconv_t>(-1))
        return QString::fromLatin1(bytes);
    QString text(bytes.size() + 1, Qt::Uninitialized);
    QByteArray source = bytes;
    char *in = source.data();
    size_t inLeft = size_t(source.size());
    char *out = reinterpret_cast<char *>(text.data());
    size_t outLeft = size_t(text.size()) * sizeof(QChar);
    while (inLeft > 0 && iconv(converter, &in, &inLeft, &out, &outLeft) == size_t(-1)) {
        if (errno == E2BIG || outLeft < sizeof(QChar) || inLeft == 0)
            break;
        const char16_t unknown = u'?';
        memcpy(out, &unknown, sizeof unknown);
        out += sizeof unknown;
        outLeft -= sizeof unknown;
        ++in;
        --inLeft;
    }
    iconv_close(converter);
    text.truncate(text.size() - qsizetype(outLeft / sizeof(QChar)));
    return text;
}

} // namespace

QByteArray usualCharset(const QString &language)
{
    static const struct
    {
        QLatin1StringView languages;
        const char *charset;
    } table[] = {
        {" ru uk be bg mk sr "_L1, "WINDOWS-1251"},
        {" pl cs sk hu sl hr bs ro sq "_L1, "WINDOWS-1250"},
        {" el "_L1, "WINDOWS-1253"},
        {" tr az "_L1, "WINDOWS-1254"},
        {" he yi "_L1, "WINDOWS-1255"},
        {" ar fa ur "_L1, "WINDOWS-1256"},
        {" et lv lt "_L1, "WINDOWS-1257"},
        {" vi "_L1, "WINDOWS-1258"},
        {" th "_L1, "CP874"},
        {" ja "_L1, "CP932"},
        {" ko "_L1, "UHC"},
        {" zh "_L1, "GB18030"},
    };
    const QString tag = QString(language).replace(u'_', u'-');
    if (tag.startsWith("zh-TW"_L1) || tag.startsWith("zh-HK"_L1) || tag.contains("Hant"_L1))
        return "BIG5";
    const QString wanted = u' ' + tag.section(u'-', 0, 0).toLower() + u' ';
    for (const auto &row : table) {
        if (QString(row.languages).contains(wanted))
            return row.charset;
    }
    return "WINDOWS-1252";
}

QString decode(const QByteArray &bytes, const QString &language)
{
    if (const auto marked = QStringConverter::encodingForData(bytes))
        return decodedBy(*marked, bytes);
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8(bytes);
    const auto wide = wideEncoding(bytes);
    if (!utf8.hasError() && !wide)
        return text;
    if (wide)
        return decodedBy(*wide, bytes);
    return converted(bytes, usualCharset(language));
}

} // namespace subtitles
