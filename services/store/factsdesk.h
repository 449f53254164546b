// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusMessage>
#include <QHash>
#include <QList>
#include <QObject>

class MediaReader;
struct MediaReply;

// Answers who asks on the session bus what is in a file, when it has been read.
class FactsDesk : public QObject
{
    Q_OBJECT

public:
    // Beyond these an error is answered at once: a program that asks without end fills nothing.
    static constexpr int mostOpen = 16;

    // The reader outlives the desk.
    explicit FactsDesk(MediaReader *reader, QObject *parent = nullptr);
    ~FactsDesk() override;

    // The question is answered later, whatever happens. Questions about one file share its reading.
    void ask(const QString &path, const QDBusMessage &question);

private:
    void answer(int request, const MediaReply &reply);

    struct Reading
    {
        int request = 0;
        QList<QDBusMessage> questions;
    };
    MediaReader *m_reader;
    QHash<QString, Reading> m_readings; // by path
    int m_open = 0;
};
