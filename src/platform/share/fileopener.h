// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusUnixFileDescriptor>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

// Opens files for reading on a thread of its own: a path on a network or a sleeping card may stall for
// minutes. Ends in opened() or failed(), once, or in nothing when it is deleted before.
class FileOpener : public QObject
{
    Q_OBJECT

public:
    // As open(2): a descriptor, or -1 with errno set.
    using Open = std::function<int(const char *path)>;

    explicit FileOpener(const QStringList &paths, QObject *parent = nullptr);
    ~FileOpener() override;

    void start();
    // How long the files may take altogether; 20 s unless set.
    void setDeadline(int ms);
    // In place of open(2), before start().
    void setOpenFunction(const Open &open) { m_open = open; }

Q_SIGNALS:
    // In the order of the paths.
    void opened(QList<QDBusUnixFileDescriptor> files);
    void failed(QString path, QString reason);

private:
    struct Result;
    struct Channel;
    static Result openAll(const QStringList &paths, const Open &open);
    void finish(const Result &result);

    QStringList m_paths;
    Open m_open;
    QTimer m_deadline;
    std::shared_ptr<Channel> m_channel;
};
