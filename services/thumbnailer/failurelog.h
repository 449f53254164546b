// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "thumbnailfiles.h"

#include <optional>

// Files of which no thumbnail can be made, kept across runs: each is tried once for as long as it does not
// change.
class FailureLog
{
public:
    FailureLog();

    [[nodiscard]] std::optional<QString> find(const QString &uri, const ThumbnailFiles::Stamp &stamp) const;
    void add(const QString &uri, const ThumbnailFiles::Stamp &stamp, const QString &message);
    void remove(const QString &uri);

private:
    [[nodiscard]] QString path(const QString &uri) const;

    QString m_folder;
};
