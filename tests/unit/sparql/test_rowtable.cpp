// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/sparql/rowtable.h"

#include <QDateTime>
#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

class TestRowTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyTableHasNoRows();
    void cellsConvert();
    void outOfRangeIsInvalid();
    void unboundIsNullAndEmptyIsNot();
    void repeatedRowsAreLeftOut_data();
    void repeatedRowsAreLeftOut();
};

void TestRowTable::emptyTableHasNoRows()
{
    QCOMPARE(RowTable().rows(), 0);
    QCOMPARE(RowTable(3).rows(), 0);
    QVERIFY(!RowTable(3).value(0, 0).isValid());
}

void TestRowTable::cellsConvert()
{
    using Type = RowTable::Type;
    RowTable table(6);
    const std::pair<Type, QByteArray> cells[] = {{Type::Text, "Äpfel \xF0\x9F\x8E\xAC"},
                                                 {Type::Integer, "-9000000000"},
                                                 {Type::Double, "2.5"},
                                                 {Type::DateTime, "2024-02-03T04:05:06.250+01:00"},
                                                 {Type::Boolean, "true"},
                                                 {Type::DateTime, "some day"}};
    for (const auto &[type, text] : cells)
        QVERIFY(table.append(type, text));
    QCOMPARE(table.rows(), 1);
    QCOMPARE(table.value(0, 0).toString(), u"Äpfel \U0001F3AC"_s);
    QCOMPARE(table.value(0, 1).toLongLong(), -9000000000LL);
    QCOMPARE(table.value(0, 1).toString(), u"-9000000000"_s);
    QCOMPARE(table.text(0, 1), u"-9000000000"_s);
    QCOMPARE(table.value(0, 2).toDouble(), 2.5);
    QCOMPARE(table.value(0, 3).toDateTime().toUTC(),
             QDateTime(QDate(2024, 2, 3), QTime(3, 5, 6, 250), QTimeZone::utc()));
    QCOMPARE(table.value(0, 4).toBool(), true);
    QCOMPARE(table.value(0, 5).toString(), u"some day"_s);
}

void TestRowTable::outOfRangeIsInvalid()
{
    RowTable table(2);
    for (const char *text : {"a", "b", "c", "d"})
        QVERIFY(table.append(RowTable::Type::Text, text));
    QCOMPARE(table.rows(), 2);
    QCOMPARE(table.text(1, 0), u"c"_s);
    for (const auto &[row, column] : {std::pair(-1, 0), std::pair(2, 0), std::pair(0, -1), std::pair(0, 2)}) {
        QVERIFY(!table.value(row, column).isValid());
        QVERIFY(table.text(row, column).isNull());
    }
}

void TestRowTable::unboundIsNullAndEmptyIsNot()
{
    RowTable table(2);
    QVERIFY(table.append(RowTable::Type::Unbound, {}));
    QVERIFY(table.append(RowTable::Type::Text, ""));
    QVERIFY(table.text(0, 0).isNull());
    QVERIFY(!table.value(0, 0).isValid());
    QVERIFY(table.text(0, 1).isEmpty() && !table.text(0, 1).isNull());
    QVERIFY(table.value(0, 1).isValid());
}

// A server may hold several titles of one video: it is one video all the same.
void TestRowTable::repeatedRowsAreLeftOut_data()
{
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("kept");
    QTest::newRow("nothing") << u""_s << u""_s;
    QTest::newRow("all different") << u"a 1 bb 2 ccc 3"_s << u"a 1 bb 2 ccc 3"_s;
    QTest::newRow("one behind the other") << u"a 1 bb 1 ccc 2"_s << u"a 1 ccc 2"_s;
    QTest::newRow("far apart") << u"aaa 9 b 1 cc 2 dddd 9 e 1 f 3"_s << u"aaa 9 b 1 cc 2 f 3"_s;
    QTest::newRow("all the same") << u"aaa 7 b 7 cc 7"_s << u"aaa 7"_s;
    QTest::newRow("without a number") << u"a - b - c 0 d 0 e 1 f 1"_s << u"a - b - c 0 d 0 e 1"_s;
}

void TestRowTable::repeatedRowsAreLeftOut()
{
    using Type = RowTable::Type;
    QFETCH(const QString, rows);
    QFETCH(const QString, kept);
    RowTable table(2);
    for (const QString &cell : rows.split(u' ', Qt::SkipEmptyParts))
        QVERIFY(
            table.append(cell == u"-"_s ? Type::Unbound : Type::Text, cell == u"-"_s ? "" : cell.toUtf8()));
    const RowTable whole = table;
    const auto written = [](const RowTable &of) {
        QStringList cells;
        for (int row = 0; row < of.rows(); ++row)
            cells << of.text(row, 0) << (of.value(row, 1).isValid() ? of.text(row, 1) : u"-"_s);
        return cells.join(u' ');
    };
    table.removeRepeated(1);
    QCOMPARE(written(table), kept);
    // The rest goes on behind what is left.
    QVERIFY(table.append(Type::Text, "end") && table.append(Type::Integer, "99"));
    QCOMPARE(written(table).trimmed(), (kept + u" end 99"_s).trimmed());
    QCOMPARE(written(whole), rows);
    table.removeRepeated(2);
    table.removeRepeated(-1);
    QCOMPARE(written(table).trimmed(), (kept + u" end 99"_s).trimmed());
}

QTEST_APPLESS_MAIN(TestRowTable)
#include "test_rowtable.moc"
