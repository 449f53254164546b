// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Where the programs are that belong to this one. An environment variable names another in the place of each:
// KESTREL_STORE_PROGRAM of "kestrel-store".

// What that variable names; empty when it is not set.
[[nodiscard]] QString overridingProgram(const QString &program);

// The program beside this executable, or in libexec as seen from there; empty when it is in neither.
[[nodiscard]] QString installedProgram(const QString &program);

// For a program that is started as a part of this one: what the variable names, the installed one, or that of
// the build tree. Where it is in no such place, the path that it is installed at.
[[nodiscard]] QString helperProgram(const QString &program);
