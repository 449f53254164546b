// SPDX-License-Identifier: GPL-3.0-or-later
#include "provideranswer.h"

#include "plaintext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype mostVideos = 50;
constexpr qsizetype longestTitle = 500;
constexpr qsizetype longestAddress = 4000;
constexpr double longestVideo = 100 * 3600.0; // seconds

// Empty when it is none that something may be fetched from.
QString addressOf(const QJsonValue &value, const QUrl &base)
{
    const QString text = value.toString().trimmed();
    if (text.isEmpty() || text.size() > longestAddress)
        return {};
    const QUrl url = base.resolved(QUrl(text));
    return isWebAddress(url) ? QString::fromUtf8(url.toEncoded()) : QString();
}

std::optional<RelatedVideo> videoOf(const QJsonObject &entry, const QUrl &base)
{
    RelatedVideo video;
    video.url = addressOf(entry.value("address"_L1), base);
    video.title = plainText(entry.value("title"_L1).toString(), longestTitle);
    if (video.url.isEmpty() || video.title.isEmpty())
        return {};
    const double seconds = entry.value("duration"_L1).toDouble(0);
    video.duration = seconds > 0 && seconds < longestVideo ? int(seconds) : 0;
    video.picture = addressOf(entry.value("thumbnail"_L1), base);
    return video;
}

} // namespace

bool isWebAddress(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty()
        && (url.scheme() == "https"_L1 || url.scheme() == "http"_L1);
}

std::optional<QList<RelatedVideo>> providerVideos(const QByteArray &json, const QUrl &base)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject() || !document.object().value("videos"_L1).isArray())
        return {};
    QList<RelatedVideo> videos;
    const auto isKnown = [&videos](const RelatedVideo &video) {
        return std::any_of(videos.cbegin(), videos.cend(),
                           [&video](const RelatedVideo &known) { return known.url == video.url; });
    };
    const QJsonArray entries = document.object().value("videos"_L1).toArray();
    for (const QJsonValue &entry : entries) {
        if (videos.size() == mostVideos)
            break;
        if (const auto video = videoOf(entry.toObject(), base); video && !isKnown(*video))
            videos.append(*video);
    }
    return videos;
}
