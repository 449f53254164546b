// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

// How the person wants a video played, as far as it was said.
struct PlaybackChoice
{
    std::optional<QString> subtitle; // the track; an empty one: none
    std::optional<QString> sound;
    qreal rate = 1;
    MediaTime delay{0}; // of the subtitles

    [[nodiscard]] bool isNothing() const
    {
        return !subtitle && !sound && qFuzzyCompare(rate, 1) && delay == MediaTime::zero();
    }
    [[nodiscard]] bool operator==(const PlaybackChoice &) const = default;
};

// What was chosen for the videos played last, and the size of subtitles, which is one for all. In a small
// file of the user's.
class PlaybackChoices
{
public:
    static constexpr int Capacity = 256;

    PlaybackChoices() = default;
    explicit PlaybackChoices(const QString &fileName);

    [[nodiscard]] PlaybackChoice of(const QString &uri) const { return m_choices.value(uri); }
    // True: it is another one than was kept. Nothing said is not kept.
    bool set(const QString &uri, const PlaybackChoice &choice);
    [[nodiscard]] qreal subtitleScale() const { return m_scale; }
    bool setSubtitleScale(qreal scale);

    // The file's contents, to be written by whoever may wait for a disk.
    [[nodiscard]] QByteArray serialized() const;
    [[nodiscard]] QString fileName() const { return m_fileName; }

private:
    void load();

    QString m_fileName;
    QHash<QString, PlaybackChoice> m_choices;
    QList<QString> m_order; // least recently chosen first
    qreal m_scale = 1;
};
