// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// What is read in the file of a video. Numbers are 0 and texts empty where the file does not tell.
struct VideoFacts
{
    int width = 0; // as displayed
    int height = 0;
    double frameRate = 0; // pictures a second
    qint64 bitRate = 0; // bits a second, of the whole file
    QString videoCodec;
    QStringList audioCodecs; // each once
    int audioTracks = 0;
    QStringList audioLanguages; // ISO codes, of the tracks that tell theirs; each once
    int subtitleTracks = 0;
    QStringList subtitleLanguages;

    [[nodiscard]] bool isEmpty() const { return *this == VideoFacts(); }
    friend bool operator==(const VideoFacts &, const VideoFacts &) = default;
};
