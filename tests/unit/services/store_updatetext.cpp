// SPDX-License-Identifier: GPL-3.0-or-later
#include "updatetext.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QString asText(const QList<ValueWrite> &writes)
{
    QStringList lines;
    for (const ValueWrite &write : writes) {
        const bool isTitle = write.property == ValueWrite::Property::Title;
        lines.append(write.urn + (isTitle ? u" title "_s : u" runTime "_s) + write.value);
    }
    return lines.join(u'\n');
}

} // namespace

// The service acknowledges a title or a position only after it read it back; so it has to see what an update
// sets.
class StoreUpdateText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valuesThatAnUpdateSets_data();
    void valuesThatAnUpdateSets();
    void textsThatAreRefused_data();
    void textsThatAreRefused();
};

void StoreUpdateText::valuesThatAnUpdateSets_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("writes");

    QTest::newRow("the application's order")
        << u"DELETE { <urn:a> nie:title ?_insert } WHERE { <urn:a> nie:title ?_insert .} INSERT { <urn:a> nie:title \"New\" }"_s
        << u"urn:a title New"_s;
    QTest::newRow("two operations")
        << u"DELETE WHERE { <urn:a> nmm:runTime ?v } ; INSERT DATA { <urn:a> nmm:runTime \"42\" }"_s
        << u"urn:a runTime 42"_s;
    QTest::newRow("the order of the standard")
        << u"delete {<urn:a> nie:title ?x} insert {<urn:a> nie:title 'b'} where {<urn:a> nie:title ?x}"_s
        << u"urn:a title b"_s;
    QTest::newRow("a number without quotes")
        << u"INSERT DATA { <urn:a> nmm:runTime 7 }"_s << u"urn:a runTime 7"_s;
    QTest::newRow("full names")
        << u"INSERT DATA { <urn:a> <http://tracker.api.gnome.org/ontology/v3/nmm#runTime> 7 . }"_s
        << u"urn:a runTime 7"_s;
    QTest::newRow("lists of predicates and objects")
        << u"INSERT DATA { <urn:a> a nmm:Video ; nie:title \"t\" ; nmm:runTime 1 . <urn:b> nie:title \"u\" }"_s
        << u"urn:a title t\nurn:a runTime 1\nurn:b title u"_s;
    QTest::newRow("in a graph") << u"INSERT DATA { GRAPH <urn:g> { <urn:a> nie:title \"t\" } }"_s
                                << u"urn:a title t"_s;
    QTest::newRow("a typed literal") << u"INSERT DATA { <urn:a> nmm:runTime \"7\"^^xsd:integer }"_s
                                     << u"urn:a runTime 7"_s;
    QTest::newRow("escapes") << u"INSERT DATA { <urn:a> nie:title \"a \\\"b\\\" \\\\ \\u00e4\\n\" }"_s
                             << u"urn:a title a \"b\" \\ ä\n"_s;
    QTest::newRow("braces and keywords inside a literal")
        << u"INSERT DATA { <urn:a> nie:title \"} DELETE { <urn:b> nie:title 'x'\" }"_s
        << u"urn:a title } DELETE { <urn:b> nie:title 'x'"_s;
    QTest::newRow("a comment")
        << u"# INSERT DATA { <urn:b> nie:title \"x\" }\nINSERT DATA { <urn:a> nie:title \"t\" }"_s
        << u"urn:a title t"_s;
    QTest::newRow("only deleted") << u"DELETE DATA { <urn:a> nie:title \"t\" }"_s << QString();
    QTest::newRow("another property") << u"INSERT DATA { <urn:a> nie:usageCounter 3 }"_s << QString();
    QTest::newRow("computed") << u"INSERT { ?v nie:title \"t\" } WHERE { ?v a nmm:Video }"_s << QString();
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("cut off") << u"INSERT DATA { <urn:a> nie:title \"t"_s << QString();
}

void StoreUpdateText::valuesThatAnUpdateSets()
{
    QFETCH(QString, text);
    QTEST(asText(valueWritesOf(text)), "writes");
}

void StoreUpdateText::textsThatAreRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("refused");

    QTest::newRow("a service") << u"SELECT ?a { SERVICE <http://example.org/> { ?a a nmm:Video } }"_s << true;
    QTest::newRow("a silent service")
        << u"SELECT ?a { service SILENT <dbus:x> { ?a a nmm:Video } }"_s << true;
    QTest::newRow("a service behind a comment")
        << u"SELECT ?a { #\n SERVICE<http://e/>{?a a nmm:Video} }"_s << true;
    QTest::newRow("loading") << u"LOAD <file:///etc/passwd>"_s << true;
    QTest::newRow("in a literal") << u"SELECT ?a { ?a nie:title \"SERVICE <http://e/>\" }"_s << false;
    QTest::newRow("in a comment") << u"SELECT ?a { ?a a nmm:Video } # SERVICE"_s << false;
    QTest::newRow("a variable") << u"SELECT ?service { ?service a nmm:Video }"_s << false;
    QTest::newRow("part of a name") << u"SELECT ?a { ?a nie:service_load ?b }"_s << false;
    QTest::newRow("in an address") << u"SELECT ?a { ?a nie:isStoredAs <file:///SERVICE> }"_s << false;
}

void StoreUpdateText::textsThatAreRefused()
{
    QFETCH(QString, text);
    QTEST(refusalOf(text).has_value(), "refused");
}

QTEST_GUILESS_MAIN(StoreUpdateText)
#include "store_updatetext.moc"
