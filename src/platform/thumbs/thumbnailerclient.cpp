// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailerclient.h"

#include "dbusthumbnailerclient.h"
#include "nullthumbnailerclient.h"
#include "thumbslog.h"

namespace {
ThumbnailerClient::Factory s_factory = nullptr;
}

std::unique_ptr<ThumbnailerClient> ThumbnailerClient::create()
{
    if (s_factory)
        return s_factory();
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected())
        return std::make_unique<DBusThumbnailerClient>(bus);
    qCInfo(thumbsLog, "no session bus: there are no thumbnails");
    return std::make_unique<NullThumbnailerClient>();
}

void ThumbnailerClient::setFactory(Factory factory)
{
    s_factory = factory;
}
