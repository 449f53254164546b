// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "quadgatherer.h"

#include <memory>

class StoreLink;

// The source of quads of a notifier: what the store service tells its clients. A child of the notifier. It
// does not bring the service up by itself: without a connection that reads there is nothing that could have
// changed.
class StoreChanges : public QObject
{
    Q_OBJECT

public:
    static void attach(ChangeNotifier *notifier);

private:
    explicit StoreChanges(ChangeNotifier *notifier);

    std::shared_ptr<StoreLink> m_link;
    QuadGatherer m_gatherer;
};
