// SPDX-License-Identifier: GPL-3.0-or-later
#include "rendererholder.h"

#include "backendrenderer.h"
#include "callpause.h"
#include "mediabackend.h"
#include "medialog.h"
#include "rendererregistry.h"

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto RendererId = "avlo_gst_internal_video_renderer"_L1;
constexpr auto RendererName = "Video"_L1;
constexpr int AudioTaken = 329; // by a call, where one is under way

} // namespace

RendererHolder::RendererHolder(QObject *parent) : QObject(parent)
{
    QMetaObject::invokeMethod(
        this, [this] { make(); }, Qt::QueuedConnection);
}

RendererHolder::~RendererHolder() = default;

void RendererHolder::make()
{
    if (m_backend)
        return;
    m_backend = RendererRegistry::createBackend();
    if (!m_backend) {
        qCWarning(lcMedia, "no renderer can be made: nothing can be played");
        Q_EMIT failed();
        return;
    }
    m_renderer = std::make_unique<BackendRenderer>(m_backend.get());
    connect(
        m_backend.get(), &MediaBackend::lost, this, [this] { lose(); }, Qt::QueuedConnection);
    m_callPause = std::make_unique<CallPause>(m_backend.get());
    connect(m_callPause.get(), &CallPause::refused, m_renderer.get(), [this] {
        Q_EMIT m_renderer->error({AudioTaken, u"a call is under way"_s});
    });
    Q_EMIT made();
    Q_EMIT RendererRegistry::instance()->rendererAdded(RendererId, RendererName);
    Q_EMIT ready();
}

// Those who hold the renderer let go of it when the registry says so.
void RendererHolder::lose()
{
    if (!m_backend)
        return;
    m_callPause.reset();
    const std::unique_ptr<MediaBackend> lostBackend = std::move(m_backend);
    const std::unique_ptr<BackendRenderer> lostRenderer = std::move(m_renderer);
    Q_EMIT lost(lostBackend.get());
    Q_EMIT RendererRegistry::instance()->rendererRemoved(RendererId, RendererName);
    QMetaObject::invokeMethod(
        this, [this] { make(); }, Qt::QueuedConnection);
}
