// SPDX-License-Identifier: GPL-3.0-or-later
#include <data/playrecorder.h>
#include <data/storeprogress.h>

#include "support/privatebus.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = u"com.harrow.Kestrel.Store"_s;
const QString path = u"/com/harrow/Kestrel/Store"_s;

QString print(const StoreProgress &progress)
{
    return u"%1 %2 %3"_s.arg(progress.isScanning()).arg(progress.seen()).arg(progress.done());
}

} // namespace

// The store's side of the bus.
class FakeStoreService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.harrow.Kestrel.Store")

public:
    explicit FakeStoreService(const QDBusConnection &bus) : m_bus(bus)
    {
        m_bus.registerObject(path, this, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        m_bus.registerService(service);
    }
    ~FakeStoreService() override
    {
        m_bus.unregisterService(service);
        m_bus.unregisterObject(path);
    }

    bool scanning = false;
    uint seen = 0;
    uint done = 0;
    bool dies = false;
    QStringList plays;

public Q_SLOTS:
    bool Progress(uint &seenFiles, uint &doneFiles)
    {
        seenFiles = seen;
        doneFiles = done;
        return scanning;
    }
    void RecordPlay(const QString &urn)
    {
        plays.append(urn);
        if (dies)
            sendErrorReply(QDBusError::NoReply, u"it went away"_s); // what the bus tells then
    }

Q_SIGNALS:
    void ProgressChanged(bool scanning, uint seen, uint done);

private:
    QDBusConnection m_bus;
};

class TestStoreClients : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void withoutAStoreNothingIsScanning();
    void aScanUnderWayIsSeenAtOnce();
    void aStoreThatStartsLateIsAsked();
    void everyStepOfAScanIsReportedOnce();
    void aStoreThatDiesScansNoMore();
    void aPlayIsRecordedUnderItsUrn();
    void aPlayOfWhatTheStoreDoesNotKnowIsNotRecorded();
    void playsWithoutAStoreAreRecordedWhenItIsThere();
    void aPlayThatWasHeardIsNotToldAgain();

private:
    PrivateBus m_bus;
    std::unique_ptr<FakeStoreService> makeStore() const
    {
        return std::make_unique<FakeStoreService>(QDBusConnection(u"store"_s));
    }
};

void TestStoreClients::initTestCase()
{
    const QString address = m_bus.start();
    QVERIFY(!address.isEmpty());
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    QVERIFY(QDBusConnection::connectToBus(address, u"store"_s).isConnected());
    QVERIFY(QDBusConnection::sessionBus().isConnected());
}

void TestStoreClients::withoutAStoreNothingIsScanning()
{
    StoreProgress progress;
    QSignalSpy changes(&progress, &StoreProgress::changed);
    // A round trip on the bus: the question's answer is in by then.
    QTRY_COMPARE(progress.findChildren<QObject *>().size(), 0);
    QCOMPARE(print(progress), u"0 0 0"_s);
    QCOMPARE(changes.size(), 0);
}

void TestStoreClients::aScanUnderWayIsSeenAtOnce()
{
    const auto store = makeStore();
    store->scanning = true;
    store->seen = 40;
    store->done = 12;
    StoreProgress progress;
    QTRY_COMPARE(print(progress), u"1 40 12"_s);
}

void TestStoreClients::aStoreThatStartsLateIsAsked()
{
    StoreProgress progress;
    QTRY_COMPARE(progress.findChildren<QObject *>().size(), 0);
    const auto store = makeStore();
    store->scanning = true;
    store->seen = 7;
    QTRY_COMPARE(print(progress), u"1 7 0"_s);
}

void TestStoreClients::everyStepOfAScanIsReportedOnce()
{
    const auto store = makeStore();
    StoreProgress progress;
    QTRY_COMPARE(progress.findChildren<QObject *>().size(), 0);
    QSignalSpy changes(&progress, &StoreProgress::changed);
    Q_EMIT store->ProgressChanged(true, 10, 2);
    Q_EMIT store->ProgressChanged(true, 10, 2);
    Q_EMIT store->ProgressChanged(false, 10, 10);
    QTRY_COMPARE(print(progress), u"0 10 10"_s);
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.first(), (QVariantList{true, 10u, 2u}));
}

void TestStoreClients::aStoreThatDiesScansNoMore()
{
    auto store = makeStore();
    StoreProgress progress;
    Q_EMIT store->ProgressChanged(true, 10, 2);
    QTRY_VERIFY(progress.isScanning());
    store.reset();
    QTRY_VERIFY(!progress.isScanning());
}

void TestStoreClients::aPlayIsRecordedUnderItsUrn()
{
    const auto store = makeStore();
    PlayRecorder recorder;
    recorder.record(u"urn:uuid:1"_s);
    QTRY_COMPARE(store->plays, QStringList{u"urn:uuid:1"_s});
}

void TestStoreClients::aPlayOfWhatTheStoreDoesNotKnowIsNotRecorded()
{
    const auto store = makeStore();
    PlayRecorder recorder;
    recorder.record(QString());
    recorder.record(u"urn:uuid:2"_s);
    QTRY_COMPARE(store->plays, QStringList{u"urn:uuid:2"_s});
}

// It crashed a moment ago, or the program has only just begun.
void TestStoreClients::playsWithoutAStoreAreRecordedWhenItIsThere()
{
    PlayRecorder recorder;
    recorder.record(u"urn:uuid:3"_s);
    recorder.record(u"urn:uuid:4"_s);
    QTRY_COMPARE(recorder.findChildren<QDBusPendingCallWatcher *>().size(), 0);
    auto store = makeStore();
    QTRY_COMPARE(store->plays, QStringList({u"urn:uuid:3"_s, u"urn:uuid:4"_s}));
    // And once: the next store is not told again.
    QTRY_COMPARE(recorder.findChildren<QDBusPendingCallWatcher *>().size(), 0);
    store.reset();
    store = makeStore();
    recorder.record(u"urn:uuid:5"_s);
    QTRY_COMPARE(store->plays, QStringList{u"urn:uuid:5"_s});
}

// It has counted, or not: nobody knows.
void TestStoreClients::aPlayThatWasHeardIsNotToldAgain()
{
    PlayRecorder recorder;
    auto store = makeStore();
    store->dies = true;
    recorder.record(u"urn:uuid:6"_s);
    QTRY_COMPARE(store->plays, QStringList{u"urn:uuid:6"_s});
    QTRY_COMPARE(recorder.findChildren<QDBusPendingCallWatcher *>().size(), 0);
    store.reset();
    store = makeStore();
    recorder.record(u"urn:uuid:7"_s);
    QTRY_COMPARE(store->plays, QStringList{u"urn:uuid:7"_s});
}

QTEST_GUILESS_MAIN(TestStoreClients)
#include "test_storeclients.moc"
