// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <array>
#include <vector>

// Which videos had pictures on disk when it was made: one listing of each folder instead of two look-ups a
// video, 16 bytes a picture. May be made in any thread.
class ThumbnailListing
{
public:
    // Lists no pictures.
    ThumbnailListing() = default;
    [[nodiscard]] static ThumbnailListing ofFolders();

    // Null when there was no such file.
    [[nodiscard]] QString defaultPath(const QString &url) const { return m_defaults.path(url); }
    [[nodiscard]] QString pausePath(const QString &url) const { return m_stills.path(url); }

private:
    using Digest = std::array<char, 16>; // of thumbnailName()

    struct Folder
    {
        QString folder;
        QString suffix;
        std::vector<Digest> files; // in order

        [[nodiscard]] static Folder of(const QString &path, const QString &suffix);
        [[nodiscard]] QString path(const QString &url) const;
    };

    Folder m_defaults;
    Folder m_stills;
};
