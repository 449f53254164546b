// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointdriver.h"

#include "endpointlink.h"
#include "endpointrequest.h"

EndpointDriver::EndpointDriver(const ServerSettings &settings, const ServerPatience &patience)
    : EndpointDriver(settings, patience, std::make_unique<Credentials>())
{
}

EndpointDriver::EndpointDriver(const ServerSettings &settings, const ServerPatience &patience,
                               std::unique_ptr<Credentials> credentials)
    : ServerDriver(settings, patience),
      m_link(std::make_unique<EndpointLink>(settings, std::move(credentials)))
{
}

EndpointDriver::~EndpointDriver()
{
    qDeleteAll(m_requests); // they use the link
}

void EndpointDriver::send(StatementId id, const StandardStatement &statement, bool isUpdate)
{
    auto *request = new EndpointRequest(*m_link, statement, isUpdate, this);
    m_requests.insert(id, request);
    connect(request, &EndpointRequest::finished, this, [this, id, request] {
        m_requests.remove(id);
        request->deleteLater();
        answered(id, request->takeAnswer());
    });
}

void EndpointDriver::cancel(StatementId id)
{
    delete m_requests.take(id);
}
