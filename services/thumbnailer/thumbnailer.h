// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/mediaworkerpool.h"
#include "failurelog.h"
#include "thumbnailwriter.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

// What stands behind org.freedesktop.thumbnails.Thumbnailer1. The newest request goes first, its files in
// their order.
class Thumbnailer : public QObject
{
    Q_OBJECT

public:
    enum ErrorCode { Unsupported = 0, NoThumbnail = 1, Unreadable = 2, NotSaved = 3, UnknownFlavor = 4 };

    explicit Thumbnailer(const MediaWorkerPool::Limits &limits, QObject *parent = nullptr);

    [[nodiscard]] bool isIdle() const { return m_requests.isEmpty(); }
    // The file system is about to go: no file under it stays open.
    void releaseFilesUnder(const QString &directory) { m_pool.releaseFilesUnder(directory); }
    void forgetFailure(const QString &uri) { m_failures.remove(uri); }

public Q_SLOTS:
    uint Queue(const QStringList &uris, const QStringList &mimeTypes, const QString &flavor,
               const QString &scheduler, uint handleToUnqueue);
    void Dequeue(uint handle);
    QStringList GetSupported(QStringList &mimeTypes) const;
    QStringList GetFlavors() const;
    QStringList GetSchedulers() const;

Q_SIGNALS:
    void Started(uint handle);
    void Ready(uint handle, const QStringList &uris);
    void Error(uint handle, const QStringList &failedUris, int errorCode, const QString &message);
    void Finished(uint handle);
    // The last request is finished, or the first has come.
    void idleChanged(bool idle);

private:
    struct Request
    {
        uint handle = 0;
        bool flavorKnown = true;
        bool started = false;
        QStringList waiting;
        int underWay = 0;
    };
    // A file that a worker or the writer has. Requests that come for it meanwhile share it.
    struct Work
    {
        QString file;
        ThumbnailFiles::Stamp stamp;
        QList<uint> handles;
    };

    void pumpLater();
    void pump();
    void begin(Request &request, const QString &uri);
    [[nodiscard]] bool answerAtOnce(Request &request, const QString &uri, const QString &file,
                                    const ThumbnailFiles::Stamp &stamp);
    void fileRead(int id, const MediaReply &reply);
    void fileFailed(const QString &uri, const MediaReply &reply);
    void thumbnailWritten(const QString &uri, const QString &error);
    void endWork(const QString &uri, bool ready, int code, const QString &message);
    void finishIfDone(uint handle);
    [[nodiscard]] Request *find(uint handle);

    MediaWorkerPool m_pool;
    ThumbnailWriter m_writer;
    FailureLog m_failures;
    QList<Request> m_requests; // newest first
    QHash<QString, Work> m_work; // by address
    QHash<int, QString> m_reading; // the pool's ids
    uint m_lastHandle = 0;
    int m_mostReading;
    bool m_pumpPosted = false;
};
