// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class MediaBackend;

// Which renderers exist. The video renderer's id is "avlo_gst_internal_video_renderer".
class RendererRegistry : public QObject
{
    Q_OBJECT

public:
    explicit RendererRegistry(QObject *parent = nullptr);
    ~RendererRegistry() override;

    // The registry that the program uses.
    [[nodiscard]] static RendererRegistry *instance();

    // Makes the back end that a new VideoWidget plays with: GStreamer's, or what setBackendFactory() set (the
    // null back end, which a clock drives, in tests).
    using BackendFactory = std::function<std::unique_ptr<MediaBackend>()>;
    static void setBackendFactory(BackendFactory factory);
    [[nodiscard]] static std::unique_ptr<MediaBackend> createBackend();

Q_SIGNALS:
    void rendererAdded(QString uuid, QString name);
    void rendererRemoved(QString uuid, QString name);
};
