// SPDX-License-Identifier: GPL-3.0-or-later
#include "earlyends.h"

#include "elementhooks.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr int Data
    = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM;

// What comes out of one parsebin. Shared by its probes, any of which may be the last to go.
class Siblings
{
public:
    Siblings() = default;
    Siblings(const Siblings &) = delete;
    Siblings &operator=(const Siblings &) = delete;
    ~Siblings();

    void add(GstPad *output);
    void remove(GstPad *output);
    void begun(GstPad *output);
    // Whether it is kept here, for later.
    [[nodiscard]] bool holds(GstPad *output, GstPad *inner, GstEvent *end);
    // Something new comes behind the end.
    void goesOn(GstPad *output);

private:
    struct State
    {
        GstPad *output; // not owned: it is the name of the stream
        bool begun = false;
        bool ended = false;
        GstPad *next = nullptr; // where the end is to go
        GstEvent *end = nullptr; // held back
    };
    using Ends = std::vector<std::pair<GstPad *, GstEvent *>>;

    static void drop(State &state);
    static void send(const Ends &ends);
    [[nodiscard]] State *find(GstPad *output);
    [[nodiscard]] bool mustWait() const;
    [[nodiscard]] Ends takeEnds();

    std::mutex m_mutex;
    std::vector<State> m_states;
};

Siblings::~Siblings()
{
    for (State &state : m_states)
        drop(state);
}

void Siblings::drop(State &state)
{
    gst_clear_event(&state.end);
    gst_clear_object(&state.next);
}

void Siblings::add(GstPad *output)
{
    const std::lock_guard lock(m_mutex);
    m_states.push_back({.output = output});
}

void Siblings::remove(GstPad *output)
{
    Ends ends;
    {
        const std::lock_guard lock(m_mutex);
        if (State *state = find(output))
            drop(*state);
        std::erase_if(m_states, [output](const State &state) { return state.output == output; });
        if (!mustWait())
            ends = takeEnds();
    }
    send(ends);
}

void Siblings::begun(GstPad *output)
{
    Ends ends;
    {
        const std::lock_guard lock(m_mutex);
        if (State *state = find(output))
            state->begun = true;
        ends = takeEnds();
    }
    send(ends);
}

bool Siblings::holds(GstPad *output, GstPad *inner, GstEvent *end)
{
    Ends ends;
    {
        const std::lock_guard lock(m_mutex);
        State *state = find(output);
        if (state == nullptr)
            return false;
        state->ended = true;
        GstPad *next = mustWait() ? gst_pad_get_peer(inner) : nullptr;
        if (next != nullptr) {
            drop(*state);
            state->next = next;
            state->end = gst_event_ref(end);
            return true;
        }
        ends = takeEnds(); // before this one
    }
    send(ends);
    return false;
}

void Siblings::goesOn(GstPad *output)
{
    const std::lock_guard lock(m_mutex);
    if (State *state = find(output)) {
        state->ended = false;
        drop(*state);
    }
}

Siblings::State *Siblings::find(GstPad *output)
{
    const auto found
        = std::ranges::find_if(m_states, [output](const State &state) { return state.output == output; });
    return found == m_states.end() ? nullptr : &*found;
}

bool Siblings::mustWait() const
{
    return std::ranges::none_of(m_states, &State::begun) && !std::ranges::all_of(m_states, &State::ended);
}

Siblings::Ends Siblings::takeEnds()
{
    Ends ends;
    for (State &state : m_states) {
        if (state.end != nullptr)
            ends.emplace_back(std::exchange(state.next, nullptr), std::exchange(state.end, nullptr));
    }
    return ends;
}

void Siblings::send(const Ends &ends)
{
    for (const auto &[pad, end] : ends) {
        gst_pad_send_event(pad, end);
        gst_object_unref(pad);
    }
}

// What a probe is called with.
struct Stream
{
    std::shared_ptr<Siblings> siblings;
    GstPad *output;
};

// Behind decodebin3's own look at it, which has taken all the streams by then.
GstPadProbeReturn passed(GstPad *output, GstPadProbeInfo *info, gpointer self)
{
    const bool event = (info->type & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) != 0;
    if (event && GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_GAP)
        return GST_PAD_PROBE_OK;
    const Stream stream = *static_cast<Stream *>(self);
    stream.siblings->begun(output);
    return GST_PAD_PROBE_REMOVE;
}

// Before it, so that an end which is held back was not seen.
GstPadProbeReturn ends(GstPad *inner, GstPadProbeInfo *info, gpointer self)
{
    const Stream &stream = *static_cast<Stream *>(self);
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START:
    case GST_EVENT_FLUSH_STOP:
        stream.siblings->goesOn(stream.output);
        break;
    case GST_EVENT_EOS:
        if (stream.siblings->holds(stream.output, inner, event))
            return GST_PAD_PROBE_DROP;
        break;
    default:
        break;
    }
    return GST_PAD_PROBE_OK;
}

using Shared = std::shared_ptr<Siblings>;

void padAdded(GstElement *parser, GstPad *output, gpointer self)
{
    (void)parser;
    const Shared &siblings = *static_cast<Shared *>(self);
    GstPad *inner = GST_IS_GHOST_PAD(output) ? gst_ghost_pad_get_target(GST_GHOST_PAD(output)) : nullptr;
    if (inner == nullptr)
        return;
    siblings->add(output);
    probeKeeping(output, Data, passed, Stream{siblings, output});
    probeKeeping(inner, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH, ends,
                 Stream{siblings, output});
    gst_object_unref(inner);
}

void padRemoved(GstElement *parser, GstPad *output, gpointer self)
{
    (void)parser;
    (*static_cast<Shared *>(self))->remove(output);
}

void added(GstBin *playbin, GstBin *bin, GstElement *element, gpointer self)
{
    (void)playbin;
    (void)self;
    if (!isMadeBy(element, "parsebin") || !isMadeBy(GST_ELEMENT(bin), "decodebin3"))
        return;
    const auto siblings = std::make_shared<Siblings>();
    connectKeeping(element, "pad-added", G_CALLBACK(padAdded), siblings, G_CONNECT_AFTER);
    connectKeeping(element, "pad-removed", G_CALLBACK(padRemoved), siblings);
}

} // namespace

void holdEarlyEnds(GstElement *playbin)
{
    g_signal_connect(playbin, "deep-element-added", G_CALLBACK(added), nullptr);
}
