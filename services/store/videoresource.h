// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"
#include "videorecord.h"

#include "common/mediaworkerpool.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QDateTime>

// When a video was recorded: as the file says, or when it was last written to.
[[nodiscard]] QDateTime createdOf(const MediaReply &reply, const FileIdentity &file);

// The store's resource of a video: everything that the application's queries ask for stands on this one
// resource. `record`: identifier, file and the user's values; `reply`: what the file says. The title is the
// record's.
[[nodiscard]] GRef<TrackerResource> newVideoResource(const VideoRecord &record, const MediaReply &reply,
                                                     const QString &equipment);
// The values that follow the file's content, for a video that is stored already.
[[nodiscard]] GRef<TrackerResource> contentResource(const VideoRecord &record, const MediaReply &reply,
                                                    const QString &equipment);
// Address, name and identity, for a file that was moved.
[[nodiscard]] GRef<TrackerResource> placeResource(const VideoRecord &record);
// Play count and time of the last playback.
[[nodiscard]] GRef<TrackerResource> playResource(const VideoRecord &record);
// The user's values.
[[nodiscard]] GRef<TrackerResource> userResource(const VideoRecord &record);

// "urn:equipment:MAKE:MODEL:", with the names percent-encoded as the device's own are. Empty without make and
// model.
[[nodiscard]] QString equipmentUrn(const QString &make, const QString &model);
