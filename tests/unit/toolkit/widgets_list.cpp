// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/listlayouter.h"
#include "platform/toolkit/theme.h"
#include "widgets_listfixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QSortFilterProxyModel>

using toolkit::ListLayouter;
using toolkit::RowRange;

namespace {

QPoint at(qreal x, qreal y)
{
    return QPointF(x, y).toPoint();
}

} // namespace

class WidgetsList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void geometryOfRows_data();
    void geometryOfRows();
    void aWideListKeepsAReadableMeasure();
    void aHundredThousandRowsHaveAHandfulOfCells();
    void everyRowOfAVeryLongListIsReached_data();
    void everyRowOfAVeryLongListIsReached();
    void aVeryLongListBecomesShort();
    void scrollToReachesFarRows();
    void cellsAreUsedAgainWhileScrolling();
    void insertedRemovedAndMovedRows();
    void aSortedAndFilteredModel();
    void resetAndReplacedModel();
    void changedDataFillsTheCellAgain();
    void refreshFillsOneCell();
    void visibleIndexesAreThoseSeen();
    void scrollToBringsARowIntoView();
    void theListGoesBeforeOrAfterItsModel();
    void aListThatIsNowhereHasNoCells();
    void mirroredRightToLeft();
};

void WidgetsList::geometryOfRows_data()
{
    QTest::addColumn<qreal>("top");
    QTest::addColumn<qreal>("bottom");
    QTest::addColumn<qreal>("margin");
    QTest::addColumn<QString>("rows");
    QTest::newRow("top") << 0.0 << 250.0 << 0.0 << u"0-2"_s;
    QTest::newRow("exact edge") << 100.0 << 300.0 << 0.0 << u"1-2"_s;
    QTest::newRow("with margin") << 100.0 << 300.0 << 1.5 << u"0-4"_s;
    QTest::newRow("end") << 950.0 << 1200.0 << 0.0 << u"9-9"_s;
    QTest::newRow("above") << -300.0 << -10.0 << 0.0 << u"none"_s;
    QTest::newRow("pulled") << -50.0 << 60.0 << 0.0 << u"0-0"_s;
    QTest::newRow("below") << 1000.0 << 1200.0 << 0.0 << u"none"_s;
    QTest::newRow("empty view") << 100.0 << 100.0 << 0.0 << u"none"_s;
}

void WidgetsList::geometryOfRows()
{
    QFETCH(qreal, top);
    QFETCH(qreal, bottom);
    QFETCH(qreal, margin);
    QFETCH(QString, rows);
    ListLayouter layouter;
    layouter.setRowCount(10);
    layouter.setCellSize({480, 100});
    layouter.setWidth(480);
    const RowRange range = layouter.rows(top, bottom, margin);
    QCOMPARE(range.count() == 0 ? u"none"_s : u"%1-%2"_s.arg(range.first).arg(range.last), rows);
    QCOMPARE(layouter.height(), 1000.0);
    QCOMPARE(layouter.rowAt({10, 199.5}), 1);
    QCOMPARE(layouter.rowAt({10, 1000}), -1);
    QCOMPARE(layouter.rowAt({10, -0.5}), -1);
    layouter.setRowCount(0);
    QCOMPARE(layouter.rows(0, 100).count(), 0);
}

void WidgetsList::aWideListKeepsAReadableMeasure()
{
    ListLayouter layouter;
    layouter.setRowCount(3);
    layouter.setCellSize({480, 136});
    layouter.setMaximumMeasure(720);
    layouter.setWidth(1280);
    QCOMPARE(layouter.cellRect(1), QRectF(280, 136, 720, 136));
    QCOMPARE(layouter.rowAt({100, 10}), -1);
    layouter.setWidth(480);
    QCOMPARE(layouter.cellRect(1), QRectF(0, 136, 480, 136));
    layouter.setColumns(2);
    QCOMPARE(layouter.cellRect(1), QRectF(240, 0, 240, 136));
    QCOMPARE(layouter.height(), 272.0);
    layouter.setMirrored(true);
    QCOMPARE(layouter.cellRect(1), QRectF(0, 0, 240, 136));
}

void WidgetsList::aHundredThousandRowsHaveAHandfulOfCells()
{
    Fixture f(100000);
    QCOMPARE(f.list->effectiveSizeHint(Qt::PreferredSize).height(), 100000 * 100.0);
    QCOMPARE(f.list->size().height(), 100000 * 100.0);
    QVERIFY2(f.list->cellCount() <= 13, qPrintable(QString::number(f.list->cellCount())));
    QVERIFY(f.list->cellCount() >= 9);
    f.viewport->setPosition({0, 99000 * 100.0});
    QVERIFY2(f.list->cellCount() <= 13, qPrintable(QString::number(f.list->cellCount())));
    QCOMPARE(f.textOf(99003), u"99003"_s);
    QCOMPARE(f.list->cell(f.model.index(3)), nullptr);
}

// Longer than a graphics widget can be high: 40 million pixels.
void WidgetsList::everyRowOfAVeryLongListIsReached_data()
{
    QTest::addColumn<bool>("inALayout");
    QTest::newRow("the list alone") << false;
    QTest::newRow("between others in a layout") << true;
}

void WidgetsList::everyRowOfAVeryLongListIsReached()
{
    QFETCH(const bool, inALayout);
    const int rows = 400000;
    const qreal around = inALayout ? 50 : 0; // above the list, and as much below it
    Fixture f(rows);
    auto *below = new Widget;
    if (inALayout)
        f.placeBetween(new Widget, below, around);
    else
        delete below;
    QCOMPARE(f.viewport->range().bottom(), rows * 100.0 + 2 * around - 854);
    for (const qreal y : {0.0, 7999990.0, 8000010.0, 20000000.0, 31999980.0, 32000020.0, 39000000.0}) {
        f.viewport->setPosition({0, y + around});
        QCOMPARE(f.list->visibleIndexes().first().row(), int(y / 100));
        QVERIFY2(f.list->cellCount() <= 13, qPrintable(QString::number(f.list->cellCount())));
        for (const QModelIndex &index : f.list->visibleIndexes()) {
            const Widget *cell = f.list->cell(index);
            QVERIFY(cell != nullptr && cell->isVisible());
            QCOMPARE(f.textOf(index.row()), QString::number(index.row()));
            QCOMPARE(cell->mapToItem(f.viewport, QPointF()).y(), index.row() * 100 - y);
        }
    }
    f.viewport->setPosition(f.viewport->range().bottomLeft());
    const Widget *last = f.list->cell(f.model.index(rows - 1));
    QVERIFY(last != nullptr);
    QCOMPARE(last->mapRectToItem(f.viewport, last->rect()).bottom(), 854 - around);
    if (inALayout)
        QCOMPARE(below->mapRectToItem(f.viewport, below->rect()).bottom(), 854.0);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, at(240, 854 - around - 150));
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), rows - 2);
}

void WidgetsList::aVeryLongListBecomesShort()
{
    Fixture f(400000);
    f.viewport->setPosition({0, 30000000});
    const QStringList few = f.model.stringList().mid(0, 20);
    f.model.setStringList(few);
    QTRY_COMPARE(f.viewport->range().bottom(), 20 * 100.0 - 854);
    QCOMPARE(f.viewport->position().y(), f.viewport->range().bottom());
    QCOMPARE(f.list->visibleIndexes().last().row(), 19);
    QCOMPARE(f.faults(), QString());
}

void WidgetsList::scrollToReachesFarRows()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    Fixture f(400000);
    for (const int row : {399999, 200000, 79999, 250000, 0}) {
        f.list->scrollTo(f.model.index(row));
        const Widget *cell = f.list->cell(f.model.index(row));
        QVERIFY2(cell != nullptr, qPrintable(QString::number(row)));
        const QRectF place = cell->mapRectToItem(f.viewport, cell->rect());
        QVERIFY(f.viewport->rect().contains(place));
    }
    toolkit::Theme::instance()->setReducedMotion(false);
}

void WidgetsList::cellsAreUsedAgainWhileScrolling()
{
    Fixture f(1000);
    for (int y = 0; y < 50000; y += 130)
        f.viewport->setPosition({0, qreal(y)});
    QVERIFY2(f.creator.made <= 16, qPrintable(QString::number(f.creator.made)));
    QCOMPARE(f.faults(), QString());
}

void WidgetsList::insertedRemovedAndMovedRows()
{
    Fixture f(100);
    QAbstractItemModelTester tester(&f.model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    f.viewport->setPosition({0, 1000});
    QVERIFY(f.model.insertRows(5, 2));
    f.model.setData(f.model.index(5), u"new"_s);
    QCOMPARE(f.faults(), QString());
    QVERIFY(f.model.insertRows(14, 1));
    QCOMPARE(f.faults(), QString());
    QVERIFY(f.model.removeRows(12, 3));
    QCOMPARE(f.faults(), QString());
    QVERIFY(f.model.moveRows(QModelIndex(), 11, 2, QModelIndex(), 30));
    QCOMPARE(f.faults(), QString());
    QVERIFY(f.model.removeRows(0, f.model.rowCount()));
    QCOMPARE(f.list->cellCount(), 0);
    QCOMPARE(f.list->effectiveSizeHint(Qt::PreferredSize).height(), 0.0);
    QVERIFY(f.list->visibleIndexes().isEmpty());
}

// Typing in the filter: rows go and come in many pieces, and the order changes.
void WidgetsList::aSortedAndFilteredModel()
{
    Fixture f(500);
    QSortFilterProxyModel proxy;
    proxy.setSourceModel(&f.model);
    QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
    f.list->setItemModel(&proxy);
    const auto faults = [&] {
        QStringList result;
        for (const QModelIndex &index : f.list->visibleIndexes()) {
            const auto *cell = static_cast<Cell *>(f.list->cell(index));
            if (cell == nullptr || cell->text() != index.data().toString()
                || cell->geometry().top() != index.row() * 100)
                result.append(QString::number(index.row()));
        }
        return result.join(u' ');
    };
    QCOMPARE(faults(), QString());
    proxy.setFilterFixedString(u"7"_s);
    QCOMPARE(faults(), QString());
    QCOMPARE(f.list->effectiveSizeHint(Qt::PreferredSize).height(), proxy.rowCount() * 100.0);
    proxy.sort(0, Qt::DescendingOrder);
    QCOMPARE(faults(), QString());
    proxy.setFilterFixedString(QString());
    QCOMPARE(faults(), QString());
    QVERIFY(f.creator.made <= 30);
    f.list->setItemModel(nullptr);
}

void WidgetsList::resetAndReplacedModel()
{
    Fixture f(50);
    f.model.setStringList({u"a"_s, u"b"_s});
    QCOMPARE(f.textOf(0), u"a"_s);
    QCOMPARE(f.list->cellCount(), 2);
    QStringListModel other({u"x"_s});
    f.list->setItemModel(&other);
    QCOMPARE(static_cast<Cell *>(f.list->cell(other.index(0)))->text(), u"x"_s);
    QCOMPARE(f.list->cell(f.model.index(0)), nullptr);
    f.list->setItemModel(nullptr);
    QCOMPARE(f.list->cellCount(), 0);
}

void WidgetsList::changedDataFillsTheCellAgain()
{
    Fixture f(1000);
    const int before = f.creator.filled;
    f.model.setData(f.model.index(2), u"changed"_s);
    QCOMPARE(f.textOf(2), u"changed"_s);
    f.model.setData(f.model.index(900), u"far"_s);
    QCOMPARE(f.creator.filled, before + 1);
}

void WidgetsList::refreshFillsOneCell()
{
    Fixture f(1000);
    const int before = f.creator.filled;
    f.list->refreshCell(f.model.index(2));
    f.list->refreshCell(f.model.index(900));
    f.list->refreshCell(QModelIndex());
    QCOMPARE(f.creator.filled, before + 1);
}

void WidgetsList::visibleIndexesAreThoseSeen()
{
    Fixture f(1000);
    f.viewport->setPosition({0, 1050});
    const QList<QModelIndex> indexes = f.list->visibleIndexes();
    QCOMPARE(indexes.first().row(), 10);
    QCOMPARE(indexes.last().row(), 19);
}

void WidgetsList::scrollToBringsARowIntoView()
{
    Fixture f(1000);
    f.list->scrollTo(f.model.index(500));
    QTRY_VERIFY(f.list->visibleIndexes().contains(f.model.index(500)));
    QTRY_COMPARE(f.textOf(500), u"500"_s);
}

void WidgetsList::theListGoesBeforeOrAfterItsModel()
{
    Fixture f(3);
    auto model = std::make_unique<QStringListModel>(QStringList{u"a"_s, u"b"_s});
    f.list->setItemModel(model.get());
    QCOMPARE(f.list->cellCount(), 2);
    model.reset();
    QCOMPARE(f.list->cellCount(), 0);
    QCOMPARE(f.list->itemModel(), nullptr);
    f.list->setItemModel(&f.model);
    QCOMPARE(f.list->cellCount(), 3);
    delete f.list;
    f.model.setStringList({u"b"_s, u"c"_s}); // nobody listens any more
}

// A list is made and gets its model before it stands anywhere.
void WidgetsList::aListThatIsNowhereHasNoCells()
{
    Creator creator;
    QStringList names;
    for (int i = 0; i < 100000; ++i)
        names.append(QString::number(i));
    QStringListModel model(names);
    List list;
    list.setCellCreator(&creator);
    list.setItemModel(&model);
    list.resize(480, 1e7);
    QCOMPARE(list.cellCount(), 0);
    Stage stage;
    stage.scene.addItem(&list);
    QVERIFY(list.cellCount() <= 13);
    stage.scene.removeItem(&list);
}

void WidgetsList::mirroredRightToLeft()
{
    Fixture f(10);
    f.page->setLayoutDirection(Qt::RightToLeft);
    f.settle();
    const auto *cell = f.list->cell(f.model.index(0));
    QCOMPARE(cell->layoutDirection(), Qt::RightToLeft);
    QCOMPARE(cell->geometry(), QRectF(0, 0, 480, 100));
}

QTEST_MAIN(WidgetsList)
#include "widgets_list.moc"
