// SPDX-License-Identifier: GPL-3.0-or-later
// What each topic of the options offers.
#include "playbackoptions.h"

#include "optiontexts.h"
#include "percenttext.h"
#include "playbackbounds.h"
#include "playbackmemory.h"
#include "playbackoptionrows.h"

#include <QLocale>

#include <algorithm>
#include <array>

using namespace playbackbounds;
using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;
using Kind = OptionRow::Kind;

namespace {

constexpr std::array<qreal, 8> Rates{0.5, 0.75, 1, 1.25, 1.5, 1.75, 2, 3};
constexpr std::array<qreal, 9> Sizes{SmallestSubtitles, 0.75, 1, 1.25, 1.5, 1.75, 2, 2.5, LargestSubtitles};
constexpr std::array<MediaTime, 4> DelaySteps{-500ms, -100ms, 100ms, 500ms};

// The next of the sizes, upwards or downwards; the same where there is none.
qreal nextSize(qreal size, bool larger)
{
    constexpr qreal Alike = 0.01;
    const auto isNext = [&](qreal other) { return larger ? other > size + Alike : other < size - Alike; };
    const qreal *first = std::find_if(Sizes.begin(), Sizes.end(), isNext);
    const auto last = std::find_if(Sizes.rbegin(), Sizes.rend(), isNext);
    if (first == Sizes.end())
        return size;
    return larger ? *first : *last;
}

QString placeOrNothing(const std::optional<MediaTime> &place)
{
    return place ? optiontexts::place(*place) : QString();
}

} // namespace

void PlaybackOptions::fill(OptionColumn *column)
{
    switch (m_topic) {
    case Topic::All:
        fillAll(column);
        break;
    case Topic::Subtitles:
        fillSubtitles(column);
        break;
    case Topic::Sound:
        fillSound(column);
        break;
    case Topic::Speed:
        fillSpeed(column);
        break;
    case Topic::Loop:
        fillLoop(column);
        break;
    case Topic::Chapters:
        fillChapters(column);
        break;
    }
}

void PlaybackOptions::addWay(OptionColumn *column, Topic topic, const QString &value)
{
    auto *row = new OptionRow(Kind::Way, titleOf(topic), value);
    connect(row, &OptionRow::clicked, this, [this, topic] { showTopic(topic); });
    column->add(row);
}

void PlaybackOptions::fillAll(OptionColumn *column)
{
    addWay(column, Topic::Subtitles,
           optiontexts::titleOf(m_backend->subtitleTracks(), m_backend->subtitleTrack()));
    if (m_backend->audioTracks().size() > 1)
        addWay(column, Topic::Sound, optiontexts::titleOf(m_backend->audioTracks(), m_backend->audioTrack()));
    addWay(column, Topic::Speed, optiontexts::rate(m_backend->rate()));
    if (m_backend->isSeekable())
        addWay(column, Topic::Loop,
               m_backend->loop() ? optiontexts::section(*m_backend->loop()) : qtTrId("qtn_vide_options_off"));
    if (const int chapter = currentChapter(); chapter >= 0)
        addWay(column, Topic::Chapters, chapterTitle(chapter));
}

void PlaybackOptions::fillSubtitles(OptionColumn *column)
{
    const QString chosen = m_backend->subtitleTrack();
    const auto add = [&](const QString &id, const QString &title, const QString &facts) {
        auto *row = new OptionRow(Kind::Choice, title, facts, id == chosen);
        connect(row, &OptionRow::clicked, this, [this, id] { m_memory->chooseSubtitle(id); });
        column->add(row);
    };
    add(QString(), qtTrId("qtn_vide_options_off"), QString());
    const QList<MediaTrack> tracks = m_backend->subtitleTracks();
    for (int i = 0; i < int(tracks.size()); ++i)
        add(tracks.at(i).id, optiontexts::trackTitle(tracks.at(i), i), optiontexts::trackFacts(tracks.at(i)));
    if (tracks.isEmpty())
        return;
    addSize(column);
    addDelay(column);
}

void PlaybackOptions::addSize(OptionColumn *column)
{
    auto *steps = new OptionSteps(qtTrId("qtn_vide_options_size"));
    steps->setValue(percentText(m_backend->subtitleScale()));
    const auto step = [this, steps](bool larger) {
        if (!m_backend)
            return;
        m_memory->chooseSubtitleScale(nextSize(m_backend->subtitleScale(), larger));
        steps->setValue(percentText(m_backend->subtitleScale()));
    };
    connect(steps->addStep(u"A\u2212"_s, qtTrId("qtn_vide_options_smaller")), &toolkit::Button::clicked, this,
            [step] { step(false); });
    connect(steps->addStep(u"A+"_s, qtTrId("qtn_vide_options_larger")), &toolkit::Button::clicked, this,
            [step] { step(true); });
    column->add(steps);
}

void PlaybackOptions::addDelay(OptionColumn *column)
{
    auto *steps = new OptionSteps(qtTrId("qtn_vide_options_delay"));
    steps->setValue(optiontexts::shiftInSeconds(m_backend->subtitleDelay()));
    for (const MediaTime change : DelaySteps) {
        const QString name
            = u"%1 %2"_s.arg(qtTrId("qtn_vide_options_delay"), optiontexts::shiftInSeconds(change));
        connect(steps->addStep(optiontexts::shift(change), name), &toolkit::Button::clicked, this,
                [this, change, steps] {
                    if (!m_backend)
                        return;
                    m_memory->chooseDelay(
                        std::clamp(m_backend->subtitleDelay() + change, -LongestDelay, LongestDelay));
                    steps->setValue(optiontexts::shiftInSeconds(m_backend->subtitleDelay()));
                });
    }
    column->add(steps);
}

void PlaybackOptions::fillSound(OptionColumn *column)
{
    const QList<MediaTrack> tracks = m_backend->audioTracks();
    for (int i = 0; i < int(tracks.size()); ++i) {
        const MediaTrack &track = tracks.at(i);
        auto *row = new OptionRow(Kind::Choice, optiontexts::trackTitle(track, i),
                                  optiontexts::trackFacts(track), track.id == m_backend->audioTrack());
        connect(row, &OptionRow::clicked, this, [this, id = track.id] { m_memory->chooseSound(id); });
        column->add(row);
    }
}

void PlaybackOptions::fillSpeed(OptionColumn *column)
{
    for (const qreal rate : Rates) {
        auto *row = new OptionRow(Kind::Choice, optiontexts::rate(rate), QString(),
                                  qFuzzyCompare(rate, m_backend->rate()));
        connect(row, &OptionRow::clicked, this, [this, rate] { m_memory->chooseRate(rate); });
        column->add(row);
    }
}

void PlaybackOptions::fillLoop(OptionColumn *column)
{
    const auto loop = m_backend->loop();
    auto *off = new OptionRow(Kind::Choice, qtTrId("qtn_vide_options_off"), QString(), !loop && !m_loopStart);
    connect(off, &OptionRow::clicked, this, [this] {
        m_loopStart.reset();
        if (m_backend)
            m_backend->setLoop({});
        rebuild();
    });
    column->add(off);
    auto *start = new OptionRow(Kind::Command, qtTrId("qtn_vide_options_loop_start"),
                                placeOrNothing(loop ? std::optional(loop->start) : m_loopStart));
    connect(start, &OptionRow::clicked, this, [this] { setLoopEdge(false); });
    column->add(start);
    auto *end = new OptionRow(Kind::Command, qtTrId("qtn_vide_options_loop_end"),
                              placeOrNothing(loop ? std::optional(loop->end) : std::nullopt));
    connect(end, &OptionRow::clicked, this, [this] { setLoopEdge(true); });
    column->add(end);
}

// Its end without a start begins at the beginning.
void PlaybackOptions::setLoopEdge(bool end)
{
    if (!m_backend)
        return;
    const MediaTime place = m_backend->heading();
    if (!end) {
        m_loopStart = place;
        const auto loop = m_backend->loop();
        m_backend->setLoop(loop && loop->end > place ? std::optional(MediaSection{place, loop->end})
                                                     : std::nullopt);
    } else {
        const auto loop = m_backend->loop();
        const MediaTime start = loop ? loop->start : m_loopStart.value_or(MediaTime::zero());
        m_backend->setLoop(MediaSection{std::min(start, place), place});
    }
    rebuild();
}

void PlaybackOptions::fillChapters(OptionColumn *column)
{
    const QList<MediaChapter> chapters = m_backend->chapters();
    const int current = currentChapter();
    for (int i = 0; i < int(chapters.size()); ++i) {
        const MediaTime start = chapters.at(i).start;
        auto *row = new OptionRow(Kind::Choice, chapterTitle(i), optiontexts::place(start), i == current);
        connect(row, &OptionRow::clicked, this, [this, start] {
            if (!m_backend)
                return;
            m_backend->seek(start, MediaBackend::SeekPrecision::Exact);
            rebuild();
        });
        column->add(row);
    }
}

// -1: there are none.
int PlaybackOptions::currentChapter() const
{
    const QList<MediaChapter> chapters = m_backend->chapters();
    int current = chapters.isEmpty() ? -1 : 0;
    for (int i = 0; i < int(chapters.size()); ++i) {
        if (chapters.at(i).start <= m_backend->heading())
            current = i;
    }
    return current;
}

QString PlaybackOptions::chapterTitle(int index) const
{
    const QString title = m_backend->chapters().at(index).title;
    return title.isEmpty() ? qtTrId("qtn_vide_options_chapter").arg(QLocale().toString(index + 1)) : title;
}
