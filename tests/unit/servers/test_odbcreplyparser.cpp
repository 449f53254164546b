// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/odbcreplyparser.h"

#include "platform/servers/resourceids.h"

#include <QRandomGenerator>
#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;
using namespace OdbcProtocol;

namespace {

using State = OdbcReplyParser::State;

template <class Value> QByteArray bytesOf(const Value &value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

QByteArray frame(quint32 kind, const QByteArray &bytes = {})
{
    return bytesOf(Header{kind, quint32(bytes.size())}) + bytes;
}

QByteArray frame(Answer kind, const QByteArray &bytes = {})
{
    return frame(quint32(kind), bytes);
}

QByteArray columns(quint32 count)
{
    return frame(Answer::Columns, bytesOf(count));
}

QByteArray cell(CellType type, const QByteArray &utf8 = {})
{
    return bytesOf(CellHeader{type, quint32(utf8.size())}) + utf8;
}

QByteArray failure(quint32 kind, const QByteArray &text)
{
    return frame(Answer::Failed, bytesOf(kind) + text);
}

QByteArray wholeAnswer()
{
    return frame(Answer::Started) + columns(3)
        + frame(Answer::Cells,
                cell(CellType::Text, "urn:a") + cell(CellType::Text, "Ψ🎬") + cell(CellType::Integer, "61")
                    + cell(CellType::Text, "urn:b"))
        + frame(Answer::Cells, cell(CellType::Unbound) + cell(CellType::DateTime, "2001-02-03T04:05:06Z"))
        + frame(Answer::Done);
}

QString textOf(const RowTable &table)
{
    QStringList rows;
    for (int row = 0; row < table.rows(); ++row) {
        QStringList cells;
        for (int column = 0; column < table.columns(); ++column) {
            const QString text = table.text(row, column);
            cells += text.isNull() ? u"-"_s : text;
        }
        rows += cells.join(u'|');
    }
    return rows.join(u'\n');
}

} // namespace

class TestOdbcReplyParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAnAnswerCutAnywhere();
    void numbersIris();
    void tellsWhatFailed();
    void knowsWhetherTheServerSawIt();
    void refuses_data();
    void refuses();
    void survivesAnyBytes();
};

void TestOdbcReplyParser::readsAnAnswerCutAnywhere()
{
    const QByteArray answer = wholeAnswer();
    for (qsizetype cut = 1; cut < answer.size(); ++cut) {
        ResourceIds ids;
        OdbcReplyParser parser(false, {}, ids);
        QCOMPARE(parser.feed(answer.first(cut)), State::Incomplete);
        QCOMPARE(parser.feed(answer.sliced(cut)), State::Done);
        const RowTable rows = parser.takeRows();
        QCOMPARE(textOf(rows), u"urn:a|Ψ🎬|61\nurn:b|-|2001-02-03T04:05:06Z"_s);
        QCOMPARE(rows.value(0, 2), QVariant(qlonglong(61)));
        QCOMPARE(rows.value(1, 2).toDateTime(),
                 QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6), QTimeZone::utc()));
    }
}

void TestOdbcReplyParser::numbersIris()
{
    ResourceIds ids;
    const int known = ids.idOf(u"urn:b"_s);
    OdbcReplyParser parser(false, {0}, ids);
    QCOMPARE(parser.feed(wholeAnswer()), State::Done);
    const RowTable rows = parser.takeRows();
    QCOMPARE(rows.value(0, 0), QVariant(qlonglong(ids.idOf(u"urn:a"_s))));
    QCOMPARE(rows.value(1, 0), QVariant(qlonglong(known)));
}

void TestOdbcReplyParser::tellsWhatFailed()
{
    ResourceIds ids;
    OdbcReplyParser parser(true, {}, ids);
    QCOMPARE(parser.feed(frame(Answer::Started)), State::Incomplete);
    QCOMPARE(parser.feed(failure(quint32(Failure::Busy), "deadlock — später")), State::Failed);
    QCOMPARE(parser.failure(), Failure::Busy);
    QCOMPARE(parser.error(), u"deadlock — später"_s);
}

void TestOdbcReplyParser::knowsWhetherTheServerSawIt()
{
    ResourceIds ids;
    OdbcReplyParser parser(true, {}, ids);
    QVERIFY(!parser.isStarted());
    QCOMPARE(parser.feed(frame(Answer::Started)), State::Incomplete);
    QVERIFY(parser.isStarted());
}

void TestOdbcReplyParser::refuses_data()
{
    QTest::addColumn<bool>("isUpdate");
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray started = frame(Answer::Started);
    const QByteArray one = cell(CellType::Text, "x");
    QTest::newRow("a kind that is none") << false << frame(99);
    QTest::newRow("a request") << false << frame(quint32(Request::Query));
    QTest::newRow("a frame that is too long") << false << bytesOf(Header{quint32(Answer::Cells), 0xffffffff});
    QTest::newRow("done before it started") << true << frame(Answer::Done);
    QTest::newRow("started twice") << true << started + started;
    QTest::newRow("started with something") << true << frame(Answer::Started, "x");
    QTest::newRow("done without columns") << false << started + frame(Answer::Done);
    QTest::newRow("done with something") << true << started + frame(Answer::Done, "x");
    QTest::newRow("columns of an update") << true << started + columns(1);
    QTest::newRow("columns twice") << false << started + columns(1) + columns(1);
    QTest::newRow("columns before it started") << false << columns(1);
    QTest::newRow("columns cut short") << false << started + frame(Answer::Columns, "ab");
    QTest::newRow("far too many columns") << false << started + columns(0x7fffffff);
    QTest::newRow("cells before the columns") << false << started + frame(Answer::Cells, one);
    QTest::newRow("cells of no column") << false << started + columns(0) + frame(Answer::Cells, one);
    QTest::newRow("a cell of no type")
        << false << started + columns(1) + frame(Answer::Cells, cell(CellType(77), "x"));
    QTest::newRow("an unbound cell with a text")
        << false << started + columns(1) + frame(Answer::Cells, cell(CellType::Unbound, "x"));
    QTest::newRow("a cell longer than its frame")
        << false
        << started + columns(1) + frame(Answer::Cells, bytesOf(CellHeader{CellType::Text, 5}) + "abc");
    QTest::newRow("half a cell header") << false << started + columns(1) + frame(Answer::Cells, "abc");
    QTest::newRow("half a row") << false
                                << started + columns(2) + frame(Answer::Cells, one) + frame(Answer::Done);
    QTest::newRow("more after the end") << true << started + frame(Answer::Done) + "x";
    QTest::newRow("failed for no reason") << true << frame(Answer::Failed);
    QTest::newRow("failed in no known way") << true << failure(9, "x");
}

void TestOdbcReplyParser::refuses()
{
    QFETCH(bool, isUpdate);
    QFETCH(QByteArray, bytes);
    ResourceIds ids;
    OdbcReplyParser parser(isUpdate, {}, ids);
    QCOMPARE(parser.feed(bytes), State::Invalid);
}

void TestOdbcReplyParser::survivesAnyBytes()
{
    QRandomGenerator random(7);
    const QByteArray answer = wholeAnswer();
    for (int trial = 0; trial < 20000; ++trial) {
        QByteArray bytes = answer;
        for (int changes = random.bounded(1, 4); changes > 0; --changes)
            bytes[random.bounded(bytes.size())] = char(random.bounded(256));
        ResourceIds ids;
        OdbcReplyParser parser(false, {0}, ids);
        State state = State::Incomplete;
        for (qsizetype at = 0; at < bytes.size() && state == State::Incomplete;) {
            const qsizetype piece = qMin<qsizetype>(bytes.size() - at, random.bounded(1, 40));
            state = parser.feed(bytes.sliced(at, piece));
            at += piece;
        }
        // Whatever it made of it can be read.
        const RowTable rows = parser.takeRows();
        QVERIFY(rows.rows() <= 8);
        (void)textOf(rows);
    }
}

QTEST_GUILESS_MAIN(TestOdbcReplyParser)

#include "test_odbcreplyparser.moc"
