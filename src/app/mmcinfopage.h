// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/applicationpage.h"

// Stands over everything while the videos are handed to a computer over USB.
class MmcInfoPage : public toolkit::ApplicationPage
{
    Q_OBJECT

public:
    MmcInfoPage();

protected:
    void createContent() override;
};
