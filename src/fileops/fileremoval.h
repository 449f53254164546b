// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

struct statx;

// Removes the file that lies at a path now, and no other that may have come there by the time the person has
// agreed. Works on a thread of its own, since a path on a network or a sleeping card may stall for minutes.
// Ends in finished(), once, or in nothing when it is deleted before: then nothing is removed that was not
// yet.
class FileRemoval : public QObject
{
    Q_OBJECT

public:
    // What lies at the path, a link itself; 0, or the error.
    using Look = std::function<int(const QByteArray &path, struct statx *status)>;
    [[nodiscard]] static int lookAt(const QByteArray &path, struct statx *status);

    // Looks at once which file it is. The path is absolute, in the bytes of the file system.
    explicit FileRemoval(const QByteArray &path, QObject *parent = nullptr, const Look &look = lookAt);
    ~FileRemoval() override;

    // It is known which file is meant; before, it is what will lie there in a moment.
    [[nodiscard]] bool isIdentified() const;
    // A symbolic link is removed itself, its target stays; a folder is never removed. Links on the way that
    // led elsewhere when it was looked at are not followed.
    void start();
    // How long it may take from start() on; 20 s unless set.
    void setDeadline(int ms) { m_deadline.setInterval(ms); }

    // What lies at the path of a file: address, decoded; empty for every other address, and for one that no
    // path can be made of.
    [[nodiscard]] static QByteArray pathOf(const QString &url);

Q_SIGNALS:
    // The reason is for the log; empty when it was removed.
    void finished(bool removed, QString reason);

private:
    struct Job;
    static void run(const std::shared_ptr<Job> &job);
    void finish(const QString &reason);

    std::shared_ptr<Job> m_job;
    QTimer m_deadline;
    bool m_started = false;
};
