// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationwindow_p.h"

#include "toolkitlog.h"
#include "viewports.h"

#include <QWindow>

#include <utility>

namespace toolkit {

void ApplicationWindow::Private::installViewport()
{
    const ViewportChoice choice = chooseViewport();
    qCInfo(lcToolkit, "painted by %s: %s", choice.openGl ? "OpenGL" : "the processor",
           qUtf8Printable(choice.reason));
    if (!choice.openGl)
        return;
    askForResetNotification();
    auto *viewport = new GlViewport;
    q->setViewport(viewport);
    q->setViewportUpdateMode(FullViewportUpdate); // a buffer that was shown is not kept
    connect(viewport, &GlViewport::lost, q, [this](const QString &reason) { leaveOpenGl(reason); });
}

// Pages and their places stay; the next painting is the processor's.
void ApplicationWindow::Private::leaveOpenGl(const QString &reason)
{
    auto *gl = qobject_cast<GlViewport *>(q->viewport());
    if (gl == nullptr)
        return;
    qCWarning(lcToolkit, "painted by the processor from now on: %s", qUtf8Printable(reason));
    input.cancel();
    const bool obeys = gl->takeContext();
    q->setViewport(new QWidget);
    q->setViewportUpdateMode(SmartViewportUpdate);
    if (!obeys)
        makeNativeWindowAnew();
    q->setUpdatesEnabled(true);
    Q_EMIT q->viewportReplaced();
}

// The native window is put together by a context of its own, which is lost with the other one; and its scale
// is that of its making.
void ApplicationWindow::Private::makeNativeWindowAnew()
{
    if (q->windowHandle() == nullptr)
        return;
    const Qt::WindowStates states = q->windowHandle()->windowStates();
    const bool wasActive = q->isActiveWindow();
    presence.beginReplacement();
    forgetLostContext();
    q->destroy();
    q->create();
    q->windowHandle()->installEventFilter(q);
    q->windowHandle()->setWindowStates(states);
    q->windowHandle()->setVisible(q->isVisible());
    if (wasActive)
        q->activateWindow();
}

// On Wayland a window of Qt 6.4 keeps the scale with which it was made when its screen gets another one, and
// the compositor stretches what it paints.
void ApplicationWindow::Private::followScale()
{
    if (q->windowHandle() == nullptr || q->screen() == nullptr)
        return;
    const qreal before = std::exchange(followedScale, q->screen()->devicePixelRatio());
    if (before == 0 || qFuzzyCompare(before, followedScale))
        return;
    // Elsewhere the window follows as the screen's new scale is told.
    QMetaObject::invokeMethod(
        q, [this, before] { takeScaleOfScreen(before); }, Qt::QueuedConnection);
}

// What OpenGL paints may come before the compositor has answered to a new window, which ends the program:
// that stays stretched until the next start.
void ApplicationWindow::Private::takeScaleOfScreen(qreal before)
{
    const bool openGl = qobject_cast<GlViewport *>(q->viewport()) != nullptr;
    if (q->windowHandle() == nullptr || !q->isVisible() || openGl)
        return;
    const qreal scale = q->windowHandle()->devicePixelRatio();
    if (qFuzzyCompare(scale, before) && !qFuzzyCompare(scale, followedScale))
        makeNativeWindowAnew();
}

void ApplicationWindow::setupViewport(QWidget *viewport)
{
    QGraphicsView::setupViewport(viewport);
    viewport->setAttribute(Qt::WA_OpaquePaintEvent);
}

void ApplicationWindow::paintEvent(QPaintEvent *event)
{
    auto *gl = qobject_cast<GlViewport *>(viewport());
    if (gl == nullptr || gl->obeys())
        QGraphicsView::paintEvent(event);
}

} // namespace toolkit
