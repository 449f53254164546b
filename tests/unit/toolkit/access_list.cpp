// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessevents.h"
#include "platform/toolkit/accessibility.h"
#include "platform/toolkit/locale.h"
#include "widgets_listfixture.h"

#include <QSignalSpy>
#include <QSortFilterProxyModel>

using Actions = QAccessibleActionInterface;

class AccessList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void rowsWithoutCellsAreTold();
    void namesAreData_data();
    void namesAreData();
    void anItemIsWhereItsRowIs();
    void aPressIsATapAndShowMenuALongTap();
    void focusBringsARowIntoSight();
    void itemsFollowTheirRows();
    void itemsGoWithTheirRows();
    void changesAreTold();
    void changesSideBySideAreToldAsOne();
    void aFilterIsToldOnce();
    void aRenamedRowIsToldOfToWhoeverIsOnIt();
    void scrollingIsSilent();
    void theFocusIsOnTheRowOfTheKeyboard();
    void anotherModelHasOtherItems();

    void theMenuKeysAreALongTap_data();
    void theMenuKeysAreALongTap();
    void editAndRemoveNeedAMarkedRow();
    void returnShowsTheRowBeforeItPlays();
    void theNextRowTakesThePlaceOfOneThatGoes();
    void theMarkStaysWithItsRow();
    void theEyeGoesWithARowThatMoves();
    void whoeverScrollsAwayIsNotTakenBack();
    void theMarkComesBackWithTheFocus();
    void theKeyboardGoesOnWhereThePointerWas();

private:
    static QAccessibleInterface *item(Fixture &f, int row) { return access(f.list)->child(row); }
    // What is told of the rows when these are done in one turn of the event loop.
    template <typename... Changes> static QString toldOf(Fixture &f, const Changes &...changes)
    {
        static_cast<void>(access(f.list));
        QCoreApplication::processEvents();
        AccessEvents events;
        (changes(), ...);
        QCoreApplication::processEvents();
        QStringList told = events.take();
        told.removeIf([](const QString &line) { return !line.startsWith("TableModelChanged"_L1); });
        return told.replaceInStrings(u"TableModelChanged  "_s, QString()).join(u", "_s);
    }

    toolkit::Locale m_locale;
};

void AccessList::initTestCase()
{
    QTRY_VERIFY(QAccessible::isActive());
    toolkit::accessibility::install();
    m_locale.installTrCatalog(u"music"_s);
    toolkit::Locale::setDefault(&m_locale);
}

void AccessList::cleanupTestCase()
{
    toolkit::Locale::setDefault(nullptr);
}

// A screen reader jumps to the last of many videos: it is told of, though nothing was made for it.
void AccessList::rowsWithoutCellsAreTold()
{
    Fixture f(900);
    f.list->setAccessibleName(u"Numbers"_s);
    const int made = f.creator.made;
    const QAccessibleInterface *list = access(f.list);
    QCOMPARE(list->role(), QAccessible::List);
    QCOMPARE(list->text(QAccessible::Name), u"Numbers"_s);
    QCOMPARE(list->childCount(), 900);
    const QAccessibleInterface *last = list->child(899);
    QCOMPARE(last->role(), QAccessible::ListItem);
    QCOMPARE(last->text(QAccessible::Name), u"899"_s);
    QCOMPARE(last->text(QAccessible::Description), u"900 of 900"_s);
    QCOMPARE(last->parent(), list);
    QCOMPARE(list->indexOfChild(last), 899);
    QVERIFY(last->state().offscreen);
    QVERIFY(!item(f, 0)->state().offscreen);
    QCOMPARE(f.creator.made, made);
    QVERIFY(list->child(900) == nullptr);
    QVERIFY(list->child(-1) == nullptr);
}

void AccessList::namesAreData_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("spoken");
    QTest::newRow("mark-up") << u"<b>Tom</b> &amp; Jerry"_s << u"<b>Tom</b> &amp; Jerry"_s;
    QTest::newRow("line breaks") << u"one\ntwo\r\nthree"_s << u"one two  three"_s;
    QTest::newRow("NUL") << QString(u"a"_s + QChar(0) + u"b"_s) << u"a b"_s;
    QTest::newRow("placeholders") << u"100 %1 %L2 %n"_s << u"100 %1 %L2 %n"_s;
    QTest::newRow("long") << QString(10000, u'x') << QString(10000, u'x');
    QTest::newRow("emoji and directions") << u"🎬 שלום abc"_s << u"🎬 שלום abc"_s;
}

void AccessList::namesAreData()
{
    QFETCH(QString, title);
    QFETCH(QString, spoken);
    Fixture f(2);
    f.model.setData(f.model.index(1), title);
    QCOMPARE(item(f, 1)->text(QAccessible::Name), spoken);
}

void AccessList::anItemIsWhereItsRowIs()
{
    Fixture f(100);
    const QPoint corner = f.stage.view.viewport()->mapToGlobal(QPoint(0, 0));
    QCOMPARE(item(f, 2)->rect(), QRect(corner + QPoint(0, 200), QSize(480, 100)));
    QCOMPARE(access(f.list)->childAt(corner.x() + 100, corner.y() + 250), item(f, 2));
    f.viewport->setPosition({0, 5000});
    QCOMPARE(access(f.list)->childAt(corner.x() + 100, corner.y() + 250), item(f, 52));
}

void AccessList::aPressIsATapAndShowMenuALongTap()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    QSignalSpy longTapped(f.list, &List::itemLongTapped);
    Actions *actions = item(f, 50)->actionInterface();
    QCOMPARE(actions->actionNames(),
             QStringList({Actions::pressAction(), Actions::showMenuAction(), Actions::setFocusAction()}));
    actions->doAction(Actions::pressAction());
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().toModelIndex().row(), 50);
    actions->doAction(Actions::showMenuAction());
    QCOMPARE(longTapped.count(), 1);
    QCOMPARE(longTapped.first().first().toModelIndex().row(), 50);
    actions->doAction(u"dance"_s);
    QCOMPARE(clicked.count() + longTapped.count(), 2);
}

void AccessList::focusBringsARowIntoSight()
{
    Fixture f(100);
    item(f, 70)->actionInterface()->doAction(Actions::setFocusAction());
    QVERIFY(f.list->hasFocus());
    QCOMPARE(f.list->currentIndex().row(), 70);
    QTRY_VERIFY(f.list->isInSight(f.model.index(70)));
    QVERIFY(item(f, 70)->state().focused);
    QCOMPARE(access(f.list)->tableInterface()->selectedRows(), QList<int>{70});
    QVERIFY(access(f.list)->tableInterface()->isRowSelected(70));
}

void AccessList::itemsFollowTheirRows()
{
    Fixture f(10);
    const QAccessibleInterface *five = item(f, 5);
    f.model.insertRows(0, 3);
    QCOMPARE(item(f, 8), five);
    QCOMPARE(five->text(QAccessible::Name), u"5"_s);
    QCOMPARE(five->text(QAccessible::Description), u"9 of 13"_s);
    f.model.sort(0, Qt::DescendingOrder);
    QCOMPARE(five->text(QAccessible::Name), u"5"_s);
    QCOMPARE(access(f.list)->indexOfChild(five), 4);
}

void AccessList::itemsGoWithTheirRows()
{
    Fixture f(10);
    const QAccessible::Id id = QAccessible::uniqueId(item(f, 5));
    const QAccessible::Id other = QAccessible::uniqueId(item(f, 6));
    f.model.removeRow(5);
    QTRY_VERIFY(QAccessible::accessibleInterface(id) == nullptr);
    QCOMPARE(QAccessible::accessibleInterface(other), item(f, 5));
    f.model.setStringList({u"new"_s});
    QVERIFY(!QAccessible::accessibleInterface(other)->isValid());
    QTRY_VERIFY(QAccessible::accessibleInterface(other) == nullptr);
    QCOMPARE(access(f.list)->childCount(), 1);
}

void AccessList::changesAreTold()
{
    Fixture f(10);
    QCOMPARE(toldOf(f, [&f] { f.model.insertRows(3, 2); }), u"2 3-4"_s);
    QCOMPARE(toldOf(f, [&f] { f.model.removeRow(0); }), u"4 0-0"_s);
    QCOMPARE(toldOf(f, [&f] { f.model.setData(f.model.index(1), u"x"_s); }), u"1 1-1"_s);
    QCOMPARE(toldOf(f, [&f] { f.model.sort(0, Qt::DescendingOrder); }), u"0 -1--1"_s);
    QCOMPARE(toldOf(f, [&f] { f.model.setStringList({u"a"_s}); }), u"0 -1--1"_s);
}

// Thumbnails that come one by one, a library that grows while it is read: a reader is told once, of all of
// it.
void AccessList::changesSideBySideAreToldAsOne()
{
    Fixture f(100);
    const auto rows = [&f](std::initializer_list<int> changed) {
        for (const int row : changed)
            f.model.setData(f.model.index(row), QString::number(1000 + row));
    };
    QCOMPARE(toldOf(f, [&] { rows({7, 40, 3}); }), u"1 3-40"_s);
    const auto insert
        = [&f](int row, int count) { return [&f, row, count] { f.model.insertRows(row, count); }; };
    QCOMPARE(toldOf(f, insert(100, 5), insert(105, 2), insert(100, 1)), u"2 100-107"_s);
    QCOMPARE(toldOf(f, insert(4, 1), insert(90, 1)), u"0 -1--1"_s);
    const auto remove
        = [&f](int row, int count) { return [&f, row, count] { f.model.removeRows(row, count); }; };
    QCOMPARE(toldOf(f, remove(50, 2), remove(48, 2), remove(47, 3)), u"4 47-53"_s);
    QCOMPARE(toldOf(f, remove(50, 2), remove(10, 2)), u"0 -1--1"_s);
    QCOMPARE(toldOf(f, remove(10, 2), remove(50, 2)), u"0 -1--1"_s);
    QCOMPARE(toldOf(f, remove(10, 2), insert(10, 2)), u"0 -1--1"_s);
}

// A letter in the filter takes every second of many rows out, piece by piece.
void AccessList::aFilterIsToldOnce()
{
    Fixture f(2000);
    QSortFilterProxyModel filter;
    filter.setSourceModel(&f.model);
    f.list->setItemModel(&filter);
    f.settle();
    for (int row = 0; row < 2000; ++row)
        static_cast<void>(item(f, row));
    QSignalSpy pieces(&filter, &QAbstractItemModel::rowsRemoved);
    QCOMPARE(toldOf(f, [&filter] { filter.setFilterRegularExpression(u"[02468]$"_s); }), u"0 -1--1"_s);
    QCOMPARE(pieces.count(), 1000);
    QCOMPARE(access(f.list)->childCount(), 1000);
    QCOMPARE(item(f, 999)->text(QAccessible::Description), u"1000 of 1000"_s);
    f.list->setItemModel(nullptr);
}

void AccessList::aRenamedRowIsToldOfToWhoeverIsOnIt()
{
    Fixture f(10);
    QVERIFY(access(f.list) != nullptr);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    QCoreApplication::processEvents();
    AccessEvents events;
    f.model.setData(f.model.index(5), u"another"_s);
    QCoreApplication::processEvents();
    QCOMPARE(events.take(), QStringList{u"TableModelChanged  1 5-5"_s});
    f.model.setData(f.model.index(1), u"one"_s);
    QCoreApplication::processEvents();
    QCOMPARE(events.take(), QStringList({u"TableModelChanged  1 1-1"_s, u"NameChanged one"_s}));
}

// A flick through a long list: cells come, go and are filled again, and a reader hears none of it.
void AccessList::scrollingIsSilent()
{
    Fixture f(1000);
    QCOMPARE(access(f.list)->childCount(), 1000);
    QVERIFY(item(f, 3) != nullptr);
    f.settle();
    AccessEvents events;
    for (int frame = 1; frame <= 200; ++frame) {
        f.viewport->setPosition({0, frame * 411.0});
        f.settle();
    }
    QCOMPARE(events.take(), QStringList());
}

void AccessList::theFocusIsOnTheRowOfTheKeyboard()
{
    AccessEvents events;
    Fixture f(10);
    QVERIFY(access(f.list) != nullptr);
    f.list->setFocus(Qt::TabFocusReason);
    events.take();
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    QCOMPARE(events.take(), QStringList{u"Focus 1"_s});
    QCOMPARE(access(f.list)->focusChild(), item(f, 1));
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Up);
    QCOMPARE(events.take(), QStringList{u"Focus 0"_s});
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Up); // it is the first
    QCOMPARE(events.take(), QStringList());
}

void AccessList::anotherModelHasOtherItems()
{
    Fixture f(10);
    const QAccessible::Id id = QAccessible::uniqueId(item(f, 5));
    {
        QStringListModel other({u"only"_s});
        f.list->setItemModel(&other);
        QCOMPARE(access(f.list)->childCount(), 1);
        QCOMPARE(item(f, 0)->text(QAccessible::Name), u"only"_s);
        const QAccessibleInterface *old = QAccessible::accessibleInterface(id);
        QVERIFY(old == nullptr || !old->isValid());
    }
    QCOMPARE(access(f.list)->childCount(), 0);
    QVERIFY(access(f.list)->focusChild() == nullptr);
}

void AccessList::theMenuKeysAreALongTap_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("menu") << int(Qt::Key_Menu) << Qt::KeyboardModifiers();
    QTest::newRow("shift f10") << int(Qt::Key_F10) << Qt::KeyboardModifiers(Qt::ShiftModifier);
}

void AccessList::theMenuKeysAreALongTap()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    Fixture f(100);
    QSignalSpy longTapped(f.list, &List::itemLongTapped);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key(key), modifiers);
    QCOMPARE(longTapped.count(), 1);
    QCOMPARE(longTapped.first().first().toModelIndex().row(), 1);
    // In the middle of the row.
    QCOMPARE(longTapped.first().at(1).toPointF(), QPointF(240, 150));
}

// Nobody deletes what they do not see marked.
void AccessList::editAndRemoveNeedAMarkedRow()
{
    Fixture f(100);
    QSignalSpy edit(f.list, &List::editRequested);
    QSignalSpy remove(f.list, &List::removeRequested);
    const auto key = [&f](Qt::Key k, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(f.stage.view.viewport(), k, modifiers);
    };
    f.list->setFocus(Qt::OtherFocusReason);
    key(Qt::Key_Delete);
    QCOMPARE(remove.count(), 0);
    QCOMPARE(f.list->currentIndex().row(), 0); // it is marked now
    key(Qt::Key_Down);
    key(Qt::Key_Delete, Qt::ShiftModifier);
    QCOMPARE(remove.count(), 0);
    key(Qt::Key_Delete);
    QCOMPARE(remove.count(), 1);
    QCOMPARE(remove.first().first().toModelIndex().row(), 1);
    key(Qt::Key_F2);
    QCOMPARE(edit.count(), 1);
    QCOMPARE(edit.first().first().toModelIndex().row(), 1);
}

void AccessList::returnShowsTheRowBeforeItPlays()
{
    Fixture f(100);
    QSignalSpy clicked(f.list, &List::itemClicked);
    f.list->setFocus(Qt::OtherFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Return);
    QCOMPARE(clicked.count(), 0);
    const QColor ring = f.list->style().color(u"focus"_s);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 0, 480, 100}, ring) > 400);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Return);
    QCOMPARE(clicked.count(), 1);
}

// A person deletes one video after the other: the keyboard does not fall off the list.
void AccessList::theNextRowTakesThePlaceOfOneThatGoes()
{
    Fixture f(4);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_End);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Up);
    f.model.removeRow(2);
    f.settle();
    QCOMPARE(f.list->currentIndex().data().toString(), u"3"_s);
    f.model.removeRow(2);
    f.settle();
    QCOMPARE(f.list->currentIndex().data().toString(), u"1"_s);
    f.model.removeRows(0, 2);
    f.settle();
    QVERIFY(!f.list->currentIndex().isValid());
}

void AccessList::theMarkStaysWithItsRow()
{
    Fixture f(4);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    f.model.insertRows(0, 2);
    f.settle();
    QCOMPARE(f.list->currentIndex().data().toString(), u"1"_s);
    const QColor ring = f.list->style().color(u"focus"_s);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 300, 480, 100}, ring) > 400);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 0, 480, 290}, ring) < 50);
}

// A person renames the second of many videos, and it is the last by its new name.
void AccessList::theEyeGoesWithARowThatMoves()
{
    Fixture f(0);
    QStringList names;
    for (int i = 100; i < 200; ++i)
        names.append(QString::number(i));
    f.model.setStringList(names);
    QSortFilterProxyModel sorted;
    sorted.setSourceModel(&f.model);
    sorted.sort(0);
    f.list->setItemModel(&sorted);
    f.settle();
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    f.model.setData(f.model.index(1), u"zebra"_s);
    f.settle();
    QCOMPARE(f.list->currentIndex().row(), 99);
    QTRY_VERIFY(f.list->isInSight(f.list->currentIndex()));
    QTRY_COMPARE(f.viewport->position().y(), 100 * 100 - 854.0);
    const QColor ring = f.list->style().color(u"focus"_s);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 754, 480, 100}, ring) > 400);
    // And the next takes the place of one that goes, also at the end of the list.
    f.model.removeRow(1);
    f.settle();
    QCOMPARE(f.list->currentIndex().row(), 98);
    QTRY_VERIFY(f.list->isInSight(f.list->currentIndex()));
    f.list->setItemModel(nullptr);
}

void AccessList::whoeverScrollsAwayIsNotTakenBack()
{
    Fixture f(100);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    f.viewport->setPosition({0, 5000});
    f.model.insertRows(0, 1); // while a library is read
    f.settle();
    QCOMPARE(f.list->currentIndex().row(), 2);
    QCOMPARE(f.viewport->position().y(), 5000.0);
}

void AccessList::theMarkComesBackWithTheFocus()
{
    Fixture f(10);
    f.list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
    f.list->clearFocus();
    const QColor ring = f.list->style().color(u"focus"_s);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 0, 480, 400}, ring) < 50);
    f.list->setFocus(Qt::PopupFocusReason);
    QVERIFY(pixelsLike(f.stage.picture(), {0, 100, 480, 100}, ring) > 400);
}

void AccessList::theKeyboardGoesOnWhereThePointerWas()
{
    for (const bool cellsHandlePointer : {false, true}) {
        Fixture f(100, cellsHandlePointer);
        QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, QPoint(200, 350));
        QTRY_COMPARE(f.list->currentIndex().row(), 3);
        f.list->setFocus(Qt::OtherFocusReason);
        const QColor ring = f.list->style().color(u"focus"_s);
        QVERIFY(pixelsLike(f.stage.picture(), {0, 0, 480, 800}, ring) < 50);
        QTest::keyClick(f.stage.view.viewport(), Qt::Key_Down);
        QVERIFY(pixelsLike(f.stage.picture(), {0, 300, 480, 100}, ring) > 400);
    }
}

int main(int argc, char **argv)
{
    letAssistiveTechnologyListen();
    QApplication application(argc, argv);
    AccessList test;
    return QTest::qExec(&test, argc, argv);
}

#include "access_list.moc"
