// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationwindow_p.h"

#include "toolkitlog.h"
#include "viewports.h"

#include <QWindow>

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
    const auto *gl = qobject_cast<GlViewport *>(q->viewport());
    if (gl == nullptr)
        return;
    qCWarning(lcToolkit, "painted by the processor from now on: %s", qUtf8Printable(reason));
    input.cancel();
    const bool obeys = gl->isValid();
    q->setViewport(new QWidget);
    q->setViewportUpdateMode(SmartViewportUpdate);
    if (!obeys)
        makeNativeWindowAnew();
    q->setUpdatesEnabled(true);
    Q_EMIT q->viewportReplaced();
}

// The native window is put together by a context of its own, which is lost with the other one.
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
