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
const QString s_content = u"?video a nmm:Video ; nie:isStoredAs ?file ."_s;
const QString s_unread = u"GRAPH tracker:Video { ?file a nfo:FileDataObject ; nfo:fileName ?name } "
                         "FILTER NOT EXISTS { ?any nie:isStoredAs ?file }"_s;

QList<IndexQuestion> questionsAbout(const QString &content, const QString &unread)
{
    // Joins, each of few tables: on 3.4.3 the same with functions takes 24 s for 10,000 videos, this 0.6 s,
    // and ten optional patterns are more than its parser takes.
    return {
        {u"SELECT DISTINCT ?file ?make ?model { %1 ?video nfo:equipment ?camera "
         "OPTIONAL { ?camera nfo:manufacturer ?make } OPTIONAL { ?camera nfo:model ?model } }"_s.arg(content),
         Make},
        {u"SELECT DISTINCT ?file ?synopsis { %1 ?video nmm:synopsis ?synopsis }"_s.arg(content), Synopsis},
        {u"SELECT DISTINCT ?file ?episode ?number ?show { %1 ?video a nmm:TVShow "
         "OPTIONAL { ?video nmm:episodeNumber ?episode } OPTIONAL { ?video nmm:isPartOfSeason ?season "
         "OPTIONAL { ?season nmm:seasonNumber ?number } "
         "OPTIONAL { ?season nmm:seasonOf ?series . ?series nie:title ?show } } }"_s.arg(content),
         Episode},
        {u"SELECT DISTINCT ?file ?video ?url ?size ?modified ?duration ?title ?type ?created ?width ?height "
         "{ %1 OPTIONAL { ?file nie:url ?url } OPTIONAL { ?file nfo:fileSize ?size } "
         "OPTIONAL { ?file nfo:fileLastModified ?modified } OPTIONAL { ?video nfo:duration ?duration } "
         "OPTIONAL { ?video nie:title ?title } OPTIONAL { ?video nie:mimeType ?type } "
         "OPTIONAL { ?video nie:contentCreated ?created } OPTIONAL { ?video nfo:width ?width } "
         "OPTIONAL { ?video nfo:height ?height } }"_s.arg(content),
         Content},
        {u"SELECT DISTINCT ?file ?none ?url ?size ?modified { %1 OPTIONAL { ?file nie:url ?url } "
         "OPTIONAL { ?file nfo:fileSize ?size } OPTIONAL { ?file nfo:fileLastModified ?modified } }"_s.arg(
             unread),
         Content},
    };
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

bool IndexQuestion::isLast() const
{
    return firstColumn == Content;
}

QList<IndexQuestion> allVideosQuestions()
{
    return questionsAbout(s_content, s_unread);
}

QString fileCountQuery()
{
    return u"SELECT (COUNT(?file) AS ?files) { GRAPH tracker:Video { ?file a nfo:FileDataObject } }"_s;
}

QList<IndexQuestion> videosQuestions(const QStringList &urns)
{
    const QString values = valuesOf(urns);
    if (values.isEmpty())
        return {};
    return questionsAbout(
        u"{ { VALUES ?video { %1 } %2 } UNION { VALUES ?file { %1 } %2 } }"_s.arg(values, s_content),
        u"VALUES ?file { %1 } %2"_s.arg(values, s_unread));
}

void takeDetails(const IndexQuestion &question, const QStringList &cells,
                 QHash<QString, QStringList> *details)
{
    QStringList &known = (*details)[cells.value(0)];
    known.resize(ColumnCount);
    // Whoever answers decides how many columns come.
    const qsizetype room = known.size() - question.firstColumn;
    for (qsizetype i = 1; i < cells.size() && i <= room; ++i)
        known[question.firstColumn + i - 1] = cells[i];
}

QString indexedFoldersQuery(const QStringList &urns)
{
    const QString values = valuesOf(urns);
    if (values.isEmpty())
        return {};
    return u"SELECT ?folder { VALUES ?folder { %1 } ?folder a tracker:IndexedFolder }"_s.arg(values);
}

std::optional<ToldFile> toldFileOf(const QStringList &row, const QHash<QString, QStringList> &details)
{
    if (row.isEmpty())
        return std::nullopt;
    QStringList cells = details.value(row.first());
    cells.resize(ColumnCount);
    for (qsizetype i = 0; i < qMin(row.size(), cells.size()); ++i)
        cells[i] = row[i];
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
