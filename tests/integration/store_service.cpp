// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storesession.h"

#include <QDBusArgument>
#include <QDBusPendingCall>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTcpServer>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::Literals::StringLiterals;

// The store as its clients see it: the private socket, queries, updates, and what the store tells of changes.
class StoreServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theSocketIsForThisUserOnly();
    void anAcceptedTitleOrPositionYieldsItsQuadAlsoWhenEqual();
    void otherPropertiesYieldNoQuad();
    void severalUpdatesAreOneTransaction();
    void insertedAndDeletedVideosYieldTheirClass();
    void anUpdateOfNoVideoIsRefused();
    void clientsCannotMakeTheStoreOpenConnections();
    void onlyQueriesAndUpdatesAreServed();
    void aThousandVideosOfOneCamera();
    void playsAreCounted();
    void factsOfAFile();
    void factsOfWhatCannotBeRead();
    void everyQuestionAboutFactsIsAnswered();
    void aSecondStartHandsItsFoldersOver();
    void aHandOverWithoutFoldersEndsToo();
    void onlyAbsolutePathsBecomeRoots();
    void endsCleanlyWhenAsked();

private:
    bool insert(int first, int count, const QString &more = {});
    [[nodiscard]] int id(const QString &term)
    {
        return m_client->value(u"SELECT tracker:id(%1) {}"_s.arg(term)).toInt();
    }

    std::unique_ptr<StoreSession> m_session;
    std::unique_ptr<StoreClient> m_client;
};

void StoreServiceTest::init()
{
    m_client.reset();
    m_session = std::make_unique<StoreSession>();
    QVERIFY(m_session->isValid());
    QVERIFY(m_session->start());
    m_client = m_session->connectClient();
    QVERIFY2(m_client->isConnected(), qPrintable(m_client->lastError()));
}

bool StoreServiceTest::insert(int first, int count, const QString &more)
{
    QString text = u"INSERT DATA { "_s;
    for (int i = first; i < first + count; ++i)
        text += u"<urn:uuid:%1> a nmm:Video, nfo:FileDataObject ; nie:url \"file:///nowhere/%1.mp4\" ; "
                "nfo:fileName \"%1.mp4\" ; nmm:runTime 0 %2 . "_s.arg(i)
                    .arg(more);
    return m_client->update(text + u"}"_s).isEmpty();
}

void StoreServiceTest::theSocketIsForThisUserOnly()
{
    const QString address = m_session->call(u"Socket"_s).arguments().value(0).toString();
    const QString path = address.section(u"path="_s, 1);
    QVERIFY(path.startsWith(m_session->runtime()));
    struct stat status = {};
    QCOMPARE(::stat(qPrintable(m_session->runtime()), &status), 0);
    QCOMPARE(int(status.st_mode & 0777), 0700);
    QVERIFY(QFileInfo::exists(path));
    QVERIFY(m_session->property(u"Healthy"_s).toBool());
}

void StoreServiceTest::anAcceptedTitleOrPositionYieldsItsQuadAlsoWhenEqual()
{
    QVERIFY(insert(1, 1));
    const int video = id(u"<urn:uuid:1>"_s);
    QTRY_COMPARE(m_client->inserts.size(), 1);
    for (const QString &property : {u"nie:title"_s, u"nmm:runTime"_s}) {
        const StoreClient::Quad quad{0, video, id(property), -1};
        for (int i = 0; i < 2; ++i) {
            m_client->forget();
            QCOMPARE(m_client->update(propertyUpdate(u"urn:uuid:1"_s, property, u"17"_s)), QString());
            QTRY_COMPARE(m_client->allInserts(), QList<StoreClient::Quad>({quad}));
        }
    }
    QCOMPARE(m_client->value(u"SELECT nmm:runTime(<urn:uuid:1>) {}"_s), u"17"_s);
}

void StoreServiceTest::otherPropertiesYieldNoQuad()
{
    QVERIFY(insert(1, 1));
    QTRY_COMPARE(m_client->inserts.size(), 1);
    m_client->forget();
    QCOMPARE(m_client->update(propertyUpdate(u"urn:uuid:1"_s, u"nfo:duration"_s, u"90"_s)), QString());
    QCOMPARE(m_client->update(propertyUpdate(u"urn:uuid:1"_s, u"nie:usageCounter"_s, u"2"_s)), QString());
    // What follows comes after whatever those would have brought.
    QCOMPARE(m_client->update(propertyUpdate(u"urn:uuid:1"_s, u"nie:title"_s, u"x"_s)), QString());
    QTRY_COMPARE(m_client->allInserts().size(), 1);
    QCOMPARE(m_client->allInserts().first().predicate, id(u"nie:title"_s));
    QVERIFY(m_client->allDeletes().isEmpty());
}

void StoreServiceTest::severalUpdatesAreOneTransaction()
{
    QVERIFY(insert(1, 2));
    const QString first = propertyUpdate(u"urn:uuid:1"_s, u"nmm:runTime"_s, u"11"_s);
    const QString second = propertyUpdate(u"urn:uuid:2"_s, u"nmm:runTime"_s, u"12"_s);
    QVERIFY(!m_client->updateAll({first, u"this is no SPARQL"_s}).isEmpty());
    QCOMPARE(m_client->value(u"SELECT nmm:runTime(<urn:uuid:1>) {}"_s), u"0"_s);
    QCOMPARE(m_client->updateAll({first, second}), QString());
    QCOMPARE(m_client->value(u"SELECT nmm:runTime(<urn:uuid:1>) {}"_s), u"11"_s);
    QCOMPARE(m_client->value(u"SELECT nmm:runTime(<urn:uuid:2>) {}"_s), u"12"_s);
}

void StoreServiceTest::insertedAndDeletedVideosYieldTheirClass()
{
    QVERIFY(insert(1, 1));
    const StoreClient::Quad quad{0, id(u"<urn:uuid:1>"_s), id(u"rdf:type"_s), id(u"nmm:Video"_s)};
    QTRY_COMPARE(m_client->allInserts(), QList<StoreClient::Quad>({quad}));
    QCOMPARE(m_client->update(u"DELETE WHERE { <urn:uuid:1> a rdfs:Resource }"_s), QString());
    QTRY_COMPARE(m_client->allDeletes(), QList<StoreClient::Quad>({quad}));
    QCOMPARE(countVideos(m_client.get()), 0);
}

void StoreServiceTest::anUpdateOfNoVideoIsRefused()
{
    QVERIFY(!m_client->update(propertyUpdate(u"urn:uuid:none"_s, u"nmm:runTime"_s, u"5"_s)).isEmpty());
    QVERIFY(!m_client->update(u"INSERT DATA { this is not SPARQL"_s).isEmpty());
    QVERIFY(insert(1, 1));
    QVERIFY(m_session->property(u"Healthy"_s).toBool());
}

void StoreServiceTest::clientsCannotMakeTheStoreOpenConnections()
{
    QTcpServer web;
    QVERIFY(web.listen(QHostAddress::LocalHost));
    const QString service
        = u"SERVICE <http://127.0.0.1:%1/sparql> { ?v a nmm:Video }"_s.arg(web.serverPort());
    m_client->query(u"SELECT ?v { %1 }"_s.arg(service));
    QVERIFY(m_client->lastError().contains(u"SERVICE"_s));
    QVERIFY(!m_client->update(u"INSERT { ?v nie:title \"x\" } WHERE { %1 }"_s.arg(service)).isEmpty());
    QVERIFY(!m_client->update(u"LOAD <file:///etc/passwd>"_s).isEmpty());
    QVERIFY(!web.waitForNewConnection(200));
}

void StoreServiceTest::onlyQueriesAndUpdatesAreServed()
{
    QVERIFY(m_client->callWithDescriptor("UpdateBlank").contains(u"only queries and updates"_s));
    QVERIFY(m_client->callWithDescriptor("Update").contains(u"did not come"_s));
    QVERIFY(insert(1, 1));
}

void StoreServiceTest::aThousandVideosOfOneCamera()
{
    QVERIFY(insert(1, 1000, u"; nfo:equipment <urn:equipment:A:B:>"_s));
    QTRY_COMPARE(m_client->allInserts().size(), 1000);
    QSet<int> subjects;
    const QList<StoreClient::Quad> quads = m_client->allInserts();
    for (const StoreClient::Quad &quad : quads)
        subjects.insert(quad.subject);
    QCOMPARE(subjects.size(), 1000);
    QCOMPARE(countVideos(m_client.get()), 1000);
}

void StoreServiceTest::playsAreCounted()
{
    QVERIFY(insert(1, 1));
    m_session->call(u"RecordPlay"_s, {u"urn:uuid:1"_s});
    m_session->call(u"RecordPlay"_s, {u"urn:uuid:none"_s});
    m_session->call(u"RecordPlay"_s, {u"urn:uuid:1"_s});
    QTRY_COMPARE(m_client->value(u"SELECT nie:usageCounter(<urn:uuid:1>) {}"_s), u"2"_s);
    QVERIFY(!m_client->value(u"SELECT nie:contentAccessed(<urn:uuid:1>) {}"_s).isEmpty());
}

void StoreServiceTest::factsOfAFile()
{
    QVERIFY(m_session->makeClip(m_session->videos() + u"/clip.mp4"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!urnOf(m_client.get(), u"clip.mp4"_s).isEmpty(), 20000);
    const QDBusMessage answer = m_session->call(u"Facts"_s, {urnOf(m_client.get(), u"clip.mp4"_s)});
    QCOMPARE(answer.type(), QDBusMessage::ReplyMessage);
    const auto facts = qdbus_cast<QVariantMap>(answer.arguments().value(0));
    QVERIFY(facts.value(u"width"_s).toInt() > 0 && facts.value(u"height"_s).toInt() > 0);
    QVERIFY(facts.value(u"frame-rate"_s).toDouble() > 1);
    QVERIFY(facts.value(u"bit-rate"_s).toLongLong() > 0);
    QCOMPARE(facts.value(u"video-codec"_s).toString(), u"MPEG-4"_s);
    QVERIFY(facts.contains(u"audio-tracks"_s));
    QCOMPARE(facts.value(u"subtitle-tracks"_s).toInt(), 0);
}

// A file that went away, that is no video any more, or that was never in the library.
void StoreServiceTest::factsOfWhatCannotBeRead()
{
    QVERIFY(insert(1, 1)); // without a file
    QCOMPARE(m_session->call(u"Facts"_s, {u"urn:uuid:1"_s}).errorName(),
             u"org.freedesktop.DBus.Error.Failed"_s);
    QCOMPARE(m_session->call(u"Facts"_s, {u"urn:uuid:none"_s}).errorName(),
             u"org.freedesktop.DBus.Error.InvalidArgs"_s);
    QCOMPARE(m_session->call(u"Facts"_s, {QString()}).errorName(),
             u"org.freedesktop.DBus.Error.InvalidArgs"_s);
}

// A program that asks without waiting.
void StoreServiceTest::everyQuestionAboutFactsIsAnswered()
{
    QVERIFY(insert(1, 200));
    QList<QDBusPendingCall> calls;
    for (int i = 1; i <= 200; ++i)
        calls.append(m_session->callLater(u"Facts"_s, {u"urn:uuid:%1"_s.arg(i)}));
    int refused = 0;
    for (QDBusPendingCall &call : calls) {
        QTRY_VERIFY_WITH_TIMEOUT(call.isFinished(), 20000);
        QVERIFY(call.isError());
        refused += call.error().type() == QDBusError::LimitsExceeded ? 1 : 0;
    }
    QVERIFY(refused > 0);
    // And after that the next is answered as ever.
    QCOMPARE(m_session->call(u"Facts"_s, {u"urn:uuid:1"_s}).errorName(),
             u"org.freedesktop.DBus.Error.Failed"_s);
}

void StoreServiceTest::aSecondStartHandsItsFoldersOver()
{
    QVERIFY(m_session->makeClip(m_session->home() + u"/elsewhere.mp4"_s));
    QVERIFY(QDir().mkpath(m_session->home() + u"/more"_s)
            && QFile::rename(m_session->home() + u"/elsewhere.mp4"_s, m_session->home() + u"/more/m.mp4"_s));
    QProcess second;
    second.setProcessEnvironment(m_session->environment());
    second.setWorkingDirectory(m_session->home());
    second.start(QStringLiteral(KESTREL_BIN_DIR) + u"/kestrel-store"_s, {u"--root"_s, u"more"_s});
    QVERIFY(second.waitForFinished(20000));
    QCOMPARE(second.exitCode(), 0);
    const QStringList roots = m_session->call(u"Roots"_s).arguments().value(0).toStringList();
    QStringList expected{m_session->videos(), m_session->home() + u"/more"_s};
    if (const QString documents = u"/home/user/MyDocs"_s; QDir(documents).exists()) // a handset, perhaps
        expected.insert(1, documents);
    QCOMPARE(roots, expected);
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 20000);
}

void StoreServiceTest::aHandOverWithoutFoldersEndsToo()
{
    QProcess second;
    second.setProcessEnvironment(m_session->environment());
    second.start(QStringLiteral(KESTREL_BIN_DIR) + u"/kestrel-store"_s, QStringList());
    QVERIFY(second.waitForFinished(20000));
    QCOMPARE(second.exitCode(), 0);
    QVERIFY(m_session->isRunning());
}

void StoreServiceTest::onlyAbsolutePathsBecomeRoots()
{
    QCOMPARE(m_session->call(u"AddRoot"_s, {u"somewhere"_s}).type(), QDBusMessage::ErrorMessage);
    QCOMPARE(m_session->call(u"AddRoot"_s, {u"/does/not/exist"_s}).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(countVideos(m_client.get()), 0);
}

void StoreServiceTest::endsCleanlyWhenAsked()
{
    const QString socket
        = m_session->call(u"Socket"_s).arguments().value(0).toString().section(u"path="_s, 1);
    QVERIFY(insert(1, 10));
    QVERIFY(m_session->stop());
    QVERIFY(!QFileInfo::exists(socket));
    QVERIFY(m_session->start());
    m_client = m_session->connectClient();
    QCOMPARE(countVideos(m_client.get()), 10);
}

QTEST_GUILESS_MAIN(StoreServiceTest)
#include "store_service.moc"
