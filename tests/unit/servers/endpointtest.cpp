// SPDX-License-Identifier: GPL-3.0-or-later
#include "endpointtest.h"

#include "platform/sparql/outstandingupdates.h"

#include <QFile>
#include <QTest>

using namespace endpointtest;

void EndpointTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<WebServer>();
    QVERIFY(m_server->start());
    m_owner = std::make_unique<QObject>();
    m_settings = {};
    m_settings.queryAddress = address();
    connectTo(m_settings);
}

void EndpointTest::cleanup()
{
    m_owner.reset();
    m_driver.reset();
    m_server.reset();
    QCOMPARE(OutstandingUpdates::instance().count(), 0);
}

QUrl EndpointTest::address(const QString &scheme) const
{
    return QUrl(u"%1://127.0.0.1:%2/sparql"_s.arg(scheme).arg(m_server->serverPort()));
}

void EndpointTest::connectTo(const ServerSettings &settings)
{
    m_driver = std::make_unique<EndpointDriver>(
        settings, impatient(),
        std::make_unique<Credentials>(QDBusConnection(u"nobody"_s), m_folder->filePath(u"credentials"_s)));
}

void EndpointTest::storeLogin(const QString &password)
{
    QFile file(m_folder->filePath(u"credentials"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        u"[127.0.0.1:%1]\nuser = anna\npassword = %2\n"_s.arg(m_server->serverPort()).arg(password).toUtf8());
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
}

QString EndpointTest::outcome(SparqlResult *result)
{
    if (!QTest::qWaitFor([&] { return result->isFinished(); }, 60000))
        return u"never finished"_s;
    if (result->hasError())
        return result->errorMessage();
    QStringList values;
    while (result->next())
        values.append(result->stringValue(0));
    return values.join(u' ');
}
