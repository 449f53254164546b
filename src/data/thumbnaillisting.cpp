// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnaillisting.h"

#include "thumbnailpaths.h"
#include "videoconstants.h"

#include <platform/thumbs/thumbnailname.h>

#include <QDirIterator>

#include <algorithm>
#include <optional>

namespace {

using Digest = std::array<char, 16>;

// None for a name that no video's picture has.
std::optional<Digest> digestOf(const QByteArray &name)
{
    Digest digest{};
    const QByteArray bytes = QByteArray::fromHex(name);
    if (bytes.size() != qsizetype(digest.size()) || bytes.toHex() != name)
        return std::nullopt;
    std::copy(bytes.cbegin(), bytes.cend(), digest.begin());
    return digest;
}

} // namespace

ThumbnailListing ThumbnailListing::ofFolders()
{
    ThumbnailListing listing;
    listing.m_defaults = Folder::of(ThumbnailPaths::defaultFolder(THUMBNAIL_FLAVOR), THUMBNAIL_SUFFIX);
    listing.m_stills = Folder::of(ThumbnailPaths::pauseFolder(THUMBNAIL_FLAVOR), PAUSE_THUMBNAIL_SUFFIX);
    return listing;
}

ThumbnailListing::Folder ThumbnailListing::Folder::of(const QString &path, const QString &suffix)
{
    Folder folder{path, suffix, {}};
    QDirIterator files(path, QDir::Files | QDir::Hidden);
    while (files.hasNext()) {
        files.next();
        const QString name = files.fileName();
        if (!name.endsWith(suffix))
            continue;
        if (const auto digest = digestOf(name.chopped(suffix.size()).toLatin1()))
            folder.files.push_back(*digest);
    }
    std::sort(folder.files.begin(), folder.files.end());
    return folder;
}

QString ThumbnailListing::Folder::path(const QString &url) const
{
    if (files.empty())
        return {};
    const QByteArray name = thumbnailName(url);
    const auto digest = digestOf(name);
    if (!digest || !std::binary_search(files.cbegin(), files.cend(), *digest))
        return {};
    return folder + u'/' + QString::fromLatin1(name) + suffix;
}
