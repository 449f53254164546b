// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoderdrive.h"

#include <gst/video/video.h>

namespace {
GstStaticPadTemplate s_output
    = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
// Pictures in plain memory only.
GstStaticPadTemplate s_input
    = GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-raw"));
} // namespace

DecoderDrive::DecoderDrive(ElementPointer decoder, Keep keep)
    : m_decoder(std::move(decoder)),
      m_output(GST_PAD(gst_object_ref_sink(gst_pad_new_from_static_template(&s_output, "src")))),
      m_input(GST_PAD(gst_object_ref_sink(gst_pad_new_from_static_template(&s_input, "sink")))),
      m_keep(keep)
{
    gst_pad_set_chain_function(m_input.get(), pictureArrived);
    m_input->chaindata = this;
    const PadPointer decoderInput(gst_element_get_static_pad(m_decoder.get(), "sink"));
    const PadPointer decoderOutput(gst_element_get_static_pad(m_decoder.get(), "src"));
    gst_pad_link(m_output.get(), decoderInput.get());
    gst_pad_link(decoderOutput.get(), m_input.get());
    gst_pad_set_active(m_input.get(), TRUE);
    gst_element_set_state(m_decoder.get(), GST_STATE_PAUSED);
    gst_pad_set_active(m_output.get(), TRUE);
}

DecoderDrive::~DecoderDrive()
{
    gst_element_set_state(m_decoder.get(), GST_STATE_NULL);
    gst_pad_set_active(m_output.get(), FALSE);
    gst_pad_set_active(m_input.get(), FALSE);
}

GstFlowReturn DecoderDrive::pictureArrived(GstPad *pad, GstObject *, GstBuffer *buffer)
{
    const BufferPointer owner(buffer);
    auto *const drive = static_cast<DecoderDrive *>(pad->chaindata);
    if (!drive->m_picture || drive->m_keep == Keep::Latest) {
        const CapsPointer caps(gst_pad_get_current_caps(pad));
        drive->m_picture.reset(gst_sample_new(buffer, caps.get(), nullptr, nullptr));
    }
    return drive->m_keep == Keep::First ? GST_FLOW_EOS : GST_FLOW_OK;
}

void DecoderDrive::start(GstSample *unit)
{
    m_started = true;
    gst_pad_push_event(m_output.get(), gst_event_new_stream_start("kestrel"));
    gst_pad_push_event(m_output.get(), gst_event_new_caps(gst_sample_get_caps(unit)));
    // Where in the file the picture stands does not matter to the decoder, and no picture may be clipped
    // away.
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    gst_pad_push_event(m_output.get(), gst_event_new_segment(&segment));
}

bool DecoderDrive::push(GstSample *unit)
{
    if (!m_started)
        start(unit);
    const GstFlowReturn flow = gst_pad_push(m_output.get(), gst_buffer_ref(gst_sample_get_buffer(unit)));
    return flow == GST_FLOW_OK && (!m_picture || m_keep == Keep::Latest);
}

void DecoderDrive::finish()
{
    if (m_started)
        gst_pad_push_event(m_output.get(), gst_event_new_eos());
}
