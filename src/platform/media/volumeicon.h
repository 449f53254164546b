// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The icon for a volume from 0 to 1.
[[nodiscard]] inline QString volumeIcon(qreal volume)
{
    if (volume <= 0)
        return QStringLiteral("icon-m-kestrel-volume-mute");
    return volume < 0.5 ? QStringLiteral("icon-m-kestrel-volume-low")
                        : QStringLiteral("icon-m-kestrel-volume");
}
