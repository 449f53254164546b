// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include <optional>

// A value that an update sets on a video, as its text says it.
struct ValueWrite
{
    enum class Property { Title, RunTime };

    QString urn;
    Property property = Property::Title;
    QString value;

    friend bool operator==(const ValueWrite &, const ValueWrite &) = default;
};

// Why a text of a client is not passed on to the store; nothing when it may be. A query or an update must not
// make the service open connections or read files: SERVICE and LOAD are refused wherever they stand as
// keywords.
[[nodiscard]] std::optional<QString> refusalOf(const QString &text);

// Titles and run times that the insert parts of an update set, in the order of the text. Subjects have to be
// spelled as IRIs and values as literals or numbers; what is computed by the update is not seen here.
[[nodiscard]] QList<ValueWrite> valueWritesOf(const QString &text);
