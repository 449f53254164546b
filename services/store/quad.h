// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

// A triple of store ids in its graph; a literal object is -1. The default graph is 0.
struct StoreQuad
{
    int graph = 0;
    int subject = 0;
    int predicate = 0;
    int object = -1;

    friend bool operator==(const StoreQuad &, const StoreQuad &) = default;
};
