// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/sparql/quadgatherer.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

namespace {

using Quad = ChangeNotifier::Quad;
using Quads = QuadGatherer::Quads;

constexpr int type = 1;
constexpr int videoClass = 2;
constexpr int title = 3;

Quad video(int subject)
{
    return {0, subject, type, videoClass};
}

Quad literal(int subject)
{
    return {0, subject, title, -1};
}

Quads handedOn(const QSignalSpy &spy, int delivery, int list)
{
    return spy.value(delivery).value(list).value<Quads>();
}

} // namespace

class TestQuadGatherer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstAdditionAtOnce();
    void longScanIsGathered();
    void deletionsAndEditsAtOnce();
    void whatIsToldOfANewResourceWaitsWithIt();
    void whatIsGoneAgainIsNotTold();
    void clearForgets();
    void nothingInNothingOut();

private:
    static constexpr int intervalMs = 150;
};

void TestQuadGatherer::firstAdditionAtOnce()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    gatherer.take({}, {video(1), literal(1)});
    QCOMPARE(ready.size(), 1);
    QVERIFY(handedOn(ready, 0, 1) == Quads({video(1), literal(1)}));
}

// Files are found one after the other, faster than a reader who waits for a pause would ever see one.
void TestQuadGatherer::longScanIsGathered()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    QTimer scan;
    int found = 0;
    connect(&scan, &QTimer::timeout, this, [&] { gatherer.take({}, {video(++found)}); });
    QElapsedTimer clock;
    clock.start();
    scan.start(5);
    QTRY_VERIFY(found >= 100);
    scan.stop();
    QTRY_COMPARE(handedOn(ready, int(ready.size()) - 1, 1).constLast().subject, found);
    QVERIFY(ready.size() <= 2 + clock.elapsed() / intervalMs);
    QVERIFY(ready.size() >= 3);
    QList<int> subjects;
    for (int i = 0; i < ready.size(); ++i) {
        for (const Quad &quad : handedOn(ready, i, 1))
            subjects.append(quad.subject);
    }
    QCOMPARE(subjects.size(), found);
    QVERIFY(std::is_sorted(subjects.begin(), subjects.end()));
}

void TestQuadGatherer::deletionsAndEditsAtOnce()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    gatherer.take({}, {video(1)});
    gatherer.take({video(7)}, {});
    gatherer.take({literal(8)}, {literal(8)});
    QCOMPARE(ready.size(), 3);
    QVERIFY(handedOn(ready, 1, 0) == Quads({video(7)}));
    QVERIFY(handedOn(ready, 2, 0) == Quads({literal(8)}));
    QVERIFY(handedOn(ready, 2, 1) == Quads({literal(8)}));
}

void TestQuadGatherer::whatIsToldOfANewResourceWaitsWithIt()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    gatherer.take({}, {video(1)});
    gatherer.take({}, {literal(2), video(2), literal(9)});
    gatherer.take({}, {literal(2)});
    QCOMPARE(ready.size(), 2);
    QVERIFY(handedOn(ready, 1, 1) == Quads({literal(9)}));
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(handedOn(ready, 2, 1) == Quads({literal(2), video(2), literal(2)}));
}

void TestQuadGatherer::whatIsGoneAgainIsNotTold()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    gatherer.take({}, {video(1)});
    gatherer.take({}, {video(2), literal(2), video(3)});
    gatherer.take({video(2)}, {});
    QVERIFY(ready.wait(TestPatience));
    QCOMPARE(ready.size(), 3);
    QVERIFY(handedOn(ready, 1, 0) == Quads({video(2)}));
    QVERIFY(handedOn(ready, 2, 1) == Quads({video(3)}));
}

void TestQuadGatherer::clearForgets()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    gatherer.take({}, {video(1)});
    gatherer.take({}, {video(2)});
    gatherer.clear();
    gatherer.take({}, {video(3)});
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(handedOn(ready, 1, 1) == Quads({video(3)}));
}

void TestQuadGatherer::nothingInNothingOut()
{
    QuadGatherer gatherer(nullptr, intervalMs);
    QSignalSpy ready(&gatherer, &QuadGatherer::ready);
    gatherer.take({}, {});
    QCOMPARE(ready.size(), 0);
}

QTEST_GUILESS_MAIN(TestQuadGatherer)
#include "test_quadgatherer.moc"
