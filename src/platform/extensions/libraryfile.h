// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Whether all that the loader would map of a shared library is in the file. The loader itself does not look,
// and a program that reads what a full disk or a broken download left out ends there. What is no library of
// this machine at all counts as whole: the loader says so.
[[nodiscard]] bool isWholeLibrary(const QString &path);
