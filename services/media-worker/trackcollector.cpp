// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackcollector.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

using WorkerProtocol::Field;

namespace {

struct CodecName
{
    std::string_view type;
    const char *name;
    int mpegVersion = 0; // 0: whatever it is
    int layer = 0;
};

constexpr std::array CodecNames{
    CodecName{"video/x-h264", "H.264"},     CodecName{"video/x-h265", "H.265"},
    CodecName{"video/x-h263", "H.263"},     CodecName{"video/x-av1", "AV1"},
    CodecName{"video/x-vp8", "VP8"},        CodecName{"video/x-vp9", "VP9"},
    CodecName{"video/x-theora", "Theora"},  CodecName{"video/mpeg", "MPEG-1", 1},
    CodecName{"video/mpeg", "MPEG-2", 2},   CodecName{"video/mpeg", "MPEG-4", 4},
    CodecName{"video/x-divx", "DivX"},      CodecName{"video/x-xvid", "Xvid"},
    CodecName{"video/x-wmv", "WMV"},        CodecName{"video/x-flash-video", "Sorenson"},
    CodecName{"video/x-prores", "ProRes"},  CodecName{"video/x-dv", "DV"},
    CodecName{"video/x-raw", "RAW"},        CodecName{"image/jpeg", "Motion JPEG"},
    CodecName{"audio/mpeg", "MP1", 1, 1},   CodecName{"audio/mpeg", "MP2", 1, 2},
    CodecName{"audio/mpeg", "MP3", 1, 3},   CodecName{"audio/mpeg", "AAC", 2},
    CodecName{"audio/mpeg", "AAC", 4},      CodecName{"audio/x-vorbis", "Vorbis"},
    CodecName{"audio/x-opus", "Opus"},      CodecName{"audio/x-flac", "FLAC"},
    CodecName{"audio/x-alac", "ALAC"},      CodecName{"audio/x-ac3", "AC-3"},
    CodecName{"audio/x-eac3", "E-AC-3"},    CodecName{"audio/x-dts", "DTS"},
    CodecName{"audio/x-true-hd", "TrueHD"}, CodecName{"audio/x-wma", "WMA"},
    CodecName{"audio/x-speex", "Speex"},    CodecName{"audio/AMR", "AMR"},
    CodecName{"audio/AMR-WB", "AMR-WB"},    CodecName{"audio/x-raw", "PCM"},
    CodecName{"audio/x-mulaw", "PCM"},      CodecName{"audio/x-alaw", "PCM"},
    CodecName{"audio/x-adpcm", "ADPCM"},
};

bool says(const GstStructure *structure, const char *field, int value)
{
    int said = 0;
    return value == 0 || (gst_structure_get_int(structure, field, &said) && said == value);
}

// One or more letters or digits between hyphens, two or three of them first: nothing else is a language.
bool isLanguage(std::string_view code)
{
    const std::size_t primary = std::min(code.find('-'), code.size());
    return primary >= 2 && primary <= 3 && code.size() <= 16
        && std::all_of(code.begin(), code.end(),
                       [](unsigned char sign) { return std::isalnum(sign) != 0 || sign == '-'; })
        && code.substr(0, primary) != "und";
}

std::string languageOf(GstEvent *event)
{
    GstTagList *tags = nullptr;
    gst_event_parse_tag(event, &tags);
    gchar *language = nullptr;
    if (!gst_tag_list_get_string(tags, GST_TAG_LANGUAGE_CODE, &language))
        return {};
    const TextPointer owner(language);
    return isLanguage(language) ? language : std::string();
}

void addOnce(std::string &list, const std::string &word)
{
    if (word.empty() || ("," + list + ",").find("," + word + ",") != std::string::npos)
        return;
    list += (list.empty() ? "" : ",") + word;
}

} // namespace

bool TrackCollector::isAudio(const GstCaps *caps)
{
    return std::string_view(gst_structure_get_name(gst_caps_get_structure(caps, 0))).starts_with("audio/");
}

bool TrackCollector::isSubtitle(const GstCaps *caps)
{
    const std::string_view name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
    return name.starts_with("text/") || name.starts_with("subpicture/") || name == "application/x-ssa"
        || name == "application/x-ass" || name.starts_with("application/x-subtitle")
        || name == "application/x-usf" || name == "application/ttml+xml";
}

std::string TrackCollector::codecName(const GstCaps *caps)
{
    const GstStructure *const structure = gst_caps_get_structure(caps, 0);
    const std::string_view type = gst_structure_get_name(structure);
    for (const CodecName &codec : CodecNames) {
        if (codec.type == type && says(structure, "mpegversion", codec.mpegVersion)
            && says(structure, "layer", codec.layer))
            return codec.name;
    }
    std::string_view own = type.substr(std::min(type.find('/') + 1, type.size()));
    if (own.starts_with("x-"))
        own.remove_prefix(2);
    std::string name;
    for (const unsigned char sign : own.substr(0, 32)) {
        if (std::isalnum(sign) != 0 || sign == '-')
            name += static_cast<char>(std::toupper(sign));
    }
    return name;
}

TrackCollector::Track *TrackCollector::find(const GstPad *pad)
{
    const auto found = std::find_if(m_tracks.begin(), m_tracks.end(),
                                    [pad](const Track &track) { return track.pad == pad; });
    return found == m_tracks.end() ? nullptr : &*found;
}

void TrackCollector::add(const GstPad *pad, const GstCaps *caps)
{
    if (!isAudio(caps) && !isSubtitle(caps))
        return;
    const std::lock_guard lock(m_mutex);
    m_tracks.push_back({pad, isAudio(caps), codecName(caps)});
}

void TrackCollector::event(const GstPad *pad, GstEvent *event)
{
    const std::lock_guard lock(m_mutex);
    Track *const track = find(pad);
    if (!track)
        return;
    const gchar *id = nullptr;
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START:
        gst_event_parse_stream_start(event, &id);
        // The container's, which each opening of a file begins anew, and the stream's in it.
        track->id = id ? std::string(id).substr(std::string_view(id).rfind('/') + 1) : std::string();
        return;
    case GST_EVENT_TAG:
        if (track->language.empty())
            track->language = languageOf(event);
        track->known |= !track->language.empty();
        break;
    case GST_EVENT_GAP:
    case GST_EVENT_EOS:
        track->known = true;
        break;
    default:
        return;
    }
    m_told.notify_all();
}

void TrackCollector::data(const GstPad *pad)
{
    const std::lock_guard lock(m_mutex);
    if (Track *const track = find(pad); track && !track->known) {
        track->known = true;
        m_told.notify_all();
    }
}

void TrackCollector::waitForAll(std::chrono::milliseconds longest)
{
    std::unique_lock lock(m_mutex);
    m_told.wait_for(lock, longest, [this] {
        return std::all_of(m_tracks.begin(), m_tracks.end(), [](const Track &track) { return track.known; });
    });
}

void TrackCollector::writeTo(ReplyWriter &reply)
{
    const std::lock_guard lock(m_mutex);
    // They appear in the order in which they could be told apart; a file numbers them.
    std::stable_sort(m_tracks.begin(), m_tracks.end(),
                     [](const Track &one, const Track &other) { return one.id < other.id; });
    std::string codecs;
    std::string languages[2];
    int counts[2] = {0, 0};
    for (const Track &track : m_tracks) {
        ++counts[track.audio ? 0 : 1];
        if (track.audio)
            addOnce(codecs, track.codec);
        addOnce(languages[track.audio ? 0 : 1], track.language);
    }
    reply.addNumber(Field::AudioTracks, std::min(counts[0], WorkerProtocol::MaximumTracks));
    reply.addText(Field::AudioCodecs, codecs);
    reply.addText(Field::AudioLanguages, languages[0]);
    reply.addNumber(Field::SubtitleTracks, std::min(counts[1], WorkerProtocol::MaximumTracks));
    reply.addText(Field::SubtitleLanguages, languages[1]);
}
