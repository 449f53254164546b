// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets_listfixture.h"

#include <QSignalSpy>

namespace {

QPoint at(qreal x, qreal y)
{
    return QPointF(x, y).toPoint();
}

} // namespace

class WidgetsListInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTapClicksItsRow_data();
    void aTapClicksItsRow();
    void aTouchClicksItsRow();
    void thePressIsSeenAtOnceAndGoneWhenItMoves();
    void aLongTapTellsItsPlace();
    void aSecondButtonIsALongTap();
    void aPanIsNoTap();
    void aPanByTouchIsNoTap();
    void aCellThatHandlesThePointerItselfClicksOnce();
    void aPressBesideTheCellsIsNothing();
    void theRowOfAPressGoesAway();
    void keysMoveAndOpen();
    void theFirstKeyShowsARowThatIsWhollySeen_data();
    void theFirstKeyShowsARowThatIsWhollySeen();
    void aHeldRowStaysLitWhereItGoes();
    void aPressedRowIsRoundWhereTheListIsNarrow();
    void panningIsRelayed();
};

void WidgetsListInput::aTapClicksItsRow_data()
{
    QTest::addColumn<qreal>("position");
    QTest::addColumn<int>("row");
    QTest::newRow("at the top") << 0.0 << 2;
    QTest::newRow("scrolled") << 5000.0 << 52;
}

void WidgetsListInput::aTapClicksItsRow()
{
    QFETCH(qreal, position);
    QFETCH(int, row);
    Fixture f(100);
    f.viewport->setPosition({0, position});
    QSignalSpy clicked(f.list, &List::itemClicked);
    QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QTRY_COMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), row);
}

void WidgetsListInput::aTouchClicksItsRow()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    const std::unique_ptr<QPointingDevice> device(QTest::createTouchDevice());
    QTest::touchEvent(f.stage.view.viewport(), device.get()).press(0, at(200, 350));
    QTest::touchEvent(f.stage.view.viewport(), device.get()).release(0, at(200, 350));
    QTRY_COMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), 3);
}

void WidgetsListInput::thePressIsSeenAtOnceAndGoneWhenItMoves()
{
    Fixture f(100);
    const QRect row(300, 210, 100, 80);
    const QColor plate = f.list->style().color(u"pressed"_s);
    QCOMPARE(pixelsLike(f.stage.picture(), row, plate, 6), 0);
    QTest::mousePress(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QCOMPARE(pixelsLike(f.stage.picture(), row, plate, 6), row.width() * row.height());
    QCOMPARE(f.list->cell(f.model.index(2))->property("pressed").toBool(), true);
    f.stage.move(Qt::LeftButton, at(200, 290));
    QCOMPARE(pixelsLike(f.stage.picture(), row, plate, 6), 0);
    QCOMPARE(f.list->cell(f.model.index(2))->property("pressed").toBool(), false);
    QTest::mouseRelease(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 290));
}

void WidgetsListInput::aLongTapTellsItsPlace()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QSignalSpy longTapped(f.list, &List::itemLongTapped);
    QTest::mousePress(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QVERIFY(longTapped.wait(2000));
    QCOMPARE(longTapped.first().at(0).toModelIndex().row(), 2);
    QCOMPARE(longTapped.first().at(1).toPointF(), QPointF(200, 250));
    QTest::mouseRelease(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(longTapped.count(), 1);
}

void WidgetsListInput::aSecondButtonIsALongTap()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QSignalSpy longTapped(f.list, &List::itemLongTapped);
    QTest::mouseClick(f.stage.view.viewport(), Qt::RightButton, {}, at(200, 250));
    QCOMPARE(longTapped.count(), 1);
    QCOMPARE(clicked.count(), 0);
}

void WidgetsListInput::aPanIsNoTap()
{
    for (const bool cellsHandlePointer : {false, true}) {
        Fixture f(100, cellsHandlePointer);
        QSignalSpy clicked(f.list, &List::itemClicked);
        QSignalSpy longTapped(f.list, &List::itemLongTapped);
        QTest::mousePress(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 650));
        for (int y = 640; y >= 300; y -= 20)
            f.stage.move(Qt::LeftButton, at(200, y));
        Q_EMIT f.viewport->panningStarted();
        QTest::mouseRelease(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 300));
        QCOMPARE(clicked.count(), 0);
        QCOMPARE(longTapped.count(), 0);
    }
}

void WidgetsListInput::aPanByTouchIsNoTap()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QSignalSpy started(f.list, &List::panningStarted);
    const std::unique_ptr<QPointingDevice> device(QTest::createTouchDevice());
    QTest::touchEvent(f.stage.view.viewport(), device.get()).press(0, at(200, 650));
    for (int y = 640; y >= 300; y -= 20)
        QTest::touchEvent(f.stage.view.viewport(), device.get()).move(0, at(200, y));
    QTest::touchEvent(f.stage.view.viewport(), device.get()).release(0, at(200, 300));
    f.settle();
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(started.count(), 1);
    QVERIFY(f.viewport->position().y() > 100);
    QVERIFY(!f.list->cell(f.list->visibleIndexes().first())->property("pressed").toBool());
}

void WidgetsListInput::aCellThatHandlesThePointerItselfClicksOnce()
{
    Fixture f(100, true);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QSignalSpy longTapped(f.list, &List::itemLongTapped);
    QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), 2);
    Q_EMIT static_cast<Cell *>(f.list->cell(f.model.index(4)))->longTapped({7, 8});
    QCOMPARE(longTapped.count(), 1);
    QCOMPARE(longTapped.first().at(0).toModelIndex().row(), 4);
    QCOMPARE(longTapped.first().at(1).toPointF(), QPointF(7, 8));
}

void WidgetsListInput::aPressBesideTheCellsIsNothing()
{
    Fixture f(3);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 700));
    QCOMPARE(clicked.count(), 0);
}

// The video under the finger is deleted by somebody else.
void WidgetsListInput::theRowOfAPressGoesAway()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QTest::mousePress(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QVERIFY(f.model.removeRows(2, 1));
    f.settle();
    QTest::mouseRelease(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 250));
    QCOMPARE(clicked.count(), 0);
}

void WidgetsListInput::keysMoveAndOpen()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    f.list->setFocus(Qt::TabFocusReason);
    QVERIFY(f.list->hasFocus());
    QCOMPARE(f.list->currentIndex().row(), 0);
    const auto key = [&f](Qt::Key k) { QTest::keyClick(f.stage.view.viewport(), k); };
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    QCOMPARE(f.list->currentIndex().row(), 2);
    const QColor ring = f.list->style().color(u"focus"_s);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 200, 480, 100}, ring) > 400);
    key(Qt::Key_Up);
    QCOMPARE(f.list->currentIndex().row(), 1);
    key(Qt::Key_Return);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), 1);
    key(Qt::Key_End);
    QCOMPARE(f.list->currentIndex().row(), 99);
    key(Qt::Key_Home);
    QCOMPARE(f.list->currentIndex().row(), 0);
    key(Qt::Key_PageDown);
    QVERIFY(f.list->currentIndex().row() >= 5);
    key(Qt::Key_PageUp);
    QCOMPARE(f.list->currentIndex().row(), 0);
    key(Qt::Key_Up);
    QCOMPARE(f.list->currentIndex().row(), 0);
    f.viewport->setPosition({0, 0}); // at once: a press on a moving list only stops it
    // The pointer takes the mark away.
    QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, at(200, 450));
    QVERIFY(pixelsLike(f.stage.picture(), {0, 0, 480, 100}, ring) < 50);
}

void WidgetsListInput::theFirstKeyShowsARowThatIsWhollySeen_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<qreal>("position");
    QTest::addColumn<int>("row");
    QTest::newRow("down, at the top") << int(Qt::Key_Down) << 0.0 << 0;
    QTest::newRow("down, scrolled") << int(Qt::Key_Down) << 530.0 << 6;
    QTest::newRow("up, scrolled") << int(Qt::Key_Up) << 530.0 << 6;
    QTest::newRow("page down, scrolled") << int(Qt::Key_PageDown) << 570.0 << 6;
}

// The list was scrolled by finger or wheel; then somebody reaches for the keyboard.
void WidgetsListInput::theFirstKeyShowsARowThatIsWhollySeen()
{
    QFETCH(int, key);
    QFETCH(qreal, position);
    QFETCH(int, row);
    Fixture f(100);
    f.viewport->setPosition({0, position});
    f.list->setFocus(Qt::OtherFocusReason);
    const QColor ring = f.list->style().color(u"focus"_s);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key(key));
    QCOMPARE(f.list->currentIndex().row(), row);
    QCOMPARE(f.viewport->position().y(), position);
    QVERIFY(!f.viewport->isPanning());
    const QRect place = f.list->mapRectToScene(f.list->rowRect(f.model.index(row))).toRect();
    QVERIFY(pixelsLike(f.stage.picture(), place, ring) > 400);
    // One that was pointed at is where it goes on, as far as it is seen.
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    QCOMPARE(f.list->currentIndex().row(), row + 1);
}

void WidgetsListInput::aHeldRowStaysLitWhereItGoes()
{
    Fixture f(100);
    const QColor plate = f.list->style().color(u"pressed"_s);
    const auto isLit = [&](int row) {
        const QRect place(300, row * 100 + 10, 100, 80);
        return pixelsLike(f.stage.picture(), place, plate, 6) == place.width() * place.height();
    };
    f.list->setHeldIndex(f.model.index(2));
    QVERIFY(isLit(2));
    QVERIFY(f.model.removeRows(0, 1)); // somebody else deletes the first
    f.settle();
    QVERIFY(isLit(1));
    QVERIFY(!isLit(2));
    QVERIFY(f.model.removeRows(1, 1)); // and then this one
    f.settle();
    QVERIFY(!f.list->heldIndex().isValid());
    QVERIFY(!isLit(1));
    f.list->setHeldIndex(f.model.index(3));
    QVERIFY(isLit(3));
    f.list->setHeldIndex({});
    QVERIFY(!isLit(3));
}

void WidgetsListInput::aPressedRowIsRoundWhereTheListIsNarrow()
{
    Fixture f(100);
    QCOMPARE(f.list->plateRadius(), 0.0);
    f.stage.view.resize(900, 854);
    f.stage.scene.setSceneRect(0, 0, 900, 854);
    f.page->resize(900, 854);
    f.viewport->setGeometry(QRectF(0, 0, 900, 854));
    f.settle();
    QCOMPARE(f.list->plateRadius(), f.list->style().radius);
    f.list->setHeldIndex(f.model.index(1));
    const QColor plate = f.list->style().color(u"pressed"_s);
    const QImage picture = f.stage.picture();
    QCOMPARE(pixelsLike(picture, {90, 100, 2, 2}, plate, 6), 0); // a corner
    QCOMPARE(pixelsLike(picture, {110, 100, 100, 2}, plate, 6), 200);
}

void WidgetsListInput::panningIsRelayed()
{
    Fixture f(100);
    QSignalSpy started(f.list, &List::panningStarted);
    QSignalSpy stopped(f.list, &List::panningStopped);
    Q_EMIT f.viewport->panningStarted();
    Q_EMIT f.viewport->panningStopped();
    QCOMPARE(started.count(), 1);
    QCOMPARE(stopped.count(), 1);
}

QTEST_MAIN(WidgetsListInput)
#include "widgets_listinput.moc"
