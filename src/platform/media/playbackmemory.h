// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "playbackchoices.h"

#include <platform/system/filewriter.h>

#include <QObject>
#include <QPointer>
#include <QTimer>

class MediaBackend;

// Carries out what a person chooses for a video, and keeps it for the next time that the video is played. The
// loop is of the moment, and is not kept.
class PlaybackMemory : public QObject
{
    Q_OBJECT

public:
    explicit PlaybackMemory(QObject *parent = nullptr);
    // With another file than the user's.
    explicit PlaybackMemory(const QString &fileName, QObject *parent = nullptr);
    ~PlaybackMemory() override;

    void setBackend(MediaBackend *backend); // null: none

    void chooseSubtitle(const QString &id);
    void chooseSound(const QString &id);
    void chooseRate(qreal rate);
    void chooseDelay(MediaTime delay);
    void chooseSubtitleScale(qreal scale);

private:
    void applyChoices();
    template <typename Change> void change(Change change);
    void keep();
    void write();

    PlaybackChoices m_choices;
    QPointer<MediaBackend> m_backend;
    QTimer m_writing; // since the last time
    bool m_unwritten = false;
    FileWriter m_writer;
};
