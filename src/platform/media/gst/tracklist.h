// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/trackchoice.h>

#include <QByteArray>
#include <QList>

#include <gst/gst.h>

// The sound tracks of a pipeline, and which of them is heard. Used on the thread of the pipeline's owner.
class TrackList
{
public:
    TrackList() = default;
    ~TrackList();
    Q_DISABLE_COPY_MOVE(TrackList)

    // True: there is something new.
    bool takeCollection(GstMessage *message);
    // What streams tell of themselves comes bit by bit, and not with a message each.
    bool refresh();
    bool takeSelected(GstMessage *message);
    // Of another pipeline for the same video.
    void reset();

    [[nodiscard]] QList<trackchoice::Candidate> sounds() const;
    // The one that is heard, or will be; empty: none.
    [[nodiscard]] QString heard() const { return m_heard; }
    // What the stream says; 0: nothing.
    [[nodiscard]] double framesPerSecond() const { return m_framesPerSecond; }
    // Asks the pipeline for it: what it has decoded already is played first, until the next seek. False:
    // there is no such track, or it is heard already.
    bool select(GstElement *pipeline, const QString &id);

private:
    struct Stream
    {
        trackchoice::Candidate candidate;
        QByteArray streamId;
    };
    GstStreamCollection *m_collection = nullptr;
    QList<Stream> m_sounds;
    QList<QByteArray> m_others; // pictures, which stay as they are
    QString m_heard;
    double m_framesPerSecond = 0;
};
