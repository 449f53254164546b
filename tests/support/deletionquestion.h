// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/sceneitems.h"

#include <fileops/filemanager.h>
#include <fileops/fileremoval.h>
#include <platform/toolkit/querydialog.h>

#include <QTest>

// The question whether a file should be deleted, once it stands there and that file was looked at. `manager`
// tells who asks, each time, since nobody may before the store has answered. Null: no question came.
template <typename Manager>
[[nodiscard]] toolkit::QueryDialog *deletionQuestion(const toolkit::ApplicationWindow &window,
                                                     Manager manager)
{
    toolkit::QueryDialog *dialog = nullptr;
    (void)QTest::qWaitFor([&] {
        const FileManager *asks = manager();
        const auto *removal = asks ? asks->findChild<FileRemoval *>() : nullptr;
        dialog = activePopup<toolkit::QueryDialog>(window);
        return dialog && removal && removal->isIdentified();
    });
    return dialog;
}
