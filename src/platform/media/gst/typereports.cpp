// SPDX-License-Identifier: GPL-3.0-or-later
#include "typereports.h"

#include "elementhooks.h"

namespace {

constexpr const char *Found = "have-type";

TypeReports &reports(gpointer self)
{
    return **static_cast<std::shared_ptr<TypeReports> *>(self);
}

} // namespace

void TypeReports::watch(GstElement *pipeline)
{
    m_starter = std::this_thread::get_id();
    connectKeeping(pipeline, "deep-element-added", G_CALLBACK(added), shared_from_this());
}

void TypeReports::open()
{
    const std::lock_guard lock(m_mutex);
    m_gate = Gate::Open;
    m_changed.notify_all();
}

void TypeReports::close()
{
    std::unique_lock lock(m_mutex);
    m_gate = Gate::Closed;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_underWay == 0; });
}

// Its owner listens to it only after it has added it, so that it hears of a report between the two here.
void TypeReports::added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer self)
{
    (void)pipeline;
    (void)bin;
    if (!isMadeBy(element, "typefind"))
        return;
    connectKeeping(element, Found, G_CALLBACK(begun), reports(self).shared_from_this());
    connectKeeping(element, Found, G_CALLBACK(ended), reports(self).shared_from_this(), G_CONNECT_AFTER);
}

void TypeReports::begun(GstElement *element, guint probability, GstCaps *caps, gpointer self)
{
    (void)probability;
    (void)caps;
    TypeReports &all = reports(self);
    std::unique_lock lock(all.m_mutex);
    if (std::this_thread::get_id() != all.m_starter)
        all.m_changed.wait(lock, [&all] { return all.m_gate != Gate::Starting; });
    if (all.m_gate == Gate::Closed)
        g_signal_stop_emission_by_name(element, Found);
    else
        ++all.m_underWay;
}

void TypeReports::ended(GstElement *element, guint probability, GstCaps *caps, gpointer self)
{
    (void)element;
    (void)probability;
    (void)caps;
    TypeReports &all = reports(self);
    const std::lock_guard lock(all.m_mutex);
    if (--all.m_underWay == 0)
        all.m_changed.notify_all();
}
