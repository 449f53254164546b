// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointmessages.h"

#include <gio/gunixfdlist.h>

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int s_readTimeoutMs = 10000;
constexpr qint64 s_largestText = 16 * 1024 * 1024;
constexpr qint64 s_mostTexts = 10000;

// What an operation is, which 3.8 of the library says before it. Older ones begin with the length of the
// text, and no update is as short as these.
enum Operation { Sparql = 0, Rdf = 1 };

bool readExactly(int descriptor, char *data, qint64 size)
{
    while (size > 0) {
        pollfd poll = {descriptor, POLLIN, 0};
        const int ready = ::poll(&poll, 1, s_readTimeoutMs);
        if (ready < 0 && errno == EINTR)
            continue;
        const ssize_t count = ready > 0 ? ::read(descriptor, data, size_t(size)) : -1;
        if (count < 0 && ready > 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count <= 0)
            return false;
        data += count;
        size -= count;
    }
    return true;
}

std::optional<qint64> readNumber(int descriptor)
{
    gint32 number = 0; // in the byte order of the machine
    char bytes[sizeof number];
    if (!readExactly(descriptor, bytes, sizeof bytes))
        return std::nullopt;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

std::optional<QString> readText(int descriptor)
{
    auto size = readNumber(descriptor);
    if (!size || *size == Rdf)
        return std::nullopt;
    const bool isOperation = *size == Sparql;
    if (isOperation)
        size = readNumber(descriptor);
    if (!size || *size < 0 || *size > s_largestText)
        return std::nullopt;
    QByteArray text(*size, Qt::Uninitialized);
    if (!readExactly(descriptor, text.data(), text.size()))
        return std::nullopt;
    // The values of its variables follow, their length first.
    if (isOperation && readNumber(descriptor) != 0)
        return std::nullopt;
    return QString::fromUtf8(text);
}

} // namespace

EndpointMessages::Kind EndpointMessages::kindOf(GDBusMessage *message)
{
    const char *interface = g_dbus_message_get_interface(message);
    if (g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL
        || g_strcmp0(interface, "org.freedesktop.Tracker3.Endpoint") != 0)
        return Kind::Other;
    const char *member = g_dbus_message_get_member(message);
    if (g_strcmp0(member, "Query") == 0)
        return Kind::Query;
    if (g_strcmp0(member, "Update") == 0)
        return Kind::Update;
    if (g_strcmp0(member, "UpdateArray") == 0)
        return Kind::UpdateArray;
    return Kind::Refused;
}

QString EndpointMessages::queryText(GDBusMessage *message)
{
    GVariant *body = g_dbus_message_get_body(message);
    if (!body || g_variant_n_children(body) == 0)
        return {};
    GVariant *text = g_variant_get_child_value(body, 0);
    QString result;
    if (g_variant_is_of_type(text, G_VARIANT_TYPE_STRING))
        result = QString::fromUtf8(g_variant_get_string(text, nullptr));
    g_variant_unref(text);
    return result;
}

int EndpointMessages::takeInput(GDBusMessage *message)
{
    GVariant *body = g_dbus_message_get_body(message);
    GUnixFDList *descriptors = g_dbus_message_get_unix_fd_list(message);
    if (!body || !descriptors || !g_variant_is_of_type(body, G_VARIANT_TYPE("(h)")))
        return -1;
    gint32 index = 0;
    g_variant_get(body, "(h)", &index);
    return g_unix_fd_list_get(descriptors, index, nullptr);
}

std::optional<QStringList> EndpointMessages::readTexts(int descriptor, Kind kind)
{
    QStringList texts;
    const auto count = kind == Kind::UpdateArray ? readNumber(descriptor) : std::optional<qint64>(1);
    if (!count || *count < 0 || *count > s_mostTexts)
        return std::nullopt;
    for (qint64 i = 0; i < *count; ++i) {
        const auto text = readText(descriptor);
        if (!text)
            return std::nullopt;
        texts.append(*text);
    }
    return texts;
}
