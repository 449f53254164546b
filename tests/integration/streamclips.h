// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/testclips.h"

#include <QDir>
#include <QProcess>
#include <QStringList>

// What servers of videos serve, as small as it can be.
namespace streamclips {

inline TestClips::Clip small(const QStringList &options, int seconds = 2)
{
    TestClips::Clip clip;
    clip.width = 160;
    clip.height = 120;
    clip.seconds = seconds;
    clip.options = options;
    return clip;
}

inline QStringList h264()
{
    return {QStringLiteral("-c:v"),      QStringLiteral("libx264"), QStringLiteral("-preset"),
            QStringLiteral("ultrafast"), QStringLiteral("-g"),      QStringLiteral("25"),
            QStringLiteral("-c:a"),      QStringLiteral("aac")};
}

// `kind` is "hls", "hls-fmp4" or "dash"; in a folder of that name, `name` is the file to ask for. The message
// when that failed.
inline QString makeAdaptive(const QString &folder, const QString &kind, QString *name,
                            const QStringList &more = {}, int seconds = 4)
{
    const QString place = folder + u'/' + kind;
    if (!QDir().mkpath(place))
        return QStringLiteral("no folder");
    QStringList options = h264();
    if (kind.startsWith(QStringLiteral("dash"))) {
        *name = kind + QStringLiteral("/film.mpd");
        options += {QStringLiteral("-f"), QStringLiteral("dash"), QStringLiteral("-seg_duration"),
                    QStringLiteral("1")};
    } else {
        *name = kind + QStringLiteral("/film.m3u8");
        options += {QStringLiteral("-f"),
                    QStringLiteral("hls"),
                    QStringLiteral("-hls_time"),
                    QStringLiteral("1"),
                    QStringLiteral("-hls_playlist_type"),
                    QStringLiteral("vod")};
        if (kind.contains(QStringLiteral("fmp4")))
            options += {QStringLiteral("-hls_segment_type"), QStringLiteral("fmp4")};
    }
    return TestClips::make(folder + u'/' + *name, small(options + more, seconds));
}

} // namespace streamclips
