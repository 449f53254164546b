// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "librarysnapshot.h"
#include "platform/sparql/changenotifier.h"

#include <QElapsedTimer>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <functional>

class SparqlConnection;
class SparqlResult;

// The source of quads where the server tells no changes: asks every now and then and compares. Polls only
// while it is visible and a list is shown; one question at a time; a poll that fails changes nothing.
//
// A poll asks for a number for each of 256 groups of videos, and for the videos of the groups whose number is
// another than before, some thousands at a time. What it knows comes from the list that the program shows, so
// the first poll reads every group once: what changed while the list was on its way is noticed then.
class ChangePoll : public QObject
{
    Q_OBJECT

public:
    struct Options
    {
        QString driver; // "QSPARQL_ENDPOINT" or "QVIRTUOSO"
        // Read before each pause; 0: no polls. Longer when the server takes long: it is kept busy for a tenth
        // of the time at most.
        std::function<std::chrono::milliseconds()> interval;
        // Milliseconds from any point on.
        std::function<qint64()> clock;
        // Rows asked for at once, about.
        int mostRows = 20000;
        // More videos that are new or other than before are not told one by one: the notifier's reset() asks
        // for a new list.
        int mostChanges = 1000;
    };

    // Each record that the server stamps anew spares it the numbers of the groups, except in every tenth
    // poll: not every program that writes there sets stamps.
    static constexpr int pollsPerFullOne = 10;

    explicit ChangePoll(Options options, QObject *parent = nullptr);
    ~ChangePoll() override;

    // What ChangeNotifier::setSource() is given; quads go to the notifier attached last.
    void attach(ChangeNotifier *notifier);

    void setVisible(bool visible);
    // What the list shows now: polls begin with the first, and begin anew with each.
    void setList(LibrarySnapshot list);
    // The server took an update of this program: told at once. `property`: Title or Position.
    void tellWritten(const QString &iri, LibrarySnapshot::Property property);

    [[nodiscard]] bool isReachable() const;
    [[nodiscard]] const LibrarySnapshot &snapshot() const { return m_known; }

Q_SIGNALS:
    void reachableChanged(bool reachable);

private:
    struct Numbers
    {
        int videoClass = 0;
        int title = 0;
        int position = 0;
        int fileName = 0;
        int type = 0;
        [[nodiscard]] bool isKnown() const { return videoClass != 0; }
    };
    struct Group
    {
        qint64 videos = 0;
        QString content;
        friend bool operator==(const Group &, const Group &) = default;
    };
    using Groups = QMap<int, Group>;
    using Quads = QList<ChangeNotifier::Quad>;
    using Answer = void (ChangePoll::*)(SparqlResult &result);

    void askForNumbers();
    void numbersRead();
    void begin();
    void ask(const QString &text, Answer answer);
    void stampsRead(SparqlResult &result);
    void askForGroups();
    void groupsRead(SparqlResult &result);
    void askForRows();
    void rowsRead(SparqlResult &result);
    void readSomeRows();
    void compareRows(const QList<LibrarySnapshot::Row> &rows);
    void settleGroups(bool complete);
    void readComplete();
    void finish();
    void fail(const QString &reason);
    void abandon();
    void schedule();

    [[nodiscard]] bool admit(const LibrarySnapshot::Differences &differences);
    void tell(const LibrarySnapshot::Differences &differences);
    [[nodiscard]] ChangeNotifier::Quad typeQuad(int id) const;
    void appendValueQuads(Quads &quads, int id, LibrarySnapshot::Properties properties) const;

    Options m_options;
    SparqlConnection *m_connection;
    QPointer<ChangeNotifier> m_notifier;
    QTimer m_timer{this};
    bool m_visible = false;
    bool m_hasList = false;
    qint64 m_due = 0; // on the clock: when the next poll is

    Numbers m_numbers;
    SparqlConnection *m_ownStore = nullptr; // while the numbers are asked for
    SparqlResult *m_numbersResult = nullptr;
    bool m_numbersFailed = false;
    QList<std::pair<int, LibrarySnapshot::Property>> m_written; // told once the numbers are known

    LibrarySnapshot m_known;
    Groups m_settled; // whose videos are known as the server had them
    bool m_isVerified = false; // every group was read since the list was

    // Of the poll under way.
    SparqlResult *m_result = nullptr;
    qint64 m_begun = 0;
    Groups m_offered; // by the server, this time
    QList<int> m_different; // groups to be read
    QList<int> m_asked; // of them, which are being read
    QList<LibrarySnapshot::Row> m_rows; // of those, as far as they were read
    int m_changes = 0;

    int m_mostRows;
    bool m_mayHaveStamps = true;
    QString m_stamps;
    QString m_settledStamps; // when the groups were compared
    int m_stampedPolls = 0; // since then
    bool m_mayReset = true; // false from a reset until a poll that needed none
};
