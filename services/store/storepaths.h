// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Where the service keeps its things.
struct StorePaths
{
    QString database; // a folder
    QString journal; // a file
    QString lock; // a file; held by the one process that writes the database
    QString socketFolder; // mode 0700

    // Under $XDG_DATA_HOME/kestrel and $XDG_RUNTIME_DIR/kestrel.
    [[nodiscard]] static StorePaths ofUser();
    // Makes the folders with the modes they need. False, with a line in the log, when one cannot be made.
    [[nodiscard]] bool prepare() const;
};

// The local path of a canonical file: address; empty for any other address.
[[nodiscard]] QString localPathOf(const QString &url);
// The canonical address of a local path.
[[nodiscard]] QString urlOf(const QString &path);
