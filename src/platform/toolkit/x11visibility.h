// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractNativeEventFilter>
#include <QtGui/qwindowdefs.h>

#include <functional>

namespace toolkit {

// Whether an X11 window lies wholly behind others. Elsewhere it never does. (A compositing window manager
// redirects its windows, so that none is ever behind another.)
class X11Visibility : public QAbstractNativeEventFilter
{
public:
    X11Visibility(WId window, std::function<void()> changed);
    ~X11Visibility() override;

    [[nodiscard]] bool isObscured() const { return m_obscured; }

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    WId m_window;
    std::function<void()> m_changed;
    bool m_obscured = false;
};

} // namespace toolkit
