// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "playbackmemory.h"

#include <QMarginsF>
#include <QObject>
#include <QSize>

#include <memory>

class MediaBackend;
class PlaybackOptions;
class SubtitleView;
class VideoWidget;

// What a video widget offers beside its picture: subtitles over it, the options, and what was chosen in them.
class PlaybackExtras : public QObject
{
    Q_OBJECT

public:
    explicit PlaybackExtras(VideoWidget *widget);
    ~PlaybackExtras() override;

    void setBackend(MediaBackend *backend); // null: none
    // Null until it was wanted for the first time.
    [[nodiscard]] PlaybackOptions *options() const { return m_options.get(); }
    [[nodiscard]] SubtitleView *subtitles() const { return m_subtitles; }
    [[nodiscard]] PlaybackMemory *memory() { return &m_memory; }
    // At the left and the right: what the options take of the widget while they stand beside the picture.
    [[nodiscard]] QMarginsF takenBeside() const { return m_takenBeside; }

Q_SIGNALS:
    void takenBesideChanged(const QMarginsF &taken);

private:
    void showOptions();
    void layOut();

    VideoWidget *m_widget;
    MediaBackend *m_backend = nullptr;
    PlaybackMemory m_memory;
    SubtitleView *m_subtitles; // owned by the widget
    std::unique_ptr<PlaybackOptions> m_options;
    QSize m_picture;
    QMarginsF m_takenBeside;
};
