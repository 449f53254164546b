// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/system/usernotice.h"

#include <QList>
#include <QStringList>

// Notes what it is asked to share, in place of a sheet. install() makes it what ShareService::create() gives.
class FakeShareService : public ShareService
{
public:
    FakeShareService() { ++created(); }

    void share(const QStringList &addresses) override { shared().append(addresses); }

    static void install()
    {
        shared().clear();
        created() = 0;
        setFactory([]() -> ShareService * { return new FakeShareService; });
    }
    static void uninstall() { setFactory(nullptr); }

    // Of all of them since install().
    static QList<QStringList> &shared()
    {
        static QList<QStringList> lists;
        return lists;
    }
    static int &created()
    {
        static int count = 0;
        return count;
    }
};
