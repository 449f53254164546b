// SPDX-License-Identifier: GPL-3.0-or-later
#include "kepterrors.h"

#include "elementhooks.h"

using namespace std::chrono_literals;

namespace {

// The next element is tried at once; what takes its time is the machine.
constexpr auto Patience = 700ms;

} // namespace

struct KeptErrors::Link
{
    std::mutex mutex;
    KeptErrors *owner; // null: detached

    void tell(const std::shared_ptr<GstMessage> &error)
    {
        const std::lock_guard lock(mutex);
        if (owner != nullptr)
            QMetaObject::invokeMethod(
                owner,
                [this, to = owner, error] {
                    if (to->m_link.get() == this)
                        to->take(error);
                },
                Qt::QueuedConnection);
    }
};

namespace {

// Of the bus of one element, which hands everything on to the one that its bin gave it.
template <typename Link> struct Relay
{
    std::shared_ptr<Link> link;
    GstBus *next;

    static void release(gpointer self)
    {
        gst_object_unref(static_cast<Relay *>(self)->next);
        delete static_cast<Relay *>(self);
    }
};

} // namespace

KeptErrors::KeptErrors(QObject *parent) : QObject(parent), m_patience(this)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(Patience);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        const std::shared_ptr<GstMessage> error = std::exchange(m_error, nullptr);
        Q_EMIT kept(error.get());
    });
}

KeptErrors::~KeptErrors()
{
    detach();
}

void KeptErrors::attach(GstElement *pipeline)
{
    detach();
    m_link = std::make_shared<Link>();
    m_link->owner = this;
    connectKeeping(pipeline, "deep-element-added", G_CALLBACK(added), m_link);
}

void KeptErrors::detach()
{
    m_patience.stop();
    m_error.reset();
    if (const std::shared_ptr<Link> link = std::exchange(m_link, nullptr)) {
        const std::lock_guard lock(link->mutex);
        link->owner = nullptr;
    }
}

// Nothing: another element is tried.
void KeptErrors::take(const std::shared_ptr<GstMessage> &error)
{
    m_error = error;
    if (error)
        m_patience.start();
    else
        m_patience.stop();
}

void KeptErrors::added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer link)
{
    (void)pipeline;
    GstBus *given = isMadeBy(GST_ELEMENT(bin), "parsebin") ? gst_element_get_bus(element) : nullptr;
    if (given == nullptr)
        return;
    const std::shared_ptr<Link> &shared = *static_cast<std::shared_ptr<Link> *>(link);
    shared->tell(nullptr);
    GstBus *own = gst_bus_new();
    gst_bus_set_sync_handler(own, posted, new Relay<Link>{shared, given}, Relay<Link>::release);
    gst_element_set_bus(element, own);
    gst_object_unref(own);
}

GstBusSyncReply KeptErrors::posted(GstBus *bus, GstMessage *message, gpointer relay)
{
    (void)bus;
    const auto *own = static_cast<Relay<Link> *>(relay);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
        own->link->tell({gst_message_ref(message), [](GstMessage *m) { gst_message_unref(m); }});
    gst_bus_post(own->next, message); // takes it over
    return GST_BUS_DROP;
}
