// SPDX-License-Identifier: GPL-3.0-or-later
#include "chapters.h"

#include <algorithm>

namespace {

constexpr qsizetype MostChapters = 500;
constexpr qsizetype LongestTitle = 200;

void collect(GList *entries, QList<MediaChapter> *chapters)
{
    for (GList *item = entries; item != nullptr && chapters->size() < MostChapters; item = item->next) {
        auto *entry = static_cast<GstTocEntry *>(item->data);
        const GstTocEntryType type = gst_toc_entry_get_entry_type(entry);
        if (type == GST_TOC_ENTRY_TYPE_EDITION || type == GST_TOC_ENTRY_TYPE_TITLE) {
            if (chapters->isEmpty()) // of several editions the first is played
                collect(gst_toc_entry_get_sub_entries(entry), chapters);
            continue;
        }
        gint64 start = -1;
        gint64 stop = -1;
        if (!gst_toc_entry_get_start_stop_times(entry, &start, &stop) || start < 0)
            continue;
        MediaChapter chapter{MediaTime(start), MediaTime(std::max<gint64>(stop, 0)), {}};
        gchar *title = nullptr;
        GstTagList *tags = gst_toc_entry_get_tags(entry);
        if (tags != nullptr && gst_tag_list_get_string(tags, GST_TAG_TITLE, &title)) {
            chapter.title = QString::fromUtf8(title).simplified().left(LongestTitle);
            g_free(title);
        }
        chapters->append(chapter);
    }
}

} // namespace

QList<MediaChapter> chaptersOf(GstToc *toc)
{
    QList<MediaChapter> chapters;
    if (toc != nullptr)
        collect(gst_toc_get_entries(toc), &chapters);
    std::stable_sort(chapters.begin(), chapters.end(),
                     [](const MediaChapter &a, const MediaChapter &b) { return a.start < b.start; });
    return chapters;
}
