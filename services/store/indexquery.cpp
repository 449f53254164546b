// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexquery.h"

#include "database.h"
#include "storepaths.h"

#include "platform/sparql/fileuri.h"

#include <QDateTime>

using namespace Qt::Literals::StringLiterals;

namespace {

enum Column {
    FileIri,
    Content,
    Url,
    Size,
    Modified,
    Duration,
    Title,
    MimeType,
    Created,
    Width,
    Height,
    Make,
    Model,
    Synopsis,
    Episode,
    Season,
    Show,
    ColumnCount
};

// The index keeps a file and its content as two resources; the second one comes when it has read the file.
const QString s_content = u"?video a nmm:Video ; nie:isStoredAs ?file"_s;
const QString s_unread = u"GRAPH tracker:Video { ?file a nfo:FileDataObject ; nfo:fileName ?name } "
                         "FILTER NOT EXISTS { ?any nie:isStoredAs ?file }"_s;

// Functions rather than patterns: a value that is missing must not hide the row.
QString selectVideos(const QString &where)
{
    return u"SELECT DISTINCT ?file ?video nie:url(?file) nfo:fileSize(?file) nfo:fileLastModified(?file) "
           "nfo:duration(?video) nie:title(?video) nie:mimeType(?video) nie:contentCreated(?video) "
           "nfo:width(?video) nfo:height(?video) nfo:manufacturer(nfo:equipment(?video)) "
           "nfo:model(nfo:equipment(?video)) nmm:synopsis(?video) nmm:episodeNumber(?video) "
           "nmm:seasonNumber(nmm:isPartOfSeason(?video)) "
           "nie:title(nmm:seasonOf(nmm:isPartOfSeason(?video))) { %1 }"_s.arg(where);
}

QString valuesOf(const QStringList &urns)
{
    QString values;
    for (const QString &urn : urns) {
        if (isPlainIri(urn))
            values += u'<' + urn + u"> "_s;
    }
    return values;
}

int numberOr(const QString &text, int otherwise)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok ? number : otherwise;
}

std::shared_ptr<const MediaReply> factsOf(const QStringList &cells)
{
    const qint64 seconds = cells[Duration].toLongLong();
    // Nothing shorter than a second is told; a worker finds out more.
    if (seconds <= 0)
        return nullptr;
    MediaReply facts;
    facts.durationMs = seconds * 1000;
    facts.hasVideo = true;
    facts.title = cells[Title];
    facts.mimeType = cells[MimeType];
    facts.created = QDateTime::fromString(cells[Created], Qt::ISODateWithMs);
    facts.width = numberOr(cells[Width], 0);
    facts.height = numberOr(cells[Height], 0);
    facts.cameraMake = cells[Make];
    facts.cameraModel = cells[Model];
    facts.synopsis = cells[Synopsis];
    facts.episode = numberOr(cells[Episode], -1);
    facts.season = numberOr(cells[Season], -1);
    facts.showName = cells[Show];
    return std::make_shared<const MediaReply>(std::move(facts));
}

} // namespace

QString allVideosQuery()
{
    return selectVideos(u"{ %1 } UNION { %2 }"_s.arg(s_content, s_unread));
}

QString videosQuery(const QStringList &urns)
{
    const QString values = valuesOf(urns);
    if (values.isEmpty())
        return {};
    return selectVideos(u"{ VALUES ?video { %1 } %2 } UNION { VALUES ?file { %1 } %2 } UNION "
                        "{ VALUES ?file { %1 } %3 }"_s.arg(values, s_content, s_unread));
}

QString indexedFoldersQuery(const QStringList &urns)
{
    const QString values = valuesOf(urns);
    if (values.isEmpty())
        return {};
    return u"SELECT ?folder { VALUES ?folder { %1 } ?folder a tracker:IndexedFolder }"_s.arg(values);
}

std::optional<ToldFile> toldFileOf(const QStringList &cells)
{
    if (cells.size() != ColumnCount)
        return std::nullopt;
    const QString &address = cells[Url].isEmpty() ? cells[FileIri] : cells[Url];
    ToldFile file;
    file.path = localPathOf(canonicalFileUri(address));
    if (file.path.isEmpty())
        return std::nullopt;
    file.size = cells[Size].isEmpty() ? -1 : cells[Size].toLongLong();
    const QDateTime modified = QDateTime::fromString(cells[Modified], Qt::ISODateWithMs);
    if (modified.isValid())
        file.modified = modified.toSecsSinceEpoch();
    file.isRead = !cells[Content].isEmpty();
    if (file.isRead)
        file.facts = factsOf(cells);
    return file;
}
