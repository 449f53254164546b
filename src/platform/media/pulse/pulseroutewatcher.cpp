// SPDX-License-Identifier: GPL-3.0-or-later
#include "pulseroutewatcher.h"

#include <platform/media/medialog.h>

#include <QCoreApplication>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr std::chrono::milliseconds LongestRetry = 30s;
constexpr auto Watched = pa_subscription_mask_t(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SINK_INPUT);

// Answers come to the callbacks, or not at all when the context is given up.
void started(pa_operation *operation)
{
    if (operation != nullptr)
        pa_operation_unref(operation);
}

bool isLoudspeaker(const pa_sink_port_info &port)
{
    switch (port.type) {
    case PA_DEVICE_PORT_TYPE_SPEAKER:
    case PA_DEVICE_PORT_TYPE_EARPIECE:
    case PA_DEVICE_PORT_TYPE_HANDSET:
        return true;
    case PA_DEVICE_PORT_TYPE_UNKNOWN: {
        const QString name = QString::fromUtf8(port.name);
        return name.contains("speaker"_L1, Qt::CaseInsensitive)
            || name.contains("earpiece"_L1, Qt::CaseInsensitive);
    }
    default:
        return false;
    }
}

// Of what is connected by a plug or by radio also the loudspeakers go away.
bool isDetachable(const pa_sink_info &info)
{
    const QString bus = QString::fromUtf8(pa_proplist_gets(info.proplist, PA_PROP_DEVICE_BUS));
    return bus == "bluetooth"_L1 || bus == "usb"_L1;
}

AudioSink sinkOf(const pa_sink_info &info)
{
    AudioSink sink;
    sink.index = info.index;
    const bool detachable = isDetachable(info);
    for (uint32_t i = 0; i < info.n_ports; ++i) {
        const pa_sink_port_info &port = *info.ports[i];
        if (info.active_port == info.ports[i])
            sink.active = sink.ports.size();
        sink.ports.append({QString::fromUtf8(port.name), detachable || !isLoudspeaker(port),
                           port.available == PA_PORT_AVAILABLE_NO});
    }
    sink.builtIn = sink.active >= 0 && !sink.ports.at(sink.active).pluggable;
    return sink;
}

bool isOfThisProgram(const pa_sink_input_info &info)
{
    const char *pid = pa_proplist_gets(info.proplist, PA_PROP_APPLICATION_PROCESS_ID);
    return pid != nullptr && QByteArray(pid) == QByteArray::number(QCoreApplication::applicationPid());
}

} // namespace

void PulseRouteWatcher::ContextDeleter::operator()(pa_context *context) const
{
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

PulseRouteWatcher::PulseRouteWatcher(QObject *parent)
    : AudioRouteWatcher(parent),
      m_loop(pa_glib_mainloop_new(nullptr)),
      m_retry(this)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &PulseRouteWatcher::connectToServer);
    QMetaObject::invokeMethod(this, &PulseRouteWatcher::connectToServer, Qt::QueuedConnection);
}

PulseRouteWatcher::~PulseRouteWatcher() = default;

void PulseRouteWatcher::connectToServer()
{
    pa_proplist *properties = pa_proplist_new();
    // A client that plays nothing: the server's panels need not show it.
    pa_proplist_sets(properties, PA_PROP_MEDIA_ROLE, "abstract");
    m_context.reset(
        pa_context_new_with_proplist(pa_glib_mainloop_get_api(m_loop.get()), nullptr, properties));
    pa_proplist_free(properties);
    pa_context_set_state_callback(
        m_context.get(),
        [](pa_context *, void *self) { static_cast<PulseRouteWatcher *>(self)->contextChanged(); }, this);
    // A server that is not there is not started either: who plays does that.
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        loseServer();
}

void PulseRouteWatcher::contextChanged()
{
    switch (pa_context_get_state(m_context.get())) {
    case PA_CONTEXT_READY:
        watch();
        break;
    case PA_CONTEXT_FAILED:
    case PA_CONTEXT_TERMINATED:
        // Not from inside its own callback.
        QMetaObject::invokeMethod(this, &PulseRouteWatcher::loseServer, Qt::QueuedConnection);
        break;
    default:
        break;
    }
}

void PulseRouteWatcher::loseServer()
{
    m_context.reset();
    m_route.clear();
    if (m_watching || !m_told)
        qCInfo(lcMedia, "no sound server: unplugged headsets are not noticed");
    m_told = true;
    if (std::exchange(m_watching, false))
        Q_EMIT watchingChanged(false);
    m_retry.start(m_nextRetry);
    m_nextRetry = std::min(m_nextRetry * 2, LongestRetry);
}

void PulseRouteWatcher::watch()
{
    pa_context *context = m_context.get();
    m_nextRetry = FirstRetry;
    pa_context_set_subscribe_callback(context, subscribed, this);
    started(pa_context_subscribe(context, Watched, nullptr, nullptr));
    started(pa_context_get_sink_info_list(context, sinkAnswered, this));
    started(pa_context_get_sink_input_info_list(context, streamAnswered, this));
    if (m_told)
        qCInfo(lcMedia, "the sound server is back");
    m_told = false;
    m_watching = true;
    Q_EMIT watchingChanged(true);
}

void PulseRouteWatcher::subscribed(pa_context *, pa_subscription_event_type_t event, uint32_t index,
                                   void *self)
{
    auto *watcher = static_cast<PulseRouteWatcher *>(self);
    const auto type = pa_subscription_event_type_t(event & PA_SUBSCRIPTION_EVENT_TYPE_MASK);
    if ((event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) == PA_SUBSCRIPTION_EVENT_SINK)
        watcher->sinkChanged(type, index);
    else
        watcher->streamChanged(type, index);
}

void PulseRouteWatcher::sinkChanged(pa_subscription_event_type_t type, quint32 index)
{
    if (type == PA_SUBSCRIPTION_EVENT_REMOVE)
        tell(m_route.removeSink(index));
    else
        started(pa_context_get_sink_info_by_index(m_context.get(), index, sinkAnswered, this));
}

void PulseRouteWatcher::streamChanged(pa_subscription_event_type_t type, quint32 index)
{
    if (type == PA_SUBSCRIPTION_EVENT_REMOVE)
        m_route.removeStream(index);
    else
        started(pa_context_get_sink_input_info(m_context.get(), index, streamAnswered, this));
}

// Without a record at the end of a list, and for what went meanwhile.
void PulseRouteWatcher::sinkAnswered(pa_context *, const pa_sink_info *info, int, void *self)
{
    if (info != nullptr)
        static_cast<PulseRouteWatcher *>(self)->takeSink(info);
}

void PulseRouteWatcher::streamAnswered(pa_context *, const pa_sink_input_info *info, int, void *self)
{
    if (info != nullptr)
        static_cast<PulseRouteWatcher *>(self)->takeStream(info);
}

void PulseRouteWatcher::takeSink(const pa_sink_info *info)
{
    tell(m_route.setSink(sinkOf(*info)));
}

void PulseRouteWatcher::takeStream(const pa_sink_input_info *info)
{
    if (!isOfThisProgram(*info))
        return;
    Q_EMIT streamFound(info->sink);
    tell(m_route.setStream(info->index, info->sink));
}

void PulseRouteWatcher::tell(bool vanished)
{
    if (vanished)
        Q_EMIT outputVanished();
}
