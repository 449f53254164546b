// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storesession.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What goes wrong on a phone: the power, the disk, the files. The library is there again afterwards.
class StoreFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aCorruptDatabaseIsMovedAsideAndComesBackFromFilesAndJournal();
    void aDatabaseThatIsDamagedInTheMiddleComesBackToo();
    void killedInTheMiddleOfAScan();
    void countedPlaysSurviveAKill();
    void nothingAcknowledgedIsLostWhenKilled();
    void aBrokenFileIsTriedOnce();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_session->videos() + u'/' + name; }
    void startService();
    bool makeClips(int count);
    void damage(qint64 from);

    std::unique_ptr<StoreSession> m_session;
    std::unique_ptr<StoreClient> m_client;
};

void StoreFaultsTest::init()
{
    m_client.reset();
    m_session = std::make_unique<StoreSession>();
    QVERIFY(m_session->isValid());
}

void StoreFaultsTest::startService()
{
    m_client.reset();
    QVERIFY(m_session->start());
    m_client = m_session->connectClient();
    QVERIFY2(m_client->isConnected(), qPrintable(m_client->lastError()));
}

bool StoreFaultsTest::makeClips(int count)
{
    for (int i = 0; i < count; ++i) {
        if (!m_session->makeClip(at(u"%1.mp4"_s.arg(i))))
            return false;
    }
    return true;
}

void StoreFaultsTest::damage(qint64 from)
{
    QFile::remove(m_session->data() + u"/store/meta.db-wal"_s);
    QFile::remove(m_session->data() + u"/store/meta.db-shm"_s);
    QFile file(m_session->data() + u"/store/meta.db"_s);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(from) && file.write(QByteArray(qMax<qint64>(4096, file.size() - from), 'x')) > 0);
}

void StoreFaultsTest::aCorruptDatabaseIsMovedAsideAndComesBackFromFilesAndJournal()
{
    QVERIFY(makeClips(3));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 3, 30000);
    const QString urn = urnOf(m_client.get(), u"1.mp4"_s);
    QCOMPARE(m_client->update(propertyUpdate(urn, u"nie:title"_s, u"Mine"_s)), QString());
    QCOMPARE(m_client->update(propertyUpdate(urn, u"nmm:runTime"_s, u"1"_s)), QString());
    m_session->call(u"RecordPlay"_s, {urn});
    QTRY_COMPARE(valueOf(m_client.get(), u"1.mp4"_s, u"nie:usageCounter"_s), u"1"_s);
    m_client.reset();
    QVERIFY(m_session->stop());
    damage(0);
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 3, 30000);
    QCOMPARE(urnOf(m_client.get(), u"1.mp4"_s), urn);
    QCOMPARE(valueOf(m_client.get(), u"1.mp4"_s, u"nie:title"_s), u"Mine"_s);
    QCOMPARE(valueOf(m_client.get(), u"1.mp4"_s, u"nmm:runTime"_s), u"1"_s);
    QCOMPARE(valueOf(m_client.get(), u"1.mp4"_s, u"nie:usageCounter"_s), u"1"_s);
    QCOMPARE(QDir(m_session->data()).entryList({u"store-damaged-*"_s}).size(), 1);
    QVERIFY(m_session->property(u"Healthy"_s).toBool());
}

void StoreFaultsTest::aDatabaseThatIsDamagedInTheMiddleComesBackToo()
{
    QVERIFY(makeClips(2));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 2, 30000);
    m_client.reset();
    QVERIFY(m_session->stop());
    damage(8192);
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 2, 30000);
    QVERIFY(m_session->property(u"Healthy"_s).toBool());
}

// Each is counted once, before and after; when it was played last comes back, too.
void StoreFaultsTest::countedPlaysSurviveAKill()
{
    QVERIFY(makeClips(1));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 30000);
    const QString urn = urnOf(m_client.get(), u"0.mp4"_s);
    m_session->call(u"RecordPlay"_s, {urn});
    m_session->call(u"RecordPlay"_s, {urn});
    QTRY_COMPARE(valueOf(m_client.get(), u"0.mp4"_s, u"nie:usageCounter"_s), u"2"_s);
    const QString played = valueOf(m_client.get(), u"0.mp4"_s, u"nie:contentAccessed"_s);
    QVERIFY(!played.isEmpty());
    m_session->kill();
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 60000);
    QCOMPARE(valueOf(m_client.get(), u"0.mp4"_s, u"nie:usageCounter"_s), u"2"_s);
    QCOMPARE(valueOf(m_client.get(), u"0.mp4"_s, u"nie:contentAccessed"_s), played);
    m_session->call(u"RecordPlay"_s, {urn});
    QTRY_COMPARE(valueOf(m_client.get(), u"0.mp4"_s, u"nie:usageCounter"_s), u"3"_s);
}

void StoreFaultsTest::killedInTheMiddleOfAScan()
{
    constexpr int clips = 40;
    QVERIFY(makeClips(clips));
    startService();
    QTRY_VERIFY_WITH_TIMEOUT(countVideos(m_client.get()) > 0, 30000);
    m_session->kill();
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), clips, 60000);
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->isScanning(), 60000);
    QCOMPARE(countVideos(m_client.get()), clips);
}

void StoreFaultsTest::nothingAcknowledgedIsLostWhenKilled()
{
    QVERIFY(makeClips(1));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 30000);
    const QString urn = urnOf(m_client.get(), u"0.mp4"_s);
    for (int i = 1; i <= 5; ++i) {
        QCOMPARE(m_client->update(propertyUpdate(urn, u"nmm:runTime"_s, QString::number(i * 10))), QString());
        m_session->kill();
        startService();
        QCOMPARE(valueOf(m_client.get(), u"0.mp4"_s, u"nmm:runTime"_s), QString::number(i * 10));
    }
}

void StoreFaultsTest::aBrokenFileIsTriedOnce()
{
    QVERIFY(makeClips(1));
    QFile broken(at(u"broken.mp4"_s));
    QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no video at all") > 0);
    broken.close();
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(m_session->log().count("broken.mp4 is left out"), 1, 30000);
    QVERIFY(m_session->stop());
    startService();
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->progress.isEmpty() && !m_session->isScanning(), 30000);
    // Perhaps the service was stopped before it had read the other one.
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 30000);
    QCOMPARE(m_session->log().count("broken.mp4 is left out"), 1);
}

QTEST_GUILESS_MAIN(StoreFaultsTest)
#include "store_faults.moc"
