// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/resultpaging.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestResultPaging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pages_data();
    void pages();
};

void TestResultPaging::pages_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("page"); // null: none
    QTest::newRow("first") << u"SELECT ?v ?t WHERE { ?v a <urn:V> }\n"_s << QString()
                           << u"SELECT ?v ?t WHERE { ?v a <urn:V> } ORDER BY STR(?v) LIMIT 9"_s;
    QTest::newRow("next")
        << u"PREFIX a: <urn:a> select distinct ?v { ?v a \"}\" }"_s << u"urn:\"1\""_s
        << u"PREFIX a: <urn:a> select distinct ?v { ?v a \"}\"  FILTER(STR(?v) > \"urn:\\\"1\\\"\") } "
           "ORDER BY STR(?v) LIMIT 9"_s;
    QTest::newRow("limited") << u"SELECT ?v { ?v a ?o } LIMIT 3"_s << QString() << QString();
    QTest::newRow("ordered") << u"SELECT ?v { ?v a ?o } ORDER BY ?o"_s << QString() << QString();
    QTest::newRow("counted") << u"SELECT (COUNT(*) AS ?n) { ?v a ?o }"_s << QString() << QString();
    QTest::newRow("asked") << u"ASK { ?v a ?o }"_s << QString() << QString();
    QTest::newRow("everything") << u"SELECT * { ?v a ?o }"_s << QString() << QString();
    QTest::newRow("nothing") << QString() << QString() << QString();
}

void TestResultPaging::pages()
{
    QFETCH(QString, query);
    QFETCH(QString, after);
    QTEST(pageOf(query, after, 9).value_or(QString()), "page");
}

QTEST_GUILESS_MAIN(TestResultPaging)
#include "test_resultpaging.moc"
