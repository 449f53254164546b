// SPDX-License-Identifier: GPL-3.0-or-later
#include "optiontexts.h"

#include "subtitles/languages.h"
#include "timetext.h"
#include "wholeseconds.h"

#include <QLocale>
#include <QStringList>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace optiontexts {

namespace {

QString number(double value, int decimals)
{
    QString text = QLocale().toString(value, 'f', decimals);
    const QString point = QLocale().decimalPoint();
    if (!text.contains(point))
        return text;
    while (text.endsWith(QLocale().zeroDigit()))
        text.chop(1);
    return text.endsWith(point) ? text.chopped(point.size()) : text;
}

} // namespace

QString trackTitle(const MediaTrack &track, int index)
{
    const QString language = languages::displayName(track.language);
    if (!language.isEmpty())
        return language;
    return track.title.isEmpty() ? qtTrId("qtn_vide_options_track").arg(QLocale().toString(index + 1))
                                 : track.title;
}

QString trackFacts(const MediaTrack &track)
{
    QStringList facts;
    if (!track.title.isEmpty() && !languages::displayName(track.language).isEmpty())
        facts.append(track.title);
    if (!track.codec.isEmpty())
        facts.append(track.codec);
    return facts.join(u" \u00b7 "_s);
}

QString titleOf(const QList<MediaTrack> &tracks, const QString &id)
{
    for (int i = 0; i < int(tracks.size()); ++i) {
        if (tracks.at(i).id == id)
            return trackTitle(tracks.at(i), i);
    }
    return qtTrId("qtn_vide_options_off");
}

QString rate(qreal rate)
{
    if (qFuzzyCompare(rate, 1))
        return qtTrId("qtn_vide_options_normal");
    return number(rate, 2) + u"\u00d7"_s;
}

QString shift(MediaTime time)
{
    const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(time).count() / 100;
    const QString text = number(std::abs(double(tenths)) / 10, 1);
    const QString sign = tenths > 0 ? u"+"_s : tenths < 0 ? u"\u2212"_s : QString();
    return sign + text;
}

QString shiftInSeconds(MediaTime time)
{
    return qtTrId("qtn_vide_options_seconds").arg(shift(time));
}

QString place(MediaTime time)
{
    return timeText(wholeSeconds(time), QLocale());
}

QString section(const MediaSection &section)
{
    return u"%1 \u2013 %2"_s.arg(place(section.start), place(section.end));
}

} // namespace optiontexts
