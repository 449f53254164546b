// SPDX-License-Identifier: GPL-3.0-or-later
#include "playableaddress.h"

#include <QUrl>

#include <algorithm>
#include <array>

#include <gst/gst.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto FilePrefix = "file://"_L1;

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// As QByteArray::fromPercentEncoding(), but a `%` that begins no escape stays.
QByteArray unescaped(const QByteArray &text)
{
    QByteArray result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool escape = text.at(i) == '%' && i + 2 < text.size() && isHexDigit(text.at(i + 1))
            && isHexDigit(text.at(i + 2));
        if (!escape) {
            result += text.at(i);
            continue;
        }
        result += char(text.mid(i + 1, 2).toInt(nullptr, 16));
        i += 2;
    }
    return result;
}

// Blanks and letters that a server would not take; one that it would take goes on as it is.
QByteArray networkAddress(const QString &uri)
{
    const bool plain = std::all_of(uri.begin(), uri.end(), [](QChar c) { return c > u' ' && c < u'\x7f'; });
    if (plain)
        return uri.toUtf8();
    const QByteArray encoded = QUrl(uri, QUrl::TolerantMode).toEncoded();
    return encoded.isEmpty() ? uri.toUtf8() : encoded;
}

// Of those who name a host it must be one.
constexpr std::array HostSchemes{"http"_L1, "https"_L1, "rtsp"_L1, "rtsps"_L1, "mms"_L1};

} // namespace

bool isFileAddress(const QString &uri)
{
    return uri.startsWith(FilePrefix, Qt::CaseInsensitive);
}

QByteArray playableAddress(const QString &uri)
{
    if (!isFileAddress(uri))
        return networkAddress(uri);
    QByteArray path = uri.mid(FilePrefix.size()).toUtf8();
    if (path.startsWith("localhost/"))
        path.remove(0, 9);
    return "file://" + unescaped(path).toPercentEncoding("/");
}

bool isPlayableAddress(const QByteArray &address)
{
    if (!gst_uri_is_valid(address.constData()))
        return false;
    const QString scheme = QString::fromLatin1(address.left(address.indexOf(':'))).toLower();
    if (std::find(HostSchemes.begin(), HostSchemes.end(), scheme) == HostSchemes.end())
        return true;
    const QUrl url = QUrl::fromEncoded(address, QUrl::TolerantMode);
    return url.isValid() && !url.host().isEmpty();
}
