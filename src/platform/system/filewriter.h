// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "filereplacement.h"

#include <QByteArray>
#include <QMessageLogger>
#include <QString>

#include <memory>

// Replaces and removes small files by a thread of its own, since a disk may take its time, or never answer.
// Files change in the order in which they were ordered first; of several orders for one file that wait the
// last is carried out. What cannot be done is told in the log once, until something can be done about that
// file again.
class FileWriter
{
public:
    // Nothing is touched, and no thread made, before the first order. Warnings go to `log`, a logging
    // category.
    FileWriter(QMessageLogger::CategoryFunction log, OnDisk onDisk);
    // Waits until every order is carried out, at most FarewellLimit. What takes longer goes on alone, and
    // does not hold up the end of the program.
    ~FileWriter();
    Q_DISABLE_COPY_MOVE(FileWriter)

    // Any thread may call these. `path` is absolute.
    void write(const QString &path, const QByteArray &contents);
    // A removal is not synchronised: after a power failure the file may be there again.
    void remove(const QString &path);
    // True when nothing is left to do within the time.
    [[nodiscard]] bool waitForDone(int milliseconds);

    static constexpr int FarewellLimit = 2000; // ms

private:
    struct Job;
    struct Order;
    static void run(const std::shared_ptr<Job> &job);
    void order(Order order);

    std::shared_ptr<Job> m_job;
};
