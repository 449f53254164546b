// SPDX-License-Identifier: GPL-3.0-or-later
#include "libraryfixture.h"

#include "library/filteredmodel.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/pannableviewport.h"

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::List;

// The library by keyboard alone, as the window gets the keys.
class LibraryKeys : public QObject
{
    Q_OBJECT

public:
    explicit LibraryKeys(LibraryFixture *library) : m_library(library) { }

private Q_SLOTS:
    void cleanup();

    void theListHasTheFocusFromTheStart();
    void theMarkedRowIsSeenWhileKeysAreUsed();
    void arrowsAndReturnPlay();
    void theFirstArrowMovesNothing();
    void findOpensTheField();
    void findGoesBackToAFieldThatIsOpen();
    void findWithoutVideosIsNothing();
    void escapeEmptiesAndHidesTheFieldBeforeItLeaves();
    void downLeadsFromTheFieldToTheFirstMatch();
    void returnInTheFieldLeavesTheKeysToTheList();
    void theListIsReachedAgainAfterNoResults();
    void aFirstLetterThatMatchesNothingIsTypedOnce();
    void rowsAreToldWithTitleDurationAndPlace();

private:
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(m_library->window.viewport(), key, modifiers);
    }
    [[nodiscard]] bool openFruit()
    {
        return m_library->open(LibraryFixture::rows({u"Apple"_s, u"Banana"_s, u"Cherry"_s, u"Date"_s}));
    }
    [[nodiscard]] List *list() const { return m_library->widget()->list(); }
    [[nodiscard]] QString marked() const
    {
        return list()->hasFocus() && list()->currentIndex().isValid()
            ? list()->currentIndex().siblingAtColumn(VideoColumn::Title).data().toString()
            : u"nothing"_s;
    }

    LibraryFixture *m_library;
};

void LibraryKeys::cleanup()
{
    m_library->close();
}

void LibraryKeys::theListHasTheFocusFromTheStart()
{
    QVERIFY(openFruit());
    QTRY_VERIFY(list()->hasFocus());
    QVERIFY(!list()->currentIndex().isValid());
}

void LibraryKeys::theMarkedRowIsSeenWhileKeysAreUsed()
{
    QVERIFY(openFruit());
    QTRY_VERIFY(list()->hasFocus() && list()->cell(m_library->widget()->proxy()->index(1, 0)));
    const auto seen = [this] { return m_library->window.grab().toImage(); };
    const QImage before = seen();
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"Banana"_s);
    const QImage after = seen();
    QRect changed;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            if (after.pixel(x, y) != before.pixel(x, y))
                changed |= QRect(x, y, 1, 1);
        }
    }
    const QRectF row = list()->mapRectToScene(list()->rowRect(list()->currentIndex()));
    const QRect place = m_library->window.mapFromScene(row).boundingRect();
    QVERIFY(place.adjusted(-1, -1, 1, 1).contains(changed)); // that row and nothing else
    QVERIFY(changed.width() > place.width() * 9 / 10 && changed.height() > place.height() * 9 / 10);
    // A finger does not need it.
    QTest::mousePress(m_library->window.viewport(), Qt::LeftButton, {}, place.center());
    QTest::mouseRelease(m_library->window.viewport(), Qt::LeftButton, {}, QPoint(5, place.center().y()));
    QTRY_COMPARE(seen(), before);
}

void LibraryKeys::arrowsAndReturnPlay()
{
    QVERIFY(openFruit());
    QSignalSpy play(m_library->page.get(), &LocalVideosPage::showNowPlayingPage);
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"Apple"_s);
    press(Qt::Key_Down);
    press(Qt::Key_End);
    QCOMPARE(marked(), u"Date"_s);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    QCOMPARE(play.count(), 1);
}

// Scrolled with the wheel by half a cell: the first key marks a video that is wholly seen.
void LibraryKeys::theFirstArrowMovesNothing()
{
    QStringList titles;
    for (int i = 0; i < 30; ++i)
        titles.append(u"video %1"_s.arg(i, 2, 10, QChar(u'0')));
    QVERIFY(m_library->open(LibraryFixture::rows(titles)));
    toolkit::PannableViewport *viewport = m_library->page->pannableViewport();
    QTRY_VERIFY(viewport->range().height() > 1000);
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"video 00"_s);
    QCOMPARE(viewport->position().y(), 0.0);
    m_library->close();
    QVERIFY(m_library->open(LibraryFixture::rows(titles)));
    viewport = m_library->page->pannableViewport();
    QTRY_VERIFY(viewport->range().height() > 1000);
    viewport->setPosition({0, 1.5 * 136});
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"video 02"_s);
    QCOMPARE(viewport->position().y(), 1.5 * 136);
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"video 03"_s);
}

void LibraryKeys::findOpensTheField()
{
    QVERIFY(openFruit());
    press(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(m_library->field()->isVisible());
    QVERIFY(m_library->edit()->hasFocus());
    QCOMPARE(m_library->field()->text(), QString());
    QTest::keyClicks(m_library->window.viewport(), u"an"_s);
    QCOMPARE(m_library->widget()->proxy()->rowCount(), 1);
}

void LibraryKeys::findGoesBackToAFieldThatIsOpen()
{
    QVERIFY(openFruit());
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(m_library->window.viewport(), u"e"_s);
    press(Qt::Key_Down);
    QVERIFY(list()->hasFocus());
    press(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(m_library->edit()->hasFocus());
    QCOMPARE(m_library->edit()->selectedText(), u"e"_s); // to be typed over
}

void LibraryKeys::findWithoutVideosIsNothing()
{
    QVERIFY(m_library->open({}));
    press(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(!m_library->field()->isVisible());
}

void LibraryKeys::escapeEmptiesAndHidesTheFieldBeforeItLeaves()
{
    QVERIFY(openFruit());
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(m_library->window.viewport(), u"an"_s);
    press(Qt::Key_Escape);
    QVERIFY(!m_library->field()->isVisible());
    QCOMPARE(m_library->field()->text(), QString());
    QCOMPARE(m_library->widget()->proxy()->rowCount(), 4);
    QVERIFY(list()->hasFocus());
    QVERIFY(m_library->window.isVisible());
    press(Qt::Key_Escape);
    QVERIFY(!m_library->window.isVisible());
}

void LibraryKeys::downLeadsFromTheFieldToTheFirstMatch()
{
    QVERIFY(openFruit());
    press(Qt::Key_End);
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(m_library->window.viewport(), u"e"_s); // Apple, Cherry, Date
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"Apple"_s);
    QCOMPARE(m_library->field()->text(), u"e"_s);
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"Cherry"_s);
}

void LibraryKeys::returnInTheFieldLeavesTheKeysToTheList()
{
    QVERIFY(openFruit());
    QSignalSpy play(m_library->page.get(), &LocalVideosPage::showNowPlayingPage);
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(m_library->window.viewport(), u"an"_s);
    press(Qt::Key_Return); // closes the keyboard
    QVERIFY(!m_library->edit()->hasFocus());
    QCOMPARE(play.count(), 0);
    press(Qt::Key_Return); // shows what the next plays
    QCOMPARE(marked(), u"Banana"_s);
    QCOMPARE(play.count(), 0);
    press(Qt::Key_Return);
    QCOMPARE(play.count(), 1);
}

void LibraryKeys::theListIsReachedAgainAfterNoResults()
{
    QVERIFY(openFruit());
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(m_library->window.viewport(), u"xyz"_s);
    QCOMPARE(m_library->widget()->viewState(), int(MyAllVideosWidget::NoResults));
    press(Qt::Key_Down);
    QVERIFY(m_library->edit()->hasFocus()); // there is nowhere to go
    press(Qt::Key_Escape);
    press(Qt::Key_Down);
    QCOMPARE(marked(), u"Apple"_s);
}

// Somebody types "xyz" over a list in which no title has an x: the field said "xxyz".
void LibraryKeys::aFirstLetterThatMatchesNothingIsTypedOnce()
{
    QVERIFY(openFruit());
    QTRY_VERIFY(list()->hasFocus());
    // The page hears a key before the item that has the focus.
    const auto type = [this](Qt::Key key, const QString &text) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        m_library->page->keyEvent(&event);
        QCoreApplication::sendEvent(&m_library->window, &event);
    };
    type(Qt::Key_X, u"x"_s);
    QCOMPARE(m_library->field()->text(), u"x"_s);
    QTRY_VERIFY(m_library->edit()->hasFocus());
    type(Qt::Key_Y, u"y"_s);
    QCOMPARE(m_library->field()->text(), u"xy"_s);
}

void LibraryKeys::rowsAreToldWithTitleDurationAndPlace()
{
    QVERIFY(m_library->open({LibraryFixture::row(1, u"<b>A</b>"_s, u"65"_s),
                             LibraryFixture::row(2, u"B"_s, u"5400"_s, u"1800"_s),
                             LibraryFixture::row(3, u"   "_s, u"0"_s)}));
    QStringList told;
    const QAccessibleInterface *videos = QAccessible::queryAccessibleInterface(list());
    for (int row = 0; row < videos->childCount(); ++row)
        told.append(videos->child(row)->text(QAccessible::Name) + u" | "_s
                    + videos->child(row)->text(QAccessible::Description));
    told.sort();
    QCOMPARE(videos->text(QAccessible::Name), u"Videos"_s);
    QCOMPARE(
        told.join(u'\n'),
        u".mp4 | Duration 00:00, 1 of 3\n<b>A</b> | Duration 01:05, 2 of 3\nB | 1:00:00 left to watch, 3 of 3"_s);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture library;
    LibraryKeys test(&library);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_librarykeys.moc"
