// SPDX-License-Identifier: GPL-3.0-or-later
#include "filewriter.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

#include <unistd.h>

struct FileWriter::Order
{
    QString path;
    std::optional<QByteArray> contents; // none: the file goes
};

// What the thread and the object have in common. The thread is detached: one that is stuck in the kernel must
// not hold up the end of the program.
struct FileWriter::Job
{
    Job(QMessageLogger::CategoryFunction category, OnDisk synchronised) : log(category), onDisk(synchronised)
    {
    }

    [[nodiscard]] bool isDone() const { return orders.empty() && current.isEmpty(); }

    const QMessageLogger::CategoryFunction log;
    const OnDisk onDisk;

    std::mutex mutex; // of all that follows
    std::condition_variable ordered;
    std::condition_variable done;
    std::deque<Order> orders;
    QString current; // the file that the thread is at; empty: none
    bool started = false;
    bool ends = false;
};

namespace {

// Carries out orders, on the thread only.
class Hand
{
public:
    Hand(QMessageLogger::CategoryFunction log, OnDisk onDisk) : m_log(log), m_onDisk(onDisk) { }

    void write(const QString &path, const QByteArray &contents)
    {
        if (!m_known.contains(path)) {
            m_known.insert(path);
            const QFileInfo file(path);
            removeUnfinished(file.path(), file.fileName() + u'.');
        }
        tell(path, "written", replaceFile(path, contents, m_onDisk));
    }

    void remove(const QString &path)
    {
        const bool gone
            = ::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT || errno == ENOTDIR;
        tell(path, "removed", gone ? 0 : errno);
    }

private:
    void tell(const QString &path, const char *what, int error)
    {
        if (error == 0) {
            m_failing.remove(path);
        } else if (!m_failing.contains(path)) {
            m_failing.insert(path);
            qCWarning(m_log, "%s: cannot be %s: %s", qUtf8Printable(path), what,
                      qUtf8Printable(qt_error_string(error)));
        }
    }

    const QMessageLogger::CategoryFunction m_log;
    const OnDisk m_onDisk;
    QSet<QString> m_known; // nothing of a program before lies beside them
    QSet<QString> m_failing;
};

} // namespace

FileWriter::FileWriter(QMessageLogger::CategoryFunction log, OnDisk onDisk)
    : m_job(std::make_shared<Job>(log, onDisk))
{
}

FileWriter::~FileWriter()
{
    std::unique_lock lock(m_job->mutex);
    const auto isDone = [this] { return m_job->isDone(); };
    m_job->done.wait_for(lock, std::chrono::milliseconds(FarewellLimit), isDone);
    const QString stuck = m_job->current;
    m_job->ends = true;
    m_job->ordered.notify_all();
    lock.unlock();
    if (!stuck.isEmpty())
        qCWarning(m_job->log, "%s: the disk does not answer", qUtf8Printable(stuck));
}

void FileWriter::write(const QString &path, const QByteArray &contents)
{
    order({path, contents});
}

void FileWriter::remove(const QString &path)
{
    order({path, std::nullopt});
}

void FileWriter::order(Order order)
{
    const std::lock_guard lock(m_job->mutex);
    const auto waiting = std::find_if(m_job->orders.begin(), m_job->orders.end(),
                                      [&order](const Order &other) { return other.path == order.path; });
    if (waiting != m_job->orders.end())
        waiting->contents = std::move(order.contents);
    else
        m_job->orders.push_back(std::move(order));
    m_job->ordered.notify_all();
    if (!std::exchange(m_job->started, true))
        std::thread([job = m_job] { run(job); }).detach();
}

bool FileWriter::waitForDone(int milliseconds)
{
    std::unique_lock lock(m_job->mutex);
    return m_job->done.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                [this] { return m_job->isDone(); });
}

void FileWriter::run(const std::shared_ptr<Job> &job)
{
    Hand hand(job->log, job->onDisk);
    std::unique_lock lock(job->mutex);
    for (;;) {
        job->ordered.wait(lock, [&job] { return !job->orders.empty() || job->ends; });
        if (job->orders.empty())
            return;
        const Order order = std::move(job->orders.front());
        job->orders.pop_front();
        job->current = order.path;
        lock.unlock();
        if (order.contents)
            hand.write(order.path, *order.contents);
        else
            hand.remove(order.path);
        lock.lock();
        job->current.clear();
        job->done.notify_all();
    }
}
