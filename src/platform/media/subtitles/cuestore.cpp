// SPDX-License-Identifier: GPL-3.0-or-later
#include "cuestore.h"

#include <QMutexLocker>

#include <algorithm>

using namespace subtitles;

namespace {

constexpr int MostSteps = 2'000; // back from the present, where some cue never ends
constexpr size_t MostOfStream = 8'000; // kept of a track that comes while the video plays
constexpr size_t Superfluous = MostOfStream / 10;

bool isEarlier(const SubtitleCue &one, const SubtitleCue &other)
{
    return one.start < other.start;
}

} // namespace

void CueStore::set(const QList<SubtitleCue> &cues)
{
    std::vector<SubtitleCue> sorted(cues.begin(), cues.end());
    std::stable_sort(sorted.begin(), sorted.end(), isEarlier);
    if (sorted.size() > size_t(MostCues))
        sorted.resize(MostCues);
    const QMutexLocker locker(&m_mutex);
    m_cues = std::move(sorted);
    m_characters = 0;
    for (const SubtitleCue &cue : m_cues)
        m_characters += cue.text.words.size();
    m_latestEnds.assign(m_cues.size(), MediaTime::zero());
    followEnds(0);
}

// One that is there already comes again when the video was moved.
void CueStore::add(const SubtitleCue &cue)
{
    if (cue.end <= cue.start || cue.text.isEmpty())
        return;
    const QMutexLocker locker(&m_mutex);
    const auto [first, last] = std::equal_range(m_cues.begin(), m_cues.end(), cue, isEarlier);
    const auto isSame
        = [&](const SubtitleCue &other) { return other.end == cue.end && other.text == cue.text; };
    if (last - first >= MostSteps || std::any_of(first, last, isSame))
        return;
    m_characters += cue.text.words.size();
    const auto place = size_t(last - m_cues.begin());
    m_cues.insert(last, cue);
    m_latestEnds.insert(m_latestEnds.begin() + std::ptrdiff_t(place), MediaTime::zero());
    followEnds(place);
    if (m_cues.size() > MostOfStream || m_characters > MostCharacters)
        dropOldest();
}

// Those of the beginning: they come again with a seek back.
void CueStore::dropOldest()
{
    const size_t count = std::min(m_cues.size(), Superfluous);
    for (size_t i = 0; i < count; ++i)
        m_characters -= m_cues.at(i).text.words.size();
    m_cues.erase(m_cues.begin(), m_cues.begin() + std::ptrdiff_t(count));
    m_latestEnds.assign(m_cues.size(), MediaTime::zero());
    followEnds(0);
}

void CueStore::followEnds(size_t from)
{
    for (size_t i = from; i < m_cues.size(); ++i) {
        const MediaTime before = i > 0 ? m_latestEnds.at(i - 1) : MediaTime::zero();
        const MediaTime latest = std::max(before, m_cues.at(i).end);
        if (m_latestEnds.at(i) == latest) // and so do all that follow stay
            break;
        m_latestEnds.at(i) = latest;
    }
}

QList<SubtitleText> CueStore::at(MediaTime time) const
{
    QList<SubtitleText> found;
    const QMutexLocker locker(&m_mutex);
    const auto next
        = std::upper_bound(m_cues.begin(), m_cues.end(), time,
                           [](MediaTime place, const SubtitleCue &cue) { return place < cue.start; });
    auto index = std::ptrdiff_t(next - m_cues.begin()) - 1;
    for (int step = 0; step < MostSteps && index >= 0 && m_latestEnds.at(size_t(index)) > time;
         ++step, --index) {
        const SubtitleCue &cue = m_cues.at(size_t(index));
        if (cue.end > time && !found.contains(cue.text))
            found.prepend(cue.text);
        if (found.size() >= MostAtOnce)
            break;
    }
    return found;
}

int CueStore::count() const
{
    const QMutexLocker locker(&m_mutex);
    return int(m_cues.size());
}
