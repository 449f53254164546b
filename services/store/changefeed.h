// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "quad.h"

#include <QObject>
#include <QTimer>

// Store ids of what the quads name.
struct StoreTerms
{
    int type = 0; // rdf:type
    int video = 0; // nmm:Video
    int title = 0; // nie:title
    int runTime = 0; // nmm:runTime
    int fileName = 0; // nfo:fileName

    friend bool operator==(const StoreTerms &, const StoreTerms &) = default;
};

// Turns what happened to videos into batches of quads. Deletions and changed values go out in the same turn
// of the event loop; new videos at once when none went out lately, and gathered otherwise, so that a reader
// who waits for a quiet second after each batch gets rows during a long scan.
class ChangeFeed : public QObject
{
    Q_OBJECT

public:
    explicit ChangeFeed(QObject *parent = nullptr);

    void setTerms(const StoreTerms &terms) { m_terms = terms; }

    void videoAdded(int id);
    void videoDeleted(int id);
    void titleChanged(int id) { valueChanged(id, m_terms.title); }
    void runTimeChanged(int id) { valueChanged(id, m_terms.runTime); }
    void fileNameChanged(int id) { valueChanged(id, m_terms.fileName); }
    // What was gathered is about a database that is no more.
    void clear();

Q_SIGNALS:
    void changed(const QList<StoreQuad> &deletes, const QList<StoreQuad> &inserts);

private:
    void valueChanged(int id, int predicate);
    void send();
    void sendAdded();

    StoreTerms m_terms;
    QList<StoreQuad> m_deletes;
    QList<StoreQuad> m_changes;
    QList<StoreQuad> m_added;
    QTimer m_turn;
    QTimer m_gather;
};
