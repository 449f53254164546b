// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Where thumbnails lie: $HOME/.thumbnails/video-grid/<name>.jpeg, where programs of the session look for
// them.
namespace ThumbnailFiles {

[[nodiscard]] QString flavor();
[[nodiscard]] QString folder();
[[nodiscard]] QString path(const QString &uri);

// The local path of a file:// address; empty for any other.
[[nodiscard]] QString localFile(const QString &uri);

// What a file was when something was made, or failed to be made, of it.
struct Stamp
{
    qint64 size = -1;
    qint64 modifiedMs = 0;

    [[nodiscard]] bool isValid() const { return size >= 0; }
    [[nodiscard]] QString toString() const;
    friend bool operator==(const Stamp &, const Stamp &) = default;
};
// Invalid when there is no such file.
[[nodiscard]] Stamp stampOf(const QString &file);

// What a thumbnail says of its origin; empty when there is no (readable) thumbnail.
struct Origin
{
    QString uri;
    QString stamp;
};
[[nodiscard]] Origin originOf(const QString &thumbnail);
// The keys of the texts that hold it.
[[nodiscard]] QString uriKey();
[[nodiscard]] QString stampKey();

} // namespace ThumbnailFiles
