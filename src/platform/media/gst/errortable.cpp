// SPDX-License-Identifier: GPL-3.0-or-later
#include "errortable.h"

#include <QtGlobal>

#include <cstring>
#include <iterator>

namespace {

using Fault = PlaybackFault;

struct Row
{
    GQuark (*domain)();
    int code;
    Fault local;
    Fault network; // for an address that is not a local file's
};

constexpr Row Table[] = {
    {gst_resource_error_quark, GST_RESOURCE_ERROR_NOT_FOUND, Fault::NotFound, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_OPEN_READ, Fault::NotReadable, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_OPEN_WRITE, Fault::Internal, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_OPEN_READ_WRITE, Fault::NotReadable, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_BUSY, Fault::NotReadable, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_SETTINGS, Fault::Internal, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_FAILED, Fault::NotReadable, Fault::NoConnection},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_READ, Fault::NotReadable, Fault::ConnectionLost},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_SEEK, Fault::UnknownFormat, Fault::ConnectionLost},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_SYNC, Fault::NotReadable, Fault::ConnectionLost},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_WRITE, Fault::Internal, Fault::ConnectionLost},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_CLOSE, Fault::ShutDown, Fault::ShutDown},
    {gst_resource_error_quark, GST_RESOURCE_ERROR_NOT_AUTHORIZED, Fault::NotAuthorized, Fault::NotAuthorized},
    {gst_stream_error_quark, GST_STREAM_ERROR_FAILED, Fault::UnknownFormat, Fault::UnknownFormat},
    {gst_stream_error_quark, GST_STREAM_ERROR_NOT_IMPLEMENTED, Fault::UnknownFormat, Fault::UnknownFormat},
    {gst_stream_error_quark, GST_STREAM_ERROR_TYPE_NOT_FOUND, Fault::UnknownFormat, Fault::UnknownFormat},
    {gst_stream_error_quark, GST_STREAM_ERROR_WRONG_TYPE, Fault::WrongType, Fault::WrongType},
    {gst_stream_error_quark, GST_STREAM_ERROR_CODEC_NOT_FOUND, Fault::CodecMissing, Fault::CodecMissing},
    {gst_stream_error_quark, GST_STREAM_ERROR_DECODE, Fault::CodecFailed, Fault::CodecFailed},
    {gst_stream_error_quark, GST_STREAM_ERROR_DEMUX, Fault::UnknownFormat, Fault::UnknownFormat},
    {gst_stream_error_quark, GST_STREAM_ERROR_FORMAT, Fault::Frame, Fault::Frame},
    {gst_stream_error_quark, GST_STREAM_ERROR_DECRYPT, Fault::Encrypted, Fault::Encrypted},
    {gst_stream_error_quark, GST_STREAM_ERROR_DECRYPT_NOKEY, Fault::NoDecryptionKey, Fault::NoDecryptionKey},
    {gst_core_error_quark, GST_CORE_ERROR_MISSING_PLUGIN, Fault::CodecMissing, Fault::CodecMissing},
    {gst_core_error_quark, GST_CORE_ERROR_NEGOTIATION, Fault::Resolution, Fault::Resolution},
    {gst_core_error_quark, GST_CORE_ERROR_CAPS, Fault::Resolution, Fault::Resolution},
    {gst_core_error_quark, GST_CORE_ERROR_SEEK, Fault::UnknownFormat, Fault::ConnectionLost},
    // A list of addresses that names what it may not, or cannot.
    {gst_uri_error_quark, GST_URI_ERROR_UNSUPPORTED_PROTOCOL, Fault::UnknownFormat, Fault::BadAddress},
    {gst_uri_error_quark, GST_URI_ERROR_BAD_URI, Fault::UnknownFormat, Fault::BadAddress},
    {gst_uri_error_quark, GST_URI_ERROR_BAD_REFERENCE, Fault::UnknownFormat, Fault::BadAddress},
    {gst_library_error_quark, GST_LIBRARY_ERROR_SHUTDOWN, Fault::ShutDown, Fault::ShutDown},
};

Fault audioSinkFault(const GError *error)
{
    return error->domain == GST_RESOURCE_ERROR && error->code == GST_RESOURCE_ERROR_BUSY
        ? Fault::AudioDeviceBusy
        : Fault::NoAudioDevice;
}

// A demuxer of adaptive streams fetches their parts by itself.
bool fetches(GstElement *element)
{
    const gchar *kind
        = gst_element_class_get_metadata(GST_ELEMENT_GET_CLASS(element), GST_ELEMENT_METADATA_KLASS);
    return GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SOURCE)
        || (kind != nullptr && std::strstr(kind, "Adaptive") != nullptr);
}

} // namespace

PlaybackFault playbackFault(const GError *error, const FaultContext &context)
{
    if (context.audioSink)
        return audioSinkFault(error);
    if (context.locked)
        return Fault::Encrypted;
    if (context.notNegotiated)
        return Fault::Resolution;
    if (context.httpStatus == 401 || context.httpStatus == 403)
        return Fault::NotAuthorized;
    if (context.httpStatus == 404 || context.httpStatus == 410)
        return Fault::NotFound;
    // libsoup's source says no more than this when a server cannot be reached.
    if (context.network && context.source
        && g_error_matches(error, GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED))
        return context.opened ? Fault::ConnectionLost : Fault::NoConnection;
    for (const Row &row : Table) {
        if (row.domain() != error->domain || row.code != error->code)
            continue;
        const Fault fault = context.network ? row.network : row.local;
        // A server that was there and is not any more.
        return fault == Fault::NoConnection && context.opened ? Fault::ConnectionLost : fault;
    }
    return Fault::Internal;
}

void readFaultDetails(GstMessage *message, FaultContext &context)
{
    context.source
        = GST_IS_ELEMENT(GST_MESSAGE_SRC(message)) && fetches(GST_ELEMENT(GST_MESSAGE_SRC(message)));
    const GstStructure *details = nullptr;
    gst_message_parse_error_details(message, &details);
    if (details == nullptr)
        return;
    guint status = 0;
    if (gst_structure_get_uint(details, "http-status-code", &status))
        context.httpStatus = status;
    gint flow = GST_FLOW_OK;
    if (gst_structure_get_int(details, "flow-return", &flow))
        context.notNegotiated = flow == GST_FLOW_NOT_NEGOTIATED;
}
