// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/bannerroom.h"

#include <QTest>

#include <algorithm>

using toolkit::BannerRoom;
using Areas = QList<QRectF>;

// Where a message finds room between what has to be tapped.
class BannerRoomTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void standsInTheLowestGapWithRoom_data();
    void standsInTheLowestGapWithRoom();
    void coversAsLittleAsItMustWhereNothingHasRoom();
    void leavesTheSceneNowhere_data();
    void leavesTheSceneNowhere();
};

void BannerRoomTest::standsInTheLowestGapWithRoom_data()
{
    QTest::addColumn<QSizeF>("scene");
    QTest::addColumn<Areas>("areas");
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<QPointF>("place");
    const QSizeF wide(854, 480);
    const QRectF bar(0, 0, 854, 76);
    const QRectF mark(381, 194, 92, 92);
    const QRectF rows(12, 376, 830, 104);
    QTest::newRow("nothing in the way") << wide << Areas() << QSizeF(400, 64) << QPointF(227, 480 - 24 - 64);
    QTest::newRow("above the rows at the foot")
        << QSizeF(480, 854) << Areas{{0, 0, 480, 76}, {0, 730, 480, 124}} << QSizeF(400, 64)
        << QPointF(40, 730 - 16 - 64);
    QTest::newRow("in the middle of a narrow gap")
        << wide << Areas{bar, mark, rows} << QSizeF(400, 70) << QPointF(227, 286 + 10);
    QTest::newRow("too high for the lowest gap")
        << wide << Areas{bar, mark, rows} << QSizeF(400, 90) << QPointF(227, 194 - 16 - 90);
    QTest::newRow("whatever the order")
        << wide << Areas{rows, bar, mark} << QSizeF(400, 90) << QPointF(227, 194 - 16 - 90);
    QTest::newRow("areas over each other")
        << wide << Areas{{0, 300, 854, 180}, {0, 340, 854, 20}} << QSizeF(400, 64) << QPointF(227, 220);
    QTest::newRow("below a question")
        << QSizeF(480, 854) << Areas{{24, 300, 432, 250}} << QSizeF(400, 64) << QPointF(40, 854 - 24 - 64);
    QTest::newRow("beside what is as high as the scene")
        << wide << Areas{{474, 0, 380, 480}} << QSizeF(400, 64) << QPointF(37, 392);
    QTest::newRow("on the other side of it")
        << wide << Areas{{0, 0, 380, 480}} << QSizeF(400, 64) << QPointF(417, 392);
    QTest::newRow("an area of no size is none")
        << wide << Areas{QRectF(0, 400, 0, 0)} << QSizeF(400, 64) << QPointF(227, 392);
}

void BannerRoomTest::standsInTheLowestGapWithRoom()
{
    QFETCH(QSizeF, scene);
    QFETCH(Areas, areas);
    QFETCH(QSizeF, size);
    QFETCH(QPointF, place);
    const BannerRoom room(scene, areas);
    QVERIFY(size.width() <= room.widest());
    QCOMPARE(room.place(size), QRectF(place, size));
    for (const QRectF &area : std::as_const(areas))
        QVERIFY(!area.intersects(room.place(size)));
}

void BannerRoomTest::coversAsLittleAsItMustWhereNothingHasRoom()
{
    const QRectF sheet(0, 100, 480, 754);
    const QRectF place = BannerRoom({480, 854}, {sheet}).place({400, 90});
    QCOMPARE(place.top(), 16);
    QVERIFY(place.intersected(sheet).height() <= 6);
}

void BannerRoomTest::leavesTheSceneNowhere_data()
{
    QTest::addColumn<Areas>("areas");
    QTest::newRow("all of it") << Areas{{0, 0, 480, 854}};
    QTest::newRow("all but a strip") << Areas{{0, 4, 480, 850}};
    QTest::newRow("beyond it") << Areas{{-20, -20, 600, 860}};
    QTest::newRow("everywhere") << Areas{{0, 0, 480, 300}, {0, 290, 480, 300}, {0, 580, 480, 274}};
}

void BannerRoomTest::leavesTheSceneNowhere()
{
    QFETCH(Areas, areas);
    const QRectF place = BannerRoom({480, 854}, areas).place({200, 64});
    QVERIFY(place.top() >= 0 && place.bottom() <= 854);
}

QTEST_APPLESS_MAIN(BannerRoomTest)
#include "core_bannerroomtest.moc"
