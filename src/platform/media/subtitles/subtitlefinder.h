// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/mediatracks.h>

#include <QByteArray>
#include <QList>
#include <QString>

namespace subtitles {

struct FoundFile
{
    QString path;
    MediaTrack track; // its id is the file's name within the video's folder
    bool forced = false; // only what is foreign in the video: signs, single words
    bool bare = false; // named as the video is, without a language
};

// The subtitle files of a video: "film.srt", "film.de.srt", "film.en-GB.forced.ass" beside "film.mkv", or in
// a folder "Subs" or "Subtitles" there (also all of "Subs/film/"). Sorted: the barest name first, then by
// name. A link counts when it leads to a file within the video's folder.
[[nodiscard]] QList<FoundFile> findFiles(const QString &videoPath);

// What stands in it; empty when it is too large, or no longer a regular file.
[[nodiscard]] QByteArray readFile(const FoundFile &file);

} // namespace subtitles
