// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QDebug>
#include <QString>

// A video of the library, or of a provider, as far as belonging together goes.
struct RelatedVideo
{
    int id = 0; // the store's own; 0: not of the library
    QString url;
    QString title; // as stored; see shownTitle()
    QString fileName;
    QString mimeType;
    int duration = 0; // seconds; 0: not known
    int position = 0; // seconds; where playing goes on; 0: from the start
    QDateTime created;
    QString series; // of its metadata
    int season = -1;
    int episode = -1;
    QString picture; // address of a picture on the web; empty: the thumbnailer makes one

    friend bool operator==(const RelatedVideo &, const RelatedVideo &) = default;
};

// Why a video stands in the list; in the order in which it is shown.
enum class Kinship { NextEpisode, PreviousEpisode, SameDay, SameFolder, SimilarTitle, Online };

struct RelatedEntry
{
    RelatedVideo video;
    Kinship kinship = Kinship::SimilarTitle;

    friend bool operator==(const RelatedEntry &, const RelatedEntry &) = default;
};

// The title, or what the name of the file says.
[[nodiscard]] inline QString shownTitle(const RelatedVideo &video)
{
    if (!video.title.trimmed().isEmpty())
        return video.title.simplified();
    const qsizetype dot = video.fileName.lastIndexOf(u'.');
    const QString name = dot > 0 ? video.fileName.left(dot) : video.fileName;
    return name.isEmpty() ? video.url : name;
}

// Everything of an address up to its last slash.
[[nodiscard]] inline QString folderOf(const QString &url)
{
    return url.left(url.lastIndexOf(u'/') + 1);
}

inline QDebug operator<<(QDebug debug, const RelatedVideo &video)
{
    return debug << shownTitle(video) << video.url;
}
