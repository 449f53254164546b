// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/applicationservice.h"

// One instance of the program: a second start comes to the running one as relaunch() and ends. Calls are held
// from the beginning: start-up releases them once the controller is ready.
class KestrelApplicationService : public toolkit::ApplicationService
{
    Q_OBJECT

public:
    explicit KestrelApplicationService(QObject *parent = nullptr);

    void launch() override;
    void open(const QStringList &uris) override;

Q_SIGNALS:
    void relaunch();
    // The first of the addresses that a file manager asks to open, in the store's spelling.
    void openRequested(QString address);
};
