// SPDX-License-Identifier: GPL-3.0-or-later
#include "startuplog.h"

#include "applicationcontroller.h"
#include "applog.h"
#include "library/localvideospage.h"
#include "library/myallvideoswidget.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/list.h"

#include <QEvent>

StartupLog::StartupLog()
{
    m_sinceStart.start();
}

void StartupLog::watch(ApplicationController *controller, toolkit::ApplicationWindow *window)
{
    if (qEnvironmentVariableIsEmpty("KESTREL_STARTUP_LOG"))
        return;
    m_controller = controller;
    m_viewport = window->viewport();
    m_viewport->installEventFilter(this);
}

bool StartupLog::eventFilter(QObject *watched, QEvent *event)
{
    // The line is written when the painting that this event asks for is through.
    if (event->type() == QEvent::Paint && isListShown()) {
        watched->removeEventFilter(this);
        QMetaObject::invokeMethod(this, &StartupLog::report, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

bool StartupLog::isListShown() const
{
    const LocalVideosPage *page = m_controller ? m_controller->libraryPage() : nullptr;
    const MyAllVideosWidget *widget = page ? page->localVideosWidget() : nullptr;
    return widget && widget->viewState() == MyAllVideosWidget::ListShown
        && !widget->list()->visibleIndexes().isEmpty();
}

void StartupLog::report()
{
    qCInfo(appLog, "first list painted after %lld ms", m_sinceStart.elapsed());
}
