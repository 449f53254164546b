// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/extensions/extensionarea.h>
#include <platform/toolkit/widget.h>

namespace toolkit {
class LinearLayoutPolicy;
}

// Which extensions have no part in the page and why, one below the other; those that ended the program can be
// tried again. Takes no room while there are none.
class ExtensionFailureList : public toolkit::Widget
{
    Q_OBJECT

public:
    // The area outlives the list.
    explicit ExtensionFailureList(ExtensionArea *area, QGraphicsItem *parent = nullptr);

private:
    void refill();

    ExtensionArea *m_area;
    toolkit::LinearLayoutPolicy *m_policy;
};
