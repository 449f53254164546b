// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/librarysnapshot.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using Row = LibrarySnapshot::Row;

namespace {

QString names(LibrarySnapshot::Properties properties)
{
    QString text;
    text += properties & LibrarySnapshot::Title ? u"t"_s : QString();
    text += properties & LibrarySnapshot::Position ? u"p"_s : QString();
    text += properties & LibrarySnapshot::FileName ? u"f"_s : QString();
    return text;
}

// "+2 -3 1:tp(t>p)": added, removed, and changed with what it had and has.
QString textOf(const LibrarySnapshot::Differences &differences)
{
    QStringList words;
    for (const int id : differences.added)
        words.append(u"+%1"_s.arg(id));
    for (const int id : differences.removed)
        words.append(u"-%1"_s.arg(id));
    for (const LibrarySnapshot::Change &change : differences.changed)
        words.append(u"%1:%2(%3>%4)"_s.arg(QString::number(change.id), names(change.changed),
                                           names(change.had), names(change.has)));
    return words.join(u' ');
}

} // namespace

class TestLibrarySnapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhatIsOther_data();
    void tellsWhatIsOther();
    void rowsOfOneVideoCountTogetherInAnyOrder();
    void anIncompleteAnswerRemovesNothing();
    void otherGroupsStay();
    void whatNoAnswerNamedIsTakenOnce();
    void aMillionVideosTakeSixteenMegabytes();
};

void TestLibrarySnapshot::tellsWhatIsOther_data()
{
    QTest::addColumn<QList<Row>>("before");
    QTest::addColumn<QList<Row>>("now");
    QTest::addColumn<QString>("expected");

    const Row one{1, u"Lake"_s, u"17"_s, u"lake.mp4"_s, 5};
    const auto other = [one](auto member, const QString &text) {
        Row row = one;
        row.*member = text;
        return row;
    };
    QTest::newRow("nothing") << QList<Row>{one} << QList<Row>{one} << u""_s;
    QTest::newRow("new") << QList<Row>{} << QList<Row>{one} << u"+1"_s;
    QTest::newRow("gone") << QList<Row>{one} << QList<Row>{} << u"-1"_s;
    QTest::newRow("title") << QList<Row>{one} << QList<Row>{other(&Row::title, u"Lane"_s)} << u"1:t(t>t)"_s;
    QTest::newRow("title came") << QList<Row>{other(&Row::title, u""_s)} << QList<Row>{one} << u"1:t(>t)"_s;
    QTest::newRow("position") << QList<Row>{one} << QList<Row>{other(&Row::position, u"18"_s)}
                              << u"1:p(p>p)"_s;
    QTest::newRow("position went") << QList<Row>{one} << QList<Row>{other(&Row::position, u""_s)}
                                   << u"1:p(p>)"_s;
    QTest::newRow("file name") << QList<Row>{one} << QList<Row>{other(&Row::fileName, u"lane.mp4"_s)}
                               << u"1:f(f>f)"_s;
    QTest::newRow("two of them") << QList<Row>{one} << QList<Row>{{1, u"Lane"_s, {}, u"lake.mp4"_s, 5}}
                                 << u"1:tp(tp>t)"_s;
    QTest::newRow("one for another") << QList<Row>{one} << QList<Row>{{2, u"Lake"_s, {}, u"lake.mp4"_s, 5}}
                                     << u"+2 -1"_s;
    QTest::newRow("without a number")
        << QList<Row>{one} << QList<Row>{one, {0, u"x"_s, {}, u"x"_s, 5}} << u""_s;
}

void TestLibrarySnapshot::tellsWhatIsOther()
{
    QFETCH(const QList<Row>, before);
    QFETCH(const QList<Row>, now);
    LibrarySnapshot snapshot;
    for (const Row &row : before)
        snapshot.add(row);
    QTEST(textOf(snapshot.compare(now, {5}, true)), "expected");
    QCOMPARE(textOf(snapshot.compare(now, {5}, true)), QString());
}

void TestLibrarySnapshot::rowsOfOneVideoCountTogetherInAnyOrder()
{
    const Row first{1, u"Lake"_s, {}, u"a.mp4"_s, 5};
    const Row second{1, u"See"_s, {}, u"a.mp4"_s, 5};
    LibrarySnapshot snapshot;
    snapshot.add(first);
    snapshot.add(second);
    QCOMPARE(snapshot.count(), 1);
    QCOMPARE(textOf(snapshot.compare({second, first}, {5}, true)), QString());
    QCOMPARE(textOf(snapshot.compare({first}, {5}, true)), u"1:tf(tf>tf)"_s);
}

void TestLibrarySnapshot::anIncompleteAnswerRemovesNothing()
{
    LibrarySnapshot snapshot;
    snapshot.add({1, u"Lake"_s, {}, u"a.mp4"_s, 5});
    QCOMPARE(textOf(snapshot.compare({{2, u"Sea"_s, {}, u"b.mp4"_s, 5}}, {5}, false)), u"+2"_s);
    QCOMPARE(snapshot.count(), 2);
}

void TestLibrarySnapshot::otherGroupsStay()
{
    LibrarySnapshot snapshot;
    snapshot.add({1, u"Lake"_s, {}, u"a.mp4"_s, 5});
    snapshot.add({2, u"Sea"_s, {}, u"b.mp4"_s, 6});
    QCOMPARE(textOf(snapshot.compare({}, {6}, true)), u"-2"_s);
    QCOMPARE(snapshot.count(), 1);
}

void TestLibrarySnapshot::whatNoAnswerNamedIsTakenOnce()
{
    LibrarySnapshot snapshot;
    snapshot.add({1, u"Lake"_s, {}, u"a.mp4"_s});
    snapshot.add({2, u"Sea"_s, {}, u"b.mp4"_s});
    QCOMPARE(textOf(snapshot.compare({{2, u"Sea"_s, {}, u"b.mp4"_s, 6}}, {6}, true)), QString());
    QCOMPARE(snapshot.takeUngrouped(), QList<int>{1});
    QCOMPARE(snapshot.takeUngrouped(), QList<int>());
    QCOMPARE(snapshot.count(), 1);
}

void TestLibrarySnapshot::aMillionVideosTakeSixteenMegabytes()
{
    LibrarySnapshot snapshot;
    for (int id = 1; id <= 1'000'000; ++id)
        snapshot.add({id, u"Title"_s, {}, u"a.mp4"_s, 5});
    QCOMPARE(snapshot.count(), 1'000'000);
    // The vector grows by halves or doubles.
    QVERIFY2(snapshot.bytes() <= 2 * 16'000'016, qPrintable(QString::number(snapshot.bytes())));
}

QTEST_GUILESS_MAIN(TestLibrarySnapshot)
#include "test_librarysnapshot.moc"
