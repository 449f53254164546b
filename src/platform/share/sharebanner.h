// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>

namespace toolkit {
class Banner;
}

// What the person is told of a share: news of what goes on changes the text that is there, what matters
// brings it back when it is there no longer.
class ShareBanner
{
public:
    static void show(const QString &text);

    void news(const QString &text);
    void tell(const QString &text);

private:
    QPointer<toolkit::Banner> m_banner;
};
