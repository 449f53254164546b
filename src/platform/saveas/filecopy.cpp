// SPDX-License-Identifier: GPL-3.0-or-later
#include "filecopy.h"

#include "copyworker.h"

#include <thread>

#include <fcntl.h>
#include <pthread.h>

using namespace Qt::Literals::StringLiterals;

void FileCopy::clearUp(const QByteArray &folder)
{
    std::thread([folder] {
        pthread_setname_np(pthread_self(), "save-as clear");
        const Descriptor open(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (open.isOpen())
            HiddenFile::removeLeftovers(open.get());
    }).detach();
}

FileCopy::FileCopy(Request request, QObject *parent)
    : QObject(parent),
      m_job(std::make_shared<CopyJob>(std::move(request)))
{
    m_job->progress = [this](qint64 copied, qint64 size) {
        QMetaObject::invokeMethod(
            this, [this, copied, size] { progressed(copied, size); }, Qt::QueuedConnection);
    };
    m_job->ended = [this](const CopyOutcome &outcome) {
        QMetaObject::invokeMethod(
            this, [this, outcome] { end(outcome); }, Qt::QueuedConnection);
    };
}

FileCopy::~FileCopy()
{
    m_job->forgetOwner();
}

void FileCopy::start()
{
    if (std::exchange(m_started, true))
        return;
    // Detached: a thread that is stuck in the kernel must not hold up the end of the program.
    std::thread([job = m_job] { runCopy(*job); }).detach();
}

bool FileCopy::cancel()
{
    return m_job->cancel();
}

void FileCopy::progressed(qint64 copied, qint64 size)
{
    if (!m_job->isCancelled())
        Q_EMIT progress(copied, size);
}

void FileCopy::end(const CopyOutcome &outcome)
{
    if (m_job->isCancelled())
        return;
    m_taken = outcome.taken;
    if (outcome.fault == CopyFault::None)
        Q_EMIT finished();
    else
        Q_EMIT failed(outcome.fault, outcome.reason);
}
