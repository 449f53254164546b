// SPDX-License-Identifier: GPL-3.0-or-later
// The same videos in the store library, behind its HTTP endpoint and in a Virtuoso server: what the
// application asks is answered alike, whatever the data look like.
#include "data/sparqltemplates.h"
#include "platform/servers/changepolltexts.h"
#include "platform/servers/standarddialect.h"
#include "platform/sparql/dialectadapter.h"
#include "support/storeendpoint.h"
#include "support/virtuososerver.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

using Rows = QList<QStringList>;
using Action = StandardStatement::Action;

const QString graph = u"urn:graph:library"_s;
const QString ontology = u"http://tracker.api.gnome.org/ontology/v3/"_s;
const QString ownCamera = u"<urn:equipment:Own Maker:Ä:>"_s;

QString iri(const QString &name)
{
    return name == u"a"_s ? u"<http://www.w3.org/1999/02/22-rdf-syntax-ns#type>"_s
                          : u'<' + ontology + QString(name).replace(u':', u'#') + u'>';
}

QString typed(const QString &value, const QString &type)
{
    return u"\"%1\"^^<http://www.w3.org/2001/XMLSchema#%2>"_s.arg(value, type);
}

QString triple(const QString &subject, const QString &property, const QString &object)
{
    return u"<%1> %2 %3 .\n"_s.arg(subject, iri(property), object);
}

// A video as the indexer describes one; `more` in pairs of a property and its value.
QString video(const QString &urn, const QString &name, const QStringList &more = {})
{
    QString address = QString::fromLatin1(QUrl::toPercentEncoding(u"/v/"_s + name + u".mp4"_s, "/"));
    QString text = triple(urn, u"a"_s, iri(u"nmm:Video"_s))
        + triple(urn, u"a"_s, iri(u"nfo:FileDataObject"_s))
        + triple(urn, u"nie:url"_s, u"\"file://%1\""_s.arg(address))
        + triple(urn, u"nfo:fileName"_s, u"\"%1.mp4\""_s.arg(name));
    for (qsizetype i = 0; i + 1 < more.size(); i += 2)
        text += triple(urn, more[i], more[i + 1]);
    return text;
}

// What all three hold.
QString library()
{
    const QString own = QString(ownCamera).replace(u' ', u"%20"_s);
    const QString other = u"<urn:equipment:Other:X:>"_s;
    const auto number = [](qint64 value) { return typed(QString::number(value), u"integer"_s); };
    QString text = own + u' ' + iri(u"a"_s) + u' ' + iri(u"nfo:Equipment"_s) + u" .\n"_s + other + u' '
        + iri(u"a"_s) + u' ' + iri(u"nfo:Equipment"_s) + u" .\n"_s;
    text += video(u"urn:video:plain"_s, u"plain"_s);
    text += video(u"urn:video:full"_s, u"a b 100% Ä"_s,
                  {u"nie:title"_s, u"\"Title\""_s, u"nfo:duration"_s, number(17), u"nfo:fileSize"_s,
                   number(5000000000), u"nmm:runTime"_s, number(5), u"nie:mimeType"_s, u"\"video/mp4\""_s,
                   u"nie:contentAccessed"_s, typed(u"2024-02-03T04:05:06Z"_s, u"dateTime"_s),
                   u"nmm:synopsis"_s, u"\"Long ago\""_s, u"nie:usageCounter"_s, number(3)});
    text += video(u"urn:video:own"_s, u"own"_s, {u"nfo:equipment"_s, own, u"nie:title"_s, u"\"Own\""_s});
    text
        += video(u"urn:video:other"_s, u"other"_s, {u"nfo:equipment"_s, other, u"nfo:duration"_s, number(0)});
    text += video(
        u"urn:video:episode"_s, u"episode"_s,
        {u"a"_s, iri(u"nmm:TVShow"_s), u"nmm:episodeNumber"_s, number(7), u"nmm:synopsis"_s, u"\"Both\""_s});
    text
        += video(u"urn:video:empty"_s, u"empty"_s, {u"nie:title"_s, u"\"\""_s, u"nmm:synopsis"_s, u"\"\""_s});
    text += video(u"urn:video:Ä日本"_s, u"日本語 \U0001F3AC"_s,
                  {u"nie:title"_s, u"\"\\\"q\\\" \\\\u0041 \\n\\t'\U0001F3AC\""_s});
    text += video(u"urn:video:a%20b"_s, u"escaped"_s, {u"nie:title"_s, u"\"<urn:x> ?_v }\""_s});
    return text;
}

const QStringList urns = {u"urn:video:plain"_s, u"urn:video:full"_s,    u"urn:video:own"_s,
                          u"urn:video:other"_s, u"urn:video:episode"_s, u"urn:video:empty"_s,
                          u"urn:video:Ä日本"_s, u"urn:video:a%20b"_s,   u"urn:video:unknown"_s};

QString filled(QString text, const QString &placeholder, const QString &value)
{
    return text.replace(placeholder, value);
}

QString libraryText(const QString &filter = QString())
{
    return SparqlTemplates::Library.arg(ownCamera).replace(u"_FILTER_"_s, filter);
}

SparqlQuery update(const QString &urn, const QString &property, QString value)
{
    value.replace(u"\\"_s, u"\\\\"_s).replace(u"\""_s, u"\\\""_s);
    QString text = SparqlTemplates::PropertyUpdate;
    text.replace(u"_VALUE_"_s, value).replace(u"_URN_"_s, urn).replace(u"_PROPERTY_"_s, property);
    return SparqlQuery(text, SparqlQuery::UpdateStatement);
}

// One row a line, in an order of its own, "-" where nothing is bound.
QString written(Rows rows)
{
    std::sort(rows.begin(), rows.end());
    QString text;
    for (const QStringList &row : std::as_const(rows)) {
        for (const QString &value : row)
            text += (value.isNull() ? u"-"_s : u'"' + value + u'"') + u' ';
        text += u'\n';
    }
    return text;
}

} // namespace

class TestServersDialect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void serversAnswerAsTheStoreDoes_data();
    void serversAnswerAsTheStoreDoes();
    void serversCountAlike_data();
    void serversCountAlike();
    void videosByNumbers();
    void manyVideosByNumbers();

    void updates_data();
    void updates();
    void titlesHoldAnything_data();
    void titlesHoldAnything();
    void aVideoThatIsGoneStaysGone();
    void othersWriteTheirWay_data();
    void othersWriteTheirWay();
    void everyTitleIsReplaced();
    void addressesOfEveryKind_data();
    void addressesOfEveryKind();
    void positionsInAnotherProperty();
    void onlyTheGraphThatIsSet();

private:
    struct Peer
    {
        QUrl address;
        bool takesPosts = true;
        StandardDialectOptions options;
    };
    [[nodiscard]] QByteArray send(const Peer &peer, const QByteArray &kind, const QString &text);
    [[nodiscard]] Rows ask(const Peer &peer, const QString &text);
    [[nodiscard]] Rows askVirtuoso(const QString &text) { return ask(m_virtuosoPeer, text); }
    [[nodiscard]] Rows askStore(const QString &text);
    bool change(const SparqlQuery &query, const StandardDialectOptions &options = {graph, QString()});
    // One statement that is none of the application's.
    bool changeDirectly(const QString &text);
    [[nodiscard]] QString valuesOf(const QString &urn, const QString &property);

    ResourceIds m_ids;
    QTemporaryDir m_folder;
    StoreEndpoint m_store;
    VirtuosoServer m_virtuoso;
    Peer m_storePeer;
    Peer m_virtuosoPeer;
    QNetworkAccessManager m_network;
};

void TestServersDialect::initTestCase()
{
    QVERIFY(m_store.open());
    QCOMPARE(m_store.update(u"INSERT DATA {\n"_s + library() + u'}'), QString());
    m_storePeer = {m_store.address(), false, {}};
    QVERIFY(m_virtuoso.start());
    m_virtuosoPeer = {QUrl(u"http://%1/sparql"_s.arg(m_virtuoso.httpAddress())), true, {graph, QString()}};

    // The store notes by itself when it learnt of a video.
    QString text = library();
    const Rows added = m_store.select(u"SELECT ?v ?a { ?v a nmm:Video ; nrl:added ?a }"_s);
    QCOMPARE(added.size(), urns.size() - 1);
    for (const QStringList &row : added)
        text += triple(row[0], u"nrl:added"_s, typed(row[1], u"dateTime"_s));
    QFile file(m_folder.filePath(u"library.nt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
    file.close();
    QVERIFY(m_virtuoso.load(file.fileName(), graph));
}

void TestServersDialect::cleanupTestCase()
{
    m_virtuoso.end();
}

QByteArray TestServersDialect::send(const Peer &peer, const QByteArray &kind, const QString &text)
{
    const QByteArray form = kind + '=' + QUrl::toPercentEncoding(text);
    QUrl address = peer.address;
    if (!peer.takesPosts)
        address.setQuery(QString::fromLatin1(form), QUrl::StrictMode);
    QNetworkRequest request(address);
    request.setRawHeader("Accept", "application/sparql-results+json");
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/x-www-form-urlencoded"_s);
    const std::unique_ptr<QNetworkReply> reply(peer.takesPosts ? m_network.post(request, form)
                                                               : m_network.get(request));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    if (!reply->isFinished() && !finished.wait(30000))
        qWarning("no answer to %s", qPrintable(text));
    const QByteArray answer = reply->readAll();
    if (reply->error() == QNetworkReply::NoError)
        return answer;
    qWarning("%s\n%s", qPrintable(reply->errorString()), answer.left(400).constData());
    return {};
}

Rows TestServersDialect::ask(const Peer &peer, const QString &text)
{
    const StandardStatement statement = adaptToStandard(SparqlQuery(text), peer.options, m_ids);
    if (statement.action != Action::Send)
        return {};
    Rows rows;
    for (const QString &part : QStringList{statement.text} + statement.furtherTexts) {
        const QByteArray answer = send(peer, "query", part);
        QJsonParseError error;
        const QJsonObject result = QJsonDocument::fromJson(answer, &error).object();
        if (error.error != QJsonParseError::NoError)
            qWarning("%s: %s", qPrintable(error.errorString()), answer.left(400).constData());
        const QJsonArray variables = result["head"_L1]["vars"_L1].toArray();
        for (const QJsonValue binding : result["results"_L1]["bindings"_L1].toArray()) {
            QStringList row;
            for (const QJsonValue variable : variables)
                row.append(binding[variable.toString()]["value"_L1].toString(QString()));
            rows.append(row);
        }
    }
    return rows;
}

// With the IRI where the store has a number of its own.
Rows TestServersDialect::askStore(const QString &text)
{
    Rows rows = m_store.select(adaptToStore(SparqlQuery(text)).text);
    const QList<int> columns = adaptToStandard(SparqlQuery(text), {}, m_ids).idColumns;
    for (QStringList &row : rows) {
        for (const int column : columns)
            row[column] = m_store.select(u"SELECT tracker:uri(%1) {}"_s.arg(row[column])).value(0).value(0);
    }
    return rows;
}

bool TestServersDialect::change(const SparqlQuery &query, const StandardDialectOptions &options)
{
    const StandardStatement statement = adaptToStandard(query, options, m_ids);
    return statement.action == Action::Send && !send(m_virtuosoPeer, "update", statement.text).isEmpty();
}

bool TestServersDialect::changeDirectly(const QString &text)
{
    return !send(m_virtuosoPeer, "update", text).isEmpty();
}

// With their types, as N-Triples has them.
QString TestServersDialect::valuesOf(const QString &urn, const QString &property)
{
    const QByteArray answer
        = send(m_virtuosoPeer, "query",
               u"SELECT ?o FROM <%1> { <%2> %3 ?o } ORDER BY ?o"_s.arg(graph, urn, iri(property)));
    QStringList values;
    const QJsonObject result = QJsonDocument::fromJson(answer).object();
    for (const QJsonValue binding : result["results"_L1]["bindings"_L1].toArray()) {
        const QJsonValue value = binding["o"_L1];
        const QString type = value["datatype"_L1].toString().section(u'#', 1);
        values.append(value["value"_L1].toString() + (type.isEmpty() ? QString() : u"^^"_s + type));
    }
    return values.join(u", "_s);
}

void TestServersDialect::serversAnswerAsTheStoreDoes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("rows"); // -1: each store knows
    QTest::newRow("library") << libraryText() << 7;
    QTest::newRow("limited library") << libraryText() + u" LIMIT 100"_s << 7;
    QTest::newRow("a camera that nobody has")
        << SparqlTemplates::Library.arg(u"<urn:equipment:No body:>"_s).replace(u"_FILTER_"_s, QString()) << 8;
    QTest::newRow("ontology") << SparqlTemplates::Ontology << 1;
    for (const QString &urn : urns) {
        const auto row = [&](const char *name, const QString &text) {
            QTest::addRow("%s %s", name, qUtf8Printable(urn)) << filled(text, u"_URN_"_s, urn) << -1;
        };
        row("one", libraryText(SparqlTemplates::OneVideoFilter));
        row("details", SparqlTemplates::Details);
        row("title", SparqlTemplates::Title);
        for (const QString &property : {u"nie:url"_s, u"nie:usageCounter"_s, u"nmm:runTime"_s})
            row(qUtf8Printable(property), filled(SparqlTemplates::Property, u"_PROPERTY_"_s, property));
    }
    for (const QString &address :
         {u"file:///v/plain.mp4"_s, u"file:///v/a b 100%25 Ä.mp4"_s,
          u"file:///v/a%20b%20100%25%20%C3%84.mp4"_s, u"file://localhost/v/%70lain.mp4"_s,
          u"file:///v/own.mp4"_s, u"file:///v/nothing.mp4"_s, u"http://host/\\\"a\\\\b\\\" c"_s}) {
        QTest::addRow("by address %s", qUtf8Printable(address))
            << filled(SparqlTemplates::ByUrl, u"_URL_"_s, address) << -1;
        QTest::addRow("IRI by address %s", qUtf8Printable(address))
            << filled(SparqlTemplates::UrnByUrl, u"_URL_"_s, address) << -1;
    }
}

void TestServersDialect::serversAnswerAsTheStoreDoes()
{
    QFETCH(const QString, text);
    QFETCH(const int, rows);
    const Rows expected = askStore(text);
    if (rows >= 0)
        QCOMPARE(expected.size(), rows);
    QCOMPARE(written(ask(m_storePeer, text)), written(expected));
    QCOMPARE(written(askVirtuoso(text)), written(expected));
}

// What is asked to find out whether anything changed. Each server has stamps and sums of its own: Virtuoso
// hashes what is not ASCII otherwise.
void TestServersDialect::serversCountAlike_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("columns"); // to be alike
    QStringList groups;
    for (int i = 0; i < 256; ++i)
        groups.append(u"\"%1\""_s.arg(i, 2, 16, QChar(u'0')));
    QTest::newRow("stamps") << ChangePollTexts::Stamps << 1;
    QTest::newRow("groups") << ChangePollTexts::Groups << 2;
    QTest::newRow("all groups") << ChangePollTexts::Rows.arg(groups.join(u", "_s)) << 5;
}

void TestServersDialect::serversCountAlike()
{
    QFETCH(const QString, text);
    QFETCH(const int, columns);
    const auto compared = [&](const Peer &peer) {
        Rows rows = ask(peer, text);
        for (QStringList &row : rows)
            row = row.first(qMin(row.size(), qsizetype(columns)));
        return written(rows);
    };
    QVERIFY(!compared(m_virtuosoPeer).isEmpty());
    QCOMPARE(compared(m_virtuosoPeer), compared(m_storePeer));
}

void TestServersDialect::videosByNumbers()
{
    QStringList ours;
    QStringList theirs;
    for (const QString &urn : urns) {
        ours.append(QString::number(m_ids.idOf(urn)));
        theirs += m_store.select(u"SELECT tracker:id(<%1>) {}"_s.arg(urn)).value(0);
    }
    const QString text = SparqlTemplates::ByIds.arg(ownCamera);
    const Rows rows = askStore(filled(text, u"_ID_"_s, theirs.join(u',')));
    QCOMPARE(rows.size(), 7);
    const QString expected = written(rows);
    QCOMPARE(written(ask(m_storePeer, filled(text, u"_ID_"_s, ours.join(u',')))), expected);
    QCOMPARE(written(askVirtuoso(filled(text, u"_ID_"_s, ours.join(u',')))), expected);
    QCOMPARE(askVirtuoso(filled(text, u"_ID_"_s, QString())), Rows());
    QCOMPARE(askVirtuoso(filled(text, u"_ID_"_s, ours.last())), Rows());
}

// More than any of the servers takes in one text.
void TestServersDialect::manyVideosByNumbers()
{
    constexpr int count = 10000;
    const QString other = u"urn:graph:many"_s;
    QVERIFY(m_virtuoso.fill(other, count));
    QStringList numbers;
    for (int i = 0; i < count; ++i)
        numbers.append(QString::number(m_ids.idOf(virtuosoVideo(i))));
    Peer peer = m_virtuosoPeer;
    peer.options.graph = other;
    const Rows rows = ask(peer, filled(SparqlTemplates::ByIds.arg(ownCamera), u"_ID_"_s, numbers.join(u',')));
    QSet<QString> found;
    for (const QStringList &row : rows)
        found.insert(row.first());
    QCOMPARE(rows.size(), count);
    QCOMPARE(found.size(), count);
}

void TestServersDialect::updates_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QStringList>("values"); // set one after the other
    QTest::addColumn<QString>("stored");
    QTest::newRow("title where none was") << u"nie:title"_s << QStringList{u"one"_s} << u"one"_s;
    QTest::newRow("title again") << u"nie:title"_s << QStringList{u"one"_s, u"two"_s} << u"two"_s;
    QTest::newRow("same title") << u"nie:title"_s << QStringList{u"one"_s, u"one"_s} << u"one"_s;
    QTest::newRow("position where none was") << u"nmm:runTime"_s << QStringList{u"7"_s} << u"7^^integer"_s;
    QTest::newRow("position again") << u"nmm:runTime"_s << QStringList{u"7"_s, u"0"_s, u"0"_s}
                                    << u"0^^integer"_s;
    QTest::newRow("count") << u"nie:usageCounter"_s << QStringList{u"1"_s, u"2"_s} << u"2^^integer"_s;
    QTest::newRow("time") << u"nie:contentAccessed"_s
                          << QStringList{u"2024-02-03T04:05:06Z"_s, u"2025-02-03T04:05:06Z"_s}
                          << u"2025-02-03T04:05:06Z^^dateTime"_s;
    QTest::newRow("longest position")
        << u"nmm:runTime"_s << QStringList{u"4294967295"_s} << u"4294967295^^integer"_s;
}

void TestServersDialect::updates()
{
    QFETCH(const QString, property);
    QFETCH(const QStringList, values);
    QFETCH(const QString, stored);
    const QString urn = u"urn:updated:"_s + QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-');
    QVERIFY(changeDirectly(u"INSERT DATA { GRAPH <%1> { %2 } }"_s.arg(graph, video(urn, u"updated"_s))));
    for (const QString &value : values)
        QVERIFY(change(update(urn, property, value)));
    QCOMPARE(valuesOf(urn, property), stored);
    // Nothing else changed.
    QCOMPARE(valuesOf(urn, u"nfo:fileName"_s), u"updated.mp4"_s);
    QVERIFY(changeDirectly(u"DELETE WHERE { GRAPH <%1> { <%2> ?p ?o } }"_s.arg(graph, urn)));
}

void TestServersDialect::titlesHoldAnything_data()
{
    QTest::addColumn<QString>("title");
    const QStringList titles = {u"a \"quoted\" word"_s,
                                u"it's"_s,
                                u"ends with \\"_s,
                                u"\\\""_s,
                                u"C:\\users\\u0041\\U0001F3AC \\n"_s,
                                u"two\nlines\r\nand\ttabs"_s,
                                u"bell \a, escape \x1b, delete \x7f"_s,
                                u"\b\f"_s,
                                u"<urn:x> ?_video { } . # ;"_s,
                                u"\" } ; DROP ALL ; INSERT DATA { <a> <b> \""_s,
                                u"} ; DELETE WHERE { ?s ?p ?o"_s,
                                u"?_insert ??x ^{x}^ `sql` $1 %1 %d"_s,
                                u"'''\"\"\"'''"_s,
                                u"שלום 日本語 e\u0301 \U0001F3AC"_s,
                                u"\u2028\u2029\u0085\u00a0\ufeff"_s,
                                u"   "_s,
                                QString(u""_s),
                                u"a"_s.repeated(100000)};
    for (const QString &title : titles)
        QTest::addRow("%s.", QUrl::toPercentEncoding(title.left(20), " \"'<>{}?").constData()) << title;
}

void TestServersDialect::titlesHoldAnything()
{
    QFETCH(const QString, title);
    QVERIFY(change(update(u"urn:video:plain"_s, u"nie:title"_s, title)));
    QCOMPARE(askVirtuoso(filled(SparqlTemplates::Title, u"_URN_"_s, u"urn:video:plain"_s)),
             Rows({{title, u"plain.mp4"_s}}));
    QVERIFY(changeDirectly(
        u"DELETE WHERE { GRAPH <%1> { <urn:video:plain> %2 ?o } }"_s.arg(graph, iri(u"nie:title"_s))));
}

// It was deleted on the server meanwhile: its place is not written for nobody.
void TestServersDialect::aVideoThatIsGoneStaysGone()
{
    QVERIFY(change(update(u"urn:video:gone"_s, u"nmm:runTime"_s, u"5"_s)));
    QCOMPARE(valuesOf(u"urn:video:gone"_s, u"nmm:runTime"_s), QString());
}

void TestServersDialect::othersWriteTheirWay_data()
{
    QTest::addColumn<QString>("literal");
    QTest::newRow("plain") << u"\"9\""_s;
    QTest::newRow("string") << typed(u"9"_s, u"string"_s);
    QTest::newRow("int") << typed(u"9"_s, u"int"_s);
    QTest::newRow("decimal") << typed(u"9"_s, u"decimal"_s);
}

void TestServersDialect::othersWriteTheirWay()
{
    QFETCH(const QString, literal);
    QVERIFY(changeDirectly(u"INSERT DATA { GRAPH <%1> { %2 } }"_s.arg(
        graph, triple(u"urn:video:plain"_s, u"nmm:runTime"_s, literal))));
    const QString text = filled(filled(SparqlTemplates::Property, u"_URN_"_s, u"urn:video:plain"_s),
                                u"_PROPERTY_"_s, u"nmm:runTime"_s);
    QCOMPARE(askVirtuoso(text), Rows({{u"9"_s}}));
    QVERIFY(change(update(u"urn:video:plain"_s, u"nmm:runTime"_s, u"10"_s)));
    QCOMPARE(valuesOf(u"urn:video:plain"_s, u"nmm:runTime"_s), u"10^^integer"_s);
    QVERIFY(changeDirectly(
        u"DELETE WHERE { GRAPH <%1> { <urn:video:plain> %2 ?o } }"_s.arg(graph, iri(u"nmm:runTime"_s))));
}

// The same title in two languages and twice as a string: afterwards there is the one that was typed.
void TestServersDialect::everyTitleIsReplaced()
{
    QVERIFY(changeDirectly(
        u"INSERT DATA { GRAPH <%1> { <urn:video:plain> %2 \"eins\"@de, \"one\"@en, \"x\", %3 } }"_s.arg(
            graph, iri(u"nie:title"_s), typed(u"x"_s, u"string"_s))));
    QVERIFY(change(update(u"urn:video:plain"_s, u"nie:title"_s, u"x"_s)));
    QCOMPARE(valuesOf(u"urn:video:plain"_s, u"nie:title"_s), u"x"_s);
    QVERIFY(changeDirectly(
        u"DELETE WHERE { GRAPH <%1> { <urn:video:plain> %2 ?o } }"_s.arg(graph, iri(u"nie:title"_s))));
}

void TestServersDialect::addressesOfEveryKind_data()
{
    QTest::addColumn<QString>("inData");
    QTest::addColumn<QString>("askedFor");
    const QString address = u"http://archive.example/a%20b?c=d#e"_s;
    QTest::newRow("plain") << u'"' + address + u'"' << address;
    QTest::newRow("string") << typed(address, u"string"_s) << address;
    QTest::newRow("address") << typed(address, u"anyURI"_s) << address;
    QTest::newRow("IRI") << u'<' + address + u'>' << address;
    QTest::newRow("twice") << u'<' + address + u">, \""_s + address + u'"' << address;
    QTest::newRow("spelled as others do") << u"\"file:///v/it's;[1].mp4\""_s << u"file:///v/it's;[1].mp4"_s;
}

void TestServersDialect::addressesOfEveryKind()
{
    QFETCH(const QString, inData);
    QFETCH(const QString, askedFor);
    QVERIFY(changeDirectly(u"INSERT DATA { GRAPH <%1> { <urn:addressed> a %2 ; %3 \"f\" ; %4 %5 } }"_s.arg(
        graph, iri(u"nmm:Video"_s), iri(u"nfo:fileName"_s), iri(u"nie:url"_s), inData)));
    QCOMPARE(askVirtuoso(filled(SparqlTemplates::UrnByUrl, u"_URL_"_s, askedFor)),
             Rows({{u"urn:addressed"_s}}));
    const Rows rows = askVirtuoso(filled(SparqlTemplates::ByUrl, u"_URL_"_s, askedFor));
    QVERIFY(!rows.isEmpty());
    QCOMPARE(rows[0][6], askedFor);
    QVERIFY(changeDirectly(u"DELETE WHERE { GRAPH <%1> { <urn:addressed> ?p ?o } }"_s.arg(graph)));
}

// An archive in which the running time of a film stands where others keep the place.
void TestServersDialect::positionsInAnotherProperty()
{
    const StandardDialectOptions options{graph, u"urn:my#position"_s};
    QVERIFY(change(update(u"urn:video:full"_s, u"nmm:runTime"_s, u"12"_s), options));
    QCOMPARE(valuesOf(u"urn:video:full"_s, u"nmm:runTime"_s), u"5^^integer"_s);
    Peer peer = m_virtuosoPeer;
    peer.options = options;
    const QString text = filled(filled(SparqlTemplates::Property, u"_URN_"_s, u"urn:video:full"_s),
                                u"_PROPERTY_"_s, u"nmm:runTime"_s);
    QCOMPARE(ask(peer, text), Rows({{u"12"_s}}));
    QCOMPARE(askVirtuoso(text), Rows({{u"5"_s}}));
    QVERIFY(changeDirectly(
        u"DELETE WHERE { GRAPH <%1> { <urn:video:full> <urn:my#position> ?o } }"_s.arg(graph)));
}

void TestServersDialect::onlyTheGraphThatIsSet()
{
    QVERIFY(changeDirectly(
        u"INSERT DATA { GRAPH <urn:graph:other> { %1 } }"_s.arg(video(u"urn:video:elsewhere"_s, u"x"_s))));
    QCOMPARE(askVirtuoso(libraryText()).size(), 7);
    QVERIFY(change(update(u"urn:video:elsewhere"_s, u"nie:title"_s, u"x"_s)));
    const QString text = filled(SparqlTemplates::Title, u"_URN_"_s, u"urn:video:elsewhere"_s);
    QCOMPARE(askVirtuoso(text), Rows());
    Peer peer = m_virtuosoPeer;
    peer.options.graph = u"urn:graph:other"_s;
    QCOMPARE(ask(peer, text), Rows({{QString(), u"x.mp4"_s}}));
}

QTEST_GUILESS_MAIN(TestServersDialect)
#include "servers_dialect.moc"
