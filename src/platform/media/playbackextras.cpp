// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackextras.h"

#include "mediabackend.h"
#include "playbackoptions.h"
#include "playercontrols.h"
#include "subtitles/subtitleview.h"
#include "videowidget.h"

#include <platform/toolkit/button.h>

namespace {

constexpr qreal ControlsHeight = 112; // what stands at the foot while the controls are shown

} // namespace

PlaybackExtras::PlaybackExtras(VideoWidget *widget) : m_widget(widget), m_subtitles(new SubtitleView(widget))
{
    m_subtitles->stackBefore(widget->controls());
    connect(widget, &VideoWidget::optionsRequested, this, [this] { showOptions(); });
    connect(widget, &QGraphicsWidget::geometryChanged, this, [this] { layOut(); });
    connect(widget->controls(), &QGraphicsObject::visibleChanged, this, [this] { layOut(); });
    connect(widget->controls(), &QGraphicsObject::opacityChanged, this, [this] { layOut(); });
}

PlaybackExtras::~PlaybackExtras() = default;

void PlaybackExtras::setBackend(MediaBackend *backend)
{
    if (m_backend != nullptr)
        m_backend->disconnect(this);
    m_backend = backend;
    m_memory.setBackend(backend);
    m_subtitles->setBackend(backend);
    if (m_options)
        m_options->setBackend(backend);
    if (backend == nullptr)
        return;
    connect(backend, &MediaBackend::videoSizeChanged, this, [this](const QSize &size) {
        m_picture = size;
        layOut();
    });
}

void PlaybackExtras::showOptions()
{
    if (m_backend == nullptr || m_widget->window() == nullptr)
        return;
    if (!m_options) {
        m_options = std::make_unique<PlaybackOptions>(&m_memory);
        m_options->setBackend(m_backend);
        connect(m_options.get(), &PlaybackOptions::takenChanged, this, [this] { layOut(); });
    }
    m_options->showTopic(PlaybackOptions::Topic::All);
    m_options->appear(m_widget->window());
}

void PlaybackExtras::layOut()
{
    m_subtitles->setGeometry(m_widget->rect());
    m_subtitles->setPicture(m_picture, m_widget->fillMode());
    QMarginsF taken;
    if (m_widget->controlsVisible())
        taken.setBottom(ControlsHeight);
    const QRectF panel = m_options
        ? m_widget->mapRectFromScene(m_options->mapRectToScene(m_options->takenRect()))
        : QRectF();
    // A tap beside the options closes them, also one on the mark; what is to be read comes to stand there.
    m_widget->controls()->playButton()->setVisible(panel.isEmpty());
    const QRectF area = m_widget->rect();
    QMarginsF beside;
    if (!panel.isEmpty() && panel.height() >= area.height()) { // beside the picture
        if (panel.center().x() > area.center().x())
            beside.setRight(std::max(0.0, area.right() - panel.left()));
        else
            beside.setLeft(std::max(0.0, panel.right() - area.left()));
    } else if (!panel.isEmpty()) {
        taken.setBottom(std::max(taken.bottom(), area.bottom() - panel.top()));
    }
    m_subtitles->setTaken(taken + beside);
    if (beside == m_takenBeside)
        return;
    m_takenBeside = beside;
    Q_EMIT takenBesideChanged(beside);
}
