// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>
#include <QStringList>

#include <memory>

// What a worker is asked about one file, and what it found.
struct MediaRequest
{
    QString path;
    bool wantMetadata = true;
    bool wantFrame = false;
    bool wantStreams = false; // what is said of the streams one by one; takes a little longer
    // The frame is scaled to cover this size (aspect kept, not cropped, never enlarged); empty: the picture's
    // own size.
    QSize frameSize;
    // Frame position as a fraction of the duration.
    double framePosition = 0.15;
};

struct MediaReply
{
    enum class Status {
        Ok = 0,
        Unreadable, // cannot be opened, went away, or there is no worker to open it
        NotMedia, // opened, but nothing that can be decoded
        NoPicture, // a frame was asked for and there is none (audio only)
        Crashed, // the worker ended on this file
        TimedOut, // the deadline passed (wall or CPU)
        TooMuchMemory,
        Cancelled,
    };
    Status status = Status::Ok;
    QString error; // a technical line

    qint64 durationMs = 0; // 0 unknown
    bool hasVideo = false;
    bool hasAudio = false;
    int width = 0; // as displayed: rotation and pixel aspect applied
    int height = 0;
    QString mimeType;
    QString title;
    QString showName;
    int season = -1;
    int episode = -1;
    QString synopsis;
    QString cameraMake;
    QString cameraModel;
    QDateTime created;
    // Of the streams.
    int frameRateMilli = 0; // thousandths of pictures a second; 0 unknown
    qint64 bitRate = 0; // bits a second, of the whole file; 0 unknown
    QString videoCodec;
    QStringList audioCodecs; // each once
    int audioTracks = 0;
    QStringList audioLanguages; // codes, of the tracks that tell theirs; each once
    int subtitleTracks = 0;
    QStringList subtitleLanguages;
    QImage frame;
};

// Jailed workers that read media files for the two services; pooled, reused, restarted. One request a worker
// at a time; requests beyond the number of workers wait in order. A file that ends a worker ends nothing
// else.
class MediaWorkerPool : public QObject
{
    Q_OBJECT

public:
    struct Limits
    {
        int workers = 0; // 0: the number of cores, at most 4
        int wallMs = 10000; // a file
        int cpuMs = 8000; // a file
        qint64 memoryBytes = qint64(1) << 30; // a worker
        int filesPerWorker = 200; // then it is replaced
        int idleMs = 10000; // an idle worker ends after this
    };

    explicit MediaWorkerPool(const Limits &limits, QObject *parent = nullptr);
    ~MediaWorkerPool() override;

    // Starts up to `workers` workers ahead of the first request.
    void prestart(int workers);
    // Returns a non-zero id that finished() carries.
    int submit(const MediaRequest &request, bool urgent = false);
    // A waiting request ends as Cancelled at once; one that a worker has begun is finished and reported.
    void cancel(int id);
    // Ends every worker that holds a file under `directory` now, so that the file system can be unmounted;
    // their requests end as Unreadable.
    void releaseFilesUnder(const QString &directory);
    [[nodiscard]] int pending() const;
    // "bubblewrap" or "landlock+seccomp" or "seccomp": the jail that the workers run in, once the first has
    // started.
    [[nodiscard]] QString jail() const;

Q_SIGNALS:
    void finished(int id, const MediaReply &reply);

private:
    class Private;
    std::unique_ptr<Private> d;
};
