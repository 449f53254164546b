// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileidentity.h"

#include "common/mediaworkerpool.h"

#include <QList>
#include <QMetaType>
#include <QString>

#include <memory>

// A file that may be a video, as a scan or an event found it.
struct FoundFile
{
    QString path;
    FileIdentity identity; // without digest
    bool fresh = false; // reported by an event rather than by a scan
    // Somebody else is about to read it and will tell: of interest only as the new place of a known file.
    bool isPromised = false;
    // What a worker would find in it, where somebody who can be believed has read it already.
    std::shared_ptr<const MediaReply> facts = nullptr;
};

// Whether the content type of the file is one that a video may have; the file's bytes are looked at only
// where its name leaves that open. Hidden and empty files are none.
[[nodiscard]] bool mayBeVideo(const QString &path);
// A name that the indexer passes over, with all that lies below it.
[[nodiscard]] bool isHiddenName(const QString &name);
