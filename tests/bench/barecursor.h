// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

// A bare loop over the store library's cursor that looks at every cell of the whole library. In a file of its
// own: the library and the program both name something TrackerNotifier.
class BareCursor
{
public:
    BareCursor();
    ~BareCursor();

    // The number of rows.
    [[nodiscard]] int run() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
