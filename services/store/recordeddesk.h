// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "recordedtimes.h"

#include <QList>
#include <QObject>

#include <functional>
#include <utility>

class Database;
class VideoLibrary;

// Answers which videos were recorded at a time: from the library's table, and until that is read, which takes
// seconds where there are many, from the database.
class RecordedDesk : public QObject
{
    Q_OBJECT

public:
    // Neither is owned; both outlive the desk.
    RecordedDesk(Database *database, VideoLibrary *library, QObject *parent = nullptr);

    // Called once: at once when the table is read.
    using Answer = std::function<void(const QList<int> &ids)>;
    // False: too many questions wait, and this one is not answered.
    [[nodiscard]] bool ask(const RecordedQuestion &question, const Answer &answer);

    static constexpr int mostRows = 1000; // of an answer
    static constexpr int mostWaiting = 64;

private:
    void askDatabase(const RecordedQuestion &question, const Answer &answer);
    void waitForTable(const RecordedQuestion &question, const Answer &answer);
    void answerWaiting();

    Database *m_database;
    VideoLibrary *m_library;
    QList<std::pair<RecordedQuestion, Answer>> m_waiting; // for the table
    int m_asking = 0; // of the database
};
