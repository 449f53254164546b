// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/mediaworkerpool.h"

#include <QObject>

// Reads what a media file says about itself; the indexer's view of the worker pool.
class MediaReader : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // A non-zero number that finished() carries.
    virtual int read(const QString &path, bool urgent) = 0;
    // The same for somebody who waits and wants to know all: also the streams one by one.
    virtual int readStreams(const QString &path) { return read(path, true); }
    virtual void releaseFilesUnder(const QString &folder) = 0;

Q_SIGNALS:
    void finished(int id, const MediaReply &reply);
};
