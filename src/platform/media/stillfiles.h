// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

// Names for the stills of paused frames: in a directory of this process's own under the user's runtime
// directory, or the temporary one. The files of the last few pauses stay, so that whoever was told of one can
// still read it; all go with this object.
class StillFiles
{
public:
    // An empty string when nothing can be written.
    [[nodiscard]] QString next();

    static constexpr int Kept = 4;

private:
    std::unique_ptr<QTemporaryDir> m_directory;
    int m_counter = 0;
};
