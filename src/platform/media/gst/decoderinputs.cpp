// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoderinputs.h"

#include "elementhooks.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr int Buffers = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST;
constexpr int Data = Buffers | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM;

// The inputs of one decodebin3. Shared by its probes, any of which may be the last to go.
class Inputs : public std::enable_shared_from_this<Inputs>
{
public:
    Inputs() = default;
    Inputs(const Inputs &) = delete;
    Inputs &operator=(const Inputs &) = delete;
    ~Inputs();

    void add(GstPad *pad);
    void remove(GstPad *pad);

private:
    // What a probe is called with.
    struct Input
    {
        std::shared_ptr<Inputs> inputs;
        GstPad *pad; // not owned: the probe goes with it
    };
    struct State
    {
        GstPad *pad;
        bool comes = false; // its first data is on the way
        bool begun = false;
        bool ended = false;
        GstEvent *end = nullptr; // held back
    };
    using Ends = std::vector<std::pair<GstPad *, GstEvent *>>;

    static GstPadProbeReturn arrived(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn passed(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn rests(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static void send(const Ends &ends);

    void begins(GstPad *pad);
    void described(GstPad *pad);
    [[nodiscard]] bool isLate(GstPad *pad);
    [[nodiscard]] bool holds(GstPad *pad, GstEvent *end);
    void goesOn(GstPad *pad);
    [[nodiscard]] Ends change(GstPad *pad, const std::function<void(State &)> &action);
    [[nodiscard]] State *find(GstPad *pad);
    [[nodiscard]] bool isResolved() const;

    std::mutex m_mutex;
    std::vector<State> m_states;
};

bool isData(GstPadProbeInfo *info)
{
    return (info->type & Buffers) != 0 || GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_GAP;
}

bool isSubtitles(GstPad *pad)
{
    return (streamTypeOf(pad) & GST_STREAM_TYPE_TEXT) != 0;
}

// Where the data of the stream begin; null: not known in time.
GstEvent *firstGap(GstPad *pad)
{
    GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
    const GstSegment *segment = nullptr;
    if (event != nullptr)
        gst_event_parse_segment(event, &segment);
    GstEvent *gap = segment != nullptr && segment->format == GST_FORMAT_TIME
        ? gst_event_new_gap(segment->start, GST_CLOCK_TIME_NONE)
        : nullptr;
    gst_clear_event(&event);
    return gap;
}

// Where the data of an input leaves the element that stands behind it; null where that parses by itself, and
// has outputs of its own.
GstPad *passage(GstPad *input)
{
    GstPad *target = gst_ghost_pad_get_target(GST_GHOST_PAD(input));
    GstElement *element = target == nullptr ? nullptr : gst_pad_get_parent_element(target);
    GstPad *output = element != nullptr && isMadeBy(element, "identity")
        ? gst_element_get_static_pad(element, "src")
        : nullptr;
    gst_clear_object(&element);
    gst_clear_object(&target);
    return output;
}

Inputs::~Inputs()
{
    for (State &state : m_states)
        gst_clear_event(&state.end);
}

void Inputs::add(GstPad *pad)
{
    {
        const std::lock_guard lock(m_mutex);
        m_states.push_back({.pad = pad});
    }
    probeKeeping(pad, Data | GST_PAD_PROBE_TYPE_EVENT_FLUSH, arrived, Input{shared_from_this(), pad});
}

void Inputs::remove(GstPad *pad)
{
    Ends ends = change(pad, [](State &state) {
        gst_clear_event(&state.end);
        state.begun = true;
    });
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_states, [pad](const State &state) { return state.pad == pad; });
    }
    send(ends);
}

GstPadProbeReturn Inputs::arrived(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    Inputs &inputs = *static_cast<Input *>(self)->inputs;
    if (isData(info)) {
        inputs.begins(pad);
        return GST_PAD_PROBE_OK;
    }
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_SEGMENT:
        inputs.described(pad);
        return GST_PAD_PROBE_OK;
    case GST_EVENT_EOS:
        return inputs.holds(pad, event) ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
    case GST_EVENT_STREAM_START:
    case GST_EVENT_FLUSH_STOP:
        inputs.goesOn(pad);
        return GST_PAD_PROBE_OK;
    default:
        return GST_PAD_PROBE_OK;
    }
}

// Asked last of all that follow the output: decodebin3 has let the input go on.
GstPadProbeReturn Inputs::passed(GstPad *output, GstPadProbeInfo *info, gpointer self)
{
    (void)output;
    if (!isData(info))
        return GST_PAD_PROBE_OK;
    const Input input = *static_cast<Input *>(self);
    send(input.inputs->change(input.pad, [](State &state) { state.begun = true; }));
    return GST_PAD_PROBE_REMOVE;
}

void Inputs::begins(GstPad *pad)
{
    {
        const std::lock_guard lock(m_mutex);
        State *state = find(pad);
        if (state == nullptr || std::exchange(state->comes, true))
            return;
    }
    GstPad *output = passage(pad);
    if (output == nullptr) {
        send(change(pad, [](State &state) { state.begun = true; }));
        return;
    }
    probeKeeping(output, Data, passed, Input{shared_from_this(), pad});
    gst_object_unref(output);
}

// Everything that describes the stream has come; its first data may take their time.
void Inputs::described(GstPad *pad)
{
    GstPad *upstream = gst_pad_get_peer(pad);
    if (upstream == nullptr)
        return;
    probeKeeping(upstream, GST_PAD_PROBE_TYPE_IDLE, rests, Input{shared_from_this(), pad});
    gst_object_unref(upstream);
}

// What described the stream has passed, and nothing else comes while this runs.
GstPadProbeReturn Inputs::rests(GstPad *upstream, GstPadProbeInfo *info, gpointer self)
{
    (void)info;
    GstPad *pad = gst_pad_get_peer(upstream);
    Inputs &inputs = *static_cast<Input *>(self)->inputs;
    if (pad != nullptr && inputs.isLate(pad) && isSubtitles(pad)) {
        if (GstEvent *gap = firstGap(pad))
            gst_pad_send_event(pad, gap);
    }
    gst_clear_object(&pad);
    return GST_PAD_PROBE_REMOVE;
}

bool Inputs::isLate(GstPad *pad)
{
    const std::lock_guard lock(m_mutex);
    const State *state = find(pad);
    return state != nullptr && !state->comes && !state->ended
        && std::any_of(m_states.cbegin(), m_states.cend(), [](const State &other) { return other.comes; });
}

bool Inputs::holds(GstPad *pad, GstEvent *end)
{
    Ends ends;
    {
        const std::lock_guard lock(m_mutex);
        State *state = find(pad);
        if (state == nullptr)
            return false;
        state->ended = true;
        if (!isResolved()) {
            gst_event_replace(&state->end, end);
            return true;
        }
    }
    // It goes on as the last one; those that waited for it come first.
    send(change(pad, [](State &) {}));
    return false;
}

// What had ended goes on with something new, or elsewhere.
void Inputs::goesOn(GstPad *pad)
{
    const std::lock_guard lock(m_mutex);
    if (State *state = find(pad)) {
        state->ended = false;
        gst_clear_event(&state->end);
    }
}

// The ends that need not wait any longer.
Inputs::Ends Inputs::change(GstPad *pad, const std::function<void(State &)> &action)
{
    const std::lock_guard lock(m_mutex);
    if (State *state = find(pad))
        action(*state);
    Ends ends;
    if (!isResolved())
        return ends;
    for (State &state : m_states) {
        if (state.end != nullptr)
            ends.emplace_back(GST_PAD(gst_object_ref(state.pad)), std::exchange(state.end, nullptr));
    }
    return ends;
}

void Inputs::send(const Ends &ends)
{
    for (const auto &[pad, end] : ends) {
        gst_pad_send_event(pad, end);
        gst_object_unref(pad);
    }
}

Inputs::State *Inputs::find(GstPad *pad)
{
    const auto found = std::find_if(m_states.begin(), m_states.end(),
                                    [pad](const State &state) { return state.pad == pad; });
    return found == m_states.end() ? nullptr : &*found;
}

bool Inputs::isResolved() const
{
    return std::all_of(m_states.cbegin(), m_states.cend(), [](const State &state) {
        return state.begun || state.ended || !gst_pad_is_linked(state.pad);
    });
}

using Shared = std::shared_ptr<Inputs>;

void padAdded(GstElement *decoder, GstPad *pad, gpointer self)
{
    (void)decoder;
    if (GST_PAD_IS_SINK(pad))
        (*static_cast<Shared *>(self))->add(pad);
}

void padRemoved(GstElement *decoder, GstPad *pad, gpointer self)
{
    (void)decoder;
    if (GST_PAD_IS_SINK(pad))
        (*static_cast<Shared *>(self))->remove(pad);
}

void watch(GstElement *decoder)
{
    const auto inputs = std::make_shared<Inputs>();
    connectKeeping(decoder, "pad-added", G_CALLBACK(padAdded), inputs);
    connectKeeping(decoder, "pad-removed", G_CALLBACK(padRemoved), inputs);
    // The first one is there from the beginning.
    if (GstPad *pad = gst_element_get_static_pad(decoder, "sink")) {
        inputs->add(pad);
        gst_object_unref(pad);
    }
}

} // namespace

// playbin3 makes its only one with itself.
void watchDecoderInputs(GstElement *playbin)
{
    eachMadeBy(playbin, "decodebin3", watch);
}
