// SPDX-License-Identifier: GPL-3.0-or-later
// The client against a service that answers late, early, never, or goes away.
#include "platform/thumbs/dbusthumbnailerclient.h"
#include "platform/thumbs/nullthumbnailerclient.h"
#include "platform/thumbs/thumbnailname.h"

#include "../../support/fakethumbnailerclient.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QSignalSpy>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString ServiceName = u"com.harrow.Kestrel.Thumbnailer"_s;
const QString Path = u"/org/freedesktop/thumbnails/Thumbnailer1"_s;
const QString Interface = u"org.freedesktop.thumbnails.Thumbnailer1"_s;

// Takes calls down; the test answers them.
class Service : public QDBusVirtualObject
{
public:
    explicit Service(const QDBusConnection &bus) : m_bus(bus) { }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        calls.append(message);
        if (message.member() == u"Queue"_s && answersQueue)
            m_bus.send(message.createReply(++handle));
        return true;
    }
    void emitSignal(const QString &name, const QVariantList &arguments)
    {
        QDBusMessage signal = QDBusMessage::createSignal(Path, Interface, name);
        signal.setArguments(arguments);
        m_bus.send(signal);
    }
    [[nodiscard]] QList<QDBusMessage> callsOf(const QString &member) const
    {
        QList<QDBusMessage> found;
        std::copy_if(calls.begin(), calls.end(), std::back_inserter(found),
                     [&member](const QDBusMessage &call) { return call.member() == member; });
        return found;
    }

    QList<QDBusMessage> calls;
    bool answersQueue = true;
    uint handle = 0;

private:
    QDBusConnection m_bus;
};

} // namespace

class ThumbnailerClientTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("KESTREL_THUMBNAILER_PROGRAM", "/bin/false"); }

    void init()
    {
        static int number = 0;
        m_server = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"server-%1"_s.arg(++number)));
        m_service = std::make_unique<Service>(*m_server);
        QVERIFY(m_server->registerVirtualObject(u"/org/freedesktop/thumbnails"_s, m_service.get(),
                                                QDBusConnection::SubPath));
        QVERIFY(m_server->registerService(ServiceName));
        m_client = std::make_unique<DBusThumbnailerClient>(QDBusConnection::sessionBus());
        m_ready = std::make_unique<QSignalSpy>(m_client.get(), &ThumbnailerClient::thumbnail);
        m_errors = std::make_unique<QSignalSpy>(m_client.get(), &ThumbnailerClient::error);
    }

    void cleanup()
    {
        m_client.reset();
        m_server->unregisterService(ServiceName);
        m_server->unregisterObject(u"/org/freedesktop/thumbnails"_s, QDBusConnection::UnregisterTree);
    }

    void asksInOneCallWithAMimeTypeForEach()
    {
        m_client->request({url(u"a b"_s), url(u"ü"_s)}, {u"video/mp4"_s}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 1);
        const QVariantList arguments = m_service->callsOf(u"Queue"_s).first().arguments();
        QCOMPARE(arguments.at(0).toStringList(), (QStringList{u"file:///v/a%20b"_s, u"file:///v/%C3%BC"_s}));
        QCOMPARE(arguments.at(1).toStringList(), (QStringList{u"video/mp4"_s, QString()}));
        QCOMPARE(arguments.at(2).toString(), u"video-grid"_s);
    }

    void reportsWhatTheServiceReports()
    {
        const QUrl good = url(u"a b"_s);
        const QUrl bad = url(u"bad"_s);
        m_client->request({good, bad}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 1);
        m_service->emitSignal(u"Ready"_s,
                              {1u, QStringList{u"file:///v/a%20b"_s, u"file:///v/not-asked-for"_s}});
        m_service->emitSignal(u"Error"_s, {1u, QStringList{u"file:///v/bad"_s}, 1, u"broken"_s});
        QTRY_COMPARE(m_errors->size(), 1);
        QCOMPARE(m_ready->size(), 1);
        QCOMPARE(m_ready->first().at(0).toUrl(), good);
        QCOMPARE(m_ready->first().at(1).toUrl(),
                 QUrl::fromLocalFile(thumbnailPath(u"file:///v/a%20b"_s, u"video-grid"_s)));
        QCOMPARE(m_errors->first().at(0).toString(), u"broken"_s);
        QCOMPARE(m_errors->first().at(1).toUrl(), bad);
    }

    // The first file may be ready before the answer to the call has come.
    void aSignalBeforeTheHandleCounts()
    {
        m_service->answersQueue = false;
        m_client->request({url(u"a"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 1);
        m_service->emitSignal(u"Ready"_s, {77u, QStringList{u"file:///v/a"_s}});
        QTRY_COMPARE(m_ready->size(), 1);
    }

    void cancelDequeuesAndStillReportsWhatWasBegun()
    {
        m_client->request({url(u"a"_s), url(u"b"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 1);
        m_client->cancel();
        QTRY_COMPARE(m_service->callsOf(u"Dequeue"_s).size(), 1);
        QCOMPARE(m_service->callsOf(u"Dequeue"_s).first().arguments().first().toUInt(), m_service->handle);
        m_service->emitSignal(u"Ready"_s, {m_service->handle, QStringList{u"file:///v/a"_s}});
        m_service->emitSignal(u"Finished"_s, {m_service->handle});
        QTRY_COMPARE(m_ready->size(), 1);
        // What was dropped is neither ready nor an error, also when it is asked for again.
        m_client->request({url(u"b"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 2);
        QCOMPARE(m_errors->size(), 0);
    }

    void cancelBeforeTheServiceIsThereAsksNothing()
    {
        m_client->request({url(u"a"_s)}, {}, u"video-grid"_s);
        m_client->cancel();
        m_client->request({url(u"b"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 1);
        QCOMPARE(m_service->callsOf(u"Queue"_s).first().arguments().first().toStringList(),
                 QStringList{u"file:///v/b"_s});
    }

    void removesThroughTheCacheInterface()
    {
        m_client->remove({url(u"a"_s), url(u"b c"_s)});
        QTRY_COMPARE(m_service->callsOf(u"Delete"_s).size(), 1);
        const QDBusMessage call = m_service->callsOf(u"Delete"_s).first();
        QCOMPARE(call.interface(), u"org.freedesktop.thumbnails.Cache1"_s);
        QCOMPARE(call.arguments().first().toStringList(),
                 (QStringList{u"file:///v/a"_s, u"file:///v/b%20c"_s}));
    }

    void aServiceThatNeverAnswersEndsInErrors()
    {
        m_client->setDeadline(200);
        m_service->answersQueue = false;
        m_client->request({url(u"a"_s), url(u"b"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_errors->size(), 2);
        QVERIFY(!m_errors->first().first().toString().isEmpty());
    }

    // Whoever keeps asking a service that hangs is told all the same.
    void furtherRequestsDoNotPutTheDeadlineOff()
    {
        m_client->setDeadline(300);
        m_service->answersQueue = false;
        QTimer again;
        connect(&again, &QTimer::timeout, this,
                [this] { m_client->request({url(u"b"_s)}, {}, u"video-grid"_s); });
        again.start(50);
        m_client->request({url(u"a"_s)}, {}, u"video-grid"_s);
        QTRY_VERIFY(!m_errors->isEmpty());
    }

    void aServiceThatCannotBeStartedEndsInErrors()
    {
        m_server->unregisterService(ServiceName);
        m_client->setDeadline(3000);
        m_client->request({url(u"a"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE_WITH_TIMEOUT(m_errors->size(), 1, 20000);
    }

    void aServiceThatComesBackIsAskedAgain()
    {
        m_client->request({url(u"a"_s), url(u"b"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 1);
        m_service->emitSignal(u"Ready"_s, {1u, QStringList{u"file:///v/a"_s}});
        QTRY_COMPARE(m_ready->size(), 1);
        m_server->unregisterService(ServiceName);
        QVERIFY(m_server->registerService(ServiceName));
        QTRY_COMPARE(m_service->callsOf(u"Queue"_s).size(), 2);
        QCOMPARE(m_service->callsOf(u"Queue"_s).last().arguments().first().toStringList(),
                 QStringList{u"file:///v/b"_s});
        // A file that takes the service with it twice is given up.
        m_server->unregisterService(ServiceName);
        QVERIFY(m_server->registerService(ServiceName));
        QTRY_COMPARE(m_errors->size(), 1);
        QCOMPARE(m_errors->first().at(1).toUrl(), url(u"b"_s));
    }

    void withoutAServiceEveryRequestIsAnError()
    {
        NullThumbnailerClient null;
        QSignalSpy errors(&null, &ThumbnailerClient::error);
        null.request({url(u"a"_s), url(u"b"_s)}, {}, u"video-grid"_s);
        QCOMPARE(errors.size(), 0);
        QTRY_COMPARE(errors.size(), 2);
        null.request({url(u"a"_s)}, {}, u"video-grid"_s);
        null.cancel();
        null.request({url(u"c"_s)}, {}, u"video-grid"_s);
        QTRY_COMPARE(errors.size(), 3);
        QCOMPARE(errors.last().at(1).toUrl(), url(u"c"_s));
    }

    void theFactoryReplacesTheClient()
    {
        FakeThumbnailerClient::install();
        const std::unique_ptr<ThumbnailerClient> client = ThumbnailerClient::create();
        QCOMPARE(FakeThumbnailerClient::last(), client.get());
        QSignalSpy ready(client.get(), &ThumbnailerClient::thumbnail);
        client->request({url(u"a"_s)}, {}, u"video-grid"_s);
        QCOMPARE(FakeThumbnailerClient::last()->outstanding, QList<QUrl>{url(u"a"_s)});
        FakeThumbnailerClient::last()->answer(url(u"a"_s), u"/tmp/a.jpeg"_s);
        QCOMPARE(ready.size(), 1);
        ThumbnailerClient::setFactory(nullptr);
        QVERIFY(dynamic_cast<DBusThumbnailerClient *>(ThumbnailerClient::create().get()));
    }

private:
    static QUrl url(const QString &name) { return QUrl::fromLocalFile(u"/v/"_s + name); }

    std::unique_ptr<QDBusConnection> m_server;
    std::unique_ptr<Service> m_service;
    std::unique_ptr<DBusThumbnailerClient> m_client;
    std::unique_ptr<QSignalSpy> m_ready;
    std::unique_ptr<QSignalSpy> m_errors;
};

QTEST_GUILESS_MAIN(ThumbnailerClientTest)
#include "thumbnailer_client_test.moc"
