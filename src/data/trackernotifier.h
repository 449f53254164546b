// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/sparql/changenotifier.h>

#include <QList>
#include <QObject>
#include <QSet>

class QTimer;
class SparqlConnection;
class SparqlResult;

// Turns the store's quads about videos into three lists of store ids. Additions are reported one second after
// the last of a burst, deletions one second after the first of a burst, changes of title, run time and file
// name at once.
class TrackerNotifier : public QObject
{
    Q_OBJECT

public:
    explicit TrackerNotifier(QObject *parent);
    ~TrackerNotifier() override;

Q_SIGNALS:
    void videosAdded(QList<int> ids);
    void videosDeleted(QList<int> ids);
    void videosChanged(QList<int> ids);
    // Changes may have been missed: everything is to be asked for again.
    void storeReset();

public Q_SLOTS:
    void initIdVariables();
    void videoChanged(QList<ChangeNotifier::Quad> deletes, QList<ChangeNotifier::Quad> inserts);
    void insertsDone();
    void deletesDone();

private:
    friend struct TrackerNotifierProbe;

    // Ids in the order in which they were first seen, each once.
    class IdList
    {
    public:
        void add(int id);
        [[nodiscard]] bool isEmpty() const { return m_ids.isEmpty(); }
        [[nodiscard]] QList<int> take();

    private:
        QList<int> m_ids;
        QSet<int> m_known; // a scan of 100,000 files would make a linear search of the list cost minutes
    };

    void startAnew();
    void askForIds();
    void collect(const QList<ChangeNotifier::Quad> &quads, IdList &classified);

    // Quads that came before the answer that says what they are of.
    struct Early
    {
        QList<ChangeNotifier::Quad> deletes;
        QList<ChangeNotifier::Quad> inserts;
    };

    SparqlConnection *m_ontologyConnection = nullptr;
    SparqlResult *m_ontologyResult = nullptr;
    ChangeNotifier *m_changeNotifier = nullptr;
    int m_videoClassId = 0;
    int m_titleId = 0;
    int m_runTimeId = 0;
    int m_fileNameId = 0;
    int m_equipmentId = 0; // asked for, not read: an equipment never changes
    QTimer *m_insertsTimer;
    QTimer *m_deletesTimer;
    QList<Early> m_early;
    IdList m_pendingAdded;
    IdList m_pendingDeleted;
    IdList m_pendingChanged;
};
