// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "credentials.h"
#include "serverdriver.h"

#include <QHash>

#include <memory>

class EndpointLink;
class EndpointRequest;

// A library on a SPARQL endpoint: the SPARQL 1.1 protocol over HTTP and HTTPS.
class EndpointDriver : public ServerDriver
{
    Q_OBJECT

public:
    explicit EndpointDriver(const ServerSettings &settings = ServerSettings::ofEndpoint(),
                            const ServerPatience &patience = {});
    // With credentials from elsewhere than the session's.
    EndpointDriver(const ServerSettings &settings, const ServerPatience &patience,
                   std::unique_ptr<Credentials> credentials);
    ~EndpointDriver() override;

protected:
    void send(StatementId id, const StandardStatement &statement, bool isUpdate) override;
    void cancel(StatementId id) override;

private:
    std::unique_ptr<EndpointLink> m_link;
    QHash<StatementId, EndpointRequest *> m_requests; // children of this
};
