// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/servers/endpointdriver.h"
#include "platform/sparql/sparqlresult.h"
#include "support/webserver.h"

#include <QTemporaryDir>
#include <QUrl>

#include <memory>

// A driver and the web server of its endpoint, both in this process.
namespace endpointtest {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

inline const SparqlQuery anyRead(u"SELECT ?_v WHERE { ?_v a nmm:Video . }"_s);
inline const SparqlQuery
    anyUpdate(u"DELETE { <urn:a> nie:title ?_insert } WHERE { <urn:a> nie:title ?_insert .} INSERT { "
              "<urn:a> nie:title \"T\" }"_s,
              SparqlQuery::UpdateStatement);

inline QByteArray rows(const QList<QByteArray> &values)
{
    QByteArray bindings;
    for (const QByteArray &value : values)
        bindings += (bindings.isEmpty() ? "" : ",") + QByteArray(R"({"v":{"type":"uri","value":")") + value
            + "\"}}";
    return R"({"head":{"vars":["v"]},"results":{"bindings":[)" + bindings + "]}}";
}

inline const QByteArray one = rows({"urn:a"});
inline const QByteArray json = "Content-Type: application/sparql-results+json\r\n";

inline ServerPatience impatient()
{
    ServerPatience patience;
    patience.mostAttempts = 3;
    patience.firstRetry = 1ms;
    patience.firstProbe = 1h;
    return patience;
}

} // namespace endpointtest

class EndpointTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

protected:
    [[nodiscard]] SparqlResult *exec(const SparqlQuery &query)
    {
        return m_driver->exec(query, m_owner.get());
    }
    // The error, or the first column.
    [[nodiscard]] QString outcome(SparqlResult *result);
    void connectTo(const ServerSettings &settings);
    [[nodiscard]] QUrl address(const QString &scheme = QStringLiteral("http")) const;
    void storeLogin(const QString &password);

    std::unique_ptr<WebServer> m_server;
    std::unique_ptr<QTemporaryDir> m_folder;
    ServerSettings m_settings;
    std::unique_ptr<EndpointDriver> m_driver;
    std::unique_ptr<QObject> m_owner;
};
