// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>

#include <QStringList>

#include <optional>

// What is needed to know of the messages of the store library's D-Bus endpoint.
namespace EndpointMessages {

enum class Kind {
    Other, // left to whoever registered the object
    Query, // carries its text
    Update, // carries a descriptor from which the texts are read
    UpdateArray,
    Refused, // writes in ways that the service does not offer
};

[[nodiscard]] Kind kindOf(GDBusMessage *message);
[[nodiscard]] QString queryText(GDBusMessage *message);
// A descriptor of the caller's own; -1 when the message has none.
[[nodiscard]] int takeInput(GDBusMessage *message);
// Reads to the end of what the client sends, for seconds at most. Nothing when it does not send what it
// should, or more than texts: variables with values, or RDF.
[[nodiscard]] std::optional<QStringList> readTexts(int descriptor, Kind kind);

} // namespace EndpointMessages
