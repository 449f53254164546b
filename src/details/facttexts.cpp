// SPDX-License-Identifier: GPL-3.0-or-later
#include "facttexts.h"

#include <data/videofacts.h>
#include <platform/media/subtitles/languages.h>
#include <platform/toolkit/locale.h>

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QUrl>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QString number(double value, int decimals)
{
    QLocale locale = toolkit::Locale::current();
    locale.setNumberOptions(locale.numberOptions() | QLocale::OmitGroupSeparator);
    return locale.toString(value, 'f', decimals);
}

bool isWhole(double value)
{
    return std::abs(value - std::round(value)) < 0.005;
}

QString codecs(const VideoFacts &facts)
{
    QStringList names = facts.audioCodecs;
    names.prepend(facts.videoCodec);
    names.removeAll(QString());
    names.removeDuplicates();
    return names.join(u", "_s);
}

} // namespace

QString FactTexts::frameRate(double rate)
{
    return number(rate, isWhole(rate) ? 0 : isWhole(rate * 10) ? 1 : 2);
}

QString FactTexts::bitRate(qint64 bitsPerSecond)
{
    if (bitsPerSecond >= 1000000)
        return qtTrId("qtn_vide_facts_megabits").arg(number(double(bitsPerSecond) / 1000000, 1));
    return qtTrId("qtn_vide_facts_kilobits").arg(number(std::max(1.0, double(bitsPerSecond) / 1000), 0));
}

QString FactTexts::folder(const QString &url)
{
    const QString file = QUrl(url).toLocalFile();
    if (file.isEmpty())
        return {};
    QString path = QFileInfo(file).path();
    const QString home = QDir::homePath();
    if (home != u"/"_s && (path == home || path.startsWith(home + u'/')))
        path.replace(0, home.size(), u"~"_s);
    // A path reads from left to right wherever it stands.
    const bool mirrored = QGuiApplication::layoutDirection() == Qt::RightToLeft;
    return mirrored ? QChar(0x2066) + path + QChar(0x2069) : path;
}

QString FactTexts::tracks(int count, const QStringList &codes)
{
    QStringList names;
    for (const QString &code : codes)
        names.append(languages::nameInText(code));
    names.removeAll(QString());
    names.removeDuplicates();
    const QString many = number(std::max(0, count), 0);
    if (names.isEmpty())
        return many;
    return qtTrId("qtn_vide_facts_languages")
        .arg(many, toolkit::Locale::ofTexts().createSeparatedList(names));
}

QStringList FactTexts::lines(const VideoFacts &facts, const QString &url)
{
    QStringList lines;
    if (facts.isEmpty())
        return lines;
    if (facts.width > 0 && facts.height > 0)
        lines.append(
            qtTrId("qtn_vide_facts_resolution").arg(number(facts.width, 0), number(facts.height, 0)));
    if (facts.frameRate > 0)
        lines.append(qtTrId("qtn_vide_facts_framerate").arg(frameRate(facts.frameRate)));
    if (const QString names = codecs(facts); !names.isEmpty())
        lines.append(qtTrId("qtn_vide_facts_codecs").arg(names));
    if (facts.bitRate > 0)
        lines.append(qtTrId("qtn_vide_facts_bitrate").arg(bitRate(facts.bitRate)));
    lines.append(qtTrId("qtn_vide_facts_audio").arg(tracks(facts.audioTracks, facts.audioLanguages)));
    lines.append(
        qtTrId("qtn_vide_facts_subtitles").arg(tracks(facts.subtitleTracks, facts.subtitleLanguages)));
    if (const QString where = folder(url); !where.isEmpty())
        lines.append(qtTrId("qtn_vide_facts_folder").arg(where));
    return lines;
}
