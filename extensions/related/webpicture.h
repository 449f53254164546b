// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>

// A stranger's picture, a JPEG or a PNG, made as small as it is shown; null when it is none, or larger than a
// picture needs to be. May be called in any thread, and takes its time.
[[nodiscard]] QImage webPicture(QByteArray bytes);
