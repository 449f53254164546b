// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedfinder.h"

#include "libraryquestions.h"
#include "relatedlog.h"
#include "relatedranking.h"

#include <QFileInfo>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int gatherMs = 250;
constexpr int earlyMs = 40;
constexpr int patienceMs = 10'000;

// What the page says of the video: enough to look by, where the library does not have it.
RelatedVideo videoOf(const ContentRecord &content)
{
    RelatedVideo video;
    video.url = content.uri();
    video.title = content.title();
    video.series = content.series();
    if (!content.episode().isEmpty())
        video.episode = content.episode().toInt();
    if (const QUrl url(content.uri()); url.isLocalFile())
        video.fileName = url.fileName();
    return video;
}

} // namespace

RelatedFinder::RelatedFinder(QObject *parent) : QObject(parent)
{
    m_gather.setSingleShot(true);
    m_gather.setInterval(gatherMs);
    m_patience.setSingleShot(true);
    m_patience.setInterval(patienceMs);
    m_early.setSingleShot(true);
    m_early.setInterval(earlyMs);
    connect(&m_early, &QTimer::timeout, this, &RelatedFinder::showSoFar);
    connect(&m_search, &CandidateSearch::finished, this, &RelatedFinder::showAll);
    connect(&m_search, &CandidateSearch::failed, this, &RelatedFinder::failed);
    connect(&m_lookup, &VideoLookup::failed, this, &RelatedFinder::failed);
    connect(&m_gather, &QTimer::timeout, this, &RelatedFinder::ask);
    connect(&m_patience, &QTimer::timeout, this, [this] { failed(u"it takes its time"_s); });
    connect(&m_store, &StorePeer::opened, this, &RelatedFinder::ask);
    connect(&m_store, &StorePeer::lost, this, &RelatedFinder::failed);
    connect(&m_store, &StorePeer::changed, this, &RelatedFinder::libraryChanged);
}

void RelatedFinder::look(const ContentRecord &content)
{
    const bool isAnother = !m_hasContent || content.uri() != m_content.uri();
    m_hasContent = true;
    m_content = content;
    if (isAnother) {
        m_video = videoOf(content);
        enter(State::Looking, {});
    }
    m_store.start();
    m_patience.start();
    if (m_store.isOpen())
        ask();
}

void RelatedFinder::tryAgain()
{
    enter(State::Looking, m_entries);
    m_patience.start();
    if (m_store.isOpen())
        ask();
    else
        m_store.start();
}

void RelatedFinder::setWatched(bool watched)
{
    m_isWatched = watched;
    if (watched && m_isStale)
        libraryChanged();
}

void RelatedFinder::libraryChanged()
{
    m_isStale = !m_isWatched;
    // Not put off by what follows: a scan of the library changes it all the time.
    if (m_isWatched && m_hasContent && !m_gather.isActive())
        m_gather.start();
}

void RelatedFinder::ask()
{
    if (!m_hasContent || !m_store.isOpen())
        return;
    m_store.forget(); // what was asked before is out of date
    m_lookup.clear();
    m_early.stop();
    m_patience.start();
    m_store.ask(LibraryQuestions::ofUrl(m_content.uri()),
                [this](const QList<QStringList> &rows, const QString &error) {
                    if (!error.isEmpty()) {
                        failed(error);
                        return;
                    }
                    QList<int> itself;
                    for (const QStringList &row : rows)
                        itself.append(row.value(0).toInt());
                    m_lookup.look(itself, [this](const QList<RelatedVideo> &videos) { askAround(videos); });
                });
}

void RelatedFinder::askAround(const QList<RelatedVideo> &itself)
{
    m_video = videoOf(m_content);
    if (!itself.isEmpty()) {
        const RelatedVideo told = m_video;
        m_video = itself.constFirst();
        if (m_video.series.isEmpty())
            m_video.series = told.series;
        if (m_video.episode < 0)
            m_video.episode = told.episode;
    }
    m_search.start(m_video);
    if (m_entries.isEmpty())
        m_early.start();
}

void RelatedFinder::showSoFar()
{
    if (!m_search.isRunning())
        return;
    m_lookup.look(m_search.ids(), [this](const QList<RelatedVideo> &found) {
        if (m_search.isRunning())
            enter(State::Looking, ranked(m_video, found, mostEntries));
    });
}

void RelatedFinder::showAll()
{
    m_early.stop();
    if (!m_search.isRunning())
        m_lookup.look(m_search.ids(), [this](const QList<RelatedVideo> &found) {
            enter(State::Found, ranked(m_video, found, mostEntries));
        });
}

void RelatedFinder::failed(const QString &reason)
{
    m_store.forget();
    m_early.stop();
    if (!m_hasContent)
        return;
    if (m_state != State::Failed) // each attempt that follows fails the same way
        qCWarning(relatedLog).noquote() << "the library does not answer:" << reason;
    // What was found stays: it was true a moment ago, and can still be played.
    enter(State::Failed, m_entries);
}

void RelatedFinder::enter(State state, const QList<RelatedEntry> &entries)
{
    if (state != State::Looking)
        m_patience.stop();
    const bool isSame = state == m_state && entries == m_entries;
    m_state = state;
    m_entries = entries;
    if (!isSame)
        Q_EMIT changed();
}
