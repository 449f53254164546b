// SPDX-License-Identifier: GPL-3.0-or-later
#include "sharebanner.h"

#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "sharelog.h"

namespace {

toolkit::Banner *appear(const QString &text)
{
    toolkit::ApplicationWindow *window = toolkit::ApplicationWindow::current();
    if (window == nullptr) {
        qCWarning(shareLog, "no window to say: %ls", qUtf16Printable(text));
        return nullptr;
    }
    auto *banner = new toolkit::Banner;
    banner->setTitle(text);
    banner->appear(window);
    return banner;
}

} // namespace

void ShareBanner::show(const QString &text)
{
    appear(text);
}

void ShareBanner::news(const QString &text)
{
    if (m_banner != nullptr)
        m_banner->setTitle(text);
}

void ShareBanner::tell(const QString &text)
{
    if (m_banner != nullptr && m_banner->isOnDisplay())
        m_banner->setTitle(text);
    else
        m_banner = appear(text);
}
