// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedlibrary.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

namespace {

const QStringList words{u"beach"_s,   u"mountain"_s, u"birthday"_s, u"garden"_s, u"winter"_s,
                        u"concert"_s, u"harbour"_s,  u"sunset"_s,   u"family"_s, u"holiday"_s,
                        u"evening"_s, u"train"_s,    u"lecture"_s,  u"market"_s};

QString mixedName(int number)
{
    if (number % 10 == 1)
        return u"Series %1 S%2E%3.mkv"_s.arg(number / 1000)
            .arg(number / 200 % 5 + 1, 2, 10, QChar(u'0'))
            .arg(number / 10 % 20 + 1, 2, 10, QChar(u'0'));
    if (number % 2 == 0)
        return u"VID_%1.mp4"_s.arg(number, 8, 10, QChar(u'0'));
    const auto word = [number](int step) { return words.at(number / step % words.size()); };
    return u"A %1 %2 with the %3 %4.mp4"_s.arg(word(3), word(41), word(577)).arg(number);
}

QString fileName(RelatedLibrary kind, int number)
{
    switch (kind) {
    case RelatedLibrary::Mixed:
        return mixedName(number);
    case RelatedLibrary::Alike:
        return u"Our long holiday together %1.mp4"_s.arg(number);
    case RelatedLibrary::Nested:
        break;
    }
    return number % 100 == 0 ? u"%1.mp4"_s.arg(number / 100, 3, 10, QChar(u'0'))
                             : u"%1.mp4"_s.arg(number, 6, 10, QChar(u'0'));
}

QString folderName(RelatedLibrary kind, int number)
{
    if (kind == RelatedLibrary::Mixed)
        return number % 2 == 0 ? u"Camera/"_s : u"Folder%1/"_s.arg(number / 100);
    const bool isClip = kind == RelatedLibrary::Nested && number % 100 != 0;
    return isClip ? u"%1/"_s.arg(number / 100, 3, 10, QChar(u'0')) : QString();
}

QByteArray recorded(RelatedLibrary kind, int number)
{
    const QDateTime first(QDate(2015, 1, 1), QTime(8, 0), QTimeZone::utc());
    const qint64 after = kind == RelatedLibrary::Alike ? number % 36'000 : number * 3600LL;
    return first.addSecs(after).toString(Qt::ISODate).toUtf8();
}

struct Place
{
    int series;
    int season;
    int episode;
};

Place placeOf(int number, int videos)
{
    const int large = videos / 20;
    if (number < large)
        return {0, 1, number + 1};
    return {1 + (number - large) / 20, 1 + (number - large) % 20 / 10, (number - large) % 10 + 1};
}

void addEpisode(TrackerBatch *batch, TrackerResource *video, const Place &place)
{
    const QByteArray series = u"urn:series:%1"_s.arg(place.series).toUtf8();
    const QByteArray season = u"urn:season:%1:%2"_s.arg(place.series).arg(place.season).toUtf8();
    tracker_resource_add_uri(video, "rdf:type", "nmm:TVShow");
    tracker_resource_set_int64(video, "nmm:episodeNumber", place.episode);
    tracker_resource_set_uri(video, "nmm:isPartOfSeason", season.constData());
    if (place.episode != 1)
        return;
    TrackerResource *whole = tracker_resource_new(series.constData());
    tracker_resource_set_uri(whole, "rdf:type", "nmm:TVSeries");
    tracker_resource_set_string(whole, "nie:title", u"Saga %1"_s.arg(place.series).toUtf8().constData());
    TrackerResource *part = tracker_resource_new(season.constData());
    tracker_resource_set_uri(part, "rdf:type", "nmm:TVSeason");
    tracker_resource_set_int64(part, "nmm:seasonNumber", place.season);
    tracker_resource_set_uri(part, "nmm:seasonOf", series.constData());
    for (TrackerResource *resource : {whole, part}) {
        tracker_batch_add_resource(batch, nullptr, resource);
        g_object_unref(resource);
    }
}

TrackerResource *resourceOf(RelatedLibrary kind, int number)
{
    const QByteArray name = fileName(kind, number).toUtf8();
    TrackerResource *video = tracker_resource_new(u"urn:uuid:related-%1"_s.arg(number).toUtf8().constData());
    tracker_resource_add_uri(video, "rdf:type", "nmm:Video");
    tracker_resource_add_uri(video, "rdf:type", "nfo:FileDataObject");
    tracker_resource_set_string(video, "nie:url", relatedUrl(kind, number).toUtf8().constData());
    tracker_resource_set_string(video, "nfo:fileName", name.constData());
    tracker_resource_set_string(video, "nie:mimeType", "video/mp4");
    tracker_resource_set_int64(video, "nfo:duration", 60 + number % 3600);
    tracker_resource_set_int64(video, "nmm:runTime", 0);
    tracker_resource_set_string(video, "nie:contentCreated", recorded(kind, number).constData());
    return video;
}

} // namespace

QString relatedUrl(RelatedLibrary kind, int number)
{
    return u"file:///home/user/Videos/"_s + folderName(kind, number)
        + fileName(kind, number).replace(u' ', u"%20"_s);
}

void fillRelatedLibrary(RelatedLibrary kind, int videos)
{
    const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/kestrel/store"_s;
    QDir().mkpath(folder);
    GFile *place = g_file_new_for_path(QFile::encodeName(folder).constData());
    GFile *ontology = tracker_sparql_get_ontology_nepomuk();
    GError *error = nullptr;
    TrackerSparqlConnection *store = tracker_sparql_connection_new(TRACKER_SPARQL_CONNECTION_FLAGS_NONE,
                                                                   place, ontology, nullptr, &error);
    if (!store)
        qFatal("%s", error->message);
    TrackerBatch *batch = tracker_sparql_connection_create_batch(store);
    for (int number = 0; number < videos; ++number) {
        TrackerResource *video = resourceOf(kind, number);
        if (kind == RelatedLibrary::Alike)
            addEpisode(batch, video, placeOf(number, videos));
        tracker_batch_add_resource(batch, nullptr, video);
        g_object_unref(video);
    }
    if (!tracker_batch_execute(batch, nullptr, &error))
        qFatal("%s", error->message);
    g_object_unref(batch);
    tracker_sparql_connection_close(store);
    g_object_unref(store);
    g_object_unref(ontology);
    g_object_unref(place);
}
