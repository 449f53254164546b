// SPDX-License-Identifier: GPL-3.0-or-later
#include "shareitem.h"

#include <QMimeData>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto filePrefix = "file://"_L1;
constexpr qsizetype longestName = 200; // the portal refuses a longer subject, and one of several lines

QStringList textsOf(const ShareItems &items, ShareItem::Kind kind)
{
    QStringList texts;
    for (const ShareItem &item : items) {
        if (item.kind == kind)
            texts.append(item.text);
    }
    return texts;
}

QString oneLine(const QString &text)
{
    const QString line = text.simplified();
    if (line.size() <= longestName)
        return line;
    const bool splitsCharacter = line.at(longestName - 2).isHighSurrogate();
    return line.left(longestName - (splitsCharacter ? 2 : 1)) + u'\u2026';
}

} // namespace

ShareItem ShareItem::fromDecoded(const QString &address)
{
    if (address.startsWith(filePrefix, Qt::CaseInsensitive))
        return {Kind::File, address.mid(filePrefix.size())};
    if (address.startsWith(u'/'))
        return {Kind::File, address};
    // All that has a meaning of its own in a URL stays as it is; a percent sign that is left was an encoded
    // one.
    return {Kind::Stream,
            QString::fromLatin1(QUrl::toPercentEncoding(address.trimmed(), ":/?#[]@!$&'()*+,;="))};
}

QString ShareItem::name() const
{
    if (kind == Kind::File)
        return oneLine(text.section(u'/', -1, -1, QString::SectionSkipEmpty));
    const QUrl url(text);
    const QString last
        = oneLine(url.path(QUrl::FullyDecoded).section(u'/', -1, -1, QString::SectionSkipEmpty));
    if (!last.isEmpty())
        return last;
    return oneLine(url.host().isEmpty() ? text : url.host());
}

ShareItems shareItems(const QStringList &decodedAddresses)
{
    ShareItems items;
    for (const QString &address : decodedAddresses) {
        const ShareItem item = ShareItem::fromDecoded(address);
        if (!item.text.isEmpty() && !items.contains(item))
            items.append(item);
    }
    return items;
}

QStringList filePaths(const ShareItems &items)
{
    return textsOf(items, ShareItem::Kind::File);
}

QStringList streamAddresses(const ShareItems &items)
{
    return textsOf(items, ShareItem::Kind::Stream);
}

QMimeData *mimeDataOf(const ShareItems &items)
{
    QStringList lines;
    QList<QUrl> urls;
    for (const ShareItem &item : items) {
        lines.append(item.text);
        urls.append(item.kind == ShareItem::Kind::File ? QUrl::fromLocalFile(item.text) : QUrl(item.text));
    }
    auto *data = new QMimeData;
    data->setText(lines.join(u'\n'));
    if (std::all_of(urls.begin(), urls.end(), [](const QUrl &url) { return url.isValid(); }))
        data->setUrls(urls);
    return data;
}
