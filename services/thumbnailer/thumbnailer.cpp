// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailer.h"

#include "thumbnailerlog.h"

#include <QThread>

using namespace Qt::Literals::StringLiterals;

namespace {

// Covers this: 960 pixels wide for every usual shape; what is higher than wide is made smaller when it is
// written.
constexpr QSize CoverSize(960, 270);

int workersFor(const MediaWorkerPool::Limits &limits)
{
    return limits.workers > 0 ? limits.workers : qBound(1, QThread::idealThreadCount(), 4);
}

} // namespace

Thumbnailer::Thumbnailer(const MediaWorkerPool::Limits &limits, QObject *parent)
    : QObject(parent),
      m_pool(limits),
      m_mostReading(workersFor(limits))
{
    connect(&m_pool, &MediaWorkerPool::finished, this, &Thumbnailer::fileRead);
    connect(&m_writer, &ThumbnailWriter::written, this, &Thumbnailer::thumbnailWritten);
    m_pool.prestart(m_mostReading);
}

uint Thumbnailer::Queue(const QStringList &uris, const QStringList &, const QString &flavor, const QString &,
                        uint handleToUnqueue)
{
    if (handleToUnqueue != 0)
        Dequeue(handleToUnqueue);
    const bool wasIdle = isIdle();
    if (++m_lastHandle == 0)
        ++m_lastHandle;
    Request request;
    request.handle = m_lastHandle;
    request.flavorKnown = GetFlavors().contains(flavor);
    request.waiting = uris;
    m_requests.prepend(request);
    if (wasIdle)
        Q_EMIT idleChanged(false);
    pumpLater();
    return request.handle;
}

void Thumbnailer::Dequeue(uint handle)
{
    if (Request *const request = find(handle)) {
        request->waiting.clear();
        pumpLater();
    }
}

QStringList Thumbnailer::GetSupported(QStringList &mimeTypes) const
{
    mimeTypes = {u"video/mp4"_s,        u"video/quicktime"_s, u"video/3gpp"_s,      u"video/3gpp2"_s,
                 u"video/x-matroska"_s, u"video/webm"_s,      u"video/x-msvideo"_s, u"video/mp2t"_s,
                 u"video/mpeg"_s,       u"video/ogg"_s,       u"video/x-flv"_s,     u"video/x-ms-wmv"_s,
                 u"video/x-ms-asf"_s,   u"video/x-m4v"_s};
    return QStringList(mimeTypes.size(), u"file"_s);
}

QStringList Thumbnailer::GetFlavors() const
{
    return {ThumbnailFiles::flavor()};
}

QStringList Thumbnailer::GetSchedulers() const
{
    return {u"default"_s, u"foreground"_s};
}

Thumbnailer::Request *Thumbnailer::find(uint handle)
{
    for (Request &request : m_requests) {
        if (request.handle == handle)
            return &request;
    }
    return nullptr;
}

// After the answer to the call, so that a caller knows the handle when the first signal about it comes.
void Thumbnailer::pumpLater()
{
    if (m_pumpPosted)
        return;
    m_pumpPosted = true;
    QMetaObject::invokeMethod(this, &Thumbnailer::pump, Qt::QueuedConnection);
}

void Thumbnailer::pump()
{
    m_pumpPosted = false;
    for (Request &request : m_requests) {
        while (!request.waiting.isEmpty() && m_reading.size() < m_mostReading) {
            if (!std::exchange(request.started, true))
                Q_EMIT Started(request.handle);
            begin(request, request.waiting.takeFirst());
        }
    }
    QList<uint> handles;
    for (const Request &request : std::as_const(m_requests))
        handles.append(request.handle);
    for (const uint handle : std::as_const(handles))
        finishIfDone(handle);
}

void Thumbnailer::begin(Request &request, const QString &uri)
{
    const auto known = m_work.find(uri);
    if (known != m_work.end()) {
        known->handles.append(request.handle);
        ++request.underWay;
        return;
    }
    const QString file = ThumbnailFiles::localFile(uri);
    const ThumbnailFiles::Stamp stamp
        = file.isEmpty() ? ThumbnailFiles::Stamp() : ThumbnailFiles::stampOf(file);
    if (answerAtOnce(request, uri, file, stamp))
        return;
    MediaRequest media;
    media.path = file;
    media.wantMetadata = false;
    media.wantFrame = true;
    media.frameSize = CoverSize;
    m_reading.insert(m_pool.submit(media), uri);
    m_work.insert(uri, Work{file, stamp, {request.handle}});
    ++request.underWay;
}

bool Thumbnailer::answerAtOnce(Request &request, const QString &uri, const QString &file,
                               const ThumbnailFiles::Stamp &stamp)
{
    const auto fail = [&](int code, const QString &message) {
        Q_EMIT Error(request.handle, {uri}, code, message);
        return true;
    };
    if (!request.flavorKnown)
        return fail(UnknownFlavor, u"unknown flavor"_s);
    if (file.isEmpty())
        return fail(Unsupported, u"only local files are supported"_s);
    if (!stamp.isValid())
        return fail(Unreadable, u"no such file"_s);
    if (const std::optional<QString> failure = m_failures.find(uri, stamp))
        return fail(NoThumbnail, *failure);
    const ThumbnailFiles::Origin origin = ThumbnailFiles::originOf(ThumbnailFiles::path(uri));
    if (origin.stamp != stamp.toString())
        return false;
    Q_EMIT Ready(request.handle, {uri});
    return true;
}

void Thumbnailer::fileRead(int id, const MediaReply &reply)
{
    const QString uri = m_reading.take(id);
    pumpLater();
    if (reply.status == MediaReply::Status::Ok && !reply.frame.isNull())
        m_writer.write(uri, m_work.value(uri).stamp, reply.frame);
    else
        fileFailed(uri, reply);
}

void Thumbnailer::fileFailed(const QString &uri, const MediaReply &reply)
{
    const QString message = reply.error.isEmpty() ? u"no picture"_s : reply.error;
    // A file that went away, or was let go, may well be readable the next time.
    if (reply.status == MediaReply::Status::Unreadable || reply.status == MediaReply::Status::Cancelled) {
        endWork(uri, false, Unreadable, message);
        return;
    }
    const Work work = m_work.value(uri);
    // Only what was read counts: a file that is still being written is another one by now.
    if (ThumbnailFiles::stampOf(work.file) == work.stamp)
        m_failures.add(uri, work.stamp, message);
    endWork(uri, false, NoThumbnail, message);
}

void Thumbnailer::thumbnailWritten(const QString &uri, const QString &error)
{
    if (!error.isEmpty())
        qCWarning(thumbnailerLog, "no thumbnail of %ls: %ls", qUtf16Printable(uri), qUtf16Printable(error));
    endWork(uri, error.isEmpty(), NotSaved, error);
}

void Thumbnailer::endWork(const QString &uri, bool ready, int code, const QString &message)
{
    const Work work = m_work.take(uri);
    for (const uint handle : work.handles) {
        if (ready)
            Q_EMIT Ready(handle, {uri});
        else
            Q_EMIT Error(handle, {uri}, code, message);
        if (Request *const request = find(handle))
            --request->underWay;
        finishIfDone(handle);
    }
}

void Thumbnailer::finishIfDone(uint handle)
{
    const Request *const request = find(handle);
    if (!request || request->underWay > 0 || !request->waiting.isEmpty())
        return;
    m_requests.removeIf([handle](const Request &other) { return other.handle == handle; });
    Q_EMIT Finished(handle);
    if (isIdle())
        Q_EMIT idleChanged(true);
}
