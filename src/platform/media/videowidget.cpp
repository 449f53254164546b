// SPDX-License-Identifier: GPL-3.0-or-later
#include "videowidget.h"

#include "audioroutewatcher.h"
#include "backendrenderer.h"
#include "medialog.h"
#include "videowidget_p.h"
#include "wholeseconds.h"

#include <QPainter>

namespace {

constexpr qreal DarkestVeil = 0.9; // over the picture at brightness 0: never black

} // namespace

VideoWidget::VideoWidget(QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>(this))
{
    setAcceptedMouseButtons(Qt::LeftButton);
    connect(&d->driver, &ControlsDriver::hideDue, this, [this] { d->changeControls(false); });
    connect(d->controls, &PlayerControls::optionsRequested, this, &VideoWidget::optionsRequested);
    d->connectHolder();
    d->connectGestures();
    d->connectWindow();
    d->watchOutput();
    d->extras = std::make_unique<PlaybackExtras>(this);
}

VideoWidget::~VideoWidget()
{
    disconnect(this, nullptr, this, nullptr);
    d->holder.disconnect(this);
    d->driver.setBackend(nullptr);
    d->gestureDriver.setBackend(nullptr);
    d->extras.reset();
    if (d->backend())
        d->backend()->disconnect(this);
}

void VideoWidget::Private::connectHolder()
{
    QObject::connect(&holder, &RendererHolder::made, q, [this] {
        connectBackend();
        driver.setBackend(backend());
        gestureDriver.setBackend(backend());
        extras->setBackend(backend());
        surface.setBackend(backend());
    });
    QObject::connect(&holder, &RendererHolder::ready, q, [this] {
        Q_EMIT q->rendererReady();
        if (waitingRequest) {
            const Request request = *std::exchange(waitingRequest, {});
            backend()->play(request.uri, request.position);
        }
    });
    QObject::connect(&holder, &RendererHolder::lost, q, [this](MediaBackend *lostBackend) {
        surface.setBackend(nullptr);
        driver.setBackend(nullptr);
        gestureDriver.setBackend(nullptr);
        extras->setBackend(nullptr);
        lostBackend->disconnect(q);
    });
    QObject::connect(&holder, &RendererHolder::failed, q,
                     [this] { Q_EMIT q->error(qtTrId("qtn_vide_error_generic")); });
}

void VideoWidget::Private::connectBackend()
{
    MediaBackend *made = backend();
    QObject::connect(made, &MediaBackend::frameChanged, q, [this] { surface.showFrame(); });
    QObject::connect(made, &MediaBackend::paused, q, &VideoWidget::paused);
    QObject::connect(made, &MediaBackend::endReached, q, &VideoWidget::endReached);
    QObject::connect(made, &MediaBackend::videoSizeChanged, q,
                     [this](const QSize &size) { surface.setHasPicture(!size.isEmpty()); });
    BackendRenderer *renderer = holder.renderer();
    QObject::connect(renderer, &BackendRenderer::renderRectangleChanged, q,
                     [this, renderer] { surface.setRenderRectangle(renderer->renderRectangle()); });
}

// The headset was pulled out: what was for one pair of ears is not played to the whole room. It goes on when
// the person says so.
void VideoWidget::Private::watchOutput()
{
    const auto *watcher = AudioRouteWatcher::create(q);
    QObject::connect(watcher, &AudioRouteWatcher::outputVanished, q, [this] {
        const auto state = backend() ? backend()->state() : AvloRenderer::Stopped;
        if (state != AvloRenderer::Playing && state != AvloRenderer::Transitioning)
            return;
        qCInfo(lcMedia, "the sound's way out is gone: paused");
        q->pause();
    });
}

AvloRenderer *VideoWidget::renderer() const
{
    return d->holder.renderer();
}

PlaybackExtras *VideoWidget::extras() const
{
    return d->extras.get();
}

MediaBackend *VideoWidget::backend() const
{
    return d->backend();
}

PlayerControls *VideoWidget::controls() const
{
    return d->controls;
}

GestureOverlay *VideoWidget::gestureOverlay() const
{
    return d->overlay;
}

qreal VideoWidget::brightness() const
{
    return d->gestureDriver.brightness();
}

void VideoWidget::play(const QString &uri, uint startPosition)
{
    if (!d->backend() || d->backend()->uri() != uri)
        d->gestureDriver.forgetBrightness();
    if (d->backend())
        d->backend()->play(uri, startPosition);
    else
        d->waitingRequest = Private::Request{uri, startPosition};
}

void VideoWidget::pause()
{
    if (d->backend())
        d->backend()->pause();
}

void VideoWidget::resume()
{
    if (d->backend())
        d->backend()->resume();
}

void VideoWidget::stop()
{
    d->waitingRequest.reset();
    if (d->backend())
        d->backend()->stop();
}

void VideoWidget::seekBy(int seconds)
{
    if (d->backend())
        d->backend()->seek(d->backend()->heading() + std::chrono::seconds(seconds),
                           MediaBackend::SeekPrecision::Exact);
}

uint VideoWidget::position() const
{
    return d->backend() ? wholeSeconds(d->backend()->position()) : 0;
}

uint VideoWidget::duration() const
{
    return d->backend() ? wholeSeconds(d->backend()->duration()) : 0;
}

void VideoWidget::setBusy(bool busy)
{
    d->busy = busy;
}

bool VideoWidget::isBusy() const
{
    return d->busy;
}

void VideoWidget::setFillMode(bool fill)
{
    d->surface.setFillMode(fill);
}

bool VideoWidget::fillMode() const
{
    return d->surface.fillMode();
}

void VideoWidget::reset()
{
    setFrame(QString());
    setControlsVisible(false);
    if (d->holder.renderer())
        d->holder.renderer()->clearRenderRectangle();
    d->surface.clear();
}

void VideoWidget::setFrame(const QString &path)
{
    d->surface.setStill(path);
}

QString VideoWidget::frame() const
{
    return d->surface.still();
}

void VideoWidget::setControlsVisible(bool visible)
{
    d->shownByPointer = false;
    d->driver.setShown(visible);
    d->surface.setMiddleCovered(visible);
    if (visible)
        unsetCursor();
    else
        setCursor(Qt::BlankCursor);
}

bool VideoWidget::controlsVisible() const
{
    return d->controls->isShown();
}

void VideoWidget::setOptionsOffered(bool offered)
{
    d->controls->setOptionsOffered(offered);
}

void VideoWidget::setOutputRectangleOverride(bool on)
{
    d->surface.setRectangleOverride(on);
}

// Picture or black, every pixel is painted: what lies below need not be.
QPainterPath VideoWidget::opaqueArea() const
{
    QPainterPath area;
    area.addRect(rect());
    return area;
}

void VideoWidget::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    d->surface.paint(painter);
    if (brightness() < 1)
        painter->fillRect(rect(), QColor::fromRgbF(0, 0, 0, float((1 - brightness()) * DarkestVeil)));
}

void VideoWidget::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    d->controls->setGeometry(rect());
    d->overlay->setArea(rect());
    d->gestures.setArea(size());
}
