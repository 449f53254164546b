// SPDX-License-Identifier: GPL-3.0-or-later
#include "serverdrivers.h"

#include "endpointdriver.h"
#include "virtuosodriver.h"

using namespace Qt::Literals::StringLiterals;

void registerServerDrivers()
{
    SparqlDriverRegistry::registerDriver(u"QSPARQL_ENDPOINT"_s, [](const SparqlConnectionOptions &) {
        return std::make_unique<EndpointDriver>();
    });
    SparqlDriverRegistry::registerDriver(
        u"QVIRTUOSO"_s, [](const SparqlConnectionOptions &) { return std::make_unique<VirtuosoDriver>(); });
}
