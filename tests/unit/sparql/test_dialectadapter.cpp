// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/sparql/dialectadapter.h"
#include "platform/sparql/sparqltokens.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

AdaptedStatement adaptedSelect(const QString &text)
{
    return adaptToStore(SparqlQuery(text));
}

AdaptedStatement adaptedUpdate(const QString &text)
{
    return adaptToStore(SparqlQuery(text, SparqlQuery::UpdateStatement));
}

} // namespace

class TestDialectAdapter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokens_data();
    void tokens();
    void tokensJoinToTheirText_data();
    void tokensJoinToTheirText();
    void stringContent_data();
    void stringContent();
    void everyStringComesBack();
    void queries_data();
    void queries();
    void updates_data();
    void updates();
    void lookUps_data();
    void lookUps();
    void updateForNothingIsDropped();
    void updateForAnImpossibleIriIsRefused_data();
    void updateForAnImpossibleIriIsRefused();
    void namesEveryIri();
};

void TestDialectAdapter::tokens_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("words"); // but for the space
    QTest::newRow("nothing") << QString() << QStringList();
    QTest::newRow("variables") << u"?a$b ?_c?d"_s << QStringList({u"?a"_s, u"$b"_s, u"?_c"_s, u"?d"_s});
    QTest::newRow("path") << u"nfo:a? ?b"_s << QStringList({u"nfo:a"_s, u"?"_s, u"?b"_s});
    QTest::newRow("dots") << u"?a nie:url nfo:b.c. 1.5 ."_s
                          << QStringList({u"?a"_s, u"nie:url"_s, u"nfo:b.c"_s, u"."_s, u"1.5"_s, u"."_s});
    QTest::newRow("iri and operators")
        << u"?a<3 && ?b <= 4 || <urn:a> != ?c<?d"_s
        << QStringList({u"?a"_s, u"<"_s, u"3"_s, u"&"_s, u"&"_s, u"?b"_s, u"<"_s, u"="_s, u"4"_s, u"|"_s,
                        u"|"_s, u"<urn:a>"_s, u"!"_s, u"="_s, u"?c"_s, u"<"_s, u"?d"_s});
    QTest::newRow("iri with escapes and blanks")
        << u"<urn:a\\>b\\\\> <urn:Some Maker:X:>"_s
        << QStringList({u"<urn:a\\>b\\\\>"_s, u"<urn:Some Maker:X:>"_s});
    QTest::newRow("strings") << u"\"a ?_b\" 'c' \"\" \"\"\"d\"e\"\"\" '''f'g'''"_s
                             << QStringList({u"\"a ?_b\""_s, u"'c'"_s, u"\"\""_s, u"\"\"\"d\"e\"\"\""_s,
                                             u"'''f'g'''"_s});
    QTest::newRow("escaped quotes") << u"\"a\\\"b\" \"c\\\\\" d"_s
                                    << QStringList({u"\"a\\\"b\""_s, u"\"c\\\\\""_s, u"d"_s});
    QTest::newRow("string over two lines") << u"\"a\nb\" c"_s << QStringList({u"\"a\nb\""_s, u"c"_s});
    QTest::newRow("string never closed") << u"a \"b c\\\""_s << QStringList({u"a"_s, u"\"b c\\\""_s});
    QTest::newRow("comment") << u"a # ?_b \"c\n d"_s << QStringList({u"a"_s, u"d"_s});
    QTest::newRow("empty iri") << u"<> a"_s << QStringList({u"<>"_s, u"a"_s});
}

void TestDialectAdapter::tokens()
{
    QFETCH(const QString, text);
    QFETCH(const QStringList, words);
    QStringList found;
    for (const sparql::Token &token : sparql::tokensOf(text)) {
        if (token.kind != sparql::Token::Kind::Space)
            found.append(token.text);
    }
    QCOMPARE(found, words);
}

void TestDialectAdapter::tokensJoinToTheirText_data()
{
    QTest::addColumn<QString>("text");
    for (const QString &text : {u"SELECT ?_a {} "_s, u"<<>>\"'\\"_s, u"'''\"\"\"'' <urn:\n>"_s, u"?$?#"_s,
                                u"äöü\U0001F3AC \u0000"_s, u"\"\\"_s, u"<urn:\\"_s, u":::...%-_"_s})
        QTest::newRow(qUtf8Printable(text.toHtmlEscaped())) << text;
}

void TestDialectAdapter::tokensJoinToTheirText()
{
    QFETCH(const QString, text);
    QCOMPARE(sparql::textOf(sparql::tokensOf(text)), text);
}

void TestDialectAdapter::stringContent_data()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("content");
    QTest::newRow("plain") << u"\"a\""_s << u"a"_s;
    QTest::newRow("empty") << u"\"\""_s << u""_s;
    QTest::newRow("single quotes") << u"'a\"b'"_s << u"a\"b"_s;
    QTest::newRow("long") << u"\"\"\"a\"\nb\"\"\""_s << u"a\"\nb"_s;
    QTest::newRow("empty long") << u"\"\"\"\"\"\""_s << u""_s;
    QTest::newRow("escapes") << u"\"\\t\\b\\n\\r\\f\\\"\\'\\\\\""_s << u"\t\b\n\r\f\"'\\"_s;
    QTest::newRow("code points") << u"\"\\u00e4\\U0001F3AC\""_s << u"ä\U0001F3AC"_s;
    QTest::newRow("no code points") << u"\"\\\\u00e4 \\u12 \\uzzzz\""_s << u"\\u00e4 \\u12 \\uzzzz"_s;
    QTest::newRow("unknown escape") << u"\"\\q\""_s << u"\\q"_s;
}

void TestDialectAdapter::stringContent()
{
    QFETCH(const QString, token);
    QFETCH(const QString, content);
    QCOMPARE(sparql::stringContent(token), content);
}

void TestDialectAdapter::everyStringComesBack()
{
    QString all;
    for (char16_t c = 1; c < 0x250; ++c)
        all += QChar(c);
    all += u"\U0001F3AC \\\" \\u0041 '''"_s;
    const QString token = sparql::stringToken(all);
    QCOMPARE(sparql::tokensOf(token).size(), 1);
    QVERIFY(!token.contains(u'\n') && !token.contains(u'\r'));
    QCOMPARE(sparql::stringContent(token), all);
    QCOMPARE(sparql::stringToken(u"a\0b"_s), u"\"ab\""_s);
}

void TestDialectAdapter::queries_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("adapted");
    const auto same = [](const char *name, const QString &text) { QTest::newRow(name) << text << text; };
    same("runs of blanks stay", u"SELECT   ?a  { ?a  a   nmm:Video }   "_s);
    same("unbound order", u"SELECT ?a { ?a a nmm:Video } ORDER BY ?name"_s);
    QTest::newRow("names") << u"SELECT ?_a $_b ?c { ?_a nfo:x ?_a_ }"_s
                           << u"SELECT ?k_a $k_b ?c { ?k_a nfo:x ?k_a_ }"_s;
    QTest::newRow("names like columns") << u"SELECT ?v_a ?va"_s << u"SELECT ?kv_a ?va"_s;
    QTest::newRow("no two become one") << u"SELECT ?_a ?k_a"_s << u"SELECT ?kk_a ?k_a"_s;
    same("names in strings and IRIs", u"SELECT ?a { <urn:?_a> nie:title \"?_a tracker:added\" }"_s);
    QTest::newRow("added") << u"?a tracker:added ?b . ?a tracker:addedLater ?c"_s
                           << u"?a nrl:added ?b . ?a tracker:addedLater ?c"_s;
    QTest::newRow("line break in a string")
        << u"{ ?a nie:title \"one\ntwo\" }"_s << u"{ ?a nie:title \"one\\ntwo\" }"_s;
    QTest::newRow("iri with a blank") << u"FILTER(?a != <urn:equipment:Some Maker:É {1}:>)"_s
                                      << u"FILTER(?a != <urn:equipment:Some%20Maker:É%20%7B1%7D:>)"_s;
    QTest::newRow("iri with escapes")
        << u"{ <urn:a\\>b\\<c\\\\d> ?p ?o }"_s << u"{ <urn:a%3Eb%3Cc%5Cd> ?p ?o }"_s;
    QTest::newRow("unrelated pattern")
        << u"{ ?u a nmm:Video . OPTIONAL { ?u nfo:equipment ?e . } OPTIONAL {  ?x nfo:equipment ?e .  } FILTER(?e) }"_s
        << u"{ ?u a nmm:Video . OPTIONAL { ?u nfo:equipment ?e . }   FILTER(?e) }"_s;
    same(
        "related patterns",
        u"{ ?x a nmm:Video . OPTIONAL { ?u nfo:equipment ?e . } OPTIONAL { ?x nfo:equipment ?e . } ?u a nmm:Video }"_s);
    same("a pattern that binds something", u"{ ?u a nmm:Video . OPTIONAL { ?x nfo:equipment ?e . } }"_s);
    same("a larger optional",
         u"{ OPTIONAL { ?x nfo:equipment ?e . ?e nie:title ?t } OPTIONAL { ?e nie:title ?t } ?e a ?t }"_s);
    same("the word in a string", u"{ ?a nie:title \"OPTIONAL { ?x nfo:equipment ?a . }\" }"_s);
    QTest::newRow("address")
        << u"{ ?a nie:url \"file:///a;b [c].mp4\" . ?b nie:title \"file:///a;b\" }"_s
        << u"{ ?a nie:url \"file:///a%3Bb%20%5Bc%5D.mp4\" . ?b nie:title \"file:///a;b\" }"_s;
    QTest::newRow("address with escapes") << u"{ ?a nie:url \"file:///\\\"q\\\" \\\\.mp4\" }"_s
                                          << u"{ ?a nie:url \"file:///%22q%22%20%5C.mp4\" }"_s;
    same("stream address", u"{ ?a nie:url \"rtsp://host/a;b\" }"_s);
    same("never closed", u"{ ?a nie:title \"b }"_s);
}

void TestDialectAdapter::queries()
{
    QFETCH(const QString, text);
    QFETCH(const QString, adapted);
    const AdaptedStatement statement = adaptedSelect(text);
    QVERIFY(statement.action == AdaptedStatement::Action::Send);
    QCOMPARE(statement.text, adapted);
    // What is adapted needs no adapting.
    QCOMPARE(adaptedSelect(adapted).text, adapted);
}

void TestDialectAdapter::updates_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("adapted");
    QTest::newRow("old order")
        << u"DELETE { <urn:a> nie:title ?_i } WHERE { <urn:a> nie:title ?_i .} INSERT { <urn:a> nie:title \"x\" }"_s
        << u"DELETE { <urn:a> nie:title ?k_i } WHERE { <urn:a> nie:title ?k_i .} ; INSERT DATA { <urn:a> nie:title \"x\" }"_s;
    QTest::newRow("old order, lower case")
        << u" delete{<urn:a> a ?x}where{<urn:a> a ?x}insert{<urn:a> a <urn:b>} "_s
        << u"DELETE {<urn:a> a ?x} WHERE {<urn:a> a ?x} ; INSERT DATA {<urn:a> a <urn:b>}"_s;
    QTest::newRow("old order, inserts what it found")
        << u"DELETE { ?x nie:title ?t } WHERE { ?x nie:title ?t } INSERT { ?x nie:comment ?t }"_s
        << u"DELETE { ?x nie:title ?t } INSERT { ?x nie:comment ?t } WHERE { ?x nie:title ?t }"_s;
    QTest::newRow("braces in strings and groups")
        << u"DELETE { <urn:a> nie:title ?t } WHERE { { <urn:a> nie:title ?t } } INSERT { <urn:a> nie:title \"} WHERE {\" }"_s
        << u"DELETE { <urn:a> nie:title ?t } WHERE { { <urn:a> nie:title ?t } } ; INSERT DATA { <urn:a> nie:title \"} WHERE {\" }"_s;
    for (const QString &text :
         {u"INSERT DATA { <urn:a> nie:title \"x\" }"_s, u"DELETE WHERE { <urn:a> nie:title ?t }"_s,
          u"DELETE { <urn:a> nie:title ?t } WHERE { <urn:a> nie:title ?t }"_s,
          u"DELETE { <urn:a> nie:title ?t } INSERT { <urn:a> nie:title \"x\" } WHERE { }"_s,
          u"DELETE { <urn:a> nie:title ?t } WHERE { <urn:a> nie:title ?t } INSERT { <urn:a>"_s})
        QTest::newRow(qUtf8Printable(text)) << text << text;
}

void TestDialectAdapter::updates()
{
    QFETCH(const QString, text);
    QFETCH(const QString, adapted);
    const AdaptedStatement statement = adaptedUpdate(text);
    QVERIFY(statement.action == AdaptedStatement::Action::Send);
    QCOMPARE(statement.text, adapted);
    QVERIFY(!statement.isAddressLookup);
}

void TestDialectAdapter::lookUps_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isLookUp");
    QTest::newRow("address") << u"SELECT ?u { ?u nie:url \"file:///a\" . }"_s << true;
    QTest::newRow("stream") << u"SELECT ?u { ?u nie:url 'http://a' . }"_s << true;
    QTest::newRow("all addresses") << u"SELECT ?u { ?v nie:url ?u . }"_s << false;
    QTest::newRow("one property") << u"SELECT ?u { <urn:a> nie:url ?u . ?x nie:title \"t\" }"_s << false;
}

void TestDialectAdapter::lookUps()
{
    QFETCH(const QString, text);
    QFETCH(const bool, isLookUp);
    QCOMPARE(adaptedSelect(text).isAddressLookup, isLookUp);
}

void TestDialectAdapter::updateForNothingIsDropped()
{
    const AdaptedStatement statement = adaptedUpdate(
        u"DELETE { <> nmm:runTime ?_i } WHERE { <> nmm:runTime ?_i .} INSERT { <> nmm:runTime \"5\" }"_s);
    QVERIFY(statement.action == AdaptedStatement::Action::Drop);
    // A question about nothing has no rows; a title may well be "<>".
    QVERIFY(adaptedSelect(u"SELECT ?p { <> nie:url ?p }"_s).action == AdaptedStatement::Action::Send);
    QVERIFY(adaptedUpdate(u"INSERT DATA { <urn:a> nie:title \"<>\" }"_s).action
            == AdaptedStatement::Action::Send);
}

void TestDialectAdapter::updateForAnImpossibleIriIsRefused_data()
{
    QTest::addColumn<QString>("iri");
    for (const QString &iri :
         {u"<urn:a b>"_s, u"<urn:a\\>b>"_s, u"<urn:a\\\\b>"_s, u"<urn:{a}>"_s, u"<urn:a|b>"_s})
        QTest::newRow(qUtf8Printable(iri)) << iri;
}

void TestDialectAdapter::updateForAnImpossibleIriIsRefused()
{
    QFETCH(const QString, iri);
    const AdaptedStatement statement = adaptedUpdate(u"INSERT DATA { %1 nie:title \"x\" }"_s.arg(iri));
    QVERIFY(statement.action == AdaptedStatement::Action::Refuse);
    QVERIFY(!statement.error.isEmpty());
}

void TestDialectAdapter::namesEveryIri()
{
    const QSet<QString> expected = {u"<urn:a>"_s, u"<urn:b>"_s};
    QCOMPARE(adaptedSelect(u"SELECT ?x { <urn:a> ?p <urn:b> . <urn:a> nie:title \"<urn:c>\" }"_s).iris,
             expected);
}

QTEST_APPLESS_MAIN(TestDialectAdapter)
#include "test_dialectadapter.moc"
