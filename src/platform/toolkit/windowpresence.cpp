// SPDX-License-Identifier: GPL-3.0-or-later
#include "windowpresence.h"

#include "x11visibility.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

// A Wayland window counts as unexposed when the compositor asked for no frame for 100 ms, which a busy one
// also does.
int unexposedDelay()
{
    return QGuiApplication::platformName().startsWith("wayland"_L1) ? 500 : 0;
}

// Window managers restack in steps: a window may lie behind others for a moment.
constexpr int obscuredDelay = 150;
constexpr int replacementTime = 1000;

} // namespace

WindowPresence::WindowPresence(QWidget *window) : QObject(window), m_window(window)
{
    m_leaving.setSingleShot(true);
    connect(&m_leaving, &QTimer::timeout, this, [this] { apply(false); });
    m_replacement.setSingleShot(true);
    connect(&m_replacement, &QTimer::timeout, this, [this] {
        evaluate();
        Q_EMIT replaced();
    });
    window->installEventFilter(this);
}

WindowPresence::~WindowPresence() = default;

void WindowPresence::beginReplacement()
{
    m_leaving.stop();
    m_replacement.start(replacementTime);
}

bool WindowPresence::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::WinIdChange:
        // The native window exists only after the event was handled.
        QMetaObject::invokeMethod(this, &WindowPresence::followHandle, Qt::QueuedConnection);
        break;
    case QEvent::Hide:
        if (watched == m_window)
            evaluate(); // at once: the program may end with this window
        break;
    case QEvent::Expose:
    case QEvent::WindowStateChange:
    case QEvent::PlatformSurface:
        QMetaObject::invokeMethod(this, &WindowPresence::evaluate, Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void WindowPresence::followHandle()
{
    QWindow *handle = m_window->windowHandle();
    if (handle != m_handle) {
        m_handle = handle;
        m_visibility.reset();
        if (handle != nullptr) {
            handle->installEventFilter(this);
            m_visibility = std::make_unique<X11Visibility>(handle->winId(), [this] { evaluate(); });
        }
    }
    evaluate();
}

void WindowPresence::evaluate()
{
    const bool shown = m_window->isVisible() && !m_window->isMinimized();
    const bool exposed = shown && m_handle != nullptr && m_handle->isExposed();
    if (shown && !exposed && isBeingReplaced())
        return;
    const bool obscured = m_visibility != nullptr && m_visibility->isObscured();
    const int delay = !shown ? 0 : !exposed ? unexposedDelay() : obscuredDelay;
    if ((exposed && !obscured) || !m_onDisplay || delay == 0) {
        m_leaving.stop();
        apply(exposed && !obscured);
    } else if (!m_leaving.isActive()) {
        m_leaving.start(delay);
    }
}

void WindowPresence::apply(bool visible)
{
    m_wasSeen = m_wasSeen || visible;
    // A window that the program itself has hidden is in no switcher.
    const bool inSwitcher = m_wasSeen && !visible && m_window->isVisible();
    const bool left = m_onDisplay && !visible;
    const bool entered = !m_onDisplay && visible;
    const bool switched = m_inSwitcher != inSwitcher;
    m_onDisplay = visible;
    m_inSwitcher = inSwitcher;
    if (left)
        Q_EMIT onDisplayChanged(false);
    if (switched)
        Q_EMIT inSwitcherChanged(inSwitcher);
    if (entered)
        Q_EMIT onDisplayChanged(true);
}

} // namespace toolkit
