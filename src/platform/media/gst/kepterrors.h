// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

#include <memory>
#include <mutex>

#include <gst/gst.h>

// Hears the errors of the elements that parsebin tries on a stream before parsebin does. One that is posted
// while it still looks at the element it keeps to itself, and the element stays: nothing more ever comes, not
// even that error. Lives on the thread of whoever attaches it.
class KeptErrors : public QObject
{
    Q_OBJECT

public:
    explicit KeptErrors(QObject *parent = nullptr);
    ~KeptErrors() override;

    // For every element that this pipeline will have. Before it starts.
    void attach(GstElement *pipeline);
    // The pipeline shows something, or is given up.
    void detach();

Q_SIGNALS:
    // For a while nobody has tried anything else: whoever still waits for the pipeline waits for nothing.
    void kept(GstMessage *error);

private:
    struct Link; // between the elements, which may outlive this, and this

    static void added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer link);
    static GstBusSyncReply posted(GstBus *bus, GstMessage *message, gpointer relay);
    void take(const std::shared_ptr<GstMessage> &error);

    std::shared_ptr<Link> m_link;
    std::shared_ptr<GstMessage> m_error;
    QTimer m_patience;
};
