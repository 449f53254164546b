// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediaworkerpool.h"
#include "workerprotocol.h"

#include <QByteArray>

// Takes a worker's answer as the words of a stranger: a worker may have been taken over by the file that it
// read. Every size, number and text has a bound, every field may come once, nothing may follow the answer.
class WorkerReplyParser
{
public:
    enum class State { Incomplete, Complete, Invalid };

    // For the answer to one request: a frame that was not asked for, or that is larger than was asked for, is
    // invalid.
    explicit WorkerReplyParser(const MediaRequest &request);

    State feed(const QByteArray &bytes);
    // Once complete.
    [[nodiscard]] MediaReply takeReply() { return std::move(m_reply); }

private:
    [[nodiscard]] bool readHeader();
    [[nodiscard]] bool readFields();
    [[nodiscard]] bool readField(WorkerProtocol::Field field, QByteArrayView value);
    [[nodiscard]] bool readStreamField(WorkerProtocol::Field field, QByteArrayView value);
    [[nodiscard]] bool readList(QByteArrayView value, QStringList &list);
    [[nodiscard]] bool readText(QByteArrayView value, qsizetype maximum, QString &text);
    [[nodiscard]] bool readFrame();
    [[nodiscard]] qsizetype expectedBytes() const;

    bool m_frameWanted;
    QByteArray m_bytes;
    bool m_headerRead = false;
    WorkerProtocol::Reply m_header;
    MediaReply m_reply;
};
