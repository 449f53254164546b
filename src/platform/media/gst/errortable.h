// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// The codes of AvloError that a GStreamer error can mean.
enum class PlaybackFault {
    NotFound = 300,
    NoConnection = 301,
    BadAddress = 302,
    NotReadable = 303,
    ConnectionLost = 304,
    Internal = 305, // nothing that a user could act on
    UnknownFormat = 308,
    Resolution = 309,
    Frame = 310,
    Encrypted = 311,
    NoDecryptionKey = 312,
    NoAudioDevice = 314,
    WrongType = 315,
    CodecMissing = 317,
    CodecFailed = 318,
    AudioCodecMissing = 319,
    ShutDown = 326, // the user has already gone on
    AudioDeviceBusy = 329,
    NotAuthorized = 330,
};

// What the place of an error adds to its domain and code.
struct FaultContext
{
    bool network = false; // the address is not a local file's
    uint httpStatus = 0; // what a server answered; 0: none did
    bool source = false; // an element that reads the address, or what it lists, posted it
    bool audioSink = false; // the audio output posted it
    bool notNegotiated = false; // data stopped flowing because no format could be agreed upon
    bool opened = false; // the first frame had been there
    bool locked = false; // the stream says that it is encrypted
};

[[nodiscard]] PlaybackFault playbackFault(const GError *error, const FaultContext &context);
// Reads the details of an error message into the parts of the context that they tell of.
void readFaultDetails(GstMessage *message, FaultContext &context);
