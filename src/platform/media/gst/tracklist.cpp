// SPDX-License-Identifier: GPL-3.0-or-later
#include "tracklist.h"

#include "streamfacts.h"

#include <algorithm>
#include <memory>

namespace {

constexpr qsizetype MostTracks = 64;

double framerateOf(GstStream *stream)
{
    const std::unique_ptr<GstCaps, decltype(&gst_caps_unref)> caps(gst_stream_get_caps(stream),
                                                                   gst_caps_unref);
    gint numerator = 0;
    gint denominator = 0;
    if (!caps || gst_caps_is_empty(caps.get())
        || !gst_structure_get_fraction(gst_caps_get_structure(caps.get(), 0), "framerate", &numerator,
                                       &denominator))
        return 0;
    return denominator > 0 ? double(numerator) / denominator : 0;
}

} // namespace

TrackList::~TrackList()
{
    reset();
}

bool TrackList::takeCollection(GstMessage *message)
{
    gst_clear_object(&m_collection);
    gst_message_parse_stream_collection(message, &m_collection);
    return refresh();
}

bool TrackList::refresh()
{
    if (m_collection == nullptr)
        return false;
    QList<Stream> sounds;
    m_others.clear();
    for (guint i = 0; i < gst_stream_collection_get_size(m_collection); ++i) {
        GstStream *stream = gst_stream_collection_get_stream(m_collection, i);
        const QByteArray id = gst_stream_get_stream_id(stream);
        if ((gst_stream_get_stream_type(stream) & GST_STREAM_TYPE_VIDEO) != 0) {
            m_others.append(id);
            if (const double rate = framerateOf(stream); rate > 0)
                m_framesPerSecond = rate;
        }
        if ((gst_stream_get_stream_type(stream) & GST_STREAM_TYPE_AUDIO) == 0 || sounds.size() >= MostTracks)
            continue;
        Stream sound;
        sound.streamId = id;
        sound.candidate.track.id = streamIdentity(id.constData());
        sound.candidate.isDefault = (gst_stream_get_stream_flags(stream) & GST_STREAM_FLAG_SELECT) != 0;
        GstTagList *tags = gst_stream_get_tags(stream);
        describeStream(tags, &sound.candidate.track);
        if (tags != nullptr)
            gst_tag_list_unref(tags);
        sounds.append(sound);
    }
    const bool same = std::equal(
        sounds.begin(), sounds.end(), m_sounds.begin(), m_sounds.end(), [](const Stream &a, const Stream &b) {
            return a.candidate.track == b.candidate.track && a.streamId == b.streamId;
        });
    m_sounds = sounds;
    return !same;
}

bool TrackList::takeSelected(GstMessage *message)
{
    QString heard;
    for (guint i = 0; i < gst_message_streams_selected_get_size(message); ++i) {
        GstStream *stream = gst_message_streams_selected_get_stream(message, i);
        if ((gst_stream_get_stream_type(stream) & GST_STREAM_TYPE_AUDIO) != 0)
            heard = streamIdentity(gst_stream_get_stream_id(stream));
        gst_object_unref(stream);
    }
    return std::exchange(m_heard, heard) != heard;
}

void TrackList::reset()
{
    gst_clear_object(&m_collection);
    m_sounds.clear();
    m_others.clear();
    m_heard.clear();
}

QList<trackchoice::Candidate> TrackList::sounds() const
{
    QList<trackchoice::Candidate> result;
    for (const Stream &sound : m_sounds)
        result.append(sound.candidate);
    return result;
}

bool TrackList::select(GstElement *pipeline, const QString &id)
{
    const auto sound = std::find_if(m_sounds.begin(), m_sounds.end(),
                                    [&](const Stream &stream) { return stream.candidate.track.id == id; });
    if (sound == m_sounds.end() || id == m_heard)
        return false;
    GList *wanted = g_list_append(nullptr, sound->streamId.data());
    for (QByteArray &other : m_others)
        wanted = g_list_append(wanted, other.data());
    const bool sent = gst_element_send_event(pipeline, gst_event_new_select_streams(wanted)) != FALSE;
    g_list_free(wanted);
    if (sent)
        m_heard = id;
    return sent;
}
