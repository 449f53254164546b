// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/sparqltemplates.h"
#include "platform/servers/standarddialect.h"
#include "platform/sparql/sparqltokens.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

Q_DECLARE_METATYPE(SparqlQuery)

namespace {

using Action = StandardStatement::Action;

const QString graph = u"urn:graph:library"_s;

QString declared(const QStringList &prefixes)
{
    QString text;
    for (const QString &prefix : prefixes) {
        const QString iri = prefix == u"xsd"_s
            ? u"http://www.w3.org/2001/XMLSchema#"_s
            : u"http://tracker.api.gnome.org/ontology/v3/%1#"_s.arg(prefix);
        text += u"PREFIX %1: <%2>\n"_s.arg(prefix, iri);
    }
    return text;
}

// The texts as TrackerInterface fills them in.

QString filled(QString text, const QString &placeholder, const QString &value)
{
    return text.replace(placeholder, value);
}

QString escapedIri(QString iri)
{
    return iri.replace(u"\\"_s, u"\\\\"_s).replace(u">"_s, u"\\>"_s).replace(u"<"_s, u"\\<"_s);
}

QString escapedLiteral(QString literal)
{
    return literal.replace(u"\\"_s, u"\\\\"_s).replace(u"\""_s, u"\\\""_s);
}

QString ownCamera()
{
    return u"<urn:equipment:Own Maker:M:>"_s;
}

QString allVideos(int limit)
{
    QString text = SparqlTemplates::Library.arg(ownCamera());
    if (limit > 0)
        text += u" LIMIT "_s + QString::number(limit);
    return text.replace(u"_FILTER_"_s, QString());
}

QString oneVideo(const QString &urn)
{
    QString text = SparqlTemplates::Library.arg(ownCamera());
    text.replace(u"_FILTER_"_s, SparqlTemplates::OneVideoFilter);
    return text.replace(u"_URN_"_s, escapedIri(urn));
}

QString propertyOf(const QString &urn, const QString &property)
{
    return filled(filled(SparqlTemplates::Property, u"_URN_"_s, escapedIri(urn)), u"_PROPERTY_"_s, property);
}

QString byNumbers(const QString &numbers)
{
    return filled(SparqlTemplates::ByIds.arg(ownCamera()), u"_ID_"_s, numbers);
}

SparqlQuery update(const QString &urn, const QString &property, const QString &value)
{
    QString text = SparqlTemplates::PropertyUpdate;
    text.replace(u"_VALUE_"_s, escapedLiteral(value));
    text.replace(u"_URN_"_s, escapedIri(urn));
    text.replace(u"_PROPERTY_"_s, property);
    return SparqlQuery(text, SparqlQuery::UpdateStatement);
}

// What an update of a title becomes, with the literal as it is written.
QString titleUpdate(const QString &literal)
{
    return declared({u"nie"_s, u"nmm"_s})
        + u"WITH <urn:graph:library> DELETE { <urn:video:1> nie:title ?k_insert } "
          "INSERT { <urn:video:1> nie:title %1 } WHERE { <urn:video:1> a nmm:Video . "
          "OPTIONAL { <urn:video:1> nie:title ?k_insert .} }"_s.arg(literal);
}

} // namespace

class TestStandardDialect : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void queries_data();
    void queries();
    void updates_data();
    void updates();
    void noStatementComesOutOfATitle_data();
    void noStatementComesOutOfATitle();
    void withoutGraph_data();
    void withoutGraph();
    void positionsInAnotherProperty_data();
    void positionsInAnotherProperty();
    void addressesInEveryForm_data();
    void addressesInEveryForm();
    void whoseNumbersNobodyHas();
    void manyNumbersTakeSeveralTexts();
    void irisThatCannotBeWritten();
    void refusedUpdates_data();
    void refusedUpdates();
    void nothingIsAskedAboutNothing();
    void settingsThatCannotBe_data();
    void settingsThatCannotBe();
    void namesWhatItIsAbout();
    void otherProjections_data();
    void otherProjections();

private:
    [[nodiscard]] StandardStatement adapted(const SparqlQuery &query,
                                            const StandardDialectOptions &options = {graph, QString()})
    {
        return adaptToStandard(query, options, m_ids);
    }
    [[nodiscard]] StandardStatement adapted(const QString &text) { return adapted(SparqlQuery(text)); }

    ResourceIds m_ids;
};

void TestStandardDialect::init()
{
    m_ids = {};
    QCOMPARE(m_ids.idOf(u"urn:video:1"_s), 1);
    QCOMPARE(m_ids.idOf(u"urn:video:2"_s), 2);
}

void TestStandardDialect::queries_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("standard");
    QTest::addColumn<QList<int>>("idColumns");
    // clang-format off
    QTest::newRow("library")
        << allVideos(0)
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s}) + u"SELECT     ?k_video     ?k_title     ?k_fileName     ?k_duration     ?k_playPosition     "
           "?k_mimeType     ?k_url     (?k_video AS ?id7) FROM <urn:graph:library> WHERE {     "
           "?k_video a nmm:Video .     ?k_video nfo:fileName ?k_fileName . ?k_video nie:url ?k_url . "
           "    OPTIONAL {         ?k_video nie:title ?k_title .     }     OPTIONAL {         "
           "?k_video nfo:duration ?k_duration .     }     OPTIONAL {         ?k_video nmm:runTime "
           "?k_playPosition .     }     OPTIONAL {         ?k_video nie:mimeType ?k_mimeType .     } "
           "    OPTIONAL {         ?k_video nfo:equipment ?k_equipment .     }     "
           "FILTER(!bound(?k_equipment) || (?k_equipment != <urn:equipment:Own%20Maker:M:>)) .      }"_s
        << QList<int>{7};
    QTest::newRow("limited library")
        << allVideos(5)
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s}) + u"SELECT     ?k_video     ?k_title     ?k_fileName     ?k_duration     ?k_playPosition     "
           "?k_mimeType     ?k_url     (?k_video AS ?id7) FROM <urn:graph:library> WHERE {     "
           "?k_video a nmm:Video .     ?k_video nfo:fileName ?k_fileName . ?k_video nie:url ?k_url . "
           "    OPTIONAL {         ?k_video nie:title ?k_title .     }     OPTIONAL {         "
           "?k_video nfo:duration ?k_duration .     }     OPTIONAL {         ?k_video nmm:runTime "
           "?k_playPosition .     }     OPTIONAL {         ?k_video nie:mimeType ?k_mimeType .     } "
           "    OPTIONAL {         ?k_video nfo:equipment ?k_equipment .     }     "
           "FILTER(!bound(?k_equipment) || (?k_equipment != <urn:equipment:Own%20Maker:M:>)) .      "
           "} LIMIT 5"_s
        << QList<int>{7};
    QTest::newRow("one video")
        << oneVideo(u"urn:video:1"_s)
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s}) + u"SELECT     ?k_video     ?k_title     ?k_fileName     ?k_duration     ?k_playPosition     "
           "?k_mimeType     ?k_url     (?k_video AS ?id7) FROM <urn:graph:library> WHERE {     "
           "?k_video a nmm:Video .     ?k_video nfo:fileName ?k_fileName . ?k_video nie:url ?k_url . "
           "    OPTIONAL {         ?k_video nie:title ?k_title .     }     OPTIONAL {         "
           "?k_video nfo:duration ?k_duration .     }     OPTIONAL {         ?k_video nmm:runTime "
           "?k_playPosition .     }     OPTIONAL {         ?k_video nie:mimeType ?k_mimeType .     } "
           "    OPTIONAL {         ?k_video nfo:equipment ?k_equipment .     }     "
           "FILTER(!bound(?k_equipment) || (?k_equipment != <urn:equipment:Own%20Maker:M:>)) .     "
           "FILTER((?k_video = <urn:video:1>)) . }"_s
        << QList<int>{7};
    QTest::newRow("details")
        << filled(SparqlTemplates::Details, u"_URN_"_s, u"urn:video:1"_s)
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s, u"nrl"_s}) + u"SELECT     ?k_video     ?k_title     ?k_duration     ?k_fileSize     ?k_playPosition     "
           "?k_contentAccessed     ?k_mimeType     ?k_url     (COALESCE(?k_episodeNumber, "
           "?k_synopsis, \"\") AS ?k_additionalInfo)     ?k_added     ?k_playCount     ?k_fileName "
           "FROM <urn:graph:library> WHERE {     ?k_video a nmm:Video .     ?k_video nfo:fileName "
           "?k_fileName . ?k_video nie:url ?k_url .     OPTIONAL {         ?k_video nie:title "
           "?k_title .     }     OPTIONAL {         ?k_video nfo:duration ?k_duration .     }     "
           "OPTIONAL {         ?k_video nfo:fileSize ?k_fileSize .     }     OPTIONAL {         "
           "?k_video nmm:runTime ?k_playPosition .     }     OPTIONAL {         ?k_video "
           "nie:contentAccessed ?k_contentAccessed .     }     OPTIONAL {         ?k_video "
           "nie:mimeType ?k_mimeType .     }     OPTIONAL {         ?k_video nmm:episodeNumber "
           "?k_episodeNumber .     }     OPTIONAL {         ?k_video nmm:synopsis ?k_synopsis .     "
           "}     OPTIONAL {         ?k_video nrl:added ?k_added .     }     OPTIONAL {         "
           "?k_video nie:usageCounter ?k_playCount .     }     OPTIONAL {         ?k_video "
           "nfo:equipment ?k_equipment .     }     FILTER((?k_video = <urn:video:1>)) } "_s
        << QList<int>{};
    QTest::newRow("property")
        << propertyOf(u"urn:video:1"_s, u"nie:usageCounter"_s)
        << declared({u"nie"_s}) + u"SELECT ?k_prop FROM <urn:graph:library> WHERE {     <urn:video:1> nie:usageCounter "
           "?k_prop . }"_s
        << QList<int>{};
    QTest::newRow("title")
        << filled(SparqlTemplates::Title, u"_URN_"_s, u"urn:video:1"_s)
        << declared({u"nfo"_s, u"nie"_s}) + u"SELECT   ?k_title   ?k_fileName FROM <urn:graph:library> WHERE {     <urn:video:1> "
           "nfo:fileName ?k_fileName .       OPTIONAL       {         <urn:video:1> nie:title "
           "?k_title .       } }"_s
        << QList<int>{};
    QTest::newRow("by address")
        << filled(SparqlTemplates::ByUrl, u"_URL_"_s, u"file:///v/a b.mp4"_s)
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s, u"xsd"_s}) + u"SELECT DISTINCT   ?k_urn   ?k_title   ?k_fileName   ?k_duration   ?k_playPosition   "
           "?k_mimeType   ?k_url   (?k_urn AS ?id7) FROM <urn:graph:library> WHERE { VALUES ?address "
           "{ \"file:///v/a%20b.mp4\" \"file:///v/a%20b.mp4\"^^xsd:string "
           "\"file:///v/a%20b.mp4\"^^xsd:anyURI <file:///v/a%20b.mp4> \"file:///v/a b.mp4\" \"file:///v/a "
           "b.mp4\"^^xsd:string \"file:///v/a b.mp4\"^^xsd:anyURI }   ?k_urn a nmm:Video .   ?k_urn "
           "nie:url ?address .   ?k_urn nfo:fileName ?k_fileName .   OPTIONAL {       ?k_urn "
           "nie:title ?k_title .   }   OPTIONAL {       ?k_urn nfo:duration ?k_duration .   }   "
           "OPTIONAL {       ?k_urn nmm:runTime ?k_playPosition .   }   OPTIONAL {       ?k_urn "
           "nie:mimeType ?k_mimeType .   }   OPTIONAL {       ?k_urn nie:url ?k_url .   } }"_s
        << QList<int>{7};
    QTest::newRow("IRI by address")
        << filled(SparqlTemplates::UrnByUrl, u"_URL_"_s, u"file:///v/a b.mp4"_s)
        << declared({u"nie"_s, u"nmm"_s, u"xsd"_s}) + u"SELECT DISTINCT ?k_urn FROM <urn:graph:library> WHERE { VALUES ?address { "
           "\"file:///v/a%20b.mp4\" \"file:///v/a%20b.mp4\"^^xsd:string "
           "\"file:///v/a%20b.mp4\"^^xsd:anyURI <file:///v/a%20b.mp4> \"file:///v/a b.mp4\" \"file:///v/a "
           "b.mp4\"^^xsd:string \"file:///v/a b.mp4\"^^xsd:anyURI }  ?k_urn a nmm:Video .  ?k_urn "
           "nie:url ?address .   OPTIONAL   {    ?k_urn nie:isStoredAs ?k_urn .   } }"_s
        << QList<int>{};
    QTest::newRow("ontology")
        << SparqlTemplates::Ontology
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s}) + u"SELECT (nmm:Video AS ?id0)                             (nie:title AS ?id1)               "
           "              (nmm:runTime AS ?id2)                             (nfo:fileName AS ?id3)   "
           "                          (nfo:equipment AS ?id4)                             FROM "
           "<urn:graph:library> {}"_s
        << QList<int>{0, 1, 2, 3, 4};
    QTest::newRow("by numbers")
        << byNumbers(u"1,2"_s)
        << declared({u"nfo"_s, u"nie"_s, u"nmm"_s}) + u"SELECT   ?k_urn   ?k_title   ?k_fileName   ?k_duration   ?k_playPosition   ?k_mimeType   "
           "?k_url   (?k_urn AS ?id7) FROM <urn:graph:library> WHERE { VALUES ?k_urn { <urn:video:1> "
           "<urn:video:2> }   ?k_urn a nmm:Video .  ?k_urn nfo:fileName ?k_fileName .   OPTIONAL {   "
           "    ?k_urn nie:title ?k_title .   }   OPTIONAL {       ?k_urn nfo:duration ?k_duration . "
           "  }   OPTIONAL {       ?k_urn nmm:runTime ?k_playPosition .   }   OPTIONAL {       "
           "?k_urn nie:mimeType ?k_mimeType .   }   OPTIONAL {       ?k_urn nfo:equipment "
           "?k_equipment .   }   OPTIONAL {       ?k_urn nie:url ?k_url .   }     "
           "FILTER(!bound(?k_equipment) || (?k_equipment != <urn:equipment:Own%20Maker:M:>)) . }"_s
        << QList<int>{7};
    // clang-format on
}

void TestStandardDialect::queries()
{
    QFETCH(const QString, text);
    QFETCH(const QString, standard);
    QFETCH(const QList<int>, idColumns);
    const StandardStatement statement = adapted(text);
    QCOMPARE(statement.text, standard);
    QCOMPARE(statement.idColumns, idColumns);
    QCOMPARE(statement.isOneRowEach, idColumns == QList<int>{7});
    QVERIFY(statement.action == Action::Send);
    QCOMPARE(statement.furtherTexts, QStringList());
}

void TestStandardDialect::updates_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("standard");
    const auto row = [](const char *name, const QString &property, const QString &value,
                        const QString &literal) {
        QTest::newRow(name) << property << value
                            << declared({u"nmm"_s})
                + u"WITH <urn:graph:library> DELETE { <urn:video:1> %1 ?k_insert } INSERT { <urn:video:1> %1 "
                  u"%2 "
                  "} WHERE { <urn:video:1> a nmm:Video . OPTIONAL { <urn:video:1> %1 ?k_insert .} }"_s.arg(
                      property, literal);
    };
    row("position", u"nmm:runTime"_s, u"17"_s, u"17"_s);
    row("the beginning", u"nmm:runTime"_s, u"0"_s, u"0"_s);
    row("the longest", u"nmm:runTime"_s, u"4294967295"_s, u"4294967295"_s);
    row("no number", u"nmm:runTime"_s, u"1e3"_s, u"\"1e3\""_s);
    row("no number either", u"nmm:runTime"_s, u"1 } ; DROP ALL"_s, u"\"1 } ; DROP ALL\""_s);
    row("another number", u"nmm:season"_s, u"17"_s, u"\"17\""_s);
    const QString inNie = u"WITH <urn:graph:library> DELETE { <urn:video:1> %1 ?k_insert } INSERT { "
                          "<urn:video:1> %1 %2 } WHERE { <urn:video:1> a nmm:Video . OPTIONAL { "
                          "<urn:video:1> %1 ?k_insert .} }"_s;
    QTest::newRow("count") << u"nie:usageCounter"_s << u"3"_s
                           << declared({u"nie"_s, u"nmm"_s}) + inNie.arg(u"nie:usageCounter"_s, u"3"_s);
    QTest::newRow("time") << u"nie:contentAccessed"_s << u"2024-02-03T04:05:06Z"_s
                          << declared({u"nie"_s, u"nmm"_s})
            + inNie.arg(u"nie:contentAccessed"_s,
                        u"\"2024-02-03T04:05:06Z\"^^<http://www.w3.org/2001/XMLSchema#dateTime>"_s);
    QTest::newRow("title") << u"nie:title"_s << u"17"_s << titleUpdate(u"\"17\""_s);
    QTest::newRow("quotes") << u"nie:title"_s << u"a \"b\" 'c' \\"_s
                            << titleUpdate(u"\"a \\\"b\\\" 'c' \\\\\""_s);
    QTest::newRow("line breaks") << u"nie:title"_s << u"a\nb\r\n\tc"_s
                                 << titleUpdate(u"\"a\\nb\\r\\n\\tc\""_s);
    QTest::newRow("code points") << u"nie:title"_s << u"\\u0041 ä \U0001F3AC"_s
                                 << titleUpdate(u"\"\\\\u0041 ä \U0001F3AC\""_s);
}

void TestStandardDialect::updates()
{
    QFETCH(const QString, property);
    QFETCH(const QString, value);
    QFETCH(const QString, standard);
    const StandardStatement statement = adapted(update(u"urn:video:1"_s, property, value));
    QCOMPARE(statement.text, standard);
    QCOMPARE(statement.idColumns, QList<int>());
    QVERIFY(statement.action == Action::Send);
    QVERIFY(!statement.isAddressLookup);
}

void TestStandardDialect::noStatementComesOutOfATitle_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("stored"); // words that stand for a name are filled in, as everywhere
    const auto same = [](const QString &title) {
        QTest::newRow(qUtf8Printable(title.toHtmlEscaped())) << title << title;
    };
    same(u"\" } ; DROP ALL ; INSERT DATA { <urn:a> <urn:b> \""_s);
    same(u"\\\" } ; DROP ALL #"_s);
    same(u"} WHERE { } ; DELETE WHERE { ?s ?p ?o }"_s);
    same(u"\n} ; DROP GRAPH <urn:graph:library> ; #\r"_s);
    same(u"'''\"\"\"'''"_s);
    same(u"?_insert nmm:runTime \"5\" tracker:added _VALUE_ %1"_s);
    same(u"{{{"_s);
    same(u"<urn:x> # "_s);
    QTest::newRow("names") << u"_URN_ \" _PROPERTY_"_s << u"urn:video:1 \" nie:title"_s;
}

void TestStandardDialect::noStatementComesOutOfATitle()
{
    QFETCH(const QString, title);
    QFETCH(const QString, stored);
    StandardDialectOptions options{graph, u"urn:my:position"_s};
    const StandardStatement statement = adapted(update(u"urn:video:1"_s, u"nie:title"_s, title), options);
    QVERIFY(statement.action == Action::Send);
    QCOMPARE(statement.text, titleUpdate(sparql::stringToken(stored)));
}

void TestStandardDialect::withoutGraph_data()
{
    QTest::addColumn<SparqlQuery>("query");
    QTest::addColumn<QString>("standard");
    QTest::newRow("query") << SparqlQuery(propertyOf(u"urn:video:1"_s, u"nie:url"_s))
                           << declared({u"nie"_s})
            + u"SELECT ?k_prop WHERE {     <urn:video:1> nie:url ?k_prop . }"_s;
    QTest::newRow("update") << update(u"urn:video:1"_s, u"nie:title"_s, u"a"_s)
                            << titleUpdate(u"\"a\""_s).remove(u"WITH <urn:graph:library> "_s);
}

void TestStandardDialect::withoutGraph()
{
    QFETCH(const SparqlQuery, query);
    QFETCH(const QString, standard);
    QCOMPARE(adapted(query, {}).text, standard);
}

void TestStandardDialect::positionsInAnotherProperty_data()
{
    QTest::addColumn<SparqlQuery>("query");
    QTest::addColumn<QString>("standard");
    QTest::newRow("asked for") << SparqlQuery(propertyOf(u"urn:video:1"_s, u"nmm:runTime"_s))
                               << u"SELECT ?k_prop WHERE {     <urn:video:1> <urn:my:position> ?k_prop . }"_s;
    QTest::newRow("written") << update(u"urn:video:1"_s, u"nmm:runTime"_s, u"17"_s)
                             << declared({u"nmm"_s})
            + u"DELETE { <urn:video:1> <urn:my:position> ?k_insert } INSERT { <urn:video:1> "
              u"<urn:my:position> 17 "
              "} WHERE { <urn:video:1> a nmm:Video . OPTIONAL { <urn:video:1> <urn:my:position> ?k_insert .} }"_s;
    QTest::newRow("among others") << SparqlQuery(
        u"SELECT ?a { ?a nmm:runTime ?b ; nmm:runTimeOf ?c ; nie:title 'nmm:runTime' }"_s)
                                  << declared({u"nie"_s, u"nmm"_s})
            + u"SELECT ?a { ?a <urn:my:position> ?b ; nmm:runTimeOf ?c ; nie:title \"nmm:runTime\" }"_s;
}

void TestStandardDialect::positionsInAnotherProperty()
{
    QFETCH(const SparqlQuery, query);
    QFETCH(const QString, standard);
    QCOMPARE(adapted(query, {QString(), u"urn:my:position"_s}).text, standard);
    // The default by its full name is the default.
    const QString own = u"http://tracker.api.gnome.org/ontology/v3/nmm#runTime"_s;
    QCOMPARE(adapted(query, {QString(), own}).text, adapted(query, {}).text);
}

void TestStandardDialect::addressesInEveryForm_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("forms");
    QTest::newRow("file") << u"file:///v/a.mp4"_s
                          << u"\"file:///v/a.mp4\" \"file:///v/a.mp4\"^^xsd:string "
                             "\"file:///v/a.mp4\"^^xsd:anyURI <file:///v/a.mp4>"_s;
    QTest::newRow("stream") << u"rtsp://host/a b;\"c\""_s
                            << u"\"rtsp://host/a b;\\\"c\\\"\" \"rtsp://host/a b;\\\"c\\\"\"^^xsd:string "
                               "\"rtsp://host/a b;\\\"c\\\"\"^^xsd:anyURI <rtsp://host/a%20b;%22c%22>"_s;
    QTest::newRow("spelled otherwise") << u"file:///v/%61;b"_s
                                       << u"\"file:///v/a%3Bb\" \"file:///v/a%3Bb\"^^xsd:string "
                                          "\"file:///v/a%3Bb\"^^xsd:anyURI <file:///v/a%3Bb> "
                                          "\"file:///v/%61;b\" \"file:///v/%61;b\"^^xsd:string "
                                          "\"file:///v/%61;b\"^^xsd:anyURI <file:///v/%61;b>"_s;
    QTest::newRow("no address") << u"} <> #"_s
                                << u"\"} <> #\" \"} <> #\"^^xsd:string \"} <> #\"^^xsd:anyURI"_s;
    QTest::newRow("nothing") << QString() << u"\"\" \"\"^^xsd:string \"\"^^xsd:anyURI"_s;
}

void TestStandardDialect::addressesInEveryForm()
{
    QFETCH(const QString, address);
    QFETCH(const QString, forms);
    const StandardStatement statement
        = adapted(filled(SparqlTemplates::UrnByUrl, u"_URL_"_s, escapedLiteral(address)));
    QCOMPARE(statement.text,
             declared({u"nie"_s, u"nmm"_s, u"xsd"_s})
                 + u"SELECT DISTINCT ?k_urn FROM <urn:graph:library> WHERE { VALUES ?address { %1 }  ?k_urn "
                   u"a nmm:Video ."
                   "  ?k_urn nie:url ?address .   OPTIONAL   {    ?k_urn nie:isStoredAs ?k_urn .   } }"_s.arg(
                       forms));
    QVERIFY(statement.isAddressLookup);
    QCOMPARE(statement.iris, QSet<QString>());
    QVERIFY(!adapted(propertyOf(u"urn:video:1"_s, u"nie:url"_s)).isAddressLookup);
}

void TestStandardDialect::whoseNumbersNobodyHas()
{
    for (const QString &numbers : {u""_s, u"0"_s, u"3"_s, u"-1,4000000000"_s}) {
        const StandardStatement statement = adapted(byNumbers(numbers));
        QVERIFY(statement.action == Action::AnswerEmpty);
        QCOMPARE(statement.text, QString());
    }
    // A number that is known besides is asked for, once.
    const StandardStatement statement = adapted(byNumbers(u"7,2,0,2"_s));
    QVERIFY(statement.text.contains(u"{ VALUES ?k_urn { <urn:video:2> }   ?k_urn a"_s));
}

void TestStandardDialect::manyNumbersTakeSeveralTexts()
{
    constexpr int count = 2 * idsPerText + 1;
    QStringList numbers;
    for (int i = 0; i < count; ++i)
        numbers.append(QString::number(m_ids.idOf(u"urn:many:%1"_s.arg(i))));
    const StandardStatement statement = adapted(byNumbers(numbers.join(u',')));
    QVERIFY(statement.action == Action::Send);
    QCOMPARE(statement.iris.size(), count + 1); // and the camera
    const QStringList texts = QStringList{statement.text} + statement.furtherTexts;
    QCOMPARE(texts.size(), 3);
    QStringList asked;
    for (const QString &text : texts) {
        const QString iris = text.section(u'{', 2, 2).section(u'}', 0, 0);
        asked += iris.simplified().split(u' ');
        // But for the IRIs all are one text.
        QCOMPARE(QString(text).remove(iris),
                 QString(texts[0]).remove(texts[0].section(u'{', 2, 2).section(u'}', 0, 0)));
    }
    QCOMPARE(asked.size(), count);
    QCOMPARE(asked.first(), u"<urn:many:0>"_s);
    QCOMPARE(asked.last(), u"<urn:many:%1>"_s.arg(count - 1));
}

// What a server calls an IRI may be one that no text can name, or one that would be more than a name.
void TestStandardDialect::irisThatCannotBeWritten()
{
    for (const QString &iri :
         {u"urn:a b"_s, u"urn:x> } ; DROP ALL #"_s, u"b0"_s, u"urn:\n"_s, u"urn:a\\u003E"_s}) {
        const QString number = QString::number(m_ids.idOf(iri));
        QVERIFY(adapted(byNumbers(number)).action == Action::AnswerEmpty);
        QVERIFY(adapted(byNumbers(u"1,"_s + number)).text.contains(u"VALUES ?k_urn { <urn:video:1> }"_s));
    }
    const QString number = QString::number(m_ids.idOf(u"nodeID://b10001"_s));
    QVERIFY(adapted(byNumbers(number)).text.contains(u"VALUES ?k_urn { <nodeID://b10001> }"_s));
}

void TestStandardDialect::refusedUpdates_data()
{
    QTest::addColumn<SparqlQuery>("query");
    for (const QString &urn : {u"urn:a b"_s, u"urn:a>b"_s, u"urn:a\\b"_s, u"no scheme"_s, u"b0"_s, u"../a"_s})
        QTest::newRow(qUtf8Printable(urn)) << update(urn, u"nie:title"_s, u"x"_s);
    QTest::newRow("too long") << update(u"urn:a"_s, u"nie:title"_s, u"x"_s.repeated(1000000));
    QTest::newRow("another form") << SparqlQuery(u"DELETE WHERE { ?a nie:title ?b }"_s,
                                                 SparqlQuery::UpdateStatement);
    QTest::newRow("never closed") << SparqlQuery(
        u"DELETE { <urn:a> nie:title ?t } WHERE { <urn:a> nie:title ?t } INSERT { <urn:a>"_s,
        SparqlQuery::UpdateStatement);
}

void TestStandardDialect::refusedUpdates()
{
    QFETCH(const SparqlQuery, query);
    const StandardStatement statement = adapted(query);
    QVERIFY(statement.action == Action::Refuse);
    QVERIFY(!statement.error.isEmpty());
    QCOMPARE(statement.text, QString());
}

void TestStandardDialect::nothingIsAskedAboutNothing()
{
    QVERIFY(adapted(update(QString(), u"nmm:runTime"_s, u"5"_s)).action == Action::Drop);
    QVERIFY(adapted(propertyOf(QString(), u"nie:url"_s)).action == Action::AnswerEmpty);
    QVERIFY(adapted(oneVideo(QString())).action == Action::AnswerEmpty);
    QVERIFY(adapted(update(u"urn:a"_s, u"nie:title"_s, u"<>"_s)).action == Action::Send);
}

void TestStandardDialect::settingsThatCannotBe_data()
{
    QTest::addColumn<QString>("iri");
    for (const QString &iri : {u"urn:x> {} #"_s, u"a graph"_s, u"library"_s, u"<urn:a>"_s})
        QTest::newRow(qUtf8Printable(iri)) << iri;
}

void TestStandardDialect::settingsThatCannotBe()
{
    QFETCH(const QString, iri);
    for (const SparqlQuery &query : {SparqlQuery(allVideos(0)), update(u"urn:a"_s, u"nie:title"_s, u"x"_s)}) {
        for (const StandardDialectOptions &options :
             {StandardDialectOptions{iri, QString()}, {QString(), iri}}) {
            const StandardStatement statement = adapted(query, options);
            QVERIFY(statement.action == Action::Refuse);
            QVERIFY(statement.error.contains(iri));
        }
    }
}

void TestStandardDialect::namesWhatItIsAbout()
{
    const auto iris = [this](const SparqlQuery &query) {
        QStringList list = adapted(query, {graph, u"urn:my:position"_s}).iris.values();
        list.sort();
        return list.join(u' ');
    };
    QCOMPARE(iris(SparqlQuery(propertyOf(u"urn:video:1"_s, u"nmm:runTime"_s))), u"<urn:video:1>"_s);
    QCOMPARE(iris(update(u"urn:video:1"_s, u"nmm:runTime"_s, u"5"_s)), u"<urn:video:1>"_s);
    QCOMPARE(iris(SparqlQuery(byNumbers(u"1,2"_s))),
             u"<urn:equipment:Own%20Maker:M:> <urn:video:1> <urn:video:2>"_s);
}

void TestStandardDialect::otherProjections_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("standard");
    QTest::addColumn<QList<int>>("idColumns");
    QTest::newRow("columns of every kind")
        << u"SELECT tracker:id(?v) ?a (SUBSTR(STR(?v), 1, 2) AS ?g) tracker:id( ?w ) AS ?n { ?v ?a ?w }"_s
        << u"SELECT (?v AS ?id0) ?a (SUBSTR(STR(?v), 1, 2) AS ?g) ( ?w  AS ?n) { ?v ?a ?w }"_s
        << QList<int>{0, 3};
    QTest::newRow("a name that is taken") << u"SELECT tracker:id(?id0) { ?id0 ?id0x ?o }"_s
                                          << u"SELECT (?id0 AS ?id0xx) { ?id0 ?id0x ?o }"_s << QList<int>{0};
    QTest::newRow("an order of what is bound")
        << u"SELECT ?_v { ?_v ?p ?o } ORDER BY ?_v LIMIT 3"_s
        << u"SELECT ?k_v { ?k_v ?p ?o } ORDER BY ?k_v LIMIT 3"_s << QList<int>{};
    QTest::newRow("an order of nothing and a limit") << u"SELECT ?v { ?v ?p ?o } ORDER BY ?n LIMIT 3"_s
                                                     << u"SELECT ?v { ?v ?p ?o }  LIMIT 3"_s << QList<int>{};
}

void TestStandardDialect::otherProjections()
{
    QFETCH(const QString, text);
    QFETCH(const QString, standard);
    QFETCH(const QList<int>, idColumns);
    const StandardStatement statement = adapted(SparqlQuery(text), {});
    QCOMPARE(statement.text, standard);
    QCOMPARE(statement.idColumns, idColumns);
}

QTEST_APPLESS_MAIN(TestStandardDialect)
#include "test_standarddialect.moc"
