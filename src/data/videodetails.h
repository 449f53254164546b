// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

// The longer record that the details page shows. Dates are invalid and numbers 0 where the store has no
// value.
struct VideoDetails
{
    QString urn;
    QString url;
    QString fileName;
    QString title; // as stored: empty when the store has none
    QString mimeType;
    QString additionalInfo; // the episode number, else the synopsis
    qint64 fileSize = 0; // bytes
    QDateTime added;
    QDateTime lastAccessed;
    qint32 duration = 0; // seconds
    qint32 playPosition = 0; // holds the play count as well: the details never show a position
    qint32 playCount = 0;
};
