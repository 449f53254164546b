// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

// A database of the store library in a temporary folder: asked directly, and served by the library's own HTTP
// endpoint (read-only, queries by GET only), which listens on every interface and knows no other way. The
// endpoint answers from this process's event loop; everything else here blocks.
class StoreEndpoint
{
public:
    StoreEndpoint();
    ~StoreEndpoint();
    Q_DISABLE_COPY_MOVE(StoreEndpoint)

    // False and a warning when there is no database or no endpoint.
    [[nodiscard]] bool open();
    [[nodiscard]] QUrl address() const;

    // The error; null when it was taken.
    QString update(const QString &text);
    // Every column as text, null where nothing is bound. An error is a warning and no rows.
    [[nodiscard]] QList<QStringList> select(const QString &text);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
