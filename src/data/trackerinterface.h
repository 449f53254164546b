// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videodetails.h"
#include "videoinfo.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class SparqlConnection;
class SparqlQuery;
class SparqlResult;
class StoreNews;
class TrackerNotifier;

// The program's only door to the metadata store. Every request returns the id that its answer signal carries,
// or 0 when it could not be started; an answer that failed never comes. Clients keep their id and ignore
// answers with another.
class TrackerInterface : public QObject
{
    Q_OBJECT

public:
    // Created on the first call, never deleted.
    [[nodiscard]] static TrackerInterface *instance();
    // Driver of the connection, read when the instance is made.
    static void setTrackerMode(const QString &mode);
    [[nodiscard]] static QString trackerMode() { return s_mode; }
    // The library is on a server. The store service of this machine does not know its videos, nor is there a
    // file to be had.
    [[nodiscard]] static bool isOnServer();
    // Lives as long as this.
    [[nodiscard]] StoreNews *news() const { return m_news; }

    // Rows of all videos but those that this device recorded itself; `limit` 0 for no limit. ->
    // allVideosFinished()
    int allVideos(int limit);
    int dataFromUrn(const QString &urn); // -> dataFromUrnFinished()
    // A `position` other than 0 replaces the stored one in the answer. Answers also for what the store does
    // not know, with only the address filled. -> dataFromUrlFinished()
    int dataFromUrl(const QString &url, uint position);
    int videoDetails(const QString &urn); // -> videoDetailsFinished()
    int urnForUrl(const QString &url); // -> urnFinished()
    int urlForUrn(const QString &urn); // -> urlFinished()
    int title(const QString &urn); // -> titleFinished()
    int playCount(const QString &urn); // -> playCountFinished()
    int playedTime(const QString &urn); // -> playedTimeFinished()

    // Told once whether the store took an update: it is on its disk then. After a store that is away, late.
    using Acknowledged = std::function<void(bool stored)>;
    // True when the update was handed to the store; only then `acknowledged` is called.
    bool setTitle(const QString &urn, const QString &title);
    bool setPlayedTime(const QString &urn, uint position, const Acknowledged &acknowledged = {});

    // One play more, begun now. For a store that does not count by itself. What fails is not counted.
    void recordPlay(const QString &urn);

    struct StoredPlace
    {
        bool answered = false; // false: the store could not tell
        std::optional<quint32> position; // none: it has no such video
    };
    // The place that the store has by now, with what was handed to it before. False when it cannot be asked.
    bool askStoredPlace(const QString &urn, const std::function<void(const StoredPlace &)> &answer);

Q_SIGNALS:
    void playedTimeFinished(int position, int id);
    void dataFromUrlFinished(VideoInfo info, int id);
    void dataFromUrnFinished(VideoInfo info, int id);
    void dataFromIdFinished(VideoInfo info, int id);
    void videoDetailsFinished(VideoDetails details, int id);
    void allVideosFinished(QList<QStringList> rows, int id);
    void urnFinished(QString urn, int id);
    void urlFinished(QString url, int id);
    void titleFinished(QString title, int id);
    void playCountFinished(int count, int id);
    void videosDeleted(QList<int> ids);
    // Fresh rows of videos that were added or changed.
    void videosChanged(QList<QStringList> rows);

public Q_SLOTS:
    void playedTimeReady();
    void dataFromUrlReady();
    void dataFromUrnReady();
    void dataFromIdReady();
    void videoDetailsReady();
    void allVideosReady();
    void urnReady();
    void urlReady();
    void titleReady();
    void playCountReady();
    void videosChangedReady();
    void videosChanged(QList<int> ids);

protected:
    TrackerInterface();

private:
    int executeQuery(const SparqlQuery &query, const char *slot);
    // Null after a warning when it cannot be sent.
    [[nodiscard]] SparqlResult *send(const SparqlQuery &query);
    // The sender, finished without an error; otherwise null, after a warning that begins with `function`.
    [[nodiscard]] SparqlResult *takeResult(const char *function);
    // The same, stepped to its first row; null also when there is none.
    [[nodiscard]] SparqlResult *takeFirstRow(const char *function);
    bool updateProperty(const QString &value, const QString &urn, const QString &property,
                        const Acknowledged &acknowledged = {});
    int propertyOf(const QString &urn, const QString &property, const char *slot);
    bool askWhetherAtBeginning(const QString &urn, const std::function<void(const StoredPlace &)> &answer);
    [[nodiscard]] QString equipmentIri();
    void askForAllAgain();

    static TrackerInterface *s_instance;
    static QString s_mode;

    TrackerNotifier *m_notifier;
    SparqlConnection *m_connection;
    StoreNews *m_news;
    QString m_requestedUrl;
    quint32 m_pendingPosition = 0;
    QString m_equipmentIri;
    bool m_reloadScheduled = false;
};
