// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QObject>

#include <memory>

// How large a file is, and how much room there is in a folder. Asked on a thread of its own: either may lie
// on a disk that is asleep.
class SpaceQuery : public QObject
{
    Q_OBJECT

public:
    explicit SpaceQuery(QObject *parent = nullptr);
    ~SpaceQuery() override;

    // Answers once, later; what was asked before is not answered any more. A folder that is still to be made
    // has the room of the one it will be in.
    void ask(const QByteArray &source, const QByteArray &folder);
    void forget();

Q_SIGNALS:
    void answered(qint64 size, qint64 free); // bytes; -1: not known

private:
    struct Channel;
    std::shared_ptr<Channel> m_channel; // of the question that is open
};
