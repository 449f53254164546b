// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "library/filteredmodel.h"
#include "libraryfixture.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/pannableviewport.h"
#include "support/driventimer.h"

#include <QPointingDevice>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;

// The library under the fingers: events of a touch screen, through everything that lies between.
class LibraryTouchTest : public QObject
{
    Q_OBJECT

public:
    explicit LibraryTouchTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup() { f.close(); }
    void tapPlays();
    void tapDuringATurnIsIgnored();
    void secondFingerPlaysNothingElse();
    void dragScrollsAndPlaysNothing();
    void dragFromTheTopBringsTheField();
    void dragOfAScrolledListBringsNoField();
    void tapOnTheFieldBringsTheKeyboardAndPanTakesItAway();
    void tapOnTheClearButtonKeepsTheKeyboard();
    void tapOnAFilteredVideoRaisesNoKeyboard();
    void restingFingerInTheFieldBringsItsMenu();

private:
    [[nodiscard]] toolkit::List *list() const { return f.widget()->list(); }
    [[nodiscard]] toolkit::PannableViewport *viewport() const { return f.page->pannableViewport(); }
    [[nodiscard]] QPoint onCell(int row) const
    {
        const toolkit::Widget *cell = list()->cell(f.widget()->proxy()->index(row, 0));
        return cell ? f.window.mapFromScene(cell->sceneBoundingRect().center()) : QPoint(-1, -1);
    }
    [[nodiscard]] QPoint onWidget(const QGraphicsItem *item) const
    {
        return f.window.mapFromScene(item->sceneBoundingRect().center());
    }
    void touch(const QPoint &at) { QTest::touchEvent(&f.window, m_screen.get()).press(0, at, &f.window); }
    void move(const QPoint &at) { QTest::touchEvent(&f.window, m_screen.get()).move(0, at, &f.window); }
    void lift(const QPoint &at) { QTest::touchEvent(&f.window, m_screen.get()).release(0, at, &f.window); }
    void tap(const QPoint &at)
    {
        touch(at);
        lift(at);
    }
    // Down by `distance`, a step at a time as frames go by.
    void drag(const QPoint &from, int distance)
    {
        touch(from);
        for (int step = 1; step <= 8; ++step) {
            const qreal before = viewport()->position().y();
            move(from + QPoint(0, distance * step / 8));
            if (viewport()->isPanning())
                (void)QTest::qWaitFor([&] { return viewport()->position().y() != before; }, 100);
        }
        lift(from + QPoint(0, distance));
    }

    LibraryFixture &f;
    QStringList m_played;
    std::unique_ptr<QPointingDevice> m_screen{QTest::createTouchDevice()};
};

void LibraryTouchTest::init()
{
    QStringList titles;
    for (int i = 0; i < 30; ++i)
        titles.append(u"video %1"_s.arg(i, 2, 10, QChar(u'0')));
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    m_played.clear();
    connect(f.page.get(), &LocalVideosPage::showNowPlayingPage, this,
            [this](VideoInfo &info) { m_played.append(info.title); });
    QTRY_VERIFY(onCell(3).y() > 0);
}

void LibraryTouchTest::tapPlays()
{
    tap(onCell(2));
    QTRY_COMPARE(m_played, QStringList(u"video 02"_s));
}

void LibraryTouchTest::tapDuringATurnIsIgnored()
{
    Q_EMIT f.window.orientationChangeStarted();
    tap(onCell(2));
    Q_EMIT f.window.orientationChangeFinished();
    tap(onCell(1));
    QTRY_COMPARE(m_played, QStringList(u"video 01"_s));
}

void LibraryTouchTest::secondFingerPlaysNothingElse()
{
    const QPoint first = onCell(1);
    const QPoint second = onCell(3);
    QTest::touchEvent(&f.window, m_screen.get()).press(0, first, &f.window);
    QTest::touchEvent(&f.window, m_screen.get()).move(0, first, &f.window).press(1, second, &f.window);
    QTest::touchEvent(&f.window, m_screen.get()).move(0, first, &f.window).release(1, second, &f.window);
    QTest::touchEvent(&f.window, m_screen.get()).release(0, first, &f.window);
    QTRY_COMPARE(m_played, QStringList(u"video 01"_s));
}

void LibraryTouchTest::dragScrollsAndPlaysNothing()
{
    drag(onCell(3), -300);
    QTRY_VERIFY(viewport()->position().y() > 100);
    QTRY_VERIFY(!viewport()->isPanning());
    QCOMPARE(m_played, QStringList());
    QVERIFY(!f.field()->isVisible());
}

void LibraryTouchTest::dragFromTheTopBringsTheField()
{
    QCOMPARE(viewport()->position().y(), 0.0);
    drag(onCell(1), 200);
    QTRY_VERIFY(f.field()->isVisible());
    QTRY_COMPARE(viewport()->position().y(), 0.0);
    QVERIFY(!f.edit()->hasFocus());
    auto *timer = f.widget()->findChild<QTimer *>(u"filterTimer"_s);
    QVERIFY(runOut(timer));
    QVERIFY(!f.field()->isVisible());
    QCOMPARE(m_played, QStringList());
}

void LibraryTouchTest::dragOfAScrolledListBringsNoField()
{
    viewport()->setPosition({0, 600});
    QTRY_COMPARE(viewport()->position().y(), 600.0);
    QTRY_VERIFY(onCell(6).y() > 0);
    drag(onCell(6), 120);
    QTRY_VERIFY(!viewport()->isPanning());
    QVERIFY(!f.field()->isVisible());
}

void LibraryTouchTest::tapOnTheFieldBringsTheKeyboardAndPanTakesItAway()
{
    f.page->showTextEdit({}, true);
    QTRY_VERIFY(f.field()->size().height() > 0 && onCell(1).y() > 0);
    tap(onWidget(f.edit()));
    QTRY_VERIFY(f.edit()->hasFocus());
    f.key(u"v"_s, Qt::Key_V);
    QCOMPARE(f.field()->text(), u"v"_s);
    drag(onCell(3), -200);
    QVERIFY(!f.edit()->hasFocus());
    QVERIFY(list()->hasFocus());
    QCOMPARE(f.field()->text(), u"v"_s);
    QVERIFY(f.field()->isVisible());
}

void LibraryTouchTest::tapOnTheClearButtonKeepsTheKeyboard()
{
    f.page->showTextEdit(u"1"_s, true);
    f.edit()->setFocus();
    QTRY_COMPARE(f.field()->size().width(), 480.0);
    tap(f.window.mapFromScene(f.field()->mapToScene(QPointF(434, 40))));
    QTRY_COMPARE(f.field()->text(), QString());
    QVERIFY(f.edit()->hasFocus());
    QVERIFY(!f.widget()->findChild<QTimer *>(u"filterTimer"_s)->isActive());
    QVERIFY(f.field()->isVisible());
}

void LibraryTouchTest::tapOnAFilteredVideoRaisesNoKeyboard()
{
    f.page->showTextEdit(u"07"_s, true);
    QTRY_VERIFY(f.widget()->proxy()->rowCount() == 1 && onCell(0).y() > onWidget(f.field()).y() + 80);
    QSignalSpy gained(f.edit(), &toolkit::TextEdit::gainedFocus);
    tap(onCell(0));
    QTRY_COMPARE(m_played, QStringList(u"video 07"_s));
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.field()->isVisible());
    QCOMPARE(gained.count(), 0);
}

void LibraryTouchTest::restingFingerInTheFieldBringsItsMenu()
{
    f.page->showTextEdit(u"video"_s, true);
    QTRY_COMPARE(f.field()->size().width(), 480.0);
    const QPoint at = f.window.mapFromScene(f.edit()->mapToScene(QPointF(40, 30)));
    touch(at);
    QVERIFY(runOut(f.edit()->findChild<QTimer *>(u"longTap"_s)));
    lift(at);
    QVERIFY(f.edit()->menu() != nullptr);
    QCOMPARE(f.edit()->selectedText(), u"video"_s);
    f.page->resetFilter();
    QVERIFY(f.edit()->menu() == nullptr);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    LibraryTouchTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_librarytouch.moc"
