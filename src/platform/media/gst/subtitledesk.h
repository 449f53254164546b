// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitletap.h"

#include <platform/media/subtitles/subtitlefinder.h>
#include <platform/media/trackchoice.h>

#include <QHash>
#include <QObject>

class ControlThread;

// The subtitles of the video that plays, those within it and those in files beside it: which there are, which
// is chosen, and what of it is to be read now. Lives on the GUI thread; files are looked for and read on a
// thread of its own.
class SubtitleDesk : public QObject
{
    Q_OBJECT

public:
    explicit SubtitleDesk(QObject *parent = nullptr);
    ~SubtitleDesk() override;

    // Another video; forgets the one before.
    void begin(const QString &uri);
    // For its pipelines.
    [[nodiscard]] std::shared_ptr<SubtitleTap> tap() const { return m_tap; }
    // What is in the video is known now, and what is heard.
    void opened(const QString &soundLanguage, double framesPerSecond);

    [[nodiscard]] QList<MediaTrack> tracks() const;
    [[nodiscard]] QString selected() const { return m_selected; }
    // Empty: none. Also one that is not there yet: it is taken when it comes.
    void select(const QString &id);
    void setDelay(MediaTime delay);
    [[nodiscard]] MediaTime delay() const { return m_delay; }

    void setPosition(MediaTime position);
    [[nodiscard]] QList<SubtitleText> shown() const { return m_shown; }

Q_SIGNALS:
    void tracksChanged();
    void shownChanged();

private:
    void lookForFiles(const QString &uri);
    void load(const QString &id);
    void tracksCame();
    void decide();
    void take(const QString &id);
    void refresh();
    [[nodiscard]] std::shared_ptr<CueStore> cues(const QString &id) const;
    [[nodiscard]] QList<trackchoice::Candidate> candidates() const;
    void work(std::function<std::function<void()>()> task);

    std::shared_ptr<QObject> m_receiver; // of answers from the thread, which may outlive this
    std::unique_ptr<ControlThread> m_thread;
    std::vector<std::unique_ptr<ControlThread>> m_retired;
    std::shared_ptr<SubtitleTap> m_tap;
    QList<subtitles::FoundFile> m_files;
    QHash<QString, std::shared_ptr<CueStore>> m_loaded; // by id
    QList<SubtitleText> m_shown;
    QString m_selected;
    QString m_wanted; // chosen before it was there
    QString m_soundLanguage;
    MediaTime m_position{0};
    MediaTime m_delay{0};
    double m_framesPerSecond = 0;
    int m_number = 0; // of the video: what belongs to an older one is dropped
    bool m_opened = false;
    bool m_searched = false;
    bool m_chosen = false; // by somebody, or by rule
};
