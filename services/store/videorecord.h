// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileidentity.h"

#include <QDateTime>
#include <QMetaType>
#include <QString>

// What the service itself remembers of a stored video: enough to tell what an update changed and to recognise
// its file.
struct VideoRecord
{
    QString urn;
    int id = 0; // the store's own
    QString url;
    QString path; // local path of url
    QString fileName;
    QString title; // null: none stored
    qint64 runTime = 0; // seconds; where playing goes on
    int playCount = 0;
    QDateTime created; // when it was recorded; invalid: not known
    QString lastPlayed; // ISO 8601, as stored; empty: never
    FileIdentity identity;
    // Which scan or event of this run brought it, counted from 1; 0: an earlier run.
    quint64 arrival = 0;
};
