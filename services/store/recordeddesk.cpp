// SPDX-License-Identifier: GPL-3.0-or-later
#include "recordeddesk.h"

#include "cursorstream.h"
#include "database.h"
#include "storelog.h"
#include "videolibrary.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

// What a time in the store can be.
constexpr qint64 s_firstTime = -62'135'596'800; // the year 1
constexpr qint64 s_lastTime = 253'402'300'799; // the year 9999

QString timeText(qint64 seconds)
{
    const auto time
        = QDateTime::fromSecsSinceEpoch(std::clamp(seconds, s_firstTime, s_lastTime), QTimeZone::utc());
    return u'"' + time.toUTC().toString(Qt::ISODate) + u"\"^^xsd:dateTime"_s;
}

// It has no index for these times, but going through them all is a small part of reading the videos.
QString textOf(const RecordedQuestion &question)
{
    return u"SELECT tracker:id(?video) ?created { ?video a nmm:Video ; nie:contentCreated ?created "
           "FILTER (?created >= %1 && ?created < %2) }"_s.arg(timeText(question.from),
                                                              timeText(question.until));
}

} // namespace

RecordedDesk::RecordedDesk(Database *database, VideoLibrary *library, QObject *parent)
    : QObject(parent),
      m_database(database),
      m_library(library)
{
    connect(library, &VideoLibrary::loaded, this, &RecordedDesk::answerWaiting);
}

bool RecordedDesk::ask(const RecordedQuestion &question, const Answer &answer)
{
    if (m_library->isLoaded())
        answer(question.answerFrom(m_library->table().recordedTimes()));
    else if (m_asking + m_waiting.size() >= mostWaiting)
        return false;
    else if (m_database->reader())
        askDatabase(question, answer);
    else
        waitForTable(question, answer);
    return true;
}

void RecordedDesk::askDatabase(const RecordedQuestion &question, const Answer &answer)
{
    GError *error = nullptr;
    GRef<TrackerSparqlCursor> cursor(tracker_sparql_connection_query(
        m_database->reader(), textOf(question).toUtf8().constData(), nullptr, &error));
    if (!cursor) {
        const GErrorRef owned(error);
        qCWarning(lcStore, "the day of a video is looked for later: %s", error->message);
        waitForTable(question, answer);
        return;
    }
    ++m_asking;
    auto *stream = new CursorStream(std::move(cursor), this);
    const auto times = std::make_shared<RecordedTimes>();
    connect(stream, &CursorStream::rows, this, [times](const QList<QStringList> &rows) {
        for (const QStringList &row : rows)
            times->insert(QDateTime::fromString(row.value(1), Qt::ISODate).toSecsSinceEpoch(),
                          row.value(0).toInt());
    });
    connect(stream, &CursorStream::finished, this, [=, this](const QString &failure) {
        stream->deleteLater();
        --m_asking;
        if (failure.isEmpty())
            answer(question.answerFrom(*times));
        else
            waitForTable(question, answer);
    });
}

void RecordedDesk::waitForTable(const RecordedQuestion &question, const Answer &answer)
{
    m_waiting.append({question, answer});
    if (m_library->isLoaded())
        answerWaiting();
}

void RecordedDesk::answerWaiting()
{
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto &[question, answer] : waiting)
        answer(question.answerFrom(m_library->table().recordedTimes()));
}
