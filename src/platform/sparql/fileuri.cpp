// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileuri.h"

#include <QByteArray>

using namespace Qt::Literals::StringLiterals;

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// A '%' that two hexadecimal digits do not follow stands for itself: nobody who escapes writes one.
QByteArray unescaped(const QByteArray &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && i + 2 < text.size();
        const int high = escape ? hexDigit(text[i + 1]) : -1;
        const int low = escape ? hexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            bytes.append(text[i]);
            continue;
        }
        bytes.append(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return bytes;
}

bool standsForItself(char c)
{
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
        return true;
    return c != '\0' && QByteArrayView("-_.!~*'()/&=:@+$,").contains(c);
}

// Where the path of a file: address begins, or -1 when the address names another machine or is no file
// address.
qsizetype pathStart(const QString &address)
{
    if (!address.startsWith("file:"_L1, Qt::CaseInsensitive))
        return -1;
    constexpr qsizetype afterScheme = 5;
    const QStringView rest = QStringView(address).mid(afterScheme);
    if (!rest.startsWith(u"//"))
        return rest.startsWith(u'/') ? afterScheme : -1;
    const qsizetype slash = address.indexOf(u'/', afterScheme + 2);
    if (slash < 0)
        return -1;
    const QStringView host = QStringView(address).sliced(afterScheme + 2, slash - afterScheme - 2);
    return host.isEmpty() || host.compare("localhost"_L1, Qt::CaseInsensitive) == 0 ? slash : -1;
}

} // namespace

QString canonicalFileUri(const QString &address)
{
    const qsizetype start = pathStart(address);
    if (start < 0)
        return address;
    return fileUriFromPath(unescaped(QStringView(address).sliced(start).toUtf8()));
}

QString fileUriFromPath(const QByteArray &path)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    QByteArray uri = QByteArrayLiteral("file://");
    uri.reserve(uri.size() + path.size() * 3);
    for (const char c : path) {
        if (standsForItself(c)) {
            uri.append(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        uri.append('%').append(digits[byte >> 4U]).append(digits[byte & 0xFU]);
    }
    return QString::fromLatin1(uri);
}
