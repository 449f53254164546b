// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackchoices.h"

#include "playbackbounds.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace playbackbounds;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 LargestFile = 1024 * 1024;
constexpr qsizetype LongestText = 4096;

qint64 milliseconds(MediaTime time)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

std::optional<QString> text(const QJsonValue &value)
{
    return value.isString() ? std::optional(value.toString().left(LongestText)) : std::nullopt;
}

} // namespace

PlaybackChoices::PlaybackChoices(const QString &fileName) : m_fileName(fileName)
{
    load();
}

bool PlaybackChoices::set(const QString &uri, const PlaybackChoice &choice)
{
    if (uri.isEmpty() || uri.size() > LongestText || of(uri) == choice)
        return false;
    m_order.removeOne(uri);
    m_choices.remove(uri);
    if (choice.isNothing())
        return true;
    m_order.append(uri);
    m_choices.insert(uri, choice);
    while (m_order.size() > Capacity)
        m_choices.remove(m_order.takeFirst());
    return true;
}

bool PlaybackChoices::setSubtitleScale(qreal scale)
{
    scale = qBound(SmallestSubtitles, scale, LargestSubtitles);
    return !qFuzzyCompare(std::exchange(m_scale, scale), scale);
}

QByteArray PlaybackChoices::serialized() const
{
    QJsonArray videos;
    for (const QString &uri : m_order) {
        const PlaybackChoice choice = m_choices.value(uri);
        QJsonObject video{
            {u"uri"_s, uri}, {u"rate"_s, choice.rate}, {u"delay"_s, milliseconds(choice.delay)}};
        if (choice.subtitle)
            video.insert(u"subtitle"_s, *choice.subtitle);
        if (choice.sound)
            video.insert(u"sound"_s, *choice.sound);
        videos.append(video);
    }
    return QJsonDocument(QJsonObject{{u"subtitleScale"_s, m_scale}, {u"videos"_s, videos}}).toJson();
}

// What is broken in it is as if it had never been said.
void PlaybackChoices::load()
{
    QFile file(m_fileName);
    if (!file.open(QIODevice::ReadOnly) || file.size() > LargestFile)
        return;
    const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
    setSubtitleScale(all.value("subtitleScale"_L1).toDouble(1));
    const QJsonArray videos = all.value("videos"_L1).toArray();
    for (const QJsonValue &value : videos) {
        const QJsonObject video = value.toObject();
        PlaybackChoice choice;
        choice.subtitle = text(video.value("subtitle"_L1));
        choice.sound = text(video.value("sound"_L1));
        choice.rate = qBound(SlowestRate, video.value("rate"_L1).toDouble(1), FastestRate);
        choice.delay = std::clamp<MediaTime>(std::chrono::milliseconds(video.value("delay"_L1).toInt(0)),
                                             -LongestDelay, LongestDelay);
        set(video.value("uri"_L1).toString(), choice);
    }
}
