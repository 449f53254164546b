// SPDX-License-Identifier: GPL-3.0-or-later
#include "tagcollector.h"

#include <array>
#include <string_view>

using WorkerProtocol::Field;

namespace {

void writeText(ReplyWriter &reply, Field field, const std::string &text)
{
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr))
        reply.addText(field, text);
}

void writeNumber(ReplyWriter &reply, Field field, int number)
{
    if (number >= 0)
        reply.addNumber(field, number);
}

} // namespace

void TagCollector::add(const GstTagList *tags, bool fromVideo)
{
    GstTagList *into = nullptr;
    if (gst_tag_list_get_scope(tags) == GST_TAG_SCOPE_GLOBAL)
        into = m_container.get();
    else if (fromVideo)
        into = m_video.get();
    if (into)
        gst_tag_list_insert(into, tags, GST_TAG_MERGE_KEEP);
}

std::string TagCollector::text(const char *tag) const
{
    for (const GstTagList *tags : {m_container.get(), m_video.get()}) {
        gchar *value = nullptr;
        if (gst_tag_list_get_string(tags, tag, &value)) {
            const TextPointer owner(value);
            return value;
        }
    }
    return {};
}

int TagCollector::number(const char *tag) const
{
    for (const GstTagList *tags : {m_container.get(), m_video.get()}) {
        guint value = 0;
        if (gst_tag_list_get_uint(tags, tag, &value) && value <= G_MAXUINT16)
            return static_cast<int>(value);
    }
    return -1;
}

void TagCollector::writeTo(ReplyWriter &reply) const
{
    writeText(reply, Field::Title, text(GST_TAG_TITLE));
    writeText(reply, Field::ShowName, text(GST_TAG_SHOW_NAME));
    writeNumber(reply, Field::Season, number(GST_TAG_SHOW_SEASON_NUMBER));
    writeNumber(reply, Field::Episode, number(GST_TAG_SHOW_EPISODE_NUMBER));
    const std::string description = text(GST_TAG_DESCRIPTION);
    writeText(reply, Field::Synopsis, description.empty() ? text(GST_TAG_COMMENT) : description);
    writeText(reply, Field::CameraMake, text(GST_TAG_DEVICE_MANUFACTURER));
    writeText(reply, Field::CameraModel, text(GST_TAG_DEVICE_MODEL));

    for (const GstTagList *tags : {m_container.get(), m_video.get()}) {
        GstDateTime *value = nullptr;
        if (!gst_tag_list_get_date_time(tags, GST_TAG_DATE_TIME, &value))
            continue;
        const std::unique_ptr<GstDateTime, GstDeleter> time(value);
        const std::unique_ptr<GDateTime, GstDeleter> date(gst_date_time_to_g_date_time(value));
        if (date) {
            reply.addNumber(Field::CreatedMs, g_date_time_to_unix(date.get()) * 1000);
            return;
        }
    }
}

TagCollector::Orientation TagCollector::orientation() const
{
    std::string name;
    for (const GstTagList *tags : {m_video.get(), m_container.get()}) {
        gchar *value = nullptr;
        if (name.empty() && gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &value)) {
            name = value;
            g_free(value);
        }
    }
    constexpr std::string_view rotate = "rotate-";
    constexpr std::string_view flipRotate = "flip-rotate-";
    Orientation orientation;
    orientation.flipped = name.starts_with(flipRotate);
    if (!orientation.flipped && !name.starts_with(rotate))
        return orientation;
    const std::string degrees = name.substr(orientation.flipped ? flipRotate.size() : rotate.size());
    orientation.quarterTurns = degrees == "90" ? 1 : degrees == "180" ? 2 : degrees == "270" ? 3 : 0;
    return orientation;
}
