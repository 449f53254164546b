// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedranking.h"

#include <QCollator>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double leastSimilarity = 0.3;

// Words of a few letters that say nothing of what a video is about, and what cameras call their files.
const QSet<QString> &emptyWords()
{
    static const QSet<QString> words{
        u"the"_s,  u"and"_s,    u"with"_s, u"for"_s,   u"from"_s,  u"our"_s,    u"der"_s,  u"die"_s,
        u"das"_s,  u"und"_s,    u"mit"_s,  u"von"_s,   u"ein"_s,   u"eine"_s,   u"les"_s,  u"des"_s,
        u"une"_s,  u"avec"_s,   u"pour"_s, u"los"_s,   u"las"_s,   u"con"_s,    u"por"_s,  u"una"_s,
        u"для"_s,  u"или"_s,    u"как"_s,  u"part"_s,  u"teil"_s,  u"vid"_s,    u"img"_s,  u"mov"_s,
        u"dsc"_s,  u"mvi"_s,    u"pxl"_s,  u"video"_s, u"movie"_s, u"clip"_s,   u"film"_s, u"mp4"_s,
        u"mkv"_s,  u"avi"_s,    u"webm"_s, u"720p"_s,  u"1080p"_s, u"x264"_s,   u"h264"_s, u"x265"_s,
        u"hevc"_s, u"bluray"_s, u"hdtv"_s, u"web"_s,   u"copy"_s,  u"episode"_s};
    return words;
}

struct Candidate
{
    RelatedEntry entry;
    double order = 0; // within its kinship, the smallest first
    QString name;
};

std::pair<int, int> placeOf(const EpisodeName &episode)
{
    return {std::max(episode.season, 0), episode.episode};
}

bool isSameDay(const RelatedVideo &video, const RelatedVideo &other)
{
    return video.created.isValid() && other.created.isValid()
        && video.created.toLocalTime().date() == other.created.toLocalTime().date();
}

// The C locale has no numbers: "10" would come before "5".
QLocale collation()
{
    return QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale();
}

class Judge
{
public:
    explicit Judge(const RelatedVideo &video)
        : m_video(video),
          m_episode(episodeOf(video)),
          m_words(tellingWords(video))
    {
        m_collator.setNumericMode(true);
        m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    }

    [[nodiscard]] std::optional<Candidate> judge(const RelatedVideo &other) const
    {
        const EpisodeName episode = episodeOf(other);
        if (m_episode.isEpisode() && episode.isEpisode() && m_episode.series == episode.series
            && placeOf(m_episode) != placeOf(episode)) {
            const double steps = episodeDistance(m_episode, episode);
            return made(other, steps > 0 ? Kinship::NextEpisode : Kinship::PreviousEpisode, std::abs(steps));
        }
        if (isSameDay(m_video, other))
            return made(other, Kinship::SameDay, double(std::abs(m_video.created.secsTo(other.created))));
        // The neighbours of a folder: what comes after the video, then again from the start.
        if (!m_video.url.isEmpty() && folderOf(m_video.url) == folderOf(other.url))
            return made(other, Kinship::SameFolder,
                        m_collator.compare(m_video.fileName, other.fileName) < 0 ? 0 : 1);
        const double alike = similarity(m_words, tellingWords(other));
        if (alike >= leastSimilarity)
            return made(other, Kinship::SimilarTitle, -alike);
        return {};
    }

    [[nodiscard]] bool isBefore(const Candidate &one, const Candidate &other) const
    {
        if (one.entry.kinship != other.entry.kinship)
            return one.entry.kinship < other.entry.kinship;
        if (one.order != other.order)
            return one.order < other.order;
        const int names = m_collator.compare(one.name, other.name);
        return names != 0 ? names < 0 : one.entry.video.url < other.entry.video.url;
    }

private:
    [[nodiscard]] static Candidate made(const RelatedVideo &video, Kinship kinship, double order)
    {
        return {{video, kinship}, order, kinship == Kinship::SameFolder ? video.fileName : shownTitle(video)};
    }

    const RelatedVideo &m_video;
    EpisodeName m_episode;
    QStringList m_words;
    QCollator m_collator{collation()};
};

QString nameWithoutSuffix(const RelatedVideo &video)
{
    const qsizetype dot = video.fileName.lastIndexOf(u'.');
    return dot > 0 ? video.fileName.left(dot) : video.fileName;
}

} // namespace

EpisodeName episodeOf(const RelatedVideo &video)
{
    EpisodeName episode = episodeOf(video.title);
    if (!episode.isEpisode())
        episode = episodeOf(nameWithoutSuffix(video));
    if (!video.series.trimmed().isEmpty()) {
        episode.series = wordsOf(video.series).join(u' ');
        if (video.season >= 0)
            episode.season = video.season;
    }
    if (video.episode >= 0)
        episode.episode = video.episode;
    if (episode.isEpisode() && episode.series.isEmpty())
        episode.series = folderOf(video.url);
    return episode;
}

// Far seasons are further than any episode.
double episodeDistance(const EpisodeName &from, const EpisodeName &to)
{
    const auto [season, number] = placeOf(from);
    const auto [otherSeason, otherNumber] = placeOf(to);
    return (otherSeason - season) * 100'000.0 + (otherNumber - number);
}

QStringList tellingWords(const RelatedVideo &video)
{
    static const QRegularExpression episodeMark(u"^(s\\d+)?ep?\\d+$"_s);
    QStringList telling;
    const QStringList words = wordsOf(shownTitle(video));
    for (const QString &word : words) {
        const bool isMark = word.at(0).isDigit() || episodeMark.match(word).hasMatch();
        // A word of an ideographic script is short.
        const bool isShort = word.size() < (word.at(0).unicode() >= 0x2E80 ? 2 : 3);
        if (!isMark && !isShort && !emptyWords().contains(word) && !telling.contains(word))
            telling.append(word);
    }
    return telling;
}

double similarity(const QStringList &words, const QStringList &others)
{
    if (words.isEmpty() || others.isEmpty())
        return 0;
    qsizetype common = 0;
    for (const QString &word : words)
        common += others.contains(word) ? 1 : 0;
    return double(common) / double(words.size() + others.size() - common);
}

QList<RelatedEntry> ranked(const RelatedVideo &video, const QList<RelatedVideo> &candidates, int most)
{
    const Judge judge(video);
    QSet<QString> seen{video.url};
    QList<Candidate> found;
    for (const RelatedVideo &candidate : candidates) {
        if (candidate.url.isEmpty() || seen.contains(candidate.url))
            continue;
        seen.insert(candidate.url);
        if (const auto related = judge.judge(candidate))
            found.append(*related);
    }
    std::sort(found.begin(), found.end(),
              [&judge](const Candidate &one, const Candidate &other) { return judge.isBefore(one, other); });
    QList<RelatedEntry> entries;
    for (const Candidate &candidate : found.first(std::min<qsizetype>(found.size(), most)))
        entries.append(candidate.entry);
    return entries;
}
