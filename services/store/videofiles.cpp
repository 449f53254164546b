// SPDX-License-Identifier: GPL-3.0-or-later
#include "videofiles.h"

#include <QFile>
#include <QMimeDatabase>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

// Translations are called ".ts" too, and a stream that was cut from the middle has no start that tells them
// apart.
bool hasTransportPackets(const QString &path)
{
    constexpr qint64 packetSize = 188;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray head = file.read(2 * packetSize);
    return head.size() == 2 * packetSize && head[0] == 'G' && head[packetSize] == 'G';
}

} // namespace

bool mayBeVideo(const QString &path)
{
    if (isHiddenName(path.section(u'/', -1)))
        return false;
    static constexpr std::array others{
        "application/ogg"_L1,        "application/mxf"_L1,
        "application/vnd.ms-asf"_L1, "application/vnd.rn-realmedia"_L1,
        "application/x-matroska"_L1,
    };
    const QString type = QMimeDatabase().mimeTypeForFile(path).name();
    if (type == "video/vnd.mpegurl"_L1)
        return false; // a list of addresses
    if (type == "text/vnd.trolltech.linguist"_L1)
        return hasTransportPackets(path);
    return type.startsWith("video/"_L1)
        || std::any_of(others.begin(), others.end(), [&](QLatin1StringView other) { return type == other; });
}

bool isHiddenName(const QString &name)
{
    return name.startsWith(u'.');
}
