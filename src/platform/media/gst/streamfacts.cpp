// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamfacts.h"

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype LongestText = 200;

QString textTag(const GstTagList *tags, const gchar *name)
{
    gchar *value = nullptr;
    if (!gst_tag_list_get_string(tags, name, &value))
        return {};
    const QString text = QString::fromUtf8(value).simplified().left(LongestText);
    g_free(value);
    return text;
}

} // namespace

// "<hash of the address>/002:13093943103770852159": what stands before the number changes with the address.
QString streamIdentity(const gchar *streamId)
{
    const QString id = QString::fromUtf8(streamId);
    return id.mid(id.indexOf(u'/') + 1).left(LongestText);
}

QString streamIdentity(GstPad *pad)
{
    const std::unique_ptr<gchar, decltype(&g_free)> id(gst_pad_get_stream_id(pad), g_free);
    return id ? streamIdentity(id.get()) : QString();
}

bool isDefaultStream(GstPad *pad)
{
    GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_STREAM_START, 0);
    if (event == nullptr)
        return false;
    GstStreamFlags flags = GST_STREAM_FLAG_NONE;
    gst_event_parse_stream_flags(event, &flags);
    gst_event_unref(event);
    return (flags & GST_STREAM_FLAG_SELECT) != 0;
}

void describeStream(const GstTagList *tags, MediaTrack *track)
{
    if (tags == nullptr)
        return;
    const auto take = [tags](const gchar *name, QString *place) {
        const QString text = textTag(tags, name);
        if (!text.isEmpty())
            *place = text;
    };
    take(GST_TAG_LANGUAGE_CODE, &track->language);
    take(GST_TAG_AUDIO_CODEC, &track->codec);
    take(GST_TAG_SUBTITLE_CODEC, &track->codec);
    if (gst_tag_list_get_scope(tags) == GST_TAG_SCOPE_STREAM)
        take(GST_TAG_TITLE, &track->title);
    if (track->language == "und"_L1)
        track->language.clear();
}

void describeStream(GstPad *pad, MediaTrack *track)
{
    for (guint index = 0;; ++index) {
        GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_TAG, index);
        if (event == nullptr)
            return;
        GstTagList *tags = nullptr;
        gst_event_parse_tag(event, &tags);
        describeStream(tags, track);
        gst_event_unref(event);
    }
}
