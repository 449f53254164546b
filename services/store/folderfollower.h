// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "inotify.h"
#include "toldfile.h"
#include "videofiles.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <memory>

// Walks the roots and follows what happens below them. Lives in a thread of its own, because a file system
// may make any look at it wait: call its slots through the event loop. Files are reported when they are
// complete: closed after writing, or unchanged for a moment.
class FolderFollower : public QObject
{
    Q_OBJECT

public:
    explicit FolderFollower(QObject *parent = nullptr);
    ~FolderFollower() override;

public Q_SLOTS:
    // Sets up what belongs to the thread, which is made quiet: the person's own programs go first.
    void start();
    void addRoot(const QString &root);
    void rescanAll();
    // Folders are not read while somebody is about to tell what is in them.
    void setWaiting(bool waiting);
    // Videos that the desktop's index knows. In a folder that is still to be read they are reported in its
    // turn, everywhere else at once; they are not opened.
    void takeTold(const QList<ToldFile> &files);
    // Files that the index does not have (any more). Those that are not there are reported as missing, the
    // others as found, and what happens in their folders is followed from now on.
    void checkDropped(const QStringList &paths, bool indexRuns);
    // Lets go of everything below the folder, which is about to be unmounted.
    void release(const QString &folder);
    // Reads the head and tail of a file; answered by digested().
    void digest(const QString &path, bool urgent);

Q_SIGNALS:
    void scanStarted(const QString &root);
    void found(const QList<FoundFile> &files);
    // Every file below the root that was complete has been reported.
    void scanFinished(const QString &root);
    void moved(const QString &from, const QString &to, bool isFolder);
    void gone(const QString &path, bool isFolder);
    // Files outside what is followed were looked for and are not in their places. While the index runs it
    // would know them elsewhere.
    void missing(const QStringList &paths, bool indexRuns);
    void mountsChanged();
    // The root, or a file system below it, is out of reach: nothing is known of what lies there.
    void away(const QString &folder);
    void digested(const QString &path, const QByteArray &digest);

private:
    struct Scan
    {
        QString root;
        bool isWhole = true; // a root, rather than a folder that came
        std::deque<QString> folders;
        std::deque<QString> links; // after the folders, so that a folder is known by its own path
        QSet<std::pair<quint64, quint64>> visited;
    };
    struct Settling
    {
        FileIdentity seen;
        QElapsedTimer unchanged;
        bool fresh = false;
        bool holdsScan = false; // found by a scan and, as far as is known, complete
    };

    void scan(const QString &folder, bool isWhole);
    void step();
    void scanFolder(Scan *scan, const QString &folder);
    bool follow(const QString &folder);
    void finishScan();
    void endHeldScans();
    void consider(const QString &path, const FileIdentity &identity, bool fresh);
    void report(const FoundFile &file);
    void lookAt(const ToldFile &file);
    bool reportTold(const QString &path);
    void reportRestOfTold();
    [[nodiscard]] bool awaitsScan(const QString &path) const;
    void flush();
    void checkSettling();
    void checkRoots();
    void followMounts();
    void readMounts();
    [[nodiscard]] bool isRoot(const QString &folder) const { return m_roots.contains(folder); }

    void onCreated(const QString &path, bool isFolder);
    void onWritten(const QString &path);
    void onMoved(const QString &from, const QString &to, bool isFolder);
    void onGone(const QString &path, bool isFolder);
    void onFolderLost(const QString &folder, bool unmounted);

    std::unique_ptr<Inotify> m_inotify;
    QStringList m_roots;
    QSet<QString> m_absent; // roots that are not there
    std::deque<Scan> m_scans;
    QList<FoundFile> m_found;
    QHash<QString, ToldFile> m_told; // in folders that are still to be read
    bool m_waiting = false;
    QHash<QString, Settling> m_settling;
    QStringList m_heldScans; // done but for files that have to settle
    std::deque<QString> m_digests;
    QHash<QString, bool>
        m_unfollowed; // files that were dropped, and whether an index runs: no watch was left
    QTimer *m_stepTimer = nullptr;
    QTimer *m_settleTimer = nullptr;
    QTimer *m_rootTimer = nullptr;
    QTimer *m_rescanTimer = nullptr; // only where watches ran out
    std::unique_ptr<QSocketNotifier> m_mountNotifier;
    int m_mountInfo = -1;
    QStringList m_mounts; // those at or below a root
};
