// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediabackend.h"

#include <platform/toolkit/sheet.h>

#include <QPointer>

class OptionColumn;
class OptionSteps;
class PlaybackMemory;

// How the video is played: subtitles, sound, speed, loop, chapters; each leads to a short list. Nothing is
// dimmed, and the video goes on: what is chosen is seen and heard at once.
class PlaybackOptions : public toolkit::Sheet
{
    Q_OBJECT

public:
    enum class Topic { All, Subtitles, Sound, Speed, Loop, Chapters };
    Q_ENUM(Topic)

    explicit PlaybackOptions(PlaybackMemory *memory);
    ~PlaybackOptions() override;

    void setBackend(MediaBackend *backend); // null: none; closes it
    [[nodiscard]] Topic topic() const { return m_topic; }
    // The part of the scene that it stands on, when it is there.
    [[nodiscard]] QRectF takenRect() const;

public Q_SLOTS:
    void showTopic(PlaybackOptions::Topic topic);

Q_SIGNALS:
    void takenChanged();

protected:
    // From a list back to where it was chosen, from there away.
    void escape() override;
    void place() override;
    void setLeaving(bool leaving) override;

private:
    void rebuild();
    [[nodiscard]] OptionColumn *column() const;
    [[nodiscard]] int focusedRow() const;
    void fill(OptionColumn *column); // with the rows of the topic
    void fillAll(OptionColumn *column);
    void fillSubtitles(OptionColumn *column);
    void fillSound(OptionColumn *column);
    void fillSpeed(OptionColumn *column);
    void fillLoop(OptionColumn *column);
    void fillChapters(OptionColumn *column);
    void addWay(OptionColumn *column, Topic topic, const QString &value);
    void addDelay(OptionColumn *column);
    void addSize(OptionColumn *column);
    [[nodiscard]] int currentChapter() const;
    [[nodiscard]] QString chapterTitle(int index) const;
    void setLoopEdge(bool end);
    [[nodiscard]] static QString titleOf(Topic topic);

    PlaybackMemory *m_memory;
    QPointer<MediaBackend> m_backend;
    Topic m_topic = Topic::All;
    std::optional<MediaTime> m_loopStart; // chosen, its end is not yet
    bool m_rebuilding = false;
};
