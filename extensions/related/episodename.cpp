// SPDX-License-Identifier: GPL-3.0-or-later
#include "episodename.h"

#include <QRegularExpression>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

QRegularExpression pattern(const QString &text)
{
    return QRegularExpression(
        text, QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
}

// What an episode is called, in the languages of the program and as people abbreviate it.
const QString episodeWords = u"episode|ep|part|pt|chapter|teil|folge|kapitel|épisode|partie|chapitre|"
                             u"episodio|capítulo|parte|jakso|osa|"
                             "серия|часть|эпизод|الحلقة|الجزء|حلقة|جزء"_s;
const QString seasonWords = u"season|series|staffel|saison|temporada|kausi|сезон|الموسم"_s;

// Each names "series", and "episode"; "season" where there is one. The surest comes first.
const QList<QRegularExpression> &patterns()
{
    static const QList<QRegularExpression> list{
        pattern(
            u"^(?<series>.*?)(?<![\\p{L}\\d])s(?<season>\\d{1,2})[\\s,-]*ep?\\s*(?<episode>\\d{1,4})(?!\\d)"_s),
        pattern(
            u"^(?<series>.*?)(?<![\\p{L}\\d])(?:%1)\\s*(?<season>\\d{1,4})[\\s,:-]*(?:%2)\\s*(?<episode>\\d{1,4})(?!\\d)"_s
                .arg(seasonWords, episodeWords)),
        pattern(u"^(?<series>.*?)(?<![\\p{L}\\d])(?<season>\\d{1,2})x(?<episode>\\d{2,3})(?![\\p{L}\\d])"_s),
        pattern(
            u"^(?<series>.*?)第\\s*(?<season>\\d{1,4})\\s*[季期].*?第\\s*(?<episode>\\d{1,4})\\s*[話话集回部]"_s),
        pattern(u"^(?<series>.*?)第\\s*(?<episode>\\d{1,4})\\s*[話话集回部]"_s),
        pattern(u"^(?<series>.*?)(?<![\\p{L}\\d])(?:%1)\\s*#?\\s*(?<episode>\\d{1,4})(?![\\p{L}\\d])"_s.arg(
            episodeWords)),
        pattern(
            u"^(?<series>.*?)(?<![\\p{L}\\d])(?:part|teil|partie|parte|osa|часть)\\s+(?<roman>x|ix|v?i{1,3}|iv|v)(?![\\p{L}\\d])"_s),
        pattern(u"^(?<series>.*?\\S)\\s*#\\s*(?<episode>\\d{1,4})(?![\\p{L}\\d])"_s),
    };
    return list;
}

int romanValue(const QString &numeral)
{
    static const QStringList numerals{u"i"_s,  u"ii"_s,  u"iii"_s,  u"iv"_s, u"v"_s,
                                      u"vi"_s, u"vii"_s, u"viii"_s, u"ix"_s, u"x"_s};
    return int(numerals.indexOf(numeral.toLower())) + 1;
}

int numberOf(const QString &digits)
{
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    return isNumber ? number : -1;
}

// What a name says, and where it says it: blanks take the place of other characters one by one.
std::pair<EpisodeName, QRegularExpressionMatch> found(const QString &name)
{
    // Names of files write blanks as dots and lines.
    QString text = name;
    text.replace(u'.', u' ').replace(u'_', u' ');
    for (const QRegularExpression &expression : patterns()) {
        const QRegularExpressionMatch match = expression.match(text);
        if (!match.hasMatch())
            continue;
        EpisodeName episode;
        episode.series = wordsOf(match.captured(u"series"_s)).join(u' ');
        episode.season = numberOf(match.captured(u"season"_s));
        const QString roman = match.captured(u"roman"_s);
        episode.episode = roman.isEmpty() ? numberOf(match.captured(u"episode"_s)) : romanValue(roman);
        if (episode.isEpisode())
            return {episode, match};
    }
    return {};
}

} // namespace

QStringList wordsOf(const QString &name)
{
    static const QRegularExpression word(u"[\\p{L}\\p{M}\\p{N}]+"_s);
    QStringList words;
    auto matches = word.globalMatch(name.toLower());
    while (matches.hasNext())
        words.append(matches.next().captured());
    return words;
}

EpisodeName episodeOf(const QString &name)
{
    return found(name).first;
}

NumberedName numberedName(const QString &name)
{
    const auto [episode, match] = found(name);
    NumberedName numbered;
    if (!episode.isEpisode())
        return numbered;
    numbered.series = name.left(match.capturedEnd(u"series"_s));
    const qsizetype start = match.capturedStart(u"episode"_s);
    if (start < 0)
        return numbered;
    numbered.before = name.left(start);
    numbered.digits = name.mid(start, match.capturedLength(u"episode"_s));
    numbered.after = name.mid(match.capturedEnd(u"episode"_s));
    return numbered;
}

QStringList NumberedName::upTo(int number) const
{
    QStringList names{before + u"%1"_s.arg(number, int(digits.size()), 10, QChar(u'0')),
                      before + QString::number(number)};
    names.removeDuplicates();
    return names;
}
