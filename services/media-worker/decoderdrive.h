// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"

// A decoder element that is fed from here and hands its first or latest picture back, in the calling thread:
// no pipeline, no queue, no clock.
class DecoderDrive
{
public:
    enum class Keep { First, Latest };

    explicit DecoderDrive(ElementPointer decoder, Keep keep = Keep::First);
    ~DecoderDrive();
    DecoderDrive(const DecoderDrive &) = delete;
    DecoderDrive &operator=(const DecoderDrive &) = delete;

    // False when the decoder takes no more: it failed, or the first picture was wanted and is there.
    bool push(GstSample *unit);
    // The stream ends: what the decoder still holds comes out.
    void finish();
    [[nodiscard]] bool hasPicture() const { return m_picture != nullptr; }
    [[nodiscard]] SamplePointer takePicture() { return std::move(m_picture); }

private:
    static GstFlowReturn pictureArrived(GstPad *pad, GstObject *parent, GstBuffer *buffer);
    void start(GstSample *unit);

    ElementPointer m_decoder;
    PadPointer m_output; // to the decoder's input
    PadPointer m_input; // from the decoder's output
    SamplePointer m_picture;
    Keep m_keep;
    bool m_started = false;
};
