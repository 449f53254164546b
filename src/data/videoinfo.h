// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// What is needed to list or play one video. A default-constructed one is "nothing": an empty url is nothing
// to play.
struct VideoInfo
{
    QString urn; // the store's identifier, an IRI; empty for what the store does not know
    QString title; // never empty for a stored video: the file name without its last extension stands in
    QString fileName;
    quint32 duration = 0; // seconds
    quint32 playPosition = 0; // seconds; 0 when none was saved
    QString mimeType;
    QString url;
    quint32 trackerId = 0; // the store's number for the resource
};

// Columns of a video row: eight strings a video (urn to store id), and of the model that adds two thumbnail
// paths. Other modules and saved cells refer to the columns by number.
namespace VideoColumn {
enum : int {
    Urn = 0,
    Title = 1,
    FileName = 2,
    Duration = 3,
    PlayPosition = 4,
    MimeType = 5,
    Url = 6,
    TrackerId = 7,
    RowSize = 8, // entries of a row as it comes from the store
    PauseThumbnail = 8,
    DefaultThumbnail = 9,
    Count = 10, // columns of the model
};
} // namespace VideoColumn

// The record of a row, field by field in column order; missing columns and unreadable numbers are empty and
// 0.
inline VideoInfo videoInfoFromRow(const QStringList &row)
{
    return {row.value(VideoColumn::Urn),
            row.value(VideoColumn::Title),
            row.value(VideoColumn::FileName),
            row.value(VideoColumn::Duration).toUInt(),
            row.value(VideoColumn::PlayPosition).toUInt(),
            row.value(VideoColumn::MimeType),
            row.value(VideoColumn::Url),
            row.value(VideoColumn::TrackerId).toUInt()};
}
