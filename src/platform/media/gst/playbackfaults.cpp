// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackfaults.h"

#include "emptystreams.h"

#include <platform/media/medialog.h>

#include <memory>

#include <gst/audio/gstaudiodecoder.h>
#include <gst/pbutils/pbutils.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// Demuxers call what is encrypted a format of its own, which only a licence's own element takes.
bool isLocked(const QString &missing)
{
    return missing.contains("|decoder-application/x-cenc"_L1)
        || missing.contains("|decoder-application/x-cbcs"_L1)
        || missing.contains("|decoder-application/x-webm-enc"_L1);
}

} // namespace

void PlaybackFaults::note(GstMessage *message)
{
    if (gst_is_missing_plugin_message(message) != FALSE)
        noteMissing(message);
    // In the order in which it happened: a complaint about the emptiness may come behind a search.
    m_soundIsEmpty = (m_soundIsEmpty && !tellsBegunSound(message)) || tellsEmptySound(message);
}

void PlaybackFaults::noteMissing(GstMessage *message)
{
    const std::unique_ptr<gchar, decltype(&g_free)> detail(
        gst_missing_plugin_message_get_installer_detail(message), g_free);
    const QString what = QString::fromUtf8(detail.get());
    qCWarning(lcMedia, "not installed: %s", qUtf8Printable(what));
    if (what.contains("|urisource-"_L1))
        m_missing = PlaybackFault::BadAddress;
    else if (isLocked(what))
        m_missing = PlaybackFault::Encrypted;
    else if (what.contains("|decoder-video/"_L1) || what.contains("|decoder-image/"_L1))
        m_missing = PlaybackFault::CodecMissing;
    else if (what.contains("|decoder-audio/"_L1) && !m_missing)
        m_missing = PlaybackFault::AudioCodecMissing;
}

bool PlaybackFaults::asksForKey(GstMessage *message)
{
    const gchar *type = nullptr;
    return GST_MESSAGE_TYPE(message) == GST_MESSAGE_NEED_CONTEXT
        && gst_message_parse_context_type(message, &type)
        && g_strcmp0(type, "drm-preferred-decryption-system-id") == 0;
}

bool PlaybackFaults::isOfNoMatter(GstMessage *error) const
{
    return m_soundIsEmpty && GST_IS_AUDIO_DECODER(GST_MESSAGE_SRC(error));
}

PlaybackFaults::Report PlaybackFaults::read(GstMessage *message, FaultContext context) const
{
    GError *error = nullptr;
    gchar *debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    const std::unique_ptr<GError, decltype(&g_error_free)> errorOwner(error, g_error_free);
    const std::unique_ptr<gchar, decltype(&g_free)> debugOwner(debug, g_free);
    readFaultDetails(message, context);
    PlaybackFault fault = playbackFault(error, context);
    if (m_missing && (fault == PlaybackFault::CodecMissing || *m_missing == PlaybackFault::Encrypted))
        fault = *m_missing;
    return {fault,
            u"%1 (%2 %3) %4"_s.arg(QString::fromUtf8(error->message),
                                   QString::fromUtf8(g_quark_to_string(error->domain)),
                                   QString::number(error->code), QString::fromUtf8(debug))};
}

bool PlaybackFaults::isFrom(GstMessage *message, GstElement *element)
{
    return element != nullptr
        && (GST_MESSAGE_SRC(message) == GST_OBJECT(element)
            || gst_object_has_as_ancestor(GST_MESSAGE_SRC(message), GST_OBJECT(element)));
}
