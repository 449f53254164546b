// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/edgeswipe.h"
#include "platform/toolkit/windowgeometry.h"

#include <QTest>

using namespace toolkit;
using Profile = ApplicationWindow::Profile;

class WindowGeometryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sceneForProfileScreenAndAngle_data();
    void sceneForProfileScreenAndAngle();
    void profileFollowsTheScreen_data();
    void profileFollowsTheScreen();
    void playerOnAPortraitHandsetIsTurned();
    void sceneStaysWholeWhileItTurns();
    void turnTakesTheShortWay();
    void angleIsAQuarter();
    void backSwipe_data();
    void backSwipe();
};

void WindowGeometryTest::sceneForProfileScreenAndAngle_data()
{
    QTest::addColumn<Profile>("profile");
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<int>("angle");
    QTest::addColumn<int>("rotation");
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<QSizeF>("logical");

    const QSize portrait(480, 854);
    const QSize landscape(854, 480);
    const QSize sharp(360, 720);
    const auto row = [](const char *name, Profile profile, QSize screen, QSize window, int angle,
                        int rotation, qreal scale, QSizeF logical) {
        QTest::newRow(name) << profile << screen << window << angle << rotation << scale << logical;
    };
    row("handset portrait 270", Profile::Handset, portrait, portrait, 270, 0, 1.0, QSizeF(480, 854));
    row("handset portrait 0", Profile::Handset, portrait, portrait, 0, 90, 1.0, QSizeF(854, 480));
    row("handset portrait 90", Profile::Handset, portrait, portrait, 90, 180, 1.0, QSizeF(480, 854));
    row("handset portrait 180", Profile::Handset, portrait, portrait, 180, 270, 1.0, QSizeF(854, 480));
    row("handset landscape 0", Profile::Handset, landscape, landscape, 0, 0, 1.0, QSizeF(854, 480));
    row("handset landscape 90", Profile::Handset, landscape, landscape, 90, 90, 1.0, QSizeF(480, 854));
    row("handset landscape 180", Profile::Handset, landscape, landscape, 180, 180, 1.0, QSizeF(854, 480));
    row("handset landscape 270", Profile::Handset, landscape, landscape, 270, 270, 1.0, QSizeF(480, 854));
    row("handset of fewer pixels", Profile::Handset, sharp, sharp, 270, 0, 0.75, QSizeF(480, 960));
    row("handset of fewer pixels 0", Profile::Handset, sharp, sharp, 0, 90, 0.75, QSizeF(960, 480));
    row("keyboard over the foot", Profile::Handset, sharp, QSize(360, 420), 270, 0, 0.75, QSizeF(480, 560));
    row("desktop portrait 0", Profile::Desktop, QSize(1920, 1080), portrait, 0, 0, 1.0, QSizeF(480, 854));
    row("desktop portrait 270", Profile::Desktop, QSize(1920, 1080), portrait, 270, 0, 1.0, QSizeF(480, 854));
    row("desktop wide 270", Profile::Desktop, QSize(1920, 1080), QSize(1600, 900), 270, 0, 1.0,
        QSizeF(1600, 900));
    row("desktop small", Profile::Desktop, QSize(1920, 1080), QSize(360, 640), 0, 0, 0.75,
        QSizeF(480, 640 / 0.75));
}

void WindowGeometryTest::sceneForProfileScreenAndAngle()
{
    QFETCH(const Profile, profile);
    QFETCH(const QSize, screen);
    QFETCH(const QSize, window);
    QFETCH(const int, angle);
    QFETCH(const int, rotation);
    QFETCH(const qreal, scale);
    QFETCH(const QSizeF, logical);

    const WindowGeometry geometry = windowGeometry(profile, screen, window, angle);
    QCOMPARE(geometry.rotation, rotation);
    QCOMPARE(geometry.scale, scale);
    QCOMPARE(geometry.logicalSize, logical);
    // The whole scene covers the whole window, exactly.
    const QTransform transform = sceneTransform(geometry, window, rotation);
    QCOMPARE(transform.mapRect(QRectF(QPointF(), logical)), QRectF(QPointF(), window));
}

void WindowGeometryTest::profileFollowsTheScreen_data()
{
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<Profile>("profile");
    QTest::newRow("480x854") << QSize(480, 854) << Profile::Handset;
    QTest::newRow("360x720") << QSize(360, 720) << Profile::Handset;
    QTest::newRow("360x720 turned by its compositor") << QSize(720, 360) << Profile::Handset;
    QTest::newRow("tablet") << QSize(800, 1280) << Profile::Desktop;
    QTest::newRow("netbook") << QSize(1024, 600) << Profile::Desktop;
    QTest::newRow("laptop") << QSize(1920, 1080) << Profile::Desktop;
    QTest::newRow("portrait monitor") << QSize(1080, 1920) << Profile::Desktop;
}

void WindowGeometryTest::profileFollowsTheScreen()
{
    QFETCH(const QSize, screen);
    QTEST(profileForScreen(screen), "profile");
}

// The device is held on its side: what is up for the person is the right edge of the upright screen.
void WindowGeometryTest::playerOnAPortraitHandsetIsTurned()
{
    const QSize window(480, 854);
    const WindowGeometry geometry = windowGeometry(Profile::Handset, window, window, 0);
    const QTransform transform = sceneTransform(geometry, window, geometry.rotation);
    QCOMPARE(transform.map(QPointF(0, 0)), QPointF(480, 0));
    QCOMPARE(transform.map(QPointF(854, 0)), QPointF(480, 854));
    QCOMPARE(transform.map(QPointF(0, 480)), QPointF(0, 0));
    QCOMPARE(geometry.orientation(), Qt::Horizontal);
}

void WindowGeometryTest::sceneStaysWholeWhileItTurns()
{
    const QSize window(480, 854);
    const WindowGeometry geometry = windowGeometry(Profile::Handset, window, window, 0);
    const QRectF area = QRectF(QPointF(), window).adjusted(-0.01, -0.01, 0.01, 0.01);
    for (int rotation = 0; rotation <= 90; rotation += 5) {
        const QRectF seen
            = sceneTransform(geometry, window, rotation).mapRect(QRectF(QPointF(), geometry.logicalSize));
        QVERIFY2(area.contains(seen), qPrintable(QStringLiteral("at %1 degrees").arg(rotation)));
    }
}

void WindowGeometryTest::turnTakesTheShortWay()
{
    QCOMPARE(nearestRotation(0, 90), 90.0);
    QCOMPARE(nearestRotation(0, 270), -90.0);
    QCOMPARE(nearestRotation(270, 0), 360.0);
    QCOMPARE(nearestRotation(45, 270), -90.0);
}

void WindowGeometryTest::angleIsAQuarter()
{
    QCOMPARE(normalizedAngle(0), 0);
    QCOMPARE(normalizedAngle(360), 0);
    QCOMPARE(normalizedAngle(-90), 270);
    QCOMPARE(normalizedAngle(630), 270);
    QCOMPARE(normalizedAngle(88), 90);
}

void WindowGeometryTest::backSwipe_data()
{
    QTest::addColumn<QPointF>("from");
    QTest::addColumn<QPointF>("to");
    QTest::addColumn<Qt::LayoutDirection>("direction");
    QTest::addColumn<bool>("back");
    QTest::newRow("from the edge") << QPointF(4, 400) << QPointF(120, 410) << Qt::LeftToRight << true;
    QTest::newRow("too short") << QPointF(4, 400) << QPointF(60, 400) << Qt::LeftToRight << false;
    QTest::newRow("from the middle") << QPointF(100, 400) << QPointF(300, 400) << Qt::LeftToRight << false;
    QTest::newRow("a pan along the edge") << QPointF(4, 400) << QPointF(100, 600) << Qt::LeftToRight << false;
    QTest::newRow("mirrored") << QPointF(478, 400) << QPointF(360, 400) << Qt::RightToLeft << true;
    QTest::newRow("mirrored, from the other edge")
        << QPointF(4, 400) << QPointF(120, 400) << Qt::RightToLeft << false;
}

void WindowGeometryTest::backSwipe()
{
    QFETCH(const QPointF, from);
    QFETCH(const QPointF, to);
    QFETCH(const Qt::LayoutDirection, direction);
    QFETCH(const bool, back);
    EdgeSwipe swipe;
    swipe.press(from, QSizeF(480, 854), direction);
    int recognised = 0;
    for (int step = 1; step <= 20; ++step)
        recognised += swipe.move(from + (to - from) * step / 20.0) ? 1 : 0;
    QCOMPARE(recognised, back ? 1 : 0);
}

QTEST_APPLESS_MAIN(WindowGeometryTest)
#include "core_windowgeometrytest.moc"
