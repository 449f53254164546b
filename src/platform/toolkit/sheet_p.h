// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sheet.h"

namespace toolkit {

class PannableViewport;
class SheetPanel;

class Sheet::Private
{
public:
    Private(Sheet *sheet, Extent sheetExtent);

    [[nodiscard]] bool isAtSide() const;
    [[nodiscard]] QPointF panelPosition(qreal progress) const;

    Sheet *q;
    const Extent extent;
    SheetPanel *panel;
    SheetHeader *header;
    PannableViewport *viewport;
};

} // namespace toolkit
