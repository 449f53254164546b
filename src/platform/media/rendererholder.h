// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

class BackendRenderer;
class CallPause;
class MediaBackend;

// The back end of a video widget and the renderer over it, from the first turn of the event loop on. Both go
// when the device behind them is lost, and new ones are made for the next video.
class RendererHolder : public QObject
{
    Q_OBJECT

public:
    explicit RendererHolder(QObject *parent = nullptr);
    ~RendererHolder() override;

    // Null until made(), and after lost().
    [[nodiscard]] MediaBackend *backend() const { return m_backend.get(); }
    [[nodiscard]] BackendRenderer *renderer() const { return m_renderer.get(); }

Q_SIGNALS:
    void made(); // the registry has not told of it yet
    void ready();
    void lost(MediaBackend *backend); // which lives until this returns
    void failed(); // nothing can be made

private:
    void make();
    void lose();

    std::unique_ptr<MediaBackend> m_backend;
    std::unique_ptr<BackendRenderer> m_renderer;
    std::unique_ptr<CallPause> m_callPause;
};
