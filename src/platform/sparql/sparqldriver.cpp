// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqldriver.h"

#include "trackerdriver.h"
#include "unavailabledriver.h"

#include <QMap>

using namespace Qt::Literals::StringLiterals;

namespace {

using Factory = SparqlDriverRegistry::Factory;

Factory tracker(TrackerDriver::Reading reading)
{
    return [reading](const SparqlConnectionOptions &) { return std::make_unique<TrackerDriver>(reading); };
}

Factory unavailable(const QString &message)
{
    return
        [message](const SparqlConnectionOptions &) { return std::make_unique<UnavailableDriver>(message); };
}

const QMap<QString, Factory> &builtIn()
{
    static const QMap<QString, Factory> drivers = {
        {u"QTRACKER"_s, tracker(TrackerDriver::Reading::Service)},
        {u"QTRACKER_DIRECT"_s, tracker(TrackerDriver::Reading::Folder)},
        {u"QSPARQL_ENDPOINT"_s,
         unavailable(u"QSPARQL_ENDPOINT: this build has no driver for SPARQL endpoints over HTTP"_s)},
        {u"QVIRTUOSO"_s, unavailable(u"QVIRTUOSO: this build has no driver for Virtuoso servers"_s)},
    };
    return drivers;
}

QMap<QString, Factory> &registered()
{
    static QMap<QString, Factory> drivers = builtIn();
    return drivers;
}

} // namespace

void SparqlDriverRegistry::registerDriver(const QString &name, Factory factory)
{
    registered().insert(name, std::move(factory));
}

void SparqlDriverRegistry::unregisterDriver(const QString &name)
{
    if (builtIn().contains(name))
        registered().insert(name, builtIn().value(name));
    else
        registered().remove(name);
}

QStringList SparqlDriverRegistry::driverNames()
{
    return registered().keys();
}

std::unique_ptr<SparqlDriver> SparqlDriverRegistry::create(const QString &name,
                                                           const SparqlConnectionOptions &options)
{
    const Factory factory = registered().value(name);
    return factory ? factory(options) : nullptr;
}
