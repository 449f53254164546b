// SPDX-License-Identifier: GPL-3.0-or-later
#include "mediaworkerpool.h"

#include "mediaplugins.h"
#include "workerlog.h"
#include "workerprocess.h"

#include "platform/system/ownprograms.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSet>
#include <QThread>
#include <QTimer>

#include <deque>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int WatchIntervalMs = 50;
constexpr int MostStartFailures = 3;

// Never waits: a pipe or a device that somebody named like a video is not opened for reading.
int openRegularFile(const QString &path, QString &error)
{
    if (path.contains(QChar::Null)) {
        error = u"not a file name"_s;
        return -1;
    }
    const int file
        = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0) {
        error = qt_error_string(errno);
        return -1;
    }
    struct stat status = {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        return file;
    error = u"not a regular file"_s;
    ::close(file);
    return -1;
}

bool isUnder(const QString &path, const QString &directory)
{
    const QString clean = QDir::cleanPath(path);
    return clean == directory || clean.startsWith(directory.endsWith(u'/') ? directory : directory + u'/');
}

QString jailName(WorkerProtocol::Jail jail)
{
    switch (jail) {
    case WorkerProtocol::JailBubblewrap:
        return u"bubblewrap"_s;
    case WorkerProtocol::JailLandlock:
        return u"landlock+seccomp"_s;
    case WorkerProtocol::JailSeccomp:
        return u"seccomp"_s;
    case WorkerProtocol::JailNone:
        break;
    }
    return {};
}

struct Job
{
    int id = 0;
    MediaRequest request;
    // An earlier file may have left a trap in the worker: a file that ends a used worker is tried once in a
    // new one.
    bool freshWorkerOnly = false;
};

} // namespace

class MediaWorkerPool::Private
{
public:
    Private(const Limits &limits, MediaWorkerPool *pool);

    void pump();
    void startWorkers(int wanted);
    void startWorker();
    [[nodiscard]] WorkerProcess *idleWorker();
    void give(WorkerProcess *worker, Job job);
    void workerReplied(WorkerProcess *worker, MediaReply reply);
    void workerEnded(WorkerProcess *worker);
    void workerReady(WorkerProcess *worker);
    void watch();
    void failAll(const QString &reason);
    void answerLater(int id, const MediaReply &reply);
    [[nodiscard]] int aliveWorkers() const;

    MediaWorkerPool *const q;
    Limits limits;
    QString bubblewrap = bubblewrapProgram();
    QString program = helperProgram(u"kestrel-media-worker"_s);
    MediaPlugins plugins;
    std::deque<Job> waiting;
    std::vector<WorkerProcess *> workers; // children of the pool
    QSet<WorkerProcess *> inBubblewrap;
    QHash<WorkerProcess *, Job> running;
    QTimer watchTimer;
    QString jail;
    int lastId = 0;
    int startFailures = 0;
    int unanswered = 0; // waiting, running and answered but not yet reported
    int prestarted = 0;
};

MediaWorkerPool::Private::Private(const Limits &given, MediaWorkerPool *pool)
    : q(pool),
      limits(given),
      plugins(program)
{
    if (limits.workers <= 0)
        limits.workers = qBound(1, QThread::idealThreadCount(), 4);
    watchTimer.setInterval(WatchIntervalMs);
    QObject::connect(&watchTimer, &QTimer::timeout, q, [this] { watch(); });
    QObject::connect(&plugins, &MediaPlugins::ready, q, [this] { pump(); });
    QObject::connect(&plugins, &MediaPlugins::failed, q, [this](const QString &reason) { failAll(reason); });
}

int MediaWorkerPool::Private::aliveWorkers() const
{
    return static_cast<int>(workers.size());
}

WorkerProcess *MediaWorkerPool::Private::idleWorker()
{
    for (WorkerProcess *worker : workers) {
        if (worker->state() == WorkerProcess::State::Idle)
            return worker;
    }
    return nullptr;
}

void MediaWorkerPool::Private::pump()
{
    if (waiting.empty() && prestarted == 0)
        return;
    if (!plugins.isReady()) {
        plugins.ensure();
        return;
    }
    while (!waiting.empty()) {
        WorkerProcess *const worker = idleWorker();
        if (!worker)
            break;
        if (waiting.front().freshWorkerOnly && worker->filesRead() > 0) {
            std::erase(workers, worker);
            worker->retire();
            continue;
        }
        Job job = std::move(waiting.front());
        waiting.pop_front();
        give(worker, std::move(job));
    }
    startWorkers(qMax(prestarted, static_cast<int>(waiting.size() + running.size())));
}

void MediaWorkerPool::Private::startWorkers(int wanted)
{
    while (aliveWorkers() < qMin(wanted, limits.workers))
        startWorker();
}

void MediaWorkerPool::Private::startWorker()
{
    const WorkerCommand command = bubblewrap.isEmpty()
        ? plainCommand(program, plugins.folder())
        : bubblewrapCommand(bubblewrap, program, plugins.folder());
    auto *const worker = new WorkerProcess(command, limits, q);
    workers.push_back(worker);
    if (!bubblewrap.isEmpty())
        inBubblewrap.insert(worker);
    QObject::connect(worker, &WorkerProcess::ready, q, [this, worker] { workerReady(worker); });
    QObject::connect(worker, &WorkerProcess::replied, q,
                     [this, worker](const MediaReply &reply) { workerReplied(worker, reply); });
    QObject::connect(worker, &WorkerProcess::ended, q, [this, worker] { workerEnded(worker); });
    watchTimer.start();
}

void MediaWorkerPool::Private::workerReady(WorkerProcess *worker)
{
    startFailures = 0;
    const QString name = jailName(worker->jail());
    if (name != jail)
        qCInfo(workerLog, "media workers run in: %ls", qUtf16Printable(name));
    jail = name;
    pump();
}

void MediaWorkerPool::Private::give(WorkerProcess *worker, Job job)
{
    MediaReply failure;
    const int file = openRegularFile(job.request.path, failure.error);
    if (file < 0) {
        failure.status = MediaReply::Status::Unreadable;
        answerLater(job.id, failure);
        return;
    }
    running.insert(worker, job);
    worker->read(job.request, file);
    ::close(file);
}

void MediaWorkerPool::Private::workerReplied(WorkerProcess *worker, MediaReply reply)
{
    Job job = running.take(worker);
    const bool usedBefore = worker->filesRead() > 1;
    const bool ended = reply.status == MediaReply::Status::Crashed || worker->isStuck();
    if (ended && usedBefore && !job.freshWorkerOnly) {
        job.freshWorkerOnly = true;
        waiting.push_front(std::move(job));
        return;
    }
    if (reply.status != MediaReply::Status::Ok)
        qCInfo(workerLog, "%ls: %ls", qUtf16Printable(job.request.path), qUtf16Printable(reply.error));
    if (worker->state() == WorkerProcess::State::Idle && worker->filesRead() >= limits.filesPerWorker) {
        std::erase(workers, worker);
        worker->retire();
    }
    answerLater(job.id, reply);
    pump();
}

void MediaWorkerPool::Private::workerEnded(WorkerProcess *worker)
{
    std::erase(workers, worker);
    worker->deleteLater();
    const bool neverStarted = worker->jail() == WorkerProtocol::JailNone;
    if (inBubblewrap.remove(worker) && neverStarted) { // several may have been started at once
        if (!bubblewrap.isEmpty())
            qCInfo(workerLog, "bubblewrap does not run here; workers shut themselves in");
        bubblewrap.clear();
    } else if (neverStarted && ++startFailures >= MostStartFailures) {
        failAll(u"%1 does not start"_s.arg(program));
    }
    if (startFailures < MostStartFailures)
        pump();
    startFailures = startFailures % MostStartFailures;
}

void MediaWorkerPool::Private::watch()
{
    const std::vector<WorkerProcess *> now = workers;
    for (WorkerProcess *worker : now) {
        worker->checkLimits();
        if (worker->state() == WorkerProcess::State::Idle && worker->sinceChange() > limits.idleMs) {
            prestarted = 0;
            std::erase(workers, worker);
            worker->retire();
        }
    }
    if (workers.empty())
        watchTimer.stop();
}

void MediaWorkerPool::Private::failAll(const QString &reason)
{
    qCWarning(workerLog, "%ls", qUtf16Printable(reason));
    prestarted = 0;
    MediaReply reply;
    reply.status = MediaReply::Status::Unreadable; // nothing is known of the file
    reply.error = reason;
    for (const Job &job : std::exchange(waiting, {}))
        answerLater(job.id, reply);
}

// From the event loop, so that nobody is called back out of his own call.
void MediaWorkerPool::Private::answerLater(int id, const MediaReply &reply)
{
    QMetaObject::invokeMethod(
        q,
        [this, id, reply] {
            --unanswered;
            Q_EMIT q->finished(id, reply);
        },
        Qt::QueuedConnection);
}

MediaWorkerPool::MediaWorkerPool(const Limits &limits, QObject *parent)
    : QObject(parent),
      d(std::make_unique<Private>(limits, this))
{
}

MediaWorkerPool::~MediaWorkerPool()
{
    const std::vector<WorkerProcess *> workers = std::exchange(d->workers, {});
    for (WorkerProcess *worker : workers) {
        worker->disconnect(this);
        delete worker;
    }
}

int MediaWorkerPool::submit(const MediaRequest &request, bool urgent)
{
    Job job;
    job.id = ++d->lastId;
    job.request = request;
    ++d->unanswered;
    if (urgent)
        d->waiting.push_front(job);
    else
        d->waiting.push_back(job);
    d->pump();
    return job.id;
}

void MediaWorkerPool::prestart(int workers)
{
    d->prestarted = workers;
    d->pump();
}

void MediaWorkerPool::cancel(int id)
{
    const auto job
        = std::find_if(d->waiting.begin(), d->waiting.end(), [id](const Job &job) { return job.id == id; });
    if (job == d->waiting.end())
        return;
    d->waiting.erase(job);
    MediaReply reply;
    reply.status = MediaReply::Status::Cancelled;
    d->answerLater(id, reply);
}

void MediaWorkerPool::releaseFilesUnder(const QString &directory)
{
    const QString clean = QDir::cleanPath(directory);
    const QList<WorkerProcess *> readers = d->running.keys();
    for (WorkerProcess *worker : readers) {
        if (isUnder(d->running.value(worker).request.path, clean))
            worker->endNow(MediaReply::Status::Unreadable);
    }
}

int MediaWorkerPool::pending() const
{
    return d->unanswered;
}

QString MediaWorkerPool::jail() const
{
    return d->jail;
}
