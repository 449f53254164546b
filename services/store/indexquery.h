// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toldfile.h"

#include <QStringList>

#include <optional>

// The questions to the desktop's file index and how its rows are read.

// Every video that it knows, and the video files that it has not read yet.
[[nodiscard]] QString allVideosQuery();
// The videos among resources, which may be files or what lies in them. Names that cannot stand in a query are
// left out; empty when none is left.
[[nodiscard]] QString videosQuery(const QStringList &urns);
// Those among resources that are folders which the index follows.
[[nodiscard]] QString indexedFoldersQuery(const QStringList &urns);

// A row of either videos query; none when it is not about a local file.
[[nodiscard]] std::optional<ToldFile> toldFileOf(const QStringList &cells);
