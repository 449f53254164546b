// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/requestgate.h"

#include "support/driventimer.h"

#include <QStringList>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class RequestGateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstPassesAtOnceAndTheNewestAfterTheInterval();
    void afterAQuietIntervalTheNextPassesAtOnce();
    void requestMadeWhileOnePassesWaits();
};

void RequestGateTest::firstPassesAtOnceAndTheNewestAfterTheInterval()
{
    RequestGate gate(u"gate"_s);
    QList<int> passed;
    for (int i = 0; i < 1000; ++i)
        gate.pass([&passed, i] { passed.append(i); });
    QCOMPARE(passed, QList<int>{0});
    QVERIFY(runOut(gate.timer()));
    QCOMPARE(passed, (QList<int>{0, 999}));
    gate.pass([&passed] { passed.append(1000); }); // the interval began anew
    QCOMPARE(passed, (QList<int>{0, 999}));
    QVERIFY(runOut(gate.timer()));
    QCOMPARE(passed, (QList<int>{0, 999, 1000}));
}

void RequestGateTest::afterAQuietIntervalTheNextPassesAtOnce()
{
    RequestGate gate(u"gate"_s);
    int passed = 0;
    gate.pass([&passed] { ++passed; });
    QVERIFY(runOut(gate.timer()));
    QVERIFY(!gate.timer()->isActive());
    gate.pass([&passed] { ++passed; });
    QCOMPARE(passed, 2);
}

void RequestGateTest::requestMadeWhileOnePassesWaits()
{
    RequestGate gate(u"gate"_s);
    QStringList passed;
    gate.pass([&gate, &passed] {
        gate.pass([&passed] { passed.append(u"inner"_s); });
        passed.append(u"outer"_s);
    });
    QCOMPARE(passed, QStringList(u"outer"_s));
    QVERIFY(runOut(gate.timer()));
    QCOMPARE(passed, (QStringList{u"outer"_s, u"inner"_s}));
}

QTEST_GUILESS_MAIN(RequestGateTest)
#include "tst_requestgate.moc"
