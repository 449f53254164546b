// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/audioroute.h>
#include <platform/media/audioroutewatcher.h>

#include <QTimer>

#include <pulse/glib-mainloop.h>
#include <pulse/pulseaudio.h>

#include <memory>

// Asks the sound server: PulseAudio, or PipeWire, which speaks its language. Runs in the main loop of GLib on
// the GUI thread; nothing waits. A server that is not there, or that restarts, is looked for again, at longer
// and longer intervals; that it went takes no output away.
class PulseRouteWatcher : public AudioRouteWatcher
{
    Q_OBJECT

public:
    explicit PulseRouteWatcher(QObject *parent = nullptr);
    ~PulseRouteWatcher() override;

    // The server answers, and changes are told.
    [[nodiscard]] bool isWatching() const { return m_watching; }

Q_SIGNALS:
    void watchingChanged(bool watching);
    // A stream of this program plays on the sink of this number.
    void streamFound(uint sink);

private:
    void connectToServer();
    void contextChanged();
    void loseServer();
    void watch();
    void sinkChanged(pa_subscription_event_type_t type, quint32 index);
    void streamChanged(pa_subscription_event_type_t type, quint32 index);
    void takeSink(const pa_sink_info *info);
    void takeStream(const pa_sink_input_info *info);
    void tell(bool vanished);

    static void subscribed(pa_context *context, pa_subscription_event_type_t event, uint32_t index,
                           void *self);
    static void sinkAnswered(pa_context *context, const pa_sink_info *info, int last, void *self);
    static void streamAnswered(pa_context *context, const pa_sink_input_info *info, int last, void *self);

    struct LoopDeleter
    {
        void operator()(pa_glib_mainloop *loop) const { pa_glib_mainloop_free(loop); }
    };
    struct ContextDeleter
    {
        void operator()(pa_context *context) const;
    };
    std::unique_ptr<pa_glib_mainloop, LoopDeleter> m_loop;
    std::unique_ptr<pa_context, ContextDeleter> m_context;
    AudioRoute m_route;
    static constexpr std::chrono::milliseconds FirstRetry{1000};
    QTimer m_retry;
    std::chrono::milliseconds m_nextRetry = FirstRetry;
    bool m_watching = false;
    bool m_told = false; // that there is no server
};
