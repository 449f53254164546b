// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace toolkit {

// The path of one of the toolkit's files ("theme/kestrel.theme.json"): beside the installed program
// (<program's folder>/../share/kestrel), where it can be changed, else the one that the program carries with
// it. Whether that exists is the caller's matter.
[[nodiscard]] QString dataFile(const QString &name);

// Only the installed folder; it may not exist.
[[nodiscard]] QString installedDataFolder();

} // namespace toolkit
