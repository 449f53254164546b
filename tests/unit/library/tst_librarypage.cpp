// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "library/filteredmodel.h"
#include "libraryfixture.h"
#include "platform/system/devicestate.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/pannableviewport.h"
#include "support/driventimer.h"
#include "support/sceneitems.h"

#include <QScreen>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;

namespace {

QStringList manyTitles(int count)
{
    QStringList titles;
    for (int i = 0; i < count; ++i)
        titles.append(u"video %1"_s.arg(i, 3, 10, QChar(u'0')));
    return titles;
}

} // namespace

class LibraryPageTest : public QObject
{
    Q_OBJECT

public:
    explicit LibraryPageTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { f.close(); }
    void emptyLibraryIsBlackAndSaysSo();
    void libraryWithVideosShowsTheListAndPans();
    void blackOfTheStartGoesFromTheWholePage();
    void viewStateFollowsRowsAndFilter();
    void noResultsStandsBelowItsSpacer();
    void deletingTheLastVideoShowsTheEmptyCollection();
    void typingALetterOpensTheFieldWithIt();
    void typingQuicklyLosesNoLetter();
    void typingWithoutVideosDoesNothing();
    void typingSomethingUnprintableDoesNothing();
    void typingUnderAnotherPageDoesNothing();
    void typingIntoAFieldThatWasPulledOpenGoesThere();
    void pullingFromTheTopShowsTheFieldWithoutFocus();
    void pullingAScrolledListShowsNothing();
    void emptyFieldHidesAfterFiveSecondsWithoutFocus();
    void fieldWithTextNeverHides();
    void panningTakesTheFocusFromTheField();
    void tapPlaysAndEmptiesTheFilter();
    void tapOnTheScreenPlaysAFilteredVideo();
    void tapDuringATurnIsIgnored();
    void tapOnNothingWarns();
    void cardAwayKeepsTheFilterTextAndIgnoresTyping();
    void cardReportedAwayTwiceKeepsTheText();
    void deletedFileDisappearsAtOnce();
    void resetFilterEmptiesAndHides();
    void leavingEmptiesTheFilter();
    void editedTitleMovesItsRow();
    void contentIsAnnouncedOnceItIsPainted();
    void announcementLetsOtherWorkPass();
    void contentThatEntersTwiceAtOnceIsAnnouncedOnce();
    void timerEventOfAnotherIdDoesNothing();
    void withoutContentOperationsWarn();

private:
    [[nodiscard]] toolkit::List *list() const { return f.widget()->list(); }
    [[nodiscard]] QTimer *timer() const { return f.widget()->findChild<QTimer *>(u"filterTimer"_s); }
    void fire() { QMetaObject::invokeMethod(timer(), "timeout"); }
    [[nodiscard]] QTimer *announcement() const { return f.page->findChild<QTimer *>(u"announcementTimer"_s); }
    [[nodiscard]] int rowCount() const { return f.widget()->proxy()->rowCount(); }
    [[nodiscard]] toolkit::Label *label() const { return childOf<toolkit::Label>(f.widget()); }

    LibraryFixture &f;
};

void LibraryPageTest::emptyLibraryIsBlackAndSaysSo()
{
    QVERIFY(f.open({}));
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::EmptyCollection));
    QVERIFY(label()->isVisible() && !list()->isVisible());
    QCOMPARE(label()->text(), qtTrId("qtn_vide_collection_empty"));
    QVERIFY(!f.page->isPannable());
    QCOMPARE(f.window.grab().toImage().pixelColor(10, 840), QColor(Qt::black));
}

void LibraryPageTest::libraryWithVideosShowsTheListAndPans()
{
    QVERIFY(f.open(LibraryFixture::rows(manyTitles(50))));
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
    QVERIFY(list()->isVisible() && !label()->isVisible());
    QVERIFY(f.page->isPannable());
    QVERIFY(f.window.grab().toImage().pixelColor(2, 840) != QColor(Qt::black));
    QTRY_VERIFY(list()->visibleIndexes().size() >= 5);
    QVERIFY(list()->cellCount() < 12);
}

void LibraryPageTest::blackOfTheStartGoesFromTheWholePage()
{
    // Seen on the screen, not in a picture that is painted anew: the strip behind the title stayed black.
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QScreen *screen = f.window.screen();
    const auto titleStrip = [&] {
        const QPoint at = f.window.mapToGlobal(QPoint(470, 10));
        return screen->grabWindow(0, at.x(), at.y(), 1, 1).toImage().pixelColor(0, 0);
    };
    QTRY_COMPARE(titleStrip(), f.page->style().color(u"background"_s));
}

void LibraryPageTest::viewStateFollowsRowsAndFilter()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    QSignalSpy content(f.widget(), &MyAllVideosWidget::contentVisible);
    f.page->showTextEdit(u"zzz"_s, true);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::NoResults));
    f.field()->setText(u"zz"_s); // still none: no second announcement
    f.field()->setText({});
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
    QVERIFY(list()->isVisible());
    QCOMPARE(content.count(), 2);
    QCOMPARE(content.at(0).first().toBool(), false);
    QCOMPARE(content.at(1).first().toBool(), true);
}

void LibraryPageTest::noResultsStandsBelowItsSpacer()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit(u"zzz"_s, true);
    QCOMPARE(label()->text(), qtTrId("qtn_vide_no_results"));
    QTRY_COMPARE(label()->geometry().top(), 100.0);
    f.field()->setText({});
    QTRY_COMPARE(list()->geometry().top(), 0.0);
}

void LibraryPageTest::deletingTheLastVideoShowsTheEmptyCollection()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit(u"a"_s, true);
    f.widget()->model()->removeVideo(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(f.widget()->viewState(), int(MyAllVideosWidget::EmptyCollection));
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::typingALetterOpensTheFieldWithIt()
{
    QVERIFY(f.open(LibraryFixture::rows(manyTitles(40))));
    QTRY_VERIFY(list()->cellCount() > 0);
    f.page->pannableViewport()->setPosition({0, 500});
    QTRY_COMPARE(f.page->pannableViewport()->position().y(), 500.0);
    f.key(u"1"_s, Qt::Key_1);
    QVERIFY(f.field()->isVisible());
    QCOMPARE(f.field()->text(), u"1"_s);
    QCOMPARE(f.page->pannableViewport()->position().y(), 0.0);
    QCOMPARE(rowCount(), 13);
    QTRY_VERIFY(f.edit()->hasFocus());
    QCOMPARE(f.edit()->cursorPosition(), 1);
}

void LibraryPageTest::typingQuicklyLosesNoLetter()
{
    QVERIFY(f.open(LibraryFixture::rows({u"abba"_s, u"about"_s, u"alpha"_s})));
    f.key(u"a"_s, Qt::Key_A); // both before the event loop gives the field the focus
    f.key(u"b"_s, Qt::Key_B);
    QCOMPARE(f.field()->text(), u"ab"_s);
    QTRY_VERIFY(f.edit()->hasFocus());
    f.key(u"o"_s, Qt::Key_O);
    QCOMPARE(f.field()->text(), u"abo"_s);
    QCOMPARE(rowCount(), 1);
}

void LibraryPageTest::typingWithoutVideosDoesNothing()
{
    QVERIFY(f.open({}));
    f.key(u"a"_s, Qt::Key_A);
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::typingSomethingUnprintableDoesNothing()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.key(u"\x1b"_s, Qt::Key_F1);
    f.key({}, Qt::Key_Shift);
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::typingUnderAnotherPageDoesNothing()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.widget()->setVisible(false);
    f.key(u"a"_s, Qt::Key_A);
    QCOMPARE(f.field()->text(), QString());
    f.widget()->setVisible(true);
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::typingIntoAFieldThatWasPulledOpenGoesThere()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.widget()->VKBFilter({0, 0});
    f.widget()->VKBFilter({0, -5});
    f.key(u"b"_s, Qt::Key_B);
    QCOMPARE(f.field()->text(), u"b"_s);
    QTRY_VERIFY(f.edit()->hasFocus());
    QVERIFY(!timer()->isActive());
}

void LibraryPageTest::pullingFromTheTopShowsTheFieldWithoutFocus()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTRY_VERIFY(list()->isOnDisplay());
    Q_EMIT f.page->pannableViewport()->positionChanged({0, 0});
    Q_EMIT f.page->pannableViewport()->positionChanged({0, -1});
    QVERIFY(f.field()->isVisible());
    QVERIFY(timer()->isActive());
    QCoreApplication::processEvents();
    QVERIFY(!f.edit()->hasFocus());
    QCOMPARE(f.field()->size().height(), 80.0);
}

void LibraryPageTest::pullingAScrolledListShowsNothing()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.widget()->VKBFilter({0, 3});
    f.widget()->VKBFilter({0, -1});
    QVERIFY(!f.field()->isVisible());
    f.widget()->VKBFilter({0, 0});
    f.widget()->VKBFilter({0, -1});
    QVERIFY(f.field()->isVisible());
}

void LibraryPageTest::emptyFieldHidesAfterFiveSecondsWithoutFocus()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QCOMPARE(timer()->interval(), 5000);
    QVERIFY(timer()->isSingleShot());
    f.page->showTextEdit({}, true);
    f.edit()->setFocus();
    QVERIFY(!timer()->isActive());
    fire(); // while it has the focus
    QVERIFY(f.field()->isVisible());
    f.edit()->clearFocus();
    QVERIFY(timer()->isActive());
    fire();
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::fieldWithTextNeverHides()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit(u"a"_s, true);
    f.edit()->setFocus();
    f.edit()->clearFocus();
    QVERIFY(!timer()->isActive());
    fire();
    QVERIFY(f.field()->isVisible());
    f.page->hideEmptyFilter();
    QVERIFY(f.field()->isVisible());
    f.field()->setText({});
    f.page->hideEmptyFilter();
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::panningTakesTheFocusFromTheField()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit({}, true);
    f.edit()->setFocus();
    Q_EMIT list()->panningStarted();
    QVERIFY(list()->hasFocus());
    QVERIFY(timer()->isActive());
    Q_EMIT list()->panningStopped();
}

void LibraryPageTest::tapPlaysAndEmptiesTheFilter()
{
    QVERIFY(
        f.open({LibraryFixture::row(1, u"alpha"_s), LibraryFixture::row(2, u"beta"_s, u"90"_s, u"30"_s)}));
    f.page->showTextEdit(u"bet"_s, true);
    VideoInfo played;
    connect(f.page.get(), &LocalVideosPage::showNowPlayingPage, this,
            [&played](VideoInfo &info) { played = info; });
    Q_EMIT list()->itemClicked(f.widget()->proxy()->index(0, 0));
    QCOMPARE(played.title + u' ' + played.url, u"beta file:///videos/2.mp4"_s);
    QCOMPARE(played.playPosition, 30u);
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.field()->isVisible());
    QVERIFY(list()->hasFocus());
}

void LibraryPageTest::tapOnTheScreenPlaysAFilteredVideo()
{
    // Typed, found, touched: the whole way of a finger.
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s, u"gamma"_s})));
    QStringList played;
    connect(f.page.get(), &LocalVideosPage::showNowPlayingPage, this,
            [&played](VideoInfo &info) { played.append(info.title); });
    f.key(u"g"_s, Qt::Key_G);
    QTRY_VERIFY(f.edit()->hasFocus());
    const auto cell = [this] { return list()->cell(f.widget()->proxy()->index(0, 0)); };
    QTRY_VERIFY(cell() && cell()->sceneBoundingRect().top() >= f.field()->sceneBoundingRect().bottom());
    const QPoint at = f.window.mapFromScene(cell()->sceneBoundingRect().center());
    QTest::mouseClick(f.window.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTRY_COMPARE(played, QStringList(u"gamma"_s));
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.field()->isVisible());
    QCOMPARE(rowCount(), 3);
    QVERIFY(!timer()->isActive());
}

void LibraryPageTest::tapDuringATurnIsIgnored()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    int played = 0;
    connect(f.page.get(), &LocalVideosPage::showNowPlayingPage, this, [&played] { ++played; });
    Q_EMIT f.window.orientationChangeStarted();
    Q_EMIT list()->itemClicked(f.widget()->proxy()->index(0, 0));
    QCOMPARE(played, 0);
    Q_EMIT f.window.orientationChangeFinished();
    Q_EMIT list()->itemClicked(f.widget()->proxy()->index(0, 0));
    QCOMPARE(played, 1);
}

void LibraryPageTest::tapOnNothingWarns()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTest::ignoreMessage(QtWarningMsg,
                         "void MyAllVideosWidget::itemClicked(const QModelIndex&) Invalid index");
    f.widget()->itemClicked({});
    QTest::ignoreMessage(QtWarningMsg, "void MyAllVideosWidget::keyEvent(QKeyEvent*) NULL param");
    f.widget()->keyEvent(nullptr);
}

void LibraryPageTest::cardAwayKeepsTheFilterTextAndIgnoresTyping()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.page->showTextEdit(u"bet"_s, true);
    Q_EMIT f.page->mmcStateChanged(false);
    QVERIFY(!f.field()->isVisible());
    QCOMPARE(f.field()->text(), QString());
    f.key(u"a"_s, Qt::Key_A);
    QVERIFY(!f.field()->isVisible());
    Q_EMIT f.page->mmcStateChanged(true);
    QVERIFY(f.field()->isVisible());
    QCOMPARE(f.field()->text(), u"bet"_s);
    QCOMPARE(rowCount(), 1);
}

void LibraryPageTest::cardReportedAwayTwiceKeepsTheText()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit(u"al"_s, true);
    Q_EMIT f.page->mmcStateChanged(false);
    Q_EMIT f.page->mmcStateChanged(false);
    Q_EMIT f.page->mmcStateChanged(true);
    QCOMPARE(f.field()->text(), u"al"_s);
}

void LibraryPageTest::deletedFileDisappearsAtOnce()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.page->deleteFile({});
    QCOMPARE(rowCount(), 2);
    f.page->deleteFile(u"file:///videos/1.mp4"_s);
    QCOMPARE(rowCount(), 1);
}

void LibraryPageTest::resetFilterEmptiesAndHides()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.page->showTextEdit(u"bet"_s, true);
    f.page->resetFilter();
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.field()->isVisible());
    QVERIFY(!timer()->isActive());
    QVERIFY(list()->hasFocus());
    QCOMPARE(rowCount(), 2);
    // What was kept while the card is away goes, too.
    f.page->showTextEdit(u"bet"_s, true);
    Q_EMIT f.page->mmcStateChanged(false);
    f.page->resetFilter();
    Q_EMIT f.page->mmcStateChanged(true);
    QCOMPARE(f.field()->text(), QString());
    QVERIFY(!f.field()->isVisible());
}

void LibraryPageTest::leavingEmptiesTheFilter()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit(u"al"_s, true);
    QSignalSpy back(f.page.get(), &LocalVideosPage::goBackClicked);
    Q_EMIT f.page->backButtonClicked();
    QCOMPARE(back.count(), 1);
    QCOMPARE(f.field()->text(), QString());
}

void LibraryPageTest::editedTitleMovesItsRow()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.page->showTextEdit(u"z"_s, true);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::NoResults));
    Q_EMIT TrackerInterface::instance()->videosChanged({LibraryFixture::row(1, u"zeta"_s)});
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
    QCOMPARE(rowCount(), 1);
}

void LibraryPageTest::contentIsAnnouncedOnceItIsPainted()
{
    f.page = std::make_unique<LocalVideosPage>();
    QVERIFY(!f.page->localVideosWidget());
    QTimer *delay = announcement();
    QCOMPARE(delay->interval(), 300);
    QVERIFY(delay->isSingleShot() && !delay->isActive());
    QSignalSpy created(f.page.get(), &LocalVideosPage::localContentCreated);
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    QTRY_VERIFY(delay->isActive());
    QCOMPARE(created.count(), 0);
    QVERIFY(runOut(delay));
    QCOMPARE(created.count(), 1);
    Q_EMIT f.widget()->displayEntered();
    QCoreApplication::processEvents();
    QVERIFY(!delay->isActive());
    QCOMPARE(created.count(), 1);
}

// Work that was posted later, as painting is, comes first.
void LibraryPageTest::announcementLetsOtherWorkPass()
{
    f.page = std::make_unique<LocalVideosPage>();
    f.page->ensureContent();
    QString order;
    Q_EMIT f.widget()->displayEntered();
    QMetaObject::invokeMethod(
        f.page.get(), [&] { order += announcement()->isActive() ? u"late"_s : u"in time"_s; },
        Qt::QueuedConnection);
    QVERIFY(!announcement()->isActive());
    QTRY_VERIFY(announcement()->isActive());
    QCOMPARE(order, u"in time"_s);
}

void LibraryPageTest::contentThatEntersTwiceAtOnceIsAnnouncedOnce()
{
    // Left and back before the first announcement was handled.
    f.page = std::make_unique<LocalVideosPage>();
    f.page->ensureContent();
    QSignalSpy created(f.page.get(), &LocalVideosPage::localContentCreated);
    Q_EMIT f.widget()->displayEntered();
    Q_EMIT f.widget()->displayEntered();
    QTRY_VERIFY(announcement()->isActive());
    QVERIFY(runOut(announcement()));
    QCoreApplication::processEvents();
    QVERIFY(!announcement()->isActive());
    QCOMPARE(created.count(), 1);
}

void LibraryPageTest::timerEventOfAnotherIdDoesNothing()
{
    f.page = std::make_unique<LocalVideosPage>();
    f.page->ensureContent();
    QTimerEvent other(14999);
    f.page->timerEvent(&other);
    QVERIFY(!announcement()->isActive());
    QTimerEvent right(15000);
    f.page->timerEvent(&right);
    QVERIFY(announcement()->isActive());
}

void LibraryPageTest::withoutContentOperationsWarn()
{
    LocalVideosPage bare;
    const auto expect = [](const char *function) {
        QTest::ignoreMessage(QtWarningMsg, (QByteArray(function) + " localVideosWidget is null").constData());
    };
    expect("void LocalVideosPage::resetFilter()");
    bare.resetFilter();
    expect("void LocalVideosPage::setAutoUpdate(bool)");
    bare.setAutoUpdate(true);
    expect("void LocalVideosPage::deleteFile(const QString&)");
    bare.deleteFile(u"file:///x"_s);
    expect("void LocalVideosPage::keyEvent(QKeyEvent*)");
    bare.keyEvent(nullptr);
    expect("void LocalVideosPage::disableThumbnailing(bool)");
    bare.disableThumbnailing(true);
    expect("void LocalVideosPage::cancelDialogs()");
    bare.cancelDialogs();
    QTest::ignoreMessage(
        QtWarningMsg, "void LocalVideosPage::showTextEdit(const QString&, bool) Widget returned NULL filter");
    bare.showTextEdit({}, true);
    bare.hideEmptyFilter();
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    LibraryPageTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_librarypage.moc"
