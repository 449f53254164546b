// SPDX-License-Identifier: GPL-3.0-or-later
// Every statement of the application, word for word, against a real store.
#include "platform/sparql/fileuri.h"
#include "support/storepeercontrol.h"
#include "support/storequery.h"
#include "support/storetexts.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTest>
#include <QTimeZone>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;
using namespace storequery;

namespace {

const QString ownCamera = u"<urn:equipment:Own%20Maker:Model:>"_s;

QString video(const QString &urn, const QString &path, const QString &more = QString())
{
    return u"INSERT DATA { <%1> a nmm:Video, nfo:FileDataObject ; nie:url \"%2\" ; nfo:fileName \"%3\" ; "
           "nie:mimeType \"video/mp4\" ; nfo:duration 17 ; nmm:runTime 0 %4 }"_s.arg(
               urn, fileUriFromPath(path.toUtf8()), QFileInfo(path).fileName(), more);
}

} // namespace

class TestStoreTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void wholeLibraryLeavesOutTheDevicesOwnCamera();
    void limitAfterTheClosingBrace();
    void oneVideoByIri();
    void details();
    void propertyIsSetWhereNoneWasAndReplaced();
    void anUpdateIsAtomic();
    void titlesHoldAnything_data();
    void titlesHoldAnything();
    void emptyIriIsDroppedQuietly();
    void strangeIris();
    void iriByUrlAndSingleProperties();
    void lookUpFindsEverySpelling_data();
    void lookUpFindsEverySpelling();
    void thousandVideosOfOneCameraGiveThousandRows();
    void ontologyIds();

private:
    [[nodiscard]] QString propertyOf(const QString &urn, const QString &property);
    void store(const QString &text);

    std::unique_ptr<StorePeerControl> m_peer;
    std::unique_ptr<SparqlConnection> m_connection;
};

void TestStoreTexts::init()
{
    m_peer = std::make_unique<StorePeerControl>();
    m_connection = std::make_unique<SparqlConnection>(u"QTRACKER"_s);
}

void TestStoreTexts::cleanup()
{
    m_connection.reset();
    m_peer.reset();
}

void TestStoreTexts::store(const QString &text)
{
    const Answer answer = update(*m_connection, text);
    QVERIFY2(answer.error.isNull(), qUtf8Printable(answer.error + u": "_s + text));
}

QString TestStoreTexts::propertyOf(const QString &urn, const QString &property)
{
    const QString text = filled(filled(storetexts::property, u"_URN_"_s, urn), u"_PROPERTY_"_s, property);
    const Answer answer = select(*m_connection, text);
    return answer.error.isNull() ? answer.rows.value(0).value(0) : answer.error;
}

void TestStoreTexts::wholeLibraryLeavesOutTheDevicesOwnCamera()
{
    store(video(u"urn:uuid:a"_s, u"/v/a b.mp4"_s, u"; nie:title \"Ä\""_s));
    store(u"INSERT DATA { %1 a nfo:Equipment . <urn:equipment:Other:X:> a nfo:Equipment }"_s.arg(ownCamera));
    store(video(u"urn:uuid:b"_s, u"/v/b.mp4"_s, u"; nfo:equipment "_s + ownCamera));
    store(video(u"urn:uuid:c"_s, u"/v/c.mp4"_s, u"; nfo:equipment <urn:equipment:Other:X:>"_s));
    QString text = storetexts::library.arg(ownCamera);
    text.replace(u"_FILTER_"_s, QString());
    Answer answer = select(*m_connection, text, 8);
    std::sort(answer.rows.begin(), answer.rows.end());
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.rows.size(), 2);
    QCOMPARE(answer.rows[0].first(7),
             QStringList({u"urn:uuid:a"_s, u"Ä"_s, u"a b.mp4"_s, u"17"_s, u"0"_s, u"video/mp4"_s,
                          u"file:///v/a%20b.mp4"_s}));
    QVERIFY(answer.rows[0][7].toInt() > 0);
    QCOMPARE(answer.rows[1][0], u"urn:uuid:c"_s);

    // A device name with a blank, as the device itself spells it.
    text = storetexts::library.arg(u"<urn:equipment:Own Maker:Model:>"_s).replace(u"_FILTER_"_s, QString());
    QCOMPARE(select(*m_connection, text).rows.size(), 2);
}

void TestStoreTexts::limitAfterTheClosingBrace()
{
    for (int i = 0; i < 5; ++i)
        store(video(u"urn:uuid:%1"_s.arg(i), u"/v/%1.mp4"_s.arg(i)));
    QString text = storetexts::library.arg(ownCamera) + u" LIMIT "_s + u"3"_s;
    text.replace(u"_FILTER_"_s, QString());
    QCOMPARE(select(*m_connection, text).rows.size(), 3);
}

void TestStoreTexts::oneVideoByIri()
{
    store(video(u"urn:uuid:a"_s, u"/v/a.mp4"_s));
    store(video(u"urn:uuid:b"_s, u"/v/b.mp4"_s));
    QString text = storetexts::library.arg(ownCamera);
    text.replace(u"_FILTER_"_s, storetexts::oneVideo).replace(u"_URN_"_s, u"urn:uuid:b"_s);
    const Answer answer = select(*m_connection, text, 3);
    QCOMPARE(answer.rows, QList<QStringList>({{u"urn:uuid:b"_s, QString(), u"b.mp4"_s}}));
}

void TestStoreTexts::details()
{
    store(
        video(u"urn:uuid:a"_s, u"/v/a.mp4"_s,
              u"; nie:title \"T\" ; nfo:fileSize 5000000000 ; nie:contentAccessed \"2024-02-03T04:05:06Z\" ; "
              "nmm:synopsis \"Long ago\" ; nie:usageCounter 3"_s));
    const std::unique_ptr<SparqlResult> result(
        m_connection->exec(SparqlQuery(filled(storetexts::details, u"_URN_"_s, u"urn:uuid:a"_s))));
    QSignalSpy finished(result.get(), &SparqlResult::finished);
    QVERIFY(finished.wait(TestPatience));
    QVERIFY2(!result->hasError(), qUtf8Printable(result->errorMessage()));
    QCOMPARE(result->size(), 1);
    QVERIFY(result->next());
    QCOMPARE(result->value(0).toString(), u"urn:uuid:a"_s);
    QCOMPARE(result->value(2).toInt(), 17);
    QCOMPARE(result->value(3).toLongLong(), 5000000000LL);
    QCOMPARE(result->value(5).toDateTime(), QDateTime(QDate(2024, 2, 3), QTime(4, 5, 6), QTimeZone::utc()));
    QCOMPARE(result->value(8).toString(), u"Long ago"_s);
    QVERIFY(qAbs(result->value(9).toDateTime().secsTo(QDateTime::currentDateTime())) < 600);
    QCOMPARE(result->value(10).toInt(), 3);
    QCOMPARE(result->value(11).toString(), u"a.mp4"_s);
    QVERIFY(!result->value(12).isValid());
    QVERIFY(!result->value(-1).isValid());
    QVERIFY(!result->next());
}

void TestStoreTexts::propertyIsSetWhereNoneWasAndReplaced()
{
    store(video(u"urn:uuid:a"_s, u"/v/a.mp4"_s));
    for (const QString &title : {u"first"_s, u"second"_s, u"second"_s}) {
        const SparqlQuery query
            = propertyUpdate(storetexts::setProperty, title, u"urn:uuid:a"_s, u"nie:title"_s);
        QCOMPARE(ask(*m_connection, query).error, QString());
        QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nie:title"_s), title);
    }
    QCOMPARE(ask(*m_connection,
                 propertyUpdate(storetexts::setProperty, u"4711"_s, u"urn:uuid:a"_s, u"nmm:runTime"_s))
                 .error,
             QString());
    QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nmm:runTime"_s), u"4711"_s);
    const Answer title = select(*m_connection, filled(storetexts::title, u"_URN_"_s, u"urn:uuid:a"_s), 2);
    QCOMPARE(title.rows, QList<QStringList>({{u"second"_s, u"a.mp4"_s}}));
}

// A video that was deleted meanwhile: its place cannot be kept, and nothing else changes.
void TestStoreTexts::anUpdateIsAtomic()
{
    store(video(u"urn:uuid:a"_s, u"/v/a.mp4"_s, u"; nie:title \"kept\""_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the store did not take an update: .*"_s));
    const SparqlQuery gone
        = propertyUpdate(storetexts::setProperty, u"7"_s, u"urn:uuid:gone"_s, u"nmm:runTime"_s);
    QVERIFY(!ask(*m_connection, gone).error.isEmpty());
    QCOMPARE(propertyOf(u"urn:uuid:gone"_s, u"nmm:runTime"_s), QString());
    // Deleting succeeds, inserting does not: the old title is still there.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the store did not take an update: .*"_s));
    const SparqlQuery half(u"DELETE { <urn:uuid:a> nie:title ?_t } WHERE { <urn:uuid:a> nie:title ?_t } "
                           "INSERT { <urn:uuid:a> nie:title \"x\" . <urn:uuid:gone> nie:title \"y\" }"_s,
                           SparqlQuery::UpdateStatement);
    QVERIFY(!ask(*m_connection, half).error.isEmpty());
    QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nie:title"_s), u"kept"_s);
}

void TestStoreTexts::titlesHoldAnything_data()
{
    QTest::addColumn<QString>("title");
    const QStringList titles = {u"plain"_s,
                                u"a \"quoted\" word"_s,
                                u"it's"_s,
                                u"back\\slash"_s,
                                u"ends with \\"_s,
                                u"\\\""_s,
                                u"C:\\users\\u0041\\U0001F3AC"_s,
                                u"two\nlines\r\nand\ttabs"_s,
                                u"bell \a, escape \x1b, delete \x7f"_s,
                                u"\b\f"_s,
                                u"<urn:x> ?_video { } . # ;"_s,
                                u"} ; DELETE WHERE { ?s ?p ?o"_s,
                                u"\" } ; DROP ALL ; INSERT DATA { <a> <b> \""_s,
                                u"?_insert _VALUE_ %1"_s,
                                u"'''\"\"\"'''"_s,
                                u"日本語"_s,
                                u"שלום עולם"_s,
                                u"\U0001F3AC clapper"_s,
                                u"e\u0301"_s,
                                u"\u2028\u2029\u0085"_s,
                                u"   "_s,
                                u"a"_s.repeated(4096)};
    for (const QString &title : titles)
        QTest::newRow(qUtf8Printable(title.left(40).toHtmlEscaped())) << title;
}

void TestStoreTexts::titlesHoldAnything()
{
    QFETCH(const QString, title);
    store(video(u"urn:uuid:a"_s, u"/v/a.mp4"_s));
    const SparqlQuery query = propertyUpdate(storetexts::setProperty, title, u"urn:uuid:a"_s, u"nie:title"_s);
    QCOMPARE(ask(*m_connection, query).error, QString());
    QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nie:title"_s), title);
}

void TestStoreTexts::emptyIriIsDroppedQuietly()
{
    const SparqlQuery query = propertyUpdate(storetexts::setProperty, u"x"_s, QString(), u"nie:title"_s);
    const Answer answer = ask(*m_connection, query);
    QCOMPARE(answer.error, QString());
    QCOMPARE(select(*m_connection, u"SELECT ?_s WHERE { ?_s nie:title \"x\" . }"_s).rows.size(), 0);
    QCOMPARE(propertyOf(QString(), u"nie:title"_s), QString());
}

// Identifiers that no store knows, escaped as the application escapes them.
void TestStoreTexts::strangeIris()
{
    for (const QString &urn :
         {u"urn:a\\>b"_s, u"urn:a\\<b"_s, u"urn:a\\\\b"_s, u"urn:a b\"c{d}"_s, u"no scheme"_s}) {
        const QString text
            = filled(filled(storetexts::property, u"_URN_"_s, urn), u"_PROPERTY_"_s, u"nie:url"_s);
        if (urn != u"no scheme"_s) // not an identifier at all: the store says so
            QCOMPARE(select(*m_connection, text), Answer());
        const SparqlQuery query = propertyUpdate(storetexts::setProperty, u"x"_s, urn, u"nie:title"_s);
        if (urn == u"no scheme"_s)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the store did not take an update: .*"_s));
        QVERIFY(!ask(*m_connection, query).error.isEmpty());
    }
}

void TestStoreTexts::iriByUrlAndSingleProperties()
{
    store(video(u"urn:uuid:a"_s, u"/v/a b.mp4"_s, u"; nie:usageCounter 2"_s));
    QCOMPARE(select(*m_connection, filled(storetexts::iriByUrl, u"_URL_"_s, u"file:///v/a b.mp4"_s)).rows,
             QList<QStringList>({{u"urn:uuid:a"_s}}));
    QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nie:url"_s), u"file:///v/a%20b.mp4"_s);
    QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nie:usageCounter"_s), u"2"_s);
    QCOMPARE(propertyOf(u"urn:uuid:a"_s, u"nmm:runTime"_s), u"0"_s);
    QCOMPARE(propertyOf(u"urn:uuid:unknown"_s, u"nmm:runTime"_s), QString());
}

void TestStoreTexts::lookUpFindsEverySpelling_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name :
         {u"plain"_s, u"semi;colon"_s, u"[brackets]"_s, u"what?"_s, u"100%"_s, u"100%25"_s, u"no#1"_s,
          u"a b  c"_s, u"Äpfel 日本語"_s, u"\"quotes\" back\\slash"_s, u"<tag>"_s, u"{a|b}^`"_s})
        QTest::newRow(qUtf8Printable(name)) << name;
}

void TestStoreTexts::lookUpFindsEverySpelling()
{
    QFETCH(const QString, name);
    const QString path = u"/v/"_s + name + u".mp4"_s;
    const QString canonical = fileUriFromPath(path.toUtf8());
    store(
        u"INSERT DATA { <urn:uuid:a> a nmm:Video, nfo:FileDataObject ; nie:url \"%1\" ; nfo:fileName \"x\" }"_s
            .arg(canonical));
    QString byRule = path;
    byRule.replace(u'%', u"%25"_s).replace(u'#', u"%23"_s);
    byRule = u"file://"_s + QString::fromLatin1(QUrl::fromEncoded(byRule.toUtf8()).toEncoded());
    const QString byQt = QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
    for (QString address : {canonical, byQt, byRule}) {
        address.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s);
        const Answer answer = select(*m_connection, filled(storetexts::byUrl, u"_URL_"_s, address), 8);
        QCOMPARE(answer.error, QString());
        QCOMPARE(answer.rows.size(), 1);
        QCOMPARE(answer.rows[0][0], u"urn:uuid:a"_s);
        QCOMPARE(answer.rows[0][6], canonical);
        QVERIFY(answer.rows[0][7].toInt() > 0);
    }
}

void TestStoreTexts::thousandVideosOfOneCameraGiveThousandRows()
{
    constexpr int count = 1000;
    QString text = u"INSERT DATA { <urn:equipment:Other:X:> a nfo:Equipment . "_s;
    for (int i = 0; i < count; ++i) {
        text
            += u"<urn:uuid:%1> a nmm:Video, nfo:FileDataObject ; nie:url \"file:///v/%1.mp4\" ; nfo:fileName "
               "\"%1.mp4\" ; nfo:equipment <urn:equipment:Other:X:> . "_s.arg(i);
    }
    store(text + u'}');
    const Answer ids = select(*m_connection, u"SELECT tracker:id(?_v) WHERE { ?_v a nmm:Video }"_s);
    QCOMPARE(ids.rows.size(), count);
    QStringList numbers;
    for (const QStringList &row : ids.rows)
        numbers.append(row.first());
    const QString byIds = storetexts::byIds.arg(ownCamera).replace(u"_ID_"_s, numbers.join(u','));
    const Answer answer = select(*m_connection, byIds, 8);
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.rows.size(), count);
    QSet<QString> urns;
    for (const QStringList &row : answer.rows)
        urns.insert(row.first());
    QCOMPARE(urns.size(), count);
    // No identifiers: no rows.
    QCOMPARE(select(*m_connection, storetexts::byIds.arg(ownCamera).replace(u"_ID_"_s, QString())), Answer());
}

void TestStoreTexts::ontologyIds()
{
    const Answer answer = select(*m_connection, storetexts::ontology, 5);
    QCOMPARE(answer.error, QString());
    QCOMPARE(answer.rows.size(), 1);
    for (const QString &id : answer.rows[0])
        QVERIFY(id.toInt() > 0);
    QCOMPARE(QSet<QString>(answer.rows[0].begin(), answer.rows[0].end()).size(), 5);
}

QTEST_GUILESS_MAIN(TestStoreTexts)
#include "test_storetexts.moc"
