// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedvideo.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <optional>

// Reads what a provider answered; nothing when it is no answer at all. Entries that are not what they should
// be are left out. `base`: what relative addresses stand on.
[[nodiscard]] std::optional<QList<RelatedVideo>> providerVideos(const QByteArray &json, const QUrl &base);

// Whether something may be fetched from an address or played: on the web, and not on this device's own files.
[[nodiscard]] bool isWebAddress(const QUrl &url);
