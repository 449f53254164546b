// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "changefeed.h"
#include "database.h"
#include "factsdesk.h"
#include "indexer.h"
#include "peerserver.h"
#include "recordeddesk.h"
#include "storepaths.h"
#include "userjournal.h"
#include "videolibrary.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QThread>

#include <memory>

class FolderFollower;
class IndexMirror;

// The service as a whole: puts its parts together, and answers on the session bus.
class StoreService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_PROPERTY(bool Healthy READ isHealthy)

public:
    // Makes the reader of media files when the first file is to be read.
    using ReaderFactory = std::function<std::unique_ptr<MediaReader>()>;

    StoreService(const StorePaths &paths, const ReaderFactory &makeReader, QObject *parent = nullptr);
    ~StoreService() override;

    // Opens the database and begins to listen. False when neither can be done here.
    bool start();
    void addRoot(const QString &path);
    // Takes from the desktop's file index what it knows already. Before start().
    void followDesktopIndex();
    [[nodiscard]] bool isHealthy() const { return m_database.isHealthy(); }
    // Nothing is on its way to the disk.
    [[nodiscard]] bool isIdle() const { return m_database.pendingWrites() == 0; }
    // Closes the database; the program may end Database::endMs later.
    void end() { m_database.end(); }
    // The file system at this folder is about to go.
    void releaseFolder(const QString &folder);

    // The interface on the session bus, under its names there.
    QString Socket();
    void AddRoot(const QString &path);
    QStringList Roots() const { return m_roots; }
    void RecordPlay(const QString &urn);
    QVariantMap Facts(const QString &urn);
    QList<int> RecordedBetween(qlonglong from, qlonglong until, qlonglong around, uint most);
    bool Progress(uint &seen, uint &done);

Q_SIGNALS:
    void ProgressChanged(bool scanning, uint seen, uint done);

    void rootAdded(const QString &path);

private:
    void connectParts();
    void connectFollower();
    void followFolders();
    void checkOutsiders(const QSet<QString> &told, bool indexRuns);
    void answerWaiting();
    void announceHealth(bool healthy);
    [[nodiscard]] static QString equipmentOf(const MediaReply &reply);

    StorePaths m_paths;
    UserJournal m_journal;
    Database m_database;
    ChangeFeed m_feed;
    VideoLibrary m_library;
    PeerServer m_peers;
    std::unique_ptr<MediaReader> m_reader;
    std::unique_ptr<Indexer> m_indexer;
    FactsDesk m_facts;
    RecordedDesk m_recorded;
    QThread m_thread; // the follower's
    FolderFollower *m_follower;
    IndexMirror *m_mirror = nullptr;
    QStringList m_roots;
    QList<QDBusMessage> m_waitingForSocket;
    bool m_answerable = false; // there is a database to ask, or none will come soon
};
