// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widgetcontroller.h"

// What a cell answers to the finger.
class GridItemWidgetStyle : public toolkit::WidgetStyle
{
    Q_OBJECT

public:
    using toolkit::WidgetStyle::WidgetStyle;

    [[nodiscard]] const toolkit::Feedback &pressFeedback() const { return m_pressFeedback; }
    [[nodiscard]] const toolkit::Feedback &releaseFeedback() const { return m_releaseFeedback; }
    [[nodiscard]] const toolkit::Feedback &cancelFeedback() const { return m_cancelFeedback; }

private:
    toolkit::Feedback m_pressFeedback{QStringLiteral("press")};
    toolkit::Feedback m_releaseFeedback{QStringLiteral("release")};
    toolkit::Feedback m_cancelFeedback{QStringLiteral("cancel")};
};
