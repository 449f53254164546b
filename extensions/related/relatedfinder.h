// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "candidatesearch.h"
#include "relatedvideo.h"
#include "storepeer.h"
#include "videolookup.h"

#include <kestrel/contentrecord.h>

#include <QList>
#include <QTimer>

// Finds what of the library belongs to a video, and again when the library changed.
class RelatedFinder : public QObject
{
    Q_OBJECT

public:
    explicit RelatedFinder(QObject *parent = nullptr);

    enum class State { Looking, Found, Failed };

    // The video to find company for. The list of the video before is forgotten.
    void look(const ContentRecord &content);
    // After Failed: at once, instead of when the store comes back.
    void tryAgain();
    // While nobody sees the list, changes are only noted.
    void setWatched(bool watched);

    [[nodiscard]] State state() const { return m_state; }
    // Kept from before while it is looked for again.
    [[nodiscard]] const QList<RelatedEntry> &entries() const { return m_entries; }
    // The video itself, as far as it is known.
    [[nodiscard]] const RelatedVideo &video() const { return m_video; }

    static constexpr int mostEntries = 100;

Q_SIGNALS:
    // State or list.
    void changed();

private:
    void ask();
    void askAround(const QList<RelatedVideo> &itself);
    void showSoFar();
    void showAll();
    void failed(const QString &reason);
    void libraryChanged();
    void enter(State state, const QList<RelatedEntry> &entries);

    StorePeer m_store;
    VideoLookup m_lookup{m_store};
    CandidateSearch m_search{m_store};
    QTimer m_gather; // changes come in bursts
    QTimer m_early; // what is known by then is shown, where there is nothing yet
    QTimer m_patience;
    ContentRecord m_content;
    RelatedVideo m_video;
    QList<RelatedEntry> m_entries;
    State m_state = State::Looking;
    bool m_hasContent = false;
    bool m_isWatched = true;
    bool m_isStale = false;
};
