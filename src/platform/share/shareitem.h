// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class QMimeData;

// One thing to share: a file by its path, or a stream by its address.
struct ShareItem
{
    enum class Kind { File, Stream };

    Kind kind = Kind::File;
    QString text; // the path of a file, the address of a stream

    // From a decoded address. What follows file:// is a path as it stands, "%", "#" and "?" included; so is
    // anything that begins with "/". Everything else is a stream; what a URL cannot hold is encoded again.
    [[nodiscard]] static ShareItem fromDecoded(const QString &address);

    // For a person, on one line of bearable length: the file's name, or of a stream the last part of its
    // address that says something.
    [[nodiscard]] QString name() const;

    friend bool operator==(const ShareItem &, const ShareItem &) = default;
};

using ShareItems = QList<ShareItem>;

// Items without anything in them are left out.
[[nodiscard]] ShareItems shareItems(const QStringList &decodedAddresses);
[[nodiscard]] QStringList filePaths(const ShareItems &items);
[[nodiscard]] QStringList streamAddresses(const ShareItems &items);
// For the clipboard: the texts, a line each, and the addresses as a list that file managers can paste. The
// caller owns it.
[[nodiscard]] QMimeData *mimeDataOf(const ShareItems &items);
