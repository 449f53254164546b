// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackpipeline.h"

#include "audiosink.h"
#include "decoderinputs.h"
#include "earlyends.h"
#include "emptystreams.h"
#include "endedstreams.h"
#include "latecollections.h"
#include "networksource.h"
#include "passedpictures.h"
#include "playableaddress.h"
#include "ratechanger.h"
#include "streamparsing.h"
#include "typereports.h"

#include <algorithm>

#include <gst/audio/streamvolume.h>

namespace {

// GstPlayFlags, which no header of playback declares.
constexpr guint PlayVideo = 1 << 0;
constexpr guint PlayAudio = 1 << 1;
constexpr guint PlaySoftVolume = 1 << 4;
constexpr guint PlayNativeVideo = 1 << 6; // the sink converts by itself
constexpr guint PlayBuffering = 1 << 8;
constexpr guint PlayDeinterlace = 1 << 9;

} // namespace

PlaybackPipeline::~PlaybackPipeline()
{
    close();
}

bool PlaybackPipeline::build(const QString &uri, GstElement *videoSink, RateChanger &rateChanger,
                             bool withoutAudioDevice)
{
    m_playbin = gst_element_factory_make("playbin3", nullptr);
    m_audioSink = createAudioSink(withoutAudioDevice);
    if (m_playbin == nullptr || m_audioSink == nullptr) {
        gst_clear_object(&m_playbin);
        gst_clear_object(&m_audioSink);
        return false;
    }
    gst_object_ref_sink(m_playbin);
    g_object_set(m_playbin, "uri", playableAddress(uri).constData(), "video-sink", videoSink, "audio-sink",
                 rateChanger.createSoundEnd(m_audioSink), "flags",
                 PlayVideo | PlayAudio | PlaySoftVolume | PlayNativeVideo | PlayBuffering | PlayDeinterlace,
                 nullptr);
    setUpNetworkSources(m_playbin);
    parseInDecoder(m_playbin);
    dropLateCollections(m_playbin);
    bridgeEmptyStreams(m_playbin);
    holdEarlyEnds(m_playbin);
    boundGaps(m_playbin);
    leavePassedPicturesOut(m_playbin);
    watchDecoderInputs(m_playbin);
    m_typeReports = std::make_shared<TypeReports>();
    m_typeReports->watch(m_playbin);
    return true;
}

GstStateChangeReturn PlaybackPipeline::start()
{
    const GstStateChangeReturn result = gst_element_set_state(m_playbin, GST_STATE_PAUSED);
    m_typeReports->open();
    return result;
}

void PlaybackPipeline::close()
{
    if (m_playbin == nullptr)
        return;
    m_typeReports->close();
    gst_element_set_state(m_playbin, GST_STATE_NULL);
    gst_clear_object(&m_playbin);
    gst_clear_object(&m_audioSink);
}

void PlaybackPipeline::setVolume(double volume)
{
    if (m_playbin != nullptr)
        gst_stream_volume_set_volume(GST_STREAM_VOLUME(m_playbin), GST_STREAM_VOLUME_FORMAT_CUBIC, volume);
}

MediaTime PlaybackPipeline::position() const
{
    gint64 time = 0;
    if (m_playbin == nullptr || !gst_element_query_position(m_playbin, GST_FORMAT_TIME, &time))
        return MediaTime::zero();
    return MediaTime(std::max<gint64>(time, 0));
}

MediaTime PlaybackPipeline::duration() const
{
    gint64 time = 0;
    if (m_playbin == nullptr || !gst_element_query_duration(m_playbin, GST_FORMAT_TIME, &time))
        return MediaTime::zero();
    return MediaTime(std::max<gint64>(time, 0));
}

bool PlaybackPipeline::isSeekable() const
{
    gboolean seekable = FALSE;
    GstQuery *query = gst_query_new_seeking(GST_FORMAT_TIME);
    if (m_playbin != nullptr && gst_element_query(m_playbin, query))
        gst_query_parse_seeking(query, nullptr, &seekable, nullptr, nullptr);
    gst_query_unref(query);
    return seekable != FALSE;
}

bool PlaybackPipeline::hasSound() const
{
    GstPad *pad = m_audioSink == nullptr ? nullptr : gst_element_get_static_pad(m_audioSink, "sink");
    GstCaps *caps = pad == nullptr ? nullptr : gst_pad_get_current_caps(pad);
    const bool heard = caps != nullptr;
    gst_clear_caps(&caps);
    gst_clear_object(&pad);
    return heard;
}
