// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "testclips.h"

#include <QFile>
#include <QList>

// The same numbered pictures in the codecs and containers that people have, with what makes finding a frame
// again hard: pictures that are stored in another order than they are shown in, groups of pictures that lean
// upon the one before, no index, times that do not begin at zero, pictures of unequal length.
namespace exactclips {

struct Pair
{
    const char *name;
    const char *file;
    const char *arguments; // of ffmpeg, between the pictures and the file
};

inline const QList<Pair> &pairs()
{
    static const QList<Pair> all{
        {"h264 with B-frames in mp4", "b.mp4", "-c:v libx264 -preset veryfast -g 48 -bf 3"},
        {"h264 with open groups in mkv", "open.mkv",
         "-c:v libx264 -preset veryfast -g 48 -bf 3 -x264-params open-gop=1"},
        {"h264 in ts", "raw.ts", "-c:v libx264 -preset veryfast -g 48 -bf 3"},
        {"hevc in mp4", "hevc.mp4", "-c:v libx265 -preset ultrafast -x265-params keyint=48:log-level=none"},
        {"hevc with open groups in mkv", "hevc.mkv",
         "-c:v libx265 -preset veryfast -x265-params keyint=48:open-gop=1:bframes=3:log-level=none"},
        {"vp9 in webm", "vp9.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -b:v 800k -g 60"},
        {"av1 in webm", "av1.webm",
         "-c:v libaom-av1 -usage realtime -cpu-used 8 -b:v 500k -g 60 -row-mt 1 -tile-columns 1"},
        {"mpeg2 in ps", "mpeg2.mpg", "-c:v mpeg2video -q:v 4 -g 15 -bf 2 -f vob"},
        {"mpeg2 in ts", "mpeg2.ts", "-c:v mpeg2video -q:v 4 -g 15 -bf 2"},
        {"mpeg4 in avi", "mpeg4.avi", "-c:v mpeg4 -q:v 4 -g 30"},
        {"mpeg4 with B-frames in avi", "mpeg4b.avi", "-c:v libxvid -q:v 4 -g 30 -bf 2"},
        {"theora in ogg", "theora.ogv", "-c:v libtheora -q:v 7 -g 32"},
        {"unequal pictures in mkv", "unequal.mkv",
         "-vf setpts=(N+0.4*sin(N)+12*floor(N/20))/25/TB -fps_mode passthrough -c:v libx264 -preset veryfast "
         "-g 48 -bf 2"},
        {"unequal pictures in mp4", "unequal.mp4",
         "-vf setpts=(N+0.4*sin(N)+12*floor(N/20))/25/TB -fps_mode passthrough -video_track_timescale 90000 "
         "-c:v libx264 -preset veryfast -g 48 -bf 2"},
        {"h264 in mkv without an index", "noindex.mkv",
         "-c:v libx264 -preset veryfast -g 48 -bf 3 -f matroska -live 1"},
        {"h264 in mp4 that begins late", "late.mp4",
         "-c:v libx264 -preset veryfast -g 48 -bf 3 -output_ts_offset 3.7"},
        {"h264 in mp4 in fragments", "fragments.mp4",
         "-c:v libx264 -preset veryfast -g 48 -bf 3 -movflags frag_keyframe+empty_moov"},
        {"h264 in flv", "h264.flv", "-c:v libx264 -preset veryfast -g 48 -bf 2"},
        {"wmv2 in asf", "wmv.wmv", "-c:v wmv2 -q:v 4 -g 30"},
    };
    return all;
}

constexpr int Seconds = 10;

// The pictures without loss, from which all clips are made.
inline bool makeSource(const QString &path)
{
    return testclips::run(testclips::numberedPicture(Seconds)
                          + QStringList{QStringLiteral("-c:v"), QStringLiteral("ffv1"), path});
}

inline bool make(const QString &source, const Pair &pair, const QString &path)
{
    return testclips::run(QStringList{QStringLiteral("-i"), source} + testclips::tone(Seconds)
                          + QString::fromLatin1(pair.arguments).split(QLatin1Char(' ')) + QStringList{path});
}

} // namespace exactclips
