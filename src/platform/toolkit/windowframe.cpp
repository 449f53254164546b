// SPDX-License-Identifier: GPL-3.0-or-later
#include "windowframe.h"

#include "theme.h"

#include <QApplication>
#include <QPalette>
#include <QWidget>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

// The frame takes its colours from the program's palette.
bool takeColors()
{
    const Theme *theme = Theme::instance();
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, theme->token(u"background"_s));
    palette.setColor(QPalette::WindowText, theme->token(u"text1"_s));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, theme->token(u"text2"_s));
    if (palette == QApplication::palette())
        return false;
    QApplication::setPalette(palette);
    return true;
}

// It reads them once, when it is made.
void makeAnew(QWindow *handle)
{
    const bool isFramed
        = !handle->flags().testFlag(Qt::FramelessWindowHint) && handle->windowStates() == Qt::WindowNoState;
    if (!isFramed)
        return;
    handle->setFlag(Qt::FramelessWindowHint, true);
    handle->setFlag(Qt::FramelessWindowHint, false);
}

} // namespace

void keepFrameInTheme(QWidget *window)
{
    if (!QGuiApplication::platformName().startsWith("wayland"_L1))
        return;
    takeColors();
    QObject::connect(Theme::instance(), &Theme::themeChangeCompleted, window, [window] {
        if (takeColors() && window->windowHandle() != nullptr && window->isVisible())
            makeAnew(window->windowHandle());
    });
}

} // namespace toolkit
