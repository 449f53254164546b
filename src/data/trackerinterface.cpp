// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackerinterface.h"

#include "datalog.h"
#include "sparqltemplates.h"
#include "storenews.h"
#include "trackeranswers.h"
#include "trackernotifier.h"
#include "videoconstants.h"

#include <platform/sparql/sparqlconnection.h>
#include <platform/sparql/sparqlresult.h>
#include <platform/system/systeminformation.h>

#include <QDateTime>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

// Hardware builds below this one are another model.
constexpr int firstFullHardwareBuild = 1501;

// For a value between angle brackets.
QString escapedIri(QString iri)
{
    return iri.replace(u"\\"_s, u"\\\\"_s).replace(u">"_s, u"\\>"_s).replace(u"<"_s, u"\\<"_s);
}

// For a value between double quotes.
QString escapedLiteral(QString literal)
{
    return literal.replace(u"\\"_s, u"\\\\"_s).replace(u"\""_s, u"\\\""_s);
}

QString propertyQuery(const QString &urn, const QString &property)
{
    QString text = SparqlTemplates::Property;
    text.replace(u"_URN_"_s, escapedIri(urn));
    text.replace(u"_PROPERTY_"_s, property);
    return text;
}

} // namespace

TrackerInterface *TrackerInterface::s_instance = nullptr;
QString TrackerInterface::s_mode = QStringLiteral("QTRACKER");

TrackerInterface *TrackerInterface::instance()
{
    if (!s_instance)
        s_instance = new TrackerInterface;
    return s_instance;
}

void TrackerInterface::setTrackerMode(const QString &mode)
{
    static const QStringList supported{u"QTRACKER"_s, u"QTRACKER_DIRECT"_s, u"QSPARQL_ENDPOINT"_s,
                                       u"QVIRTUOSO"_s};
    if (supported.contains(mode)) {
        s_mode = mode;
        return;
    }
    qCWarning(lcData) << "static void TrackerInterface::setTrackerMode(const QString&)"
                      << "Tracker mode:" << mode << " not supported";
}

TrackerInterface::TrackerInterface()
    : m_notifier(new TrackerNotifier(this)),
      m_connection(new SparqlConnection(s_mode, SparqlConnectionOptions(), this)),
      m_news(new StoreNews(this))
{
    connect(m_notifier, &TrackerNotifier::videosDeleted, this, &TrackerInterface::videosDeleted);
    // By name: the slot and the signal with the fresh rows share theirs.
    connect(m_notifier, SIGNAL(videosChanged(QList<int>)), this, SLOT(videosChanged(QList<int>)));
    connect(m_notifier, SIGNAL(videosAdded(QList<int>)), this, SLOT(videosChanged(QList<int>)));
    connect(m_notifier, &TrackerNotifier::storeReset, this, &TrackerInterface::askForAllAgain);
    connect(m_connection, &SparqlConnection::reset, this, &TrackerInterface::askForAllAgain);
    connect(m_connection, &SparqlConnection::reachableChanged, m_news, &StoreNews::setReachable);
}

bool TrackerInterface::isOnServer()
{
    return s_mode == "QSPARQL_ENDPOINT"_L1 || s_mode == "QVIRTUOSO"_L1;
}

// The connection and the notifier both tell of a store that came back: one request for both.
void TrackerInterface::askForAllAgain()
{
    if (std::exchange(m_reloadScheduled, true))
        return;
    QTimer::singleShot(0, this, [this] {
        m_reloadScheduled = false;
        allVideos(0);
    });
}

int TrackerInterface::allVideos(int limit)
{
    QString text = SparqlTemplates::Library.arg(equipmentIri());
    if (limit > 0)
        text += u" LIMIT "_s + QString::number(limit);
    text.replace(u"_FILTER_"_s, QString());
    return executeQuery(SparqlQuery(text), SLOT(allVideosReady()));
}

int TrackerInterface::dataFromUrn(const QString &urn)
{
    QString text = SparqlTemplates::Library.arg(equipmentIri());
    text.replace(u"_FILTER_"_s, SparqlTemplates::OneVideoFilter);
    text.replace(u"_URN_"_s, escapedIri(urn));
    return executeQuery(SparqlQuery(text), SLOT(dataFromUrnReady()));
}

int TrackerInterface::dataFromUrl(const QString &url, uint position)
{
    if (position != 0)
        m_pendingPosition = position;
    m_requestedUrl = url;
    QString text = SparqlTemplates::ByUrl;
    text.replace(u"_URL_"_s, escapedLiteral(url));
    return executeQuery(SparqlQuery(text), SLOT(dataFromUrlReady()));
}

int TrackerInterface::videoDetails(const QString &urn)
{
    QString text = SparqlTemplates::Details;
    text.replace(u"_URN_"_s, escapedIri(urn));
    return executeQuery(SparqlQuery(text), SLOT(videoDetailsReady()));
}

int TrackerInterface::urnForUrl(const QString &url)
{
    QString text = SparqlTemplates::UrnByUrl;
    text.replace(u"_URL_"_s, escapedLiteral(url));
    return executeQuery(SparqlQuery(text), SLOT(urnReady()));
}

int TrackerInterface::urlForUrn(const QString &urn)
{
    return propertyOf(urn, u"nie:url"_s, SLOT(urlReady()));
}

int TrackerInterface::title(const QString &urn)
{
    QString text = SparqlTemplates::Title;
    text.replace(u"_URN_"_s, escapedIri(urn));
    return executeQuery(SparqlQuery(text), SLOT(titleReady()));
}

int TrackerInterface::playCount(const QString &urn)
{
    return propertyOf(urn, u"nie:usageCounter"_s, SLOT(playCountReady()));
}

int TrackerInterface::playedTime(const QString &urn)
{
    return propertyOf(urn, u"nmm:runTime"_s, SLOT(playedTimeReady()));
}

bool TrackerInterface::setTitle(const QString &urn, const QString &title)
{
    return updateProperty(escapedLiteral(title), urn, u"nie:title"_s);
}

bool TrackerInterface::setPlayedTime(const QString &urn, uint position, const Acknowledged &acknowledged)
{
    return updateProperty(QString::number(position), urn, u"nmm:runTime"_s, acknowledged);
}

void TrackerInterface::recordPlay(const QString &urn)
{
    if (urn.isEmpty())
        return;
    SparqlResult *result = send(SparqlQuery(propertyQuery(urn, u"nie:usageCounter"_s)));
    if (!result)
        return;
    const QString begun = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    connect(result, &SparqlResult::finished, this, [this, result, urn, begun] {
        result->deleteLater();
        if (result->hasError()) {
            qCWarning(lcData) << "void TrackerInterface::recordPlay(const QString&)"
                              << "Error in query:" << result->errorMessage();
            return;
        }
        const int plays = result->next() ? result->value(0).toInt() : 0;
        updateProperty(QString::number(plays + 1), urn, u"nie:usageCounter"_s);
        updateProperty(begun, urn, u"nie:contentAccessed"_s);
    });
}

bool TrackerInterface::askStoredPlace(const QString &urn,
                                      const std::function<void(const StoredPlace &)> &answer)
{
    SparqlResult *result = send(SparqlQuery(propertyQuery(urn, u"nmm:runTime"_s)));
    if (!result)
        return false;
    connect(result, &SparqlResult::finished, this, [this, result, urn, answer] {
        result->deleteLater();
        StoredPlace place;
        place.answered = !result->hasError();
        if (place.answered && result->next())
            place.position = result->value(0).toUInt();
        else if (place.answered && isOnServer() && askWhetherAtBeginning(urn, answer))
            return;
        answer(place);
    });
    return true;
}

// The library's own store has a place for each of its videos; others have none in what was never played.
bool TrackerInterface::askWhetherAtBeginning(const QString &urn,
                                             const std::function<void(const StoredPlace &)> &answer)
{
    SparqlResult *result = send(SparqlQuery(propertyQuery(urn, u"nie:url"_s)));
    if (!result)
        return false;
    connect(result, &SparqlResult::finished, this, [result, answer] {
        result->deleteLater();
        StoredPlace place;
        place.answered = !result->hasError();
        if (place.answered && result->next())
            place.position = 0;
        answer(place);
    });
    return true;
}

int TrackerInterface::propertyOf(const QString &urn, const QString &property, const char *slot)
{
    return executeQuery(SparqlQuery(propertyQuery(urn, property)), slot);
}

// `value` is escaped already. The order of the replacements is part of what the store sees.
bool TrackerInterface::updateProperty(const QString &value, const QString &urn, const QString &property,
                                      const Acknowledged &acknowledged)
{
    QString text = SparqlTemplates::PropertyUpdate;
    text.replace(u"_VALUE_"_s, value);
    text.replace(u"_URN_"_s, escapedIri(urn));
    text.replace(u"_PROPERTY_"_s, property);
    SparqlResult *result = send(SparqlQuery(text, SparqlQuery::UpdateStatement));
    if (!result)
        return false;
    connect(result, &SparqlResult::finished, result, &QObject::deleteLater);
    connect(result, &SparqlResult::finished, this, [this, result, urn, property] {
        if (!result->hasError())
            Q_EMIT m_news->propertyStored(urn, property);
    });
    if (acknowledged)
        connect(result, &SparqlResult::finished, this,
                [result, acknowledged] { acknowledged(!result->hasError()); });
    return true;
}

QString TrackerInterface::equipmentIri()
{
    if (m_equipmentIri.isEmpty()) {
        const SystemInformation *information = SystemInformation::instance();
        const QString manufacturer = information->manufacturer();
        bool known = false;
        const int build = information->value(HW_BUILD_KEY).toInt(&known, 10);
        QString model = information->model();
        if (known && build != 0 && model == HW_BUILD_MODEL_FULL && build < firstFullHardwareBuild)
            model = HW_BUILD_MODEL_EARLY;
        m_equipmentIri = u"<urn:equipment:%1:%2:>"_s.arg(manufacturer, model);
    }
    return m_equipmentIri;
}

SparqlResult *TrackerInterface::send(const SparqlQuery &query)
{
    constexpr auto function = "int TrackerInterface::executeQuery(const SparqlQuery&, const char*)";
    SparqlResult *result = m_connection->exec(query);
    if (!result) {
        qCWarning(lcData) << function << "NULL result for query";
        return nullptr;
    }
    if (result->hasError()) {
        qCWarning(lcData) << function << "Error in query:" << result->errorMessage();
        delete result;
        return nullptr;
    }
    return result;
}

int TrackerInterface::executeQuery(const SparqlQuery &query, const char *slot)
{
    SparqlResult *result = send(query);
    if (!result)
        return 0;
    connect(result, SIGNAL(finished()), this, slot);
    return result->id();
}

void TrackerInterface::videosChanged(QList<int> ids)
{
    constexpr auto function = "void TrackerInterface::videosChanged(QList<int>)";
    QStringList texts;
    texts.reserve(ids.size());
    for (const int id : std::as_const(ids))
        texts.append(QString::number(id));
    QString text = SparqlTemplates::ByIds.arg(equipmentIri());
    text.replace(u"_ID_"_s, texts.join(u','));
    SparqlResult *result = m_connection->exec(SparqlQuery(text));
    if (!result) {
        qCWarning(lcData) << function << "NULL result for query";
        return;
    }
    if (result->hasError()) {
        qCWarning(lcData) << function << "Error in query:" << result->errorMessage();
        delete result;
        return;
    }
    connect(result, &SparqlResult::finished, this, &TrackerInterface::videosChangedReady);
}

SparqlResult *TrackerInterface::takeResult(const char *function)
{
    auto *result = qobject_cast<SparqlResult *>(sender());
    if (!result) {
        qCWarning(lcData) << function << "NULL result for query";
        return nullptr;
    }
    result->deleteLater();
    if (result->hasError()) {
        qCWarning(lcData) << function << "Error in query:" << result->errorMessage();
        return nullptr;
    }
    return result;
}

SparqlResult *TrackerInterface::takeFirstRow(const char *function)
{
    SparqlResult *result = takeResult(function);
    if (!result || result->next())
        return result;
    qCWarning(lcData) << function << "No data in query result";
    return nullptr;
}

void TrackerInterface::playedTimeReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::playedTimeReady()"))
        Q_EMIT playedTimeFinished(result->value(0).toInt(), result->id());
}

void TrackerInterface::dataFromUrlReady()
{
    constexpr auto function = "void TrackerInterface::dataFromUrlReady()";
    SparqlResult *result = takeResult(function);
    if (!result)
        return;
    VideoInfo info;
    if (result->next()) {
        info = TrackerAnswers::videoInfo(*result);
        if (m_pendingPosition != 0)
            info.playPosition = m_pendingPosition;
        m_pendingPosition = 0;
    } else {
        // What the store does not know can still be played.
        qCWarning(lcData) << function << "No data in query result";
        info.url = m_requestedUrl;
        info.playPosition = m_pendingPosition;
    }
    Q_EMIT dataFromUrlFinished(info, result->id());
}

void TrackerInterface::dataFromUrnReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::dataFromUrnReady()"))
        Q_EMIT dataFromUrnFinished(TrackerAnswers::videoInfo(*result), result->id());
}

void TrackerInterface::dataFromIdReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::dataFromIdReady()"))
        Q_EMIT dataFromIdFinished(TrackerAnswers::videoInfo(*result), result->id());
}

void TrackerInterface::videoDetailsReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::videoDetailsReady()"))
        Q_EMIT videoDetailsFinished(TrackerAnswers::videoDetails(*result), result->id());
}

void TrackerInterface::allVideosReady()
{
    auto *result = takeResult("void TrackerInterface::allVideosReady()");
    if (!result) {
        Q_EMIT m_news->listFailed();
        return;
    }
    const auto table = std::make_shared<const RowTable>(result->takeTable(VideoColumn::RowSize));
    const int id = result->id();
    Q_EMIT m_news->listLoaded(table, id);
    if (receivers(SIGNAL(allVideosFinished(QList<QStringList>, int))) <= m_news->tableReaders())
        return;
    m_news->setToldAgain(true);
    Q_EMIT allVideosFinished(TrackerAnswers::rows(*table), id);
    m_news->setToldAgain(false);
}

void TrackerInterface::urnReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::urnReady()"))
        Q_EMIT urnFinished(result->value(0).toString(), result->id());
}

void TrackerInterface::urlReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::urlReady()"))
        Q_EMIT urlFinished(result->value(0).toString(), result->id());
}

void TrackerInterface::titleReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::titleReady()"))
        Q_EMIT titleFinished(TrackerAnswers::title(*result), result->id());
}

void TrackerInterface::playCountReady()
{
    if (const auto *result = takeFirstRow("void TrackerInterface::playCountReady()"))
        Q_EMIT playCountFinished(result->value(0).toInt(), result->id());
}

void TrackerInterface::videosChangedReady()
{
    if (auto *result = takeResult("void TrackerInterface::videosChangedReady()"))
        Q_EMIT videosChanged(TrackerAnswers::rows(*result));
}
