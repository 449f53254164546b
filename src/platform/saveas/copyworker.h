// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "filecopy.h"

#include <QString>

#include <functional>
#include <mutex>

struct CopyOutcome
{
    CopyFault fault = CopyFault::None;
    QString reason;
    FileMark taken;
};

// What a copy's thread and its owner have in common.
class CopyJob
{
public:
    explicit CopyJob(FileCopy::Request asked) : request(std::move(asked)) { }

    const FileCopy::Request request;
    // Called on the thread, while the owner exists.
    std::function<void(qint64 copied, qint64 size)> progress;
    std::function<void(const CopyOutcome &outcome)> ended;

    // For the owner.
    bool cancel();
    void forgetOwner(); // cancels, too
    // For both.
    [[nodiscard]] bool isCancelled() const;
    // For the thread: from here on it cannot be cancelled. False: it was.
    [[nodiscard]] bool beginNaming();
    void tellProgress(qint64 copied, qint64 size);
    void tellEnd(const CopyOutcome &outcome);

private:
    mutable std::mutex m_mutex;
    bool m_owned = true;
    bool m_cancelled = false;
    bool m_naming = false;
};

// The whole way, to the last signal.
void runCopy(CopyJob &job);
