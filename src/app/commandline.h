// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// What the command line asks for.
struct CommandLine
{
    QString startAddress; // empty: none was given
    bool serviceFramework = false; // started by a D-Bus call: no page opens by itself
    QStringList trackerModes; // each "-trackerconnectionmode", in order

    friend bool operator==(const CommandLine &, const CommandLine &) = default;
};

// `arguments` begins with the program's name. Relative paths are resolved against the working directory. What
// is not understood is ignored.
[[nodiscard]] CommandLine parseCommandLine(const QStringList &arguments);
