// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/libraryrows.h"
#include "platform/sparql/loosetext.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int columns = VideoColumn::Count;

QString textOf(QRandomGenerator &random, int kinds)
{
    return u"ä%1"_s.arg(random.bounded(kinds));
}

// Ten texts, of which the last two are empty as those of a row from the store are.
QStringList randomRow(QRandomGenerator &random)
{
    QStringList row;
    for (int column = 0; column < columns; ++column)
        row.append(column < VideoColumn::RowSize ? textOf(random, 40) : QString());
    return row;
}

LibraryRows::Table tableOf(const QList<QStringList> &rows)
{
    RowTable table(VideoColumn::RowSize);
    for (const QStringList &row : rows) {
        for (int column = 0; column < VideoColumn::RowSize; ++column) {
            const auto type = row.at(column).isNull() ? RowTable::Type::Unbound : RowTable::Type::Text;
            if (!table.append(type, row.at(column).toUtf8()))
                qFatal("the table is full");
        }
    }
    return std::make_shared<const RowTable>(std::move(table));
}

} // namespace

// Rows packed as they came and rows with texts of their own must say what a plain list of rows says.
class TestLibraryRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyRunOfChangesAgreesWithAPlainList_data();
    void anyRunOfChangesAgreesWithAPlainList();
    void aMissingTitleIsTheBaseNameOfTheFile();
    void findsAmongThousands();
    void rowsWithoutATextDoNotSlowTheOthers();
    void halfAPairOfSurrogatesIsFound();

private:
    // The first disagreement as text; empty when there is none.
    static QString check(const LibraryRows &rows, const QList<QStringList> &plain)
    {
        if (rows.count() != plain.size())
            return u"%1 rows instead of %2"_s.arg(rows.count()).arg(plain.size());
        for (int row = 0; row < plain.size(); ++row) {
            for (int column = 0; column < columns; ++column) {
                if (rows.text(row, column) != plain.at(row).at(column))
                    return u"row %1, column %2: '%3'"_s.arg(row).arg(column).arg(rows.text(row, column));
            }
        }
        for (const int column : {VideoColumn::Urn, VideoColumn::Url, VideoColumn::TrackerId}) {
            for (int kind = 0; kind < 41; ++kind) {
                const QString text = u"ä%1"_s.arg(kind);
                QList<int> wanted;
                for (int row = 0; row < plain.size(); ++row) {
                    if (plain.at(row).at(column) == text)
                        wanted.append(row);
                }
                if (rows.findAll(column, text) != wanted
                    || rows.find(column, text) != (wanted.isEmpty() ? -1 : wanted.first()))
                    return u"'%1' in column %2"_s.arg(text).arg(column);
            }
        }
        return {};
    }
};

void TestLibraryRows::anyRunOfChangesAgreesWithAPlainList_data()
{
    QTest::addColumn<int>("loaded");
    QTest::newRow("none") << 0;
    QTest::newRow("some") << 50;
}

void TestLibraryRows::anyRunOfChangesAgreesWithAPlainList()
{
    QFETCH(int, loaded);
    QRandomGenerator random(5);
    QList<QStringList> plain;
    for (int row = 0; row < loaded; ++row)
        plain.append(randomRow(random));
    LibraryRows rows;
    if (loaded > 0)
        rows = LibraryRows(tableOf(plain), {}, true);
    for (int step = 0; step < 400; ++step) {
        const int row = plain.isEmpty() ? -1 : random.bounded(int(plain.size()));
        switch (random.bounded(row < 0 ? 1 : 5)) {
        case 0: {
            QStringList added = random.bounded(2) != 0 && row >= 0 ? plain.at(row) : randomRow(random);
            rows.append(added.mid(0, random.bounded(2) != 0 ? 8 : 10));
            for (const int column : {8, 9})
                added[column] = rows.text(rows.count() - 1, column);
            plain.append(added);
            break;
        }
        case 1: {
            const QStringList changed = randomRow(random);
            rows.replace(row, changed);
            for (int column = 0; column < VideoColumn::RowSize; ++column)
                plain[row][column] = changed.at(column);
            break;
        }
        case 2:
            plain[row][VideoColumn::PauseThumbnail] = textOf(random, 3);
            rows.setThumbnail(row, VideoColumn::PauseThumbnail,
                              plain.at(row).at(VideoColumn::PauseThumbnail));
            break;
        case 3: {
            const QStringList removed = plain.at(row);
            rows.remove(rows.equalRows(row));
            plain.removeAll(removed);
            break;
        }
        default:
            rows.remove(row);
            plain.removeAt(row);
        }
        const QString fault = check(rows, plain);
        QVERIFY2(fault.isEmpty(), qPrintable(u"step %1: %2"_s.arg(step).arg(fault)));
    }
}

void TestLibraryRows::aMissingTitleIsTheBaseNameOfTheFile()
{
    QStringList row{u"urn:1"_s, QString(), u"holiday.part1.mp4"_s, {}, {}, {}, u"file:///1"_s, u"1"_s};
    const LibraryRows::Table table = tableOf({row});
    QCOMPARE(LibraryRows(table, {}, false).text(0, VideoColumn::Title), u"holiday.part1"_s);
    QCOMPARE(LibraryRows(table, {}, true).text(0, VideoColumn::Title), QString());
    LibraryRows rows(table, {}, false);
    rows.setThumbnail(0, VideoColumn::DefaultThumbnail, u"/t.jpeg"_s);
    QCOMPARE(rows.text(0, VideoColumn::Title), u"holiday.part1"_s);
    QVERIFY(rows.text(0, columns).isNull() && rows.text(1, 0).isNull() && rows.text(-1, 0).isNull());
}

void TestLibraryRows::findsAmongThousands()
{
    constexpr int loaded = 3000;
    QList<QStringList> plain;
    for (int i = 0; i < 2 * loaded; ++i)
        plain.append(
            {u"urn:%1"_s.arg(i), u"t"_s, u"f"_s, {}, {}, {}, u"url:%1"_s.arg(i), QString::number(i)});
    LibraryRows rows(tableOf(plain.mid(0, loaded)), {}, true);
    for (int i = loaded; i < plain.size(); ++i)
        rows.append(plain.at(i));
    QList<int> odd;
    for (int i = 1; i < plain.size(); i += 2)
        odd.append(i);
    rows.remove(odd);
    for (int i = 0; i < plain.size(); ++i) {
        const int row = i % 2 == 0 ? i / 2 : -1;
        QCOMPARE(rows.find(VideoColumn::Urn, u"urn:%1"_s.arg(i)), row);
        QCOMPARE(rows.find(VideoColumn::TrackerId, QString::number(i)), row);
    }
}

// Each of them in the way of the next would be hundreds of thousands of millions of steps.
void TestLibraryRows::rowsWithoutATextDoNotSlowTheOthers()
{
    constexpr int count = 400000;
    RowTable table(VideoColumn::RowSize);
    for (int row = 0; row < count; ++row) {
        for (int column = 0; column < VideoColumn::RowSize; ++column) {
            const bool isUrn = column == VideoColumn::Urn;
            const QByteArray text = isUrn ? "urn:" + QByteArray::number(row) : QByteArray();
            QVERIFY(table.append(isUrn ? RowTable::Type::Text : RowTable::Type::Unbound, text));
        }
    }
    LibraryRows rows(std::make_shared<const RowTable>(std::move(table)), {}, true);
    QCOMPARE(rows.find(VideoColumn::Urn, u"urn:%1"_s.arg(count - 1)), count - 1);
    QCOMPARE(rows.find(VideoColumn::Url, QString()), 0);
    QCOMPARE(rows.find(VideoColumn::Url, u"file:///1"_s), -1);
    rows.remove(0);
    rows.replace(1, {u"urn:2"_s, {}, {}, {}, {}, {}, u"file:///2"_s, u"2"_s});
    QCOMPARE(rows.find(VideoColumn::Url, u""_s), 0);
    QCOMPARE(rows.find(VideoColumn::Url, u"file:///2"_s), 1);
    QCOMPARE(rows.findAll(VideoColumn::TrackerId, QString()).size(), count - 2);
}

void TestLibraryRows::halfAPairOfSurrogatesIsFound()
{
    const QString half = u"file:///"_s + QChar(0xd83d);
    const QStringList row{u"urn:1"_s, {}, {}, {}, {}, {}, half, u"1"_s};
    RowTable table(VideoColumn::RowSize);
    for (const QString &text : row)
        QVERIFY(table.append(RowTable::Type::Text, toLooseUtf8(text)));
    LibraryRows rows(std::make_shared<const RowTable>(std::move(table)), {}, true);
    QCOMPARE(rows.find(VideoColumn::Url, half), 0);
    QCOMPARE(rows.find(VideoColumn::Url, u"file:///?"_s), -1);
    rows.append(row);
    QCOMPARE(rows.findAll(VideoColumn::Url, half), (QList<int>{0, 1}));
    QCOMPARE(rows.find(VideoColumn::Url, u"file:///?"_s), -1);
}

QTEST_GUILESS_MAIN(TestLibraryRows)
#include "test_libraryrows.moc"
