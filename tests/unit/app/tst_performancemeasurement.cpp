// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/performancemeasurement.h"

#include <QDateTime>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QByteArray Rule = "------------------------------------------------------------";

// With a file of its own and a clock that stands until it is set.
class TestMeasurement : public PerformanceMeasurement
{
public:
    explicit TestMeasurement(const QString &resultsFile) : PerformanceMeasurement(resultsFile) { }
    QTime time{12, 0, 0};

protected:
    [[nodiscard]] QTime now() const override { return time; }
};

} // namespace

class PerformanceMeasurementTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void absentFileIsLeftAbsentAndTheFirstEntryCreatesIt();
    void fileThatIsThereBeginsAnewWithAHeader();
    void entryIsExact();
    void entriesAreAppended();
    void stopOfAnUnknownIdWritesNothing();
    void repeatedStartOverwritesAllThree();
    void stoppedTwiceIsWrittenTwice();
    void overMidnightTheTimeOfDayCounts();
    void lastTimesAreKept();
    void fileThatCannotBeWrittenIsSurvived();
    void oneInstance();

private:
    [[nodiscard]] QByteArray content() const
    {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

void PerformanceMeasurementTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(u"performance_results.txt"_s);
}

void PerformanceMeasurementTest::absentFileIsLeftAbsentAndTheFirstEntryCreatesIt()
{
    TestMeasurement measurement(m_path);
    QVERIFY(!QFileInfo::exists(m_path));
    measurement.start(u"list"_s, 500, u"List shown"_s);
    QVERIFY(!QFileInfo::exists(m_path));
    measurement.stop(u"list"_s);
    QVERIFY2(content().startsWith(Rule + "\nMeasure id: "), content()); // no header
}

void PerformanceMeasurementTest::fileThatIsThereBeginsAnewWithAHeader()
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("what was measured the last time\n");
    file.close();
    const QDateTime before = QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch());
    TestMeasurement measurement(m_path);
    const QString header = QString::fromUtf8(content());
    static const QRegularExpression shape(u"^\n\nMeasures performed: (.+)\n\n$"_s);
    const QRegularExpressionMatch match = shape.match(header);
    QVERIFY2(match.hasMatch(), qPrintable(header));
    const QDateTime written = QDateTime::fromString(match.captured(1), Qt::TextDate);
    QVERIFY2(written >= before && written <= QDateTime::currentDateTime(), qPrintable(match.captured(1)));
}

void PerformanceMeasurementTest::entryIsExact()
{
    TestMeasurement measurement(m_path);
    measurement.start(u"list"_s, 500, u"List shown, café"_s);
    measurement.time = QTime(12, 0, 1, 250);
    measurement.stop(u"list"_s);
    QCOMPARE(Rule.size(), 60);
    QCOMPARE(
        content(),
        Rule + "\nMeasure id: list\nDescription: List shown, café\nResult: 1250ms\nRequired: <500 ms\n\n");
}

void PerformanceMeasurementTest::entriesAreAppended()
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    TestMeasurement measurement(m_path);
    measurement.start(u"a"_s, 1, u"first"_s);
    measurement.start(u"b"_s, 2, u"second"_s);
    measurement.time = QTime(12, 0, 0, 7);
    measurement.stop(u"b"_s);
    measurement.stop(u"a"_s);
    const QByteArray text = content();
    QVERIFY2(text.startsWith("\n\nMeasures performed: "), text);
    QVERIFY2(text.endsWith("\n\n" + Rule
                           + "\nMeasure id: b\nDescription: second\nResult: 7ms\nRequired: <2 ms\n\n" + Rule
                           + "\nMeasure id: a\nDescription: first\nResult: 7ms\nRequired: <1 ms\n\n"),
             text);
}

void PerformanceMeasurementTest::stopOfAnUnknownIdWritesNothing()
{
    TestMeasurement measurement(m_path);
    measurement.stop(u"nothing"_s);
    QVERIFY(!QFileInfo::exists(m_path));
    QCOMPARE(measurement.lastStop(), -1);
}

void PerformanceMeasurementTest::repeatedStartOverwritesAllThree()
{
    TestMeasurement measurement(m_path);
    measurement.start(u"list"_s, 500, u"old"_s);
    measurement.time = QTime(12, 0, 10);
    measurement.start(u"list"_s, 700, u"new"_s);
    measurement.time = QTime(12, 0, 11);
    measurement.stop(u"list"_s);
    QCOMPARE(content(), Rule + "\nMeasure id: list\nDescription: new\nResult: 1000ms\nRequired: <700 ms\n\n");
}

void PerformanceMeasurementTest::stoppedTwiceIsWrittenTwice()
{
    TestMeasurement measurement(m_path);
    measurement.start(u"list"_s, 500, u"d"_s);
    measurement.time = QTime(12, 0, 1);
    measurement.stop(u"list"_s);
    measurement.time = QTime(12, 0, 2);
    measurement.stop(u"list"_s);
    QVERIFY(content().contains("Result: 1000ms\n"));
    QVERIFY(content().contains("Result: 2000ms\n"));
}

void PerformanceMeasurementTest::overMidnightTheTimeOfDayCounts()
{
    TestMeasurement measurement(m_path);
    measurement.time = QTime(23, 59, 59);
    measurement.start(u"night"_s, 500, u"d"_s);
    measurement.time = QTime(0, 0, 1);
    measurement.stop(u"night"_s);
    QVERIFY2(content().contains("Result: -86398000ms\n"), content());
}

void PerformanceMeasurementTest::lastTimesAreKept()
{
    TestMeasurement measurement(m_path);
    QCOMPARE(measurement.lastStart(), -1);
    QCOMPARE(measurement.lastStop(), -1);
    measurement.time = QTime(0, 0, 5);
    measurement.start(u"a"_s, 1, {});
    measurement.time = QTime(0, 0, 6);
    measurement.stop(u"a"_s);
    QCOMPARE(measurement.lastStart(), 5000);
    QCOMPARE(measurement.lastStop(), 6000);
}

void PerformanceMeasurementTest::fileThatCannotBeWrittenIsSurvived()
{
    TestMeasurement measurement(m_folder->filePath(u"no such folder/results.txt"_s));
    measurement.start(u"a"_s, 1, {});
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(u"^void PerformanceMeasurement::stop\\(const QString&\\)"_s));
    measurement.stop(u"a"_s);
}

void PerformanceMeasurementTest::oneInstance()
{
    QCOMPARE(PerformanceMeasurement::instance(), PerformanceMeasurement::instance());
    QCOMPARE(PerformanceMeasurement::instance()->parent(), nullptr);
    QCOMPARE(PerformanceMeasurement::instance()->resultsFile(), u"/home/user/performance_results.txt"_s);
}

QTEST_GUILESS_MAIN(PerformanceMeasurementTest)
#include "tst_performancemeasurement.moc"
