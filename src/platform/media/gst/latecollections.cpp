// SPDX-License-Identifier: GPL-3.0-or-later
#include "latecollections.h"

#include "elementhooks.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

namespace {

struct Unref
{
    void operator()(gpointer object) const { gst_object_unref(object); }
};

using Collection = std::unique_ptr<GstStreamCollection, Unref>;

// Of the bus of one parsebin, which hands everything else on to the one that its bin gave it.
struct Relay
{
    std::unique_ptr<GstBus, Unref> next;
    std::mutex mutex;
    std::vector<Collection> told; // each once, the newest last

    [[nodiscard]] bool isLate(GstMessage *message);
};

bool Relay::isLate(GstMessage *message)
{
    GstStreamCollection *parsed = nullptr;
    gst_message_parse_stream_collection(message, &parsed);
    Collection collection(parsed);
    const std::lock_guard lock(mutex);
    const auto found = std::ranges::find(told, collection.get(), &Collection::get);
    const bool late = found != told.end() && std::next(found) != told.end();
    if (found == told.end())
        told.push_back(std::move(collection));
    return late;
}

GstBusSyncReply posted(GstBus *bus, GstMessage *message, gpointer self)
{
    (void)bus;
    auto *relay = static_cast<Relay *>(self);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_STREAM_COLLECTION && relay->isLate(message))
        gst_message_unref(message);
    else
        gst_bus_post(relay->next.get(), message); // takes it over
    return GST_BUS_DROP;
}

void added(GstBin *playbin, GstBin *bin, GstElement *element, gpointer self)
{
    (void)playbin;
    (void)self;
    if (!isMadeBy(element, "parsebin") || !isMadeBy(GST_ELEMENT(bin), "decodebin3"))
        return;
    auto *relay = new Relay;
    relay->next.reset(gst_element_get_bus(element));
    GstBus *own = gst_bus_new();
    gst_bus_set_sync_handler(own, posted, relay, [](gpointer kept) { delete static_cast<Relay *>(kept); });
    gst_element_set_bus(element, own);
    gst_object_unref(own);
}

} // namespace

void dropLateCollections(GstElement *playbin)
{
    g_signal_connect(playbin, "deep-element-added", G_CALLBACK(added), nullptr);
}
