// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainloop.h"

#include "sparqllog.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>

#include <glib.h>

namespace {

constexpr int intervalMs = 10;
constexpr int mostEventsAtATurn = 100;

} // namespace

void turnGlibMainLoop()
{
    const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    const char name[] = "store-main-context";
    if (!dispatcher || dispatcher->inherits("QEventDispatcherGlib")
        || qApp->findChild<QTimer *>(QLatin1StringView(name), Qt::FindDirectChildrenOnly))
        return;
    qCWarning(lcSparql) << "Qt does not turn GLib's main loop here; answers of the store are looked for every"
                        << intervalMs << "ms";
    auto *timer = new QTimer(qApp);
    timer->setObjectName(QLatin1StringView(name));
    QObject::connect(timer, &QTimer::timeout, timer, [] {
        for (int i = 0; i < mostEventsAtATurn && g_main_context_iteration(nullptr, FALSE) != FALSE; ++i) { }
    });
    timer->start(intervalMs);
}
