// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileidentity.h"

#include "common/mediaworkerpool.h"

#include <QString>

#include <memory>

// A video file as the desktop's file index tells of it. It is to be looked at before it is believed: the
// index may be behind.
struct ToldFile
{
    QString path;
    qint64 size = -1; // bytes
    qint64 modified = -1; // seconds since the epoch
    // What a worker would find in the file; null where the index does not know enough of it.
    std::shared_ptr<const MediaReply> facts;
    bool isRead = false; // the index has looked into it
    bool fresh = false; // told by an event

    // The file is in the state that the index read.
    [[nodiscard]] bool agreesWith(const FileIdentity &file) const
    {
        return size == file.size && modified == file.modifiedMs / 1000;
    }
};
