// SPDX-License-Identifier: GPL-3.0-or-later
#include "storechanges.h"

#include "sparqllog.h"
#include "storelink.h"

using namespace Qt::Literals::StringLiterals;

void StoreChanges::attach(ChangeNotifier *notifier)
{
    // The one class that the service tells about.
    if (notifier->classIri().endsWith("/nmm#Video"_L1))
        new StoreChanges(notifier);
    else
        qCWarning(lcSparql).noquote() << "the store tells no changes of" << notifier->classIri();
}

StoreChanges::StoreChanges(ChangeNotifier *notifier) : QObject(notifier), m_link(StoreLink::shared())
{
    connect(m_link.get(), &StoreLink::changed, &m_gatherer, &QuadGatherer::take);
    connect(&m_gatherer, &QuadGatherer::ready, notifier, &ChangeNotifier::changed);
    connect(m_link.get(), &StoreLink::reset, notifier, [this, notifier] {
        m_gatherer.clear();
        Q_EMIT notifier->reset();
    });
}
