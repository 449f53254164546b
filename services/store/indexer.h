// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileidentity.h"
#include "mediareader.h"
#include "scanprogress.h"
#include "videofiles.h"
#include "videolibrary.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <deque>
#include <functional>
#include <vector>

// Keeps the library in step with the files: decides for each found, changed, moved or lost file what it means
// for the store, and has new ones read by the workers. Hears of files only through its slots.
class Indexer : public QObject
{
    Q_OBJECT

public:
    // The urn of the camera that made a video, as it is to be stored; empty: none is.
    using EquipmentOf = std::function<QString(const MediaReply &)>;

    // Library and reader are not owned.
    Indexer(VideoLibrary *library, MediaReader *reader, EquipmentOf equipmentOf, QObject *parent = nullptr);

    [[nodiscard]] ScanProgress *progress() { return &m_progress; }

public Q_SLOTS:
    void onScanStarted(const QString &root);
    void onFound(const QList<FoundFile> &files);
    void onScanFinished(const QString &root);
    void onMoved(const QString &from, const QString &to, bool isFolder);
    void onGone(const QString &path, bool isFolder);
    // Files that nobody follows were looked for and not found. Unless `surely`, they may have been moved.
    void onMissing(const QStringList &paths, bool surely);
    void onAway(const QString &folder);
    void onDigested(const QString &path, const QByteArray &digest);

Q_SIGNALS:
    // Answered by onDigested().
    void digestWanted(const QString &path, bool urgent);

private:
    struct Job
    {
        QString path;
        FileIdentity identity;
        bool fresh = false;
        quint64 arrival = 0;
        int request = 0; // 0: waiting for its digest or for its turn
        std::optional<FileIdentity> newer; // written to again meanwhile
        std::shared_ptr<const MediaReply> facts; // no worker needs to read it
    };

    void consider(const FoundFile &file);
    void decide(const QString &path, const QByteArray &digest);
    void takeFacts(const QString &path, const std::shared_ptr<const MediaReply> &facts);
    void storeFacts(const QString &path);
    [[nodiscard]] bool mayBeKnown(const FileIdentity &identity) const;
    void digestKept();
    void keepDigest(const QString &urn);
    [[nodiscard]] bool isMoved(const Job &job);
    [[nodiscard]] bool isAway(const QString &path) const;
    void relocateTo(const QString &urn, const QString &path, const FileIdentity &identity);
    void submitWaiting();
    void onRead(int request, const MediaReply &reply);
    void store(const Job &job, const MediaReply &reply);
    void storeNew(const Job &job, const MediaReply &reply);
    void markBroken(const Job &job, const MediaReply &reply);
    void finish(const QString &path);
    void flushWhenIdle();
    void flush();
    [[nodiscard]] bool wasDeleted(const VideoRecord &record, const QSet<quint64> &devices) const;
    void lose(const QStringList &urns);
    void concludeScans();
    void concludeMissing();
    [[nodiscard]] QString copyOf(const VideoRecord &record) const;

    VideoLibrary *m_library;
    MediaReader *m_reader;
    EquipmentOf m_equipmentOf;
    ScanProgress m_progress;
    QHash<QString, Job> m_jobs; // by path
    QHash<int, QString> m_requests;
    QSet<QString> m_undigested; // not yet known to be new or moved
    std::deque<QString> m_waiting; // digested, to be read
    QStringList m_finishedScans;
    QStringList m_missing; // paths
    QHash<QString, QString> m_keeping; // urns by path, of stored videos whose digest is on its way
    std::vector<NewVideo> m_batch;
    QSet<QString> m_batched; // the paths in it
    QTimer m_batchTimer;
    quint64 m_arrivals = 0; // see VideoRecord::arrival
    quint64 m_scanArrival = 0; // of what the scans under way find
    QSet<QString> m_away;
    QSet<quint64> m_devices; // that the store's videos had which this scan found in their places
};
