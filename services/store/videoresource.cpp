// SPDX-License-Identifier: GPL-3.0-or-later
#include "videoresource.h"

#include "platform/system/devicenames.h"

#include <QDateTime>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

void setText(TrackerResource *resource, const char *property, const QString &value)
{
    // A NUL would end the text early; the store takes any other character in a value.
    QString text = value;
    text.remove(QChar::Null);
    tracker_resource_set_string(resource, property, text.toUtf8().constData());
}

QString isoUtc(const QDateTime &time)
{
    return time.toUTC().toString(Qt::ISODate);
}

GRef<TrackerResource> resourceOf(const QString &urn)
{
    return GRef<TrackerResource>(tracker_resource_new(urn.toUtf8().constData()));
}

// A name of the user's world as the last part of a urn.
QString urnPart(const QString &name)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(name.trimmed().toLower()));
}

void addSeries(TrackerResource *video, const MediaReply &reply)
{
    if (reply.showName.isEmpty() || reply.season < 0)
        return;
    const QString show = urnPart(reply.showName);
    const auto series = resourceOf(u"urn:kestrel:series:"_s + show);
    tracker_resource_set_uri(series.get(), "rdf:type", "nmm:TVSeries");
    setText(series.get(), "nie:title", reply.showName);
    const auto season = resourceOf(u"urn:kestrel:season:%1:%2"_s.arg(show).arg(reply.season));
    tracker_resource_set_uri(season.get(), "rdf:type", "nmm:TVSeason");
    tracker_resource_set_int64(season.get(), "nmm:seasonNumber", reply.season);
    tracker_resource_set_relation(season.get(), "nmm:seasonOf", series.get());
    tracker_resource_set_relation(video, "nmm:isPartOfSeason", season.get());
}

void setContent(TrackerResource *video, const VideoRecord &record, const MediaReply &reply,
                const QString &equipment)
{
    const FileIdentity &file = record.identity;
    tracker_resource_set_int64(video, "nfo:fileSize", file.size);
    setText(video, "nfo:fileLastModified", isoUtc(QDateTime::fromMSecsSinceEpoch(file.modifiedMs)));
    setText(video, "nie:identifier", file.toText());
    // A clip shorter than half a second still lasts.
    const qint64 seconds = (reply.durationMs + 500) / 1000;
    tracker_resource_set_int64(video, "nfo:duration", reply.durationMs > 0 ? qMax<qint64>(1, seconds) : 0);
    setText(video, "nie:mimeType", reply.mimeType);
    if (!record.title.isNull())
        setText(video, "nie:title", record.title);
    setText(video, "nie:contentCreated", isoUtc(record.created));
    if (reply.width > 0 && reply.height > 0) {
        tracker_resource_set_int64(video, "nfo:width", reply.width);
        tracker_resource_set_int64(video, "nfo:height", reply.height);
    }
    if (!reply.synopsis.isEmpty())
        setText(video, "nmm:synopsis", reply.synopsis);
    if (reply.episode >= 0 || reply.season >= 0) {
        tracker_resource_add_uri(video, "rdf:type", "nmm:TVShow");
        if (reply.episode >= 0)
            tracker_resource_set_int64(video, "nmm:episodeNumber", reply.episode);
        addSeries(video, reply);
    }
    if (!equipment.isEmpty()) {
        const auto camera = resourceOf(equipment);
        tracker_resource_set_uri(camera.get(), "rdf:type", "nfo:Equipment");
        setText(camera.get(), "nfo:manufacturer", reply.cameraMake);
        setText(camera.get(), "nfo:model", reply.cameraModel);
        tracker_resource_set_relation(video, "nfo:equipment", camera.get());
    }
}

void setPlace(TrackerResource *video, const VideoRecord &record)
{
    setText(video, "nie:url", record.url);
    setText(video, "nfo:fileName", record.fileName);
}

void setPlays(TrackerResource *video, const VideoRecord &record)
{
    tracker_resource_set_int64(video, "nie:usageCounter", record.playCount);
    if (!record.lastPlayed.isEmpty())
        setText(video, "nie:contentAccessed", record.lastPlayed);
}

void setUserValues(TrackerResource *video, const VideoRecord &record)
{
    tracker_resource_set_int64(video, "nmm:runTime", record.runTime);
    setPlays(video, record);
}

} // namespace

QDateTime createdOf(const MediaReply &reply, const FileIdentity &file)
{
    return reply.created.isValid() ? reply.created : QDateTime::fromMSecsSinceEpoch(file.modifiedMs);
}

GRef<TrackerResource> newVideoResource(const VideoRecord &record, const MediaReply &reply,
                                       const QString &equipment)
{
    auto video = resourceOf(record.urn);
    tracker_resource_add_uri(video.get(), "rdf:type", "nmm:Video");
    tracker_resource_add_uri(video.get(), "rdf:type", "nfo:FileDataObject");
    setText(video.get(), "nrl:added", isoUtc(QDateTime::currentDateTimeUtc()));
    setPlace(video.get(), record);
    setContent(video.get(), record, reply, equipment);
    setUserValues(video.get(), record);
    return video;
}

GRef<TrackerResource> contentResource(const VideoRecord &record, const MediaReply &reply,
                                      const QString &equipment)
{
    auto video = resourceOf(record.urn);
    setContent(video.get(), record, reply, equipment);
    return video;
}

GRef<TrackerResource> placeResource(const VideoRecord &record)
{
    auto video = resourceOf(record.urn);
    setPlace(video.get(), record);
    setText(video.get(), "nie:identifier", record.identity.toText());
    return video;
}

GRef<TrackerResource> playResource(const VideoRecord &record)
{
    auto video = resourceOf(record.urn);
    setPlays(video.get(), record);
    return video;
}

GRef<TrackerResource> userResource(const VideoRecord &record)
{
    auto video = resourceOf(record.urn);
    setUserValues(video.get(), record);
    if (!record.title.isNull())
        setText(video.get(), "nie:title", record.title);
    return video;
}

QString equipmentUrn(const QString &make, const QString &model)
{
    if (make.isEmpty() && model.isEmpty())
        return {};
    return u"urn:equipment:%1:%2:"_s.arg(iriEncodedName(make.simplified()),
                                         iriEncodedName(model.simplified()));
}
