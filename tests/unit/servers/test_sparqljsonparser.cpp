// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/resourceids.h"
#include "platform/servers/sparqljsonparser.h"

#include <QDateTime>
#include <QRandomGenerator>
#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

namespace {

// What became of a document, as text.
struct Reading
{
    QString error;
    QString rows; // cells by '|', rows by '/'; an unbound cell is "-"
    RowTable table;
};

QString textOf(const RowTable &table)
{
    QStringList rows;
    for (int row = 0; row < table.rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < table.columns(); ++column)
            cells.append(table.text(row, column).isNull() ? u"-"_s : table.text(row, column));
        rows.append(cells.join(u'|'));
    }
    return rows.join(u'/');
}

Reading finished(SparqlJsonParser &parser)
{
    SparqlJsonParser::End end = SparqlJsonParser::End::MoreToDo;
    while (end == SparqlJsonParser::End::MoreToDo)
        end = parser.finish();
    Reading reading;
    reading.error = parser.error();
    if (end == SparqlJsonParser::End::Complete)
        reading.table = parser.takeTable();
    reading.rows = textOf(reading.table);
    return reading;
}

Reading read(const QByteArray &document, const QList<qsizetype> &splits = {})
{
    SparqlJsonParser parser;
    qsizetype from = 0;
    for (const qsizetype split : splits + QList<qsizetype>{document.size()}) {
        if (!parser.feed(QByteArrayView(document).sliced(from, split - from)))
            break;
        from = split;
    }
    return finished(parser);
}

QByteArray answer(const QByteArray &rows, const QByteArray &vars = R"("a","b")")
{
    return R"({"head":{"vars":[)" + vars + R"(]},"results":{"bindings":[)" + rows + "]}}";
}

QByteArray cell(const QByteArray &value, const QByteArray &more = {})
{
    return R"({"type":"literal","value":")" + value + '"' + more + '}';
}

QByteArray typed(const QByteArray &value, const QByteArray &type)
{
    return cell(value, R"(,"datatype":"http://www.w3.org/2001/XMLSchema#)" + type + '"');
}

// Everything that an answer can hold, with spaces where they may stand.
const QByteArray rich
    = "\n{ \"head\": { \"link\": [ ], \"vars\": [\"v\", \"t\", \"n\"] } , \"future\": [1, {\"x\": [null, "
      "-1.5e+3, \"}\"]}],\n"
      "\t\"results\" : { \"distinct\": false, \"bindings\": [\r\n"
      "{ \"v\": { \"type\": \"uri\", \"value\": \"urn:a\" }\t, \"t\": { \"xml:lang\": \"en\", \"value\": "
      "\"q\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00e4\\uD83D\\uDE00 \xc3\xbc\", \"type\": \"literal\" } },\n"
      "{ \"n\": { \"type\": \"typed-literal\", \"datatype\": \"http://www.w3.org/2001/XMLSchema#integer\", "
      "\"value\": \"17\" }, \"unknown\": {\"value\": []}, \"v\": { \"type\": \"bnode\", \"value\": \"\" } "
      "},\n"
      "{ } ] , \"more\": {\"bindings\": [7]} } , \"tail\": true }\n ";
const QString richRows = u"urn:a|q\"\\/\b\f\n\r\tä😀 ü|-/|-|17/-|-|-"_s;

} // namespace

class TestSparqlJsonParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void documents_data();
    void documents();
    void datatypes_data();
    void datatypes();
    void everySplitGivesTheSame();
    void everyCutIsAnError();
    void randomPiecesGiveTheSame();
    void randomDamageNeverEndsBadly();
    void rowsBeforeTheHead();
    void manyRowsBeforeTheHeadComeInParts();
    void irisBecomeNumbers();
    void anAnswerGoesOnInAnother();
    void errorsNameTheByte();
};

void TestSparqlJsonParser::documents_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("rows"); // null: broken
    const auto add = [](const char *name, const QByteArray &document, const QString &rows = {}) {
        QTest::newRow(name) << document << rows;
    };
    const QByteArray one = R"({"a":)" + cell("1") + R"(,"b":)" + cell("2") + '}';
    add("rows", answer(one + ',' + one), u"1|2/1|2"_s);
    add("no rows", answer(""), u""_s);
    add("columns in another order", answer(R"({"b":)" + cell("2") + R"(,"a":)" + cell("1") + '}'), u"1|2"_s);
    add("unbound", answer(R"({"b":)" + cell("2") + "}"), u"-|2"_s);
    add("unknown column", answer(R"({"z":)" + cell("9") + R"(,"b":)" + cell("2") + "}"), u"-|2"_s);
    add("empty text is bound", answer(R"({"a":)" + cell("") + "}"), u"|-"_s);
    add("rich", rich, richRows);
    add("yes", R"({"head":{},"boolean":true})", u"true"_s);
    add("no, before the head", R"({"boolean":false,"head":{}})", u"false"_s);
    add("half a pair", answer(R"({"a":)" + cell(R"(x\uD83Dy)") + R"(,"b":)" + cell(R"(\uDE00)") + "}"),
        u"x\uFFFDy|\uFFFD"_s);
    add("half a pair at the end", answer(R"({"a":)" + cell(R"(\uD83D)") + "}"), u"\uFFFD|-"_s);
    add("two high halves", answer(R"({"a":)" + cell(R"(\uD83D\uD83D\uDE00)") + "}"), u"\uFFFD😀|-"_s);
    add("half a pair before an escape", answer(R"({"a":)" + cell(R"(\uD83D\n)") + "}"), u"\uFFFD\n|-"_s);
    add("plain line break in a text", answer("{\"a\":" + cell("x\ny") + "}"), u"x\ny|-"_s);

    add("nothing", "");
    add("blank", "  ");
    add("text", "Virtuoso 37000 Error");
    add("markup", "<html><body>Sign in</body></html>");
    add("array", "[]");
    add("string", "\"head\"");
    add("number", "17 ");
    add("empty object", "{}");
    add("head alone", R"({"head":{"vars":["a"]}})");
    add("results alone", R"({"results":{"bindings":[]}})");
    add("no bindings", R"({"head":{"vars":["a"]},"results":{}})");
    add("bindings are an object", R"({"head":{"vars":["a"]},"results":{"bindings":{}}})");
    add("row is a string", answer("\"a\""));
    add("row is a number", answer("1"));
    add("row is an array", answer("[]"));
    add("cell is a string", answer(R"({"a":"x"})"));
    add("cell is an array", answer(R"({"a":[]})"));
    add("value is a number", answer(R"({"a":{"type":"literal","value":1}})"));
    add("value is missing", answer(R"({"a":{"type":"literal"}})"));
    add("type is missing", answer(R"({"a":{"value":"x"}})"));
    add("variable is a number", answer("", "1"));
    add("variables twice", R"({"head":{"vars":["a"],"vars":["a"]},"results":{"bindings":[]}})");
    add("tail", answer("") + "x");
    add("two documents", answer("") + answer(""));
    add("comma at the end", answer(one + ','));
    add("comma at the beginning", answer(',' + one));
    add("no comma", answer(one + one));
    add("no colon", R"({"head" {}})");
    add("two colons", R"({"head"::{}})");
    add("key is a number", R"({1:{}})");
    add("wrong bracket", R"({"head":{"vars":["a"}}})");
    add("one bracket too many", answer("") + "}");
    add("word", R"({"head":nil})");
    add("number with a zero in front", R"({"x":01})");
    add("number without digits", R"({"x":-})");
    add("number without a fraction", R"({"x":1.})");
    add("escape", answer(R"({"a":)" + cell(R"(\x)") + "}"));
    add("code point", answer(R"({"a":)" + cell(R"(\u00g0)") + "}"));
    add("deep", R"({"x":)" + QByteArray(100, '[') + QByteArray(100, ']') + "}");
    add("columns without an end",
        R"({"head":{"vars":[)" + QByteArray("\"a\",").repeated(2000) + R"("b"]},"results":{"bindings":[]}})");
    add("endless number", R"({"x":1)" + QByteArray(5000, '1') + "}");
}

void TestSparqlJsonParser::documents()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, rows);
    const Reading reading = read(document);
    QCOMPARE(reading.error.isNull(), !rows.isNull());
    QCOMPARE(reading.rows, rows.isNull() ? QString() : rows);
}

void TestSparqlJsonParser::datatypes_data()
{
    QTest::addColumn<QByteArray>("cell");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("iri") << QByteArray(R"({"type":"uri","value":"urn:a"})") << QVariant(u"urn:a"_s);
    QTest::newRow("plain") << cell("17") << QVariant(u"17"_s);
    QTest::newRow("string") << typed("17", "string") << QVariant(u"17"_s);
    QTest::newRow("integer") << typed("5000000000", "integer") << QVariant(5000000000LL);
    QTest::newRow("int with a sign") << typed("-3", "int") << QVariant(-3LL);
    QTest::newRow("integer that is none") << typed("3 min", "integer") << QVariant(u"3 min"_s);
    QTest::newRow("decimal") << typed("1.5", "decimal") << QVariant(1.5);
    QTest::newRow("double") << typed("1e3", "double") << QVariant(1000.0);
    QTest::newRow("true") << typed("true", "boolean") << QVariant(true);
    QTest::newRow("1") << typed("1", "boolean") << QVariant(true);
    QTest::newRow("0") << typed("0", "boolean") << QVariant(false);
    QTest::newRow("date") << typed("2024-02-03T04:05:06Z", "dateTime")
                          << QVariant(QDateTime(QDate(2024, 2, 3), QTime(4, 5, 6), QTimeZone::utc()));
    QTest::newRow("somebody's own") << cell("x", R"(,"datatype":"urn:own")") << QVariant(u"x"_s);
}

void TestSparqlJsonParser::datatypes()
{
    QFETCH(QByteArray, cell);
    const Reading reading = read(answer(R"({"a":)" + cell + '}'));
    QCOMPARE(reading.error, QString());
    QTEST(reading.table.value(0, 0), "value");
}

void TestSparqlJsonParser::everySplitGivesTheSame()
{
    for (qsizetype first = 0; first <= rich.size(); ++first) {
        const Reading reading = read(rich, {first});
        QCOMPARE(reading.error + reading.rows, richRows);
    }
    QList<qsizetype> everywhere;
    for (qsizetype at = 1; at < rich.size(); ++at)
        everywhere.append(at);
    QCOMPARE(read(rich, everywhere).rows, richRows);
}

void TestSparqlJsonParser::everyCutIsAnError()
{
    const QByteArray document = rich.trimmed();
    for (qsizetype size = 0; size < document.size(); ++size)
        QVERIFY2(!read(document.first(size)).error.isNull(), document.first(size).constData());
    const QByteArray turned = R"({"results":{"bindings":[]},"head":{"vars":["a"]}})";
    QCOMPARE(read(turned).error, QString());
    for (qsizetype size = 0; size < turned.size(); ++size)
        QVERIFY2(!read(turned.first(size)).error.isNull(), turned.first(size).constData());
}

void TestSparqlJsonParser::randomPiecesGiveTheSame()
{
    QRandomGenerator random(7);
    for (int round = 0; round < 500; ++round) {
        QList<qsizetype> splits;
        for (qsizetype at = random.bounded(40); at < rich.size(); at += random.bounded(40))
            splits.append(at);
        QCOMPARE(read(rich, splits).rows, richRows);
    }
}

void TestSparqlJsonParser::randomDamageNeverEndsBadly()
{
    static const QByteArray dangerous = "{}[]:,\"\\u0eE-+ \n\x80\xff";
    QRandomGenerator random(11);
    int broken = 0;
    for (int round = 0; round < 5000; ++round) {
        QByteArray document = rich;
        for (int i = 0; i <= int(random.bounded(3)); ++i) {
            const qsizetype at = random.bounded(int(document.size()));
            if (random.bounded(2) == 0)
                document[at] = dangerous[random.bounded(int(dangerous.size()))];
            else
                document.remove(at, 1 + random.bounded(20));
        }
        const Reading reading = read(document, {random.bounded(int(document.size()))});
        broken += reading.error.isNull() ? 0 : 1;
        QVERIFY(reading.error.isNull() || reading.table.rows() == 0);
    }
    QVERIFY(broken > 1000);
}

void TestSparqlJsonParser::rowsBeforeTheHead()
{
    const QByteArray document = R"({"results":{"bindings":[{"b":)" + cell(R"(}]\"x)") + R"(,"a":)" + cell("1")
        + R"(}]},"head":{"vars":["a","b"]}})";
    QCOMPARE(read(document).rows, u"1|}]\"x"_s);
    for (qsizetype first = 0; first <= document.size(); ++first)
        QCOMPARE(read(document, {first}).rows, u"1|}]\"x"_s);
    QVERIFY(!read(R"({"results":{"bindings":["x"]},"head":{"vars":["a","b"]}})").error.isNull());
    QVERIFY(!read(R"({"results":{"bindings":[]},"results":{"bindings":[]},"head":{"vars":["a"]}})")
                 .error.isNull());
}

void TestSparqlJsonParser::manyRowsBeforeTheHeadComeInParts()
{
    QByteArray rows = "{}";
    for (int i = 0; i < 30000; ++i)
        rows += R"(,{"a":)" + cell(QByteArray::number(i)) + '}';
    SparqlJsonParser parser;
    QVERIFY(parser.feed(R"({"results":{"bindings":[)" + rows + R"(]},"head":{"vars":["a"]}})"));
    int parts = 1;
    while (parser.finish() == SparqlJsonParser::End::MoreToDo)
        ++parts;
    QVERIFY(parts > 2);
    const RowTable table = parser.takeTable();
    QCOMPARE(table.rows(), 30001);
    QCOMPARE(table.text(30000, 0), u"29999"_s);
}

void TestSparqlJsonParser::irisBecomeNumbers()
{
    ResourceIds ids;
    const int known = ids.idOf(u"urn:known"_s);
    SparqlJsonParser parser({{1}, &ids});
    const QByteArray iri = R"({"type":"uri","value":"urn:)";
    QVERIFY(parser.feed(answer(R"({"a":)" + iri + R"(new"},"b":)" + iri + R"(new"}},{"b":)" + iri
                               + R"(known"}},{"b":)" + cell("urn:known") + "}")));
    const Reading reading = finished(parser);
    QCOMPARE(reading.rows, u"urn:new|%1/-|%2/-|-"_s.arg(ids.idOf(u"urn:new"_s)).arg(known));
    QCOMPARE(reading.table.value(0, 1).typeId(), int(QMetaType::LongLong));
}

void TestSparqlJsonParser::anAnswerGoesOnInAnother()
{
    SparqlJsonParser first;
    QVERIFY(first.feed(answer(R"({"a":)" + cell("1") + '}')));
    Reading reading = finished(first);
    SparqlJsonParser second({}, std::move(reading.table));
    QVERIFY(second.feed(answer(R"({"b":)" + cell("2") + '}')));
    reading = finished(second);
    QCOMPARE(reading.rows, u"1|-/-|2"_s);
    SparqlJsonParser third({}, std::move(reading.table));
    QVERIFY(!third.feed(answer("", R"("a")")));
}

void TestSparqlJsonParser::errorsNameTheByte()
{
    QCOMPARE(read(R"({"head":{"vars":["a"}})").error,
             u"the answer is broken at byte 21: a closing bracket out of place"_s);
    QCOMPARE(read(R"({"head":{"vars")").error, u"the answer was cut off after 15 bytes"_s);
}

QTEST_GUILESS_MAIN(TestSparqlJsonParser)
#include "test_sparqljsonparser.moc"
