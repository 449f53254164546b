// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/sparql/rowtable.h"

#include <QDateTime>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestRowTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyTableHasNoRows();
    void cellsConvert();
    void outOfRangeIsInvalid();
    void unboundIsNullAndEmptyIsNot();
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
             QDateTime(QDate(2024, 2, 3), QTime(3, 5, 6, 250), Qt::UTC));
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

QTEST_APPLESS_MAIN(TestRowTable)
#include "test_rowtable.moc"
