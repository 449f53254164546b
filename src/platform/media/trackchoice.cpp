// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackchoice.h"

#include "subtitles/languages.h"

namespace trackchoice {

namespace {

// The one that is most in front of those that `fits` accepts; null: none does.
template <typename Fits>
const Candidate *best(const QList<Candidate> &candidates, const QStringList &languages, Fits fits)
{
    const Candidate *found = nullptr;
    int foundRank = 0;
    for (const Candidate &candidate : candidates) {
        const int rank = languages::rank(candidate.track.language, languages);
        if (rank < 0 || !fits(candidate))
            continue;
        const bool better = found == nullptr || rank < foundRank
            || (rank == foundRank && candidate.isDefault && !found->isDefault);
        if (!better)
            continue;
        found = &candidate;
        foundRank = rank;
    }
    return found;
}

} // namespace

QString sound(const QList<Candidate> &candidates, const QStringList &languages)
{
    if (const Candidate *found = best(candidates, languages, [](const Candidate &) { return true; }))
        return found->track.id;
    for (const Candidate &candidate : candidates) {
        if (candidate.isDefault)
            return candidate.track.id;
    }
    return candidates.isEmpty() ? QString() : candidates.first().track.id;
}

QString subtitle(const QList<Candidate> &candidates, const QString &soundLanguage,
                 const QStringList &languages)
{
    const bool soundKnown = !languages::normalized(soundLanguage).isEmpty();
    const bool understood = languages::rank(soundLanguage, languages) >= 0;
    for (const Candidate &candidate : candidates) {
        if (candidate.bare)
            return candidate.track.id;
    }
    if (understood || !soundKnown) {
        for (const Candidate &candidate : candidates) {
            const QString &language = candidate.track.language;
            const bool fits = understood ? languages::areAlike(language, soundLanguage)
                                         : languages::rank(language, languages) >= 0;
            if (candidate.forced && fits)
                return candidate.track.id;
        }
        return {};
    }
    const Candidate *found
        = best(candidates, languages, [](const Candidate &candidate) { return !candidate.forced; });
    if (found != nullptr)
        return found->track.id;
    for (const Candidate &candidate : candidates) {
        if (candidate.isDefault)
            return candidate.track.id;
    }
    return {};
}

} // namespace trackchoice
