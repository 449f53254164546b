// SPDX-License-Identifier: GPL-3.0-or-later
#include "keeptranslated.h"

#include "languagewatch.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace toolkit {

LanguageWatch *LanguageWatch::instance()
{
    // Belongs to the application: the next one of a process has its own.
    static LanguageWatch *watch = nullptr;
    if (watch == nullptr) {
        watch = new LanguageWatch(QCoreApplication::instance());
        connect(watch, &QObject::destroyed, [] { watch = nullptr; });
    }
    return watch;
}

LanguageWatch::LanguageWatch(QObject *application) : QObject(application)
{
    application->installEventFilter(this);
}

bool LanguageWatch::eventFilter(QObject *watched, QEvent *event)
{
    // One event for each catalog that comes or goes.
    if (event->type() == QEvent::LanguageChange && watched == parent() && !std::exchange(m_due, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_due = false;
                Q_EMIT changed();
            },
            Qt::QueuedConnection);
    }
    return false;
}

void keepTranslated(QObject *context, const std::function<void()> &translate)
{
    translate();
    if (QCoreApplication::instance() != nullptr)
        QObject::connect(LanguageWatch::instance(), &LanguageWatch::changed, context, translate);
}

} // namespace toolkit
