// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackernotifier.h"

#include "datalog.h"
#include "sparqltemplates.h"

#include <platform/sparql/sparqlconnection.h>
#include <platform/sparql/sparqlresult.h>

#include <QTimer>

#include <utility>

namespace {

constexpr int batchIntervalMs = 1000;
// The notifier listens to the library's own store, whatever driver the queries use.
const QString ontologyDriver = QStringLiteral("QTRACKER");
const QString videoClassIri = QStringLiteral("http://tracker.api.gnome.org/ontology/v3/nmm#Video");

QTimer *makeBatchTimer(QObject *parent)
{
    auto *timer = new QTimer(parent);
    timer->setSingleShot(true);
    timer->setInterval(batchIntervalMs);
    return timer;
}

} // namespace

void TrackerNotifier::IdList::add(int id)
{
    if (m_known.contains(id))
        return;
    m_known.insert(id);
    m_ids.append(id);
}

QList<int> TrackerNotifier::IdList::take()
{
    m_known.clear();
    return std::exchange(m_ids, {});
}

TrackerNotifier::TrackerNotifier(QObject *parent)
    : QObject(parent),
      m_insertsTimer(makeBatchTimer(this)),
      m_deletesTimer(makeBatchTimer(this))
{
    connect(m_insertsTimer, &QTimer::timeout, this, &TrackerNotifier::insertsDone);
    connect(m_deletesTimer, &QTimer::timeout, this, &TrackerNotifier::deletesDone);
    askForIds();
    m_changeNotifier = new ChangeNotifier(videoClassIri, this);
    connect(m_changeNotifier, &ChangeNotifier::changed, this, &TrackerNotifier::videoChanged);
    connect(m_changeNotifier, &ChangeNotifier::reset, this, &TrackerNotifier::startAnew);
}

TrackerNotifier::~TrackerNotifier() = default;

// A rebuilt store numbers its resources anew: what waits to be reported may be other videos by now.
void TrackerNotifier::startAnew()
{
    m_insertsTimer->stop();
    m_deletesTimer->stop();
    m_pendingAdded = {};
    m_pendingDeleted = {};
    m_early.clear();
    askForIds();
    Q_EMIT storeReset();
}

void TrackerNotifier::askForIds()
{
    if (m_ontologyConnection) {
        m_ontologyConnection->disconnect(this);
        m_ontologyConnection->deleteLater();
        m_ontologyResult = nullptr;
    }
    m_ontologyConnection = new SparqlConnection(ontologyDriver, SparqlConnectionOptions(), this);
    m_ontologyResult = m_ontologyConnection->exec(SparqlQuery(SparqlTemplates::Ontology));
    if (m_ontologyResult)
        connect(m_ontologyResult, &SparqlResult::finished, this, &TrackerNotifier::initIdVariables);
    else
        initIdVariables();
}

void TrackerNotifier::initIdVariables()
{
    // An answer that a newer question overtook.
    if (sender() && qobject_cast<SparqlResult *>(sender()) && sender() != m_ontologyResult)
        return;
    SparqlResult *result = std::exchange(m_ontologyResult, nullptr);
    if (!result) {
        qCWarning(lcData, "TrackerNotifier::TrackerNotifier: no result");
    } else if (result->hasError()) {
        qCWarning(lcData).noquote() << "TrackerNotifier::TrackerNotifier: ontology query failed:"
                                    << result->errorMessage();
    } else if (result->next()) {
        m_videoClassId = result->value(0).toInt();
        m_titleId = result->value(1).toInt();
        m_runTimeId = result->value(2).toInt();
        m_fileNameId = result->value(3).toInt();
    } else {
        qCWarning(lcData, "TrackerNotifier::TrackerNotifier: no ontology data");
    }
    if (result)
        result->deleteLater();
    if (m_ontologyConnection)
        std::exchange(m_ontologyConnection, nullptr)->deleteLater();
    const QList<Early> early = std::exchange(m_early, {});
    for (const Early &quads : early)
        videoChanged(quads.deletes, quads.inserts);
}

void TrackerNotifier::collect(const QList<ChangeNotifier::Quad> &quads, IdList &classified)
{
    for (const ChangeNotifier::Quad &quad : quads) {
        if (quad.object == m_videoClassId)
            classified.add(quad.subject);
        else if (quad.predicate == m_titleId || quad.predicate == m_runTimeId
                 || quad.predicate == m_fileNameId)
            m_pendingChanged.add(quad.subject);
    }
}

void TrackerNotifier::videoChanged(QList<ChangeNotifier::Quad> deletes, QList<ChangeNotifier::Quad> inserts)
{
    // A place that a killed program had left is saved as soon as the list is there.
    if (m_ontologyResult) {
        m_early.append({deletes, inserts});
        return;
    }
    collect(deletes, m_pendingDeleted);
    collect(inserts, m_pendingAdded);
    if (!m_pendingChanged.isEmpty())
        Q_EMIT videosChanged(m_pendingChanged.take());
    if (!m_pendingAdded.isEmpty())
        m_insertsTimer->start();
    if (!m_pendingDeleted.isEmpty() && !m_deletesTimer->isActive())
        m_deletesTimer->start();
}

void TrackerNotifier::insertsDone()
{
    if (!m_pendingAdded.isEmpty())
        Q_EMIT videosAdded(m_pendingAdded.take());
}

void TrackerNotifier::deletesDone()
{
    if (!m_pendingDeleted.isEmpty())
        Q_EMIT videosDeleted(m_pendingDeleted.take());
}
