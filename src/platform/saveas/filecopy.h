// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bytecopier.h"
#include "copyfault.h"
#include "hiddenfile.h"

#include <QByteArray>
#include <QObject>

#include <memory>
#include <optional>

class CopyJob;
struct CopyOutcome;

// Which file it is, so that another one in its place is recognised.
struct FileMark
{
    quint64 device = 0;
    quint64 number = 0;
    qint64 size = 0;
    qint64 seconds = 0; // of its last change
    qint64 nanoseconds = 0;
    friend bool operator==(const FileMark &, const FileMark &) = default;
};

// Copies one file into a folder, on a thread of its own, since a disk may stall for minutes. The copy appears
// under its name when it is whole and on the disk, with the source's date; nothing of it is ever seen before,
// and nothing stays when it fails, is cancelled, or the program is killed.
class FileCopy : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QByteArray source; // absolute paths, in the bytes of the file system
        QByteArray folder; // is made when only the last part of it is missing
        QByteArray name;
        // What the person has agreed to lose. Anything else that has the name is kept.
        std::optional<FileMark> replaced = std::nullopt;
        // The ways to begin with; all are tried by themselves.
        QList<ByteCopier::Way> ways = ByteCopier::allWays();
        HiddenFile::Kind kind = HiddenFile::Kind::Unnamed;
    };

    // What a program that was killed has left of its copies in a folder goes; what is being copied there
    // stays. On a thread of its own, too.
    static void clearUp(const QByteArray &folder);

    explicit FileCopy(Request request, QObject *parent = nullptr);
    // Cancels.
    ~FileCopy() override;

    void start();
    // From now on nothing is told, and the copy does not come to be: true. False when it is just getting its
    // name; then finished() or failed() follows.
    bool cancel();
    // With CopyFault::NameTaken: what has the name.
    [[nodiscard]] FileMark taken() const { return m_taken; }

Q_SIGNALS:
    void progress(qint64 copied, qint64 size); // bytes; some times a second
    void finished(); // it is there
    void failed(CopyFault fault, QString reason); // the reason is for the log

private:
    void progressed(qint64 copied, qint64 size);
    void end(const CopyOutcome &outcome);

    std::shared_ptr<CopyJob> m_job;
    FileMark m_taken;
    bool m_started = false;
};
