// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

struct Container
{
    std::string_view caps;
    std::string_view mimeType;
};

constexpr std::array Containers = {
    Container{"video/quicktime", "video/mp4"},     Container{"application/x-3gp", "video/3gpp"},
    Container{"audio/x-m4a", "audio/mp4"},         Container{"video/x-matroska", "video/x-matroska"},
    Container{"video/webm", "video/webm"},         Container{"audio/x-matroska", "audio/x-matroska"},
    Container{"audio/webm", "audio/webm"},         Container{"video/x-msvideo", "video/x-msvideo"},
    Container{"video/mpegts", "video/mp2t"},       Container{"video/mpeg", "video/mpeg"},
    Container{"application/ogg", "video/ogg"},     Container{"video/ogg", "video/ogg"},
    Container{"audio/ogg", "audio/ogg"},           Container{"video/x-flv", "video/x-flv"},
    Container{"video/x-ms-asf", "video/x-ms-asf"},
};

// Feature names. Type finders carry the name of what they find first.
constexpr std::array<std::string_view, 12> TypeFinders = {
    "video/quicktime", "video/x-matroska", "video/webm",        "video/x-msvideo",
    "video/mpegts",    "video/mpeg-sys",   "application/ogg",   "video/ogg",
    "video/x-flv",     "video/x-ms-asf",   "application/x-3gp", "audio/x-m4a",
};

constexpr std::array<std::string_view, 9> Demuxers = {
    "qtdemux",  "matroskademux", "avidemux", "tsdemux",  "mpegpsdemux",
    "oggdemux", "flvdemux",      "asfdemux", "parsebin",
};

constexpr std::array<std::string_view, 8> Parsers = {
    "h264parse", "h265parse", "mpegvideoparse", "mpeg4videoparse",
    "h263parse", "vc1parse",  "vp9parse",       "av1parse",
};

constexpr std::array<std::string_view, 33> Decoders = {
    "avdec_h264",      "avdec_h265",      "avdec_vp8",       "avdec_vp9",   "avdec_mpeg4", "avdec_mpeg2video",
    "avdec_mpegvideo", "avdec_mjpeg",     "avdec_h263",      "avdec_h263p", "avdec_h263i", "avdec_flv",
    "avdec_vp6",       "avdec_vp6f",      "avdec_wmv1",      "avdec_wmv2",  "avdec_wmv3",  "avdec_vc1",
    "avdec_msmpeg4",   "avdec_msmpeg4v1", "avdec_msmpeg4v2", "avdec_svq1",  "avdec_svq3",  "avdec_prores",
    "avdec_dvvideo",   "avdec_ffv1",      "vp8dec",          "vp9dec",      "av1dec",      "dav1ddec",
    "theoradec",       "jpegdec",         "openh264dec",
};

template <typename List> bool holds(const List &list, std::string_view name)
{
    return std::find(list.begin(), list.end(), name) != list.end();
}

bool isClaimed(GstPluginFeature *feature)
{
    const std::string_view name = gst_plugin_feature_get_name(feature);
    if (GST_IS_TYPE_FIND_FACTORY(feature))
        return holds(TypeFinders, name);
    if (!GST_IS_ELEMENT_FACTORY(feature))
        return true;
    auto *const factory = GST_ELEMENT_FACTORY(feature);
    if (!gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_DECODABLE))
        return true;
    return holds(Demuxers, name) || holds(Parsers, name) || holds(Decoders, name);
}

void forEachFeature(GType type, void (*visit)(GstRegistry *, GstPluginFeature *))
{
    GstRegistry *const registry = gst_registry_get();
    GList *const features = gst_registry_get_feature_list(registry, type);
    for (const GList *entry = features; entry; entry = entry->next)
        visit(registry, GST_PLUGIN_FEATURE(entry->data));
    gst_plugin_feature_list_free(features);
}

void removeUnclaimed(GstRegistry *registry, GstPluginFeature *feature)
{
    if (!isClaimed(feature))
        gst_registry_remove_feature(registry, feature);
}

// One frame is wanted: more threads only add frames that are decoded in advance and thrown away.
void useOneThread(GstElement *decoder)
{
    for (const char *property : {"max-threads", "threads", "n-threads"}) {
        if (g_object_class_find_property(G_OBJECT_GET_CLASS(decoder), property))
            gst_util_set_object_arg(G_OBJECT(decoder), property, "1");
    }
}

} // namespace

void Formats::keepClaimedOnly()
{
    forEachFeature(GST_TYPE_ELEMENT_FACTORY, removeUnclaimed);
    forEachFeature(GST_TYPE_TYPE_FIND_FACTORY, removeUnclaimed);
}

std::string Formats::mimeType(const GstCaps *caps)
{
    if (!caps || gst_caps_is_empty(caps) || gst_caps_is_any(caps))
        return {};
    const GstStructure *const structure = gst_caps_get_structure(caps, 0);
    const std::string_view name = gst_structure_get_name(structure);
    // An elementary stream has no container: no times, and nothing that could be sought in.
    gboolean system = FALSE;
    if (name == "video/mpeg" && !(gst_structure_get_boolean(structure, "systemstream", &system) && system))
        return {};
    if (name == "video/quicktime" && !gst_structure_has_field(structure, "variant"))
        return "video/quicktime";
    const auto found = std::find_if(Containers.begin(), Containers.end(),
                                    [name](const Container &container) { return container.caps == name; });
    return found == Containers.end() ? std::string() : std::string(found->mimeType);
}

ElementPointer Formats::newVideoDecoder(const GstCaps *caps)
{
    GList *const decoders
        = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER, GST_RANK_MARGINAL);
    GList *const fitting = gst_element_factory_list_filter(decoders, caps, GST_PAD_SINK, FALSE);
    ElementPointer decoder;
    for (const GList *entry = fitting; entry && !decoder; entry = entry->next) {
        auto *const factory = GST_ELEMENT_FACTORY(entry->data);
        if (gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_HARDWARE))
            continue;
        if (GstElement *const element = gst_element_factory_create(factory, nullptr))
            decoder.reset(GST_ELEMENT(gst_object_ref_sink(element)));
    }
    gst_plugin_feature_list_free(fitting);
    gst_plugin_feature_list_free(decoders);
    if (decoder)
        useOneThread(decoder.get());
    return decoder;
}

void Formats::loadAll()
{
    GstRegistry *const registry = gst_registry_get();
    GList *const plugins = gst_registry_get_plugin_list(registry);
    for (const GList *entry = plugins; entry; entry = entry->next) {
        if (GstPlugin *const loaded = gst_plugin_load(GST_PLUGIN(entry->data)))
            gst_object_unref(loaded);
    }
    gst_plugin_list_free(plugins);
}
