// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackeranswers.h"

#include <platform/sparql/sparqlresult.h>

#include <QFileInfo>
#include <QSet>

namespace {

// Keeps one copy of a text that many rows share: a library has few MIME types and lengths, and mostly the
// position 0.
class SharedTexts
{
public:
    QString operator()(const QString &text)
    {
        if (m_texts.size() >= most)
            m_texts.clear();
        return *m_texts.insert(text);
    }

private:
    static constexpr int most = 4096; // so that a column of different texts is not kept twice for long
    QSet<QString> m_texts;
};

} // namespace

QString TrackerAnswers::titleOrBaseName(const QString &title, const QString &fileName)
{
    return title.isEmpty() ? QFileInfo(fileName).completeBaseName() : title;
}

QList<QStringList> TrackerAnswers::rows(SparqlResult &result)
{
    return rows(result.takeTable(VideoColumn::RowSize));
}

QList<QStringList> TrackerAnswers::rows(const RowTable &table)
{
    QList<QStringList> rows;
    rows.reserve(table.rows());
    SharedTexts shared;
    for (int number = 0; number < table.rows(); ++number) {
        QStringList row;
        row.reserve(VideoColumn::Count); // the model appends its two columns
        for (int column = 0; column < VideoColumn::RowSize; ++column)
            row.append(table.text(number, column));
        row[VideoColumn::Title] = titleOrBaseName(row.at(VideoColumn::Title), row.at(VideoColumn::FileName));
        for (const int column : {VideoColumn::Duration, VideoColumn::PlayPosition, VideoColumn::MimeType})
            row[column] = shared(row.at(column));
        rows.append(std::move(row));
    }
    return rows;
}

VideoInfo TrackerAnswers::videoInfo(const SparqlResult &result)
{
    VideoInfo info;
    info.urn = result.value(VideoColumn::Urn).toString();
    info.fileName = result.value(VideoColumn::FileName).toString();
    info.title = titleOrBaseName(result.value(VideoColumn::Title).toString(), info.fileName);
    info.duration = result.value(VideoColumn::Duration).toUInt();
    info.playPosition = result.value(VideoColumn::PlayPosition).toUInt();
    info.mimeType = result.value(VideoColumn::MimeType).toString();
    info.url = result.value(VideoColumn::Url).toString();
    info.trackerId = result.value(VideoColumn::TrackerId).toUInt();
    return info;
}

VideoDetails TrackerAnswers::videoDetails(const SparqlResult &result)
{
    VideoDetails details;
    details.urn = result.value(0).toString();
    details.url = result.value(7).toString();
    details.fileName = result.value(11).toString();
    details.title = result.value(1).toString();
    details.mimeType = result.value(6).toString();
    details.additionalInfo = result.value(8).toString();
    details.fileSize = result.value(3).toLongLong();
    details.added = result.value(9).toDateTime();
    details.lastAccessed = result.value(5).toDateTime();
    details.duration = result.value(2).toInt();
    details.playPosition = result.value(10).toInt();
    details.playCount = result.value(10).toInt();
    return details;
}

QString TrackerAnswers::title(const SparqlResult &result)
{
    const QString title = result.value(0).toString();
    return title.isEmpty() ? result.value(1).toString().section(u'.', 0, 0) : title;
}
