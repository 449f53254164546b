// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "errortable.h"

#include <QString>

#include <optional>

// Reads a pipeline's complaints: what is missing, and what an error message means for the one who watches.
class PlaybackFaults
{
public:
    struct Report
    {
        PlaybackFault fault;
        QString text; // for the log
    };

    // What an element tells: another one that is not installed, a sound that never begins, or does after all.
    // Whether that matters is not known before something fails.
    void note(GstMessage *message);
    // A demuxer asks for whoever has the key. Nobody has, and it fails without a word about it.
    [[nodiscard]] static bool asksForKey(GstMessage *message);
    void noteAskedForKey() { m_missing = PlaybackFault::Encrypted; }
    [[nodiscard]] std::optional<PlaybackFault> missing() const { return m_missing; }
    // A decoder complains of a sound that is known to be empty; the picture plays on.
    [[nodiscard]] bool isOfNoMatter(GstMessage *error) const;
    [[nodiscard]] Report read(GstMessage *error, FaultContext context) const;

    // The message comes from `element` or from a part of it.
    [[nodiscard]] static bool isFrom(GstMessage *message, GstElement *element);

private:
    void noteMissing(GstMessage *message);

    std::optional<PlaybackFault> m_missing;
    bool m_soundIsEmpty = false;
};
