// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "fileops/editmanager.h"
#include "fileops/filemanager.h"
#include "fileops/fileremoval.h"
#include "library/filteredmodel.h"
#include "libraryfixture.h"
#include "platform/toolkit/action.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheet.h"
#include "support/deletionquestion.h"
#include "support/driventimer.h"
#include "support/loglines.h"

#include <QDir>
#include <QMouseEvent>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;
using toolkit::ObjectMenu;
using toolkit::QueryDialog;
using toolkit::Sheet;

// What can be done with a video of the list, from the menu of its cell.
class TestVideoMenu : public QObject
{
    Q_OBJECT

public:
    explicit TestVideoMenu(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup();
    void theActionsInTheirOrder();
    void aStreamCannotBeDeleted();
    void aLongPressOpensItAtTheFinger();
    void theCellUnderItIsLitUntilItIsGone_data();
    void theCellUnderItIsLitUntilItIsGone();
    void theFingerThatRestedPansNothing();
    void theFilterFieldLosesTheFocus();
    void detailsAndShare();
    void aVideoThatIsGoneIsNotShared();
    void whatKeepsItShut_data();
    void whatKeepsItShut();
    void keysDoNotReachTheFilterUnderIt();
    void keysDoNotReachTheFilterWhileTheMenuFades();
    void renamed();
    void aTapWhileTheSheetGoesPlaysNothing();
    void deleted();
    void theLastOneDeleted();
    void theVideoWhoseMenuWasOpenedIsDeleted();
    void aVideoThatMovedWhileItWasAskedAbout();
    void aFileThatCannotBeDeletedIsTold();
    void oneQuestionAtATime();
    void theCardGoes();
    void anotherPageComes();
    void noMenuWhileThePageIsLeft();
    void keysActOnTheMarkedVideo();
    void keysActOnNothingWhileTheCardIsAway();

private:
    [[nodiscard]] ObjectMenu *menu() const { return f.widget()->objectMenu(); }
    [[nodiscard]] QModelIndex row(const QString &title) const { return f.indexOf(title); }
    void openMenu(const QString &title) const { f.widget()->itemLongTapped(row(title), {100, 200}); }
    void choose(const QString &action) const
    {
        for (int i = 0; i < menu()->entryCount(); ++i) {
            if (menu()->entry(i)->objectName() == action)
                menu()->chooseEntry(i);
        }
    }
    template <typename Kind> [[nodiscard]] Kind *popup() const { return activePopup<Kind>(f.window); }
    // Real files with these titles in a folder; the store answers for each by its identifier.
    bool openWithFiles(const QStringList &titles);
    QueryDialog *askToDelete(const QString &title);
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files, QDir::Name);
    }

    LibraryFixture &f;
    std::unique_ptr<QTemporaryDir> m_folder;
    QList<QStringList> m_rows;
};

void TestVideoMenu::cleanup()
{
    f.close();
    f.store.answerBy({});
}

bool TestVideoMenu::openWithFiles(const QStringList &titles)
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_rows = LibraryFixture::rows(titles);
    for (QStringList &video : m_rows) {
        QFile file(m_folder->filePath(video.at(VideoColumn::Title) + u".mp4"_s));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(video.at(VideoColumn::Title).toUtf8());
        video[VideoColumn::Url] = QString::fromUtf8(QUrl::fromLocalFile(file.fileName()).toEncoded());
    }
    if (!f.open(m_rows))
        return false;
    f.store.answerBy([this](const SparqlQuery &query) {
        for (const QStringList &video : std::as_const(m_rows)) {
            if (query.text().contains(u'<' + video.at(VideoColumn::Urn) + u'>'))
                return FakeSparqlAnswer::rows({QVariantList(video.cbegin(), video.cend())});
        }
        return FakeSparqlAnswer::rows({});
    });
    return true;
}

QueryDialog *TestVideoMenu::askToDelete(const QString &title)
{
    openMenu(title);
    choose(u"deleteAction"_s);
    return deletionQuestion(f.window, [this] { return f.widget()->fileManager(); });
}

// A video that comes over the net, beside one of this machine.
void TestVideoMenu::aStreamCannotBeDeleted()
{
    QList<QStringList> rows = LibraryFixture::rows({u"alpha"_s, u"beta"_s});
    rows[0][VideoColumn::Url] = u"http://archive.example/alpha.mp4"_s;
    QVERIFY(f.open(rows));
    const auto disabled = [this] {
        QStringList names;
        for (const QAction *action : menu()->actions()) {
            if (!action->isEnabled())
                names.append(action->objectName());
        }
        return names;
    };
    openMenu(u"alpha"_s);
    QCOMPARE(disabled(), QStringList{u"deleteAction"_s});
    Q_EMIT f.widget()->list()->removeRequested(f.indexOf(u"alpha"_s));
    QVERIFY(!f.widget()->fileManager());
    f.widget()->closeDialogs();
    openMenu(u"beta"_s);
    QCOMPARE(disabled(), QStringList());
}

void TestVideoMenu::theActionsInTheirOrder()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QStringList names;
    QStringList texts;
    for (const QAction *action : menu()->actions()) {
        const auto *own = qobject_cast<const toolkit::Action *>(action);
        QVERIFY(own);
        QCOMPARE(own->location(), toolkit::Action::Locations(toolkit::Action::ObjectMenuLocation));
        QCOMPARE(own->isDestructive(), action->objectName() == "deleteAction"_L1);
        names.append(action->objectName());
        texts.append(action->text());
    }
    QCOMPARE(names, (QStringList{u"detailsAction"_s, u"shareAction"_s, u"editAction"_s, u"deleteAction"_s}));
    QCOMPARE(texts,
             (QStringList{qtTrId("qtn_comm_object_details"), qtTrId("qtn_comm_command_share"),
                          qtTrId("qtn_comm_command_rename"), qtTrId("qtn_comm_command_delete")}));
    QCOMPARE(menu()->state(), ObjectMenu::State::Hidden);
}

void TestVideoMenu::aLongPressOpensItAtTheFinger()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    const QPointF finger = f.widget()->list()->cell(row(u"beta"_s))->sceneBoundingRect().center();
    QTest::mousePress(f.window.viewport(), Qt::LeftButton, {},
                      f.window.viewportTransform().map(finger).toPoint());
    QTRY_COMPARE(menu()->state(), ObjectMenu::State::Shown);
    QVERIFY(QLineF(menu()->cursorPosition(), finger).length() < 2);
    QTest::mouseRelease(f.window.viewport(), Qt::LeftButton, {},
                        f.window.viewportTransform().map(finger).toPoint());
    QCOMPARE(menu()->state(), ObjectMenu::State::Shown);
    QSignalSpy details(f.page.get(), &LocalVideosPage::showDetailsPage);
    choose(u"detailsAction"_s);
    QCOMPARE(details.size(), 1);
    QCOMPARE(details.first().first().toString(), u"urn:uuid:2"_s);
}

// Menu and list do not both follow one finger.
void TestVideoMenu::theCellUnderItIsLitUntilItIsGone_data()
{
    QTest::addColumn<QString>("end");
    QTest::newRow("back") << u"escape"_s;
    QTest::newRow("an action") << u"detailsAction"_s;
    QTest::newRow("the card goes") << u"card"_s;
    QTest::newRow("the page goes") << u"page"_s;
}

// The menu hides a part of the cell: that it is this one stays seen.
void TestVideoMenu::theCellUnderItIsLitUntilItIsGone()
{
    QFETCH(QString, end);
    QVERIFY(f.open(LibraryFixture::rows({u"Apple"_s, u"Banana"_s, u"Cherry"_s})));
    const toolkit::List *list = f.widget()->list();
    const auto plate = [&](int row) {
        const QRectF cell = list->mapRectToScene(list->rowRect(f.widget()->proxy()->index(row, 0)));
        const QImage picture = f.window.grab().toImage();
        return picture.pixelColor(f.window.mapFromScene(cell.topRight() + QPointF(-6, 6)));
    };
    QTRY_VERIFY(list->rowRect(f.widget()->proxy()->index(1, 0)).height() > 0);
    const QColor rest = plate(0);
    QCOMPARE(plate(1), rest);
    openMenu(u"Banana"_s);
    QVERIFY(menu()->isActive());
    QCOMPARE(list->heldIndex(), row(u"Banana"_s));
    QVERIFY2(plate(1).lightness() > plate(0).lightness(), qPrintable(plate(1).name()));
    if (end == "escape"_L1)
        QTest::keyClick(f.window.viewport(), Qt::Key_Escape);
    else if (end == "card"_L1)
        Q_EMIT f.page->mmcStateChanged(false);
    else if (end == "page"_L1)
        f.page->cancelDialogs();
    else
        choose(end);
    QTRY_VERIFY(!menu()->isDisplayed());
    QVERIFY(!list->heldIndex().isValid());
    QCOMPARE(plate(1), plate(0));
}

void TestVideoMenu::theFingerThatRestedPansNothing()
{
    QStringList many;
    for (int i = 0; i < 40; ++i)
        many.append(u"video %1"_s.arg(i, 2, 10, QLatin1Char('0')));
    QVERIFY(f.open(LibraryFixture::rows(many)));
    const QPoint at(240, 400);
    QTest::mousePress(f.window.viewport(), Qt::LeftButton, {}, at);
    QTRY_COMPARE(menu()->state(), ObjectMenu::State::Shown);
    for (int step = 1; step <= 10; ++step) {
        const QPoint to = at - QPoint(0, 30 * step);
        QMouseEvent move(QEvent::MouseMove, to, f.window.viewport()->mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(f.window.viewport(), &move);
    }
    QTest::mouseRelease(f.window.viewport(), Qt::LeftButton, {}, at - QPoint(0, 300));
    QCOMPARE(f.page->pannableViewport()->position().y(), 0);
    QCOMPARE(menu()->state(), ObjectMenu::State::Shown);
}

void TestVideoMenu::theFilterFieldLosesTheFocus()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.key(u"a"_s, Qt::Key_A);
    QTRY_VERIFY(f.edit()->hasFocus());
    openMenu(u"alpha"_s);
    QVERIFY(!f.edit()->hasFocus());
    menu()->disappear();
    QVERIFY(!f.edit()->hasFocus());
    QCOMPARE(f.field()->text(), u"a"_s);
}

void TestVideoMenu::detailsAndShare()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    QSignalSpy details(f.page.get(), &LocalVideosPage::showDetailsPage);
    QSignalSpy share(f.page.get(), &LocalVideosPage::shareVideo);
    openMenu(u"beta"_s);
    choose(u"detailsAction"_s);
    openMenu(u"alpha"_s);
    choose(u"shareAction"_s);
    QCOMPARE(details.first().first().toString(), u"urn:uuid:2"_s);
    QCOMPARE(share.first().first().toString(), u"file:///videos/1.mp4"_s);
    QCOMPARE(details.size() + share.size(), 2);
}

void TestVideoMenu::aVideoThatIsGoneIsNotShared()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    QSignalSpy share(f.page.get(), &LocalVideosPage::shareVideo);
    openMenu(u"alpha"_s);
    f.widget()->model()->videosDeleted({1});
    choose(u"shareAction"_s);
    QCOMPARE(share.size(), 0);
}

void TestVideoMenu::whatKeepsItShut_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("warning");
    const QString function = u"void MyAllVideosWidget::showListObjectMenu(const QPointF&) "_s;
    QTest::newRow("the card is away") << u"card"_s << function + u"MMC not available!"_s;
    QTest::newRow("a video without an identifier") << u"urn"_s << function + u"No object menu Urn set!"_s;
    QTest::newRow("no actions") << u"actions"_s << function + u"Empty action list"_s;
    QTest::newRow("no row") << u"row"_s << QString();
}

void TestVideoMenu::whatKeepsItShut()
{
    QFETCH(QString, what);
    QFETCH(QString, warning);
    QList<QStringList> rows = LibraryFixture::rows({u"alpha"_s});
    if (what == "urn"_L1)
        rows[0][VideoColumn::Urn].clear();
    QVERIFY(f.open(rows));
    if (what == "card"_L1)
        f.widget()->mmcStateChanged(false);
    const QList<QAction *> actions = menu()->actions();
    if (what == "actions"_L1) {
        for (QAction *action : actions)
            menu()->removeAction(action);
    }
    LogLines log("kestrel.library");
    if (what == "row"_L1)
        f.widget()->itemLongTapped({}, {100, 200});
    else
        openMenu(u"alpha"_s);
    QCOMPARE(menu()->state(), ObjectMenu::State::Hidden);
    QCOMPARE(log.all().join(u'\n'), warning);
}

void TestVideoMenu::keysDoNotReachTheFilterUnderIt()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    openMenu(u"alpha"_s);
    f.key(u"b"_s, Qt::Key_B);
    QVERIFY(!f.field()->isVisible());
    QCOMPARE(menu()->state(), ObjectMenu::State::Shown);
}

void TestVideoMenu::keysDoNotReachTheFilterWhileTheMenuFades()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    toolkit::Theme::instance()->setReducedMotion(false);
    const auto calm = qScopeGuard([] { toolkit::Theme::instance()->setReducedMotion(true); });
    openMenu(u"alpha"_s);
    QTRY_COMPARE(menu()->state(), ObjectMenu::State::Shown);
    menu()->disappear();
    QCOMPARE(menu()->state(), ObjectMenu::State::Disappearing);
    f.key(u"b"_s, Qt::Key_B);
    QVERIFY(!f.field()->isVisible());
    QTRY_COMPARE(menu()->state(), ObjectMenu::State::Hidden);
    f.key(u"b"_s, Qt::Key_B);
    QVERIFY(f.field()->isVisible());
}

void TestVideoMenu::renamed()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    f.store.answerBy({});
    f.store.answerWith({{u"beta"_s, u"beta.mp4"_s}});
    openMenu(u"beta"_s);
    choose(u"editAction"_s);
    QTRY_VERIFY(popup<Sheet>());
    f.key(u"x"_s, Qt::Key_X); // the page leaves it to the field of the sheet
    QVERIFY(!f.field()->isVisible());
    QTest::keyClick(&f.window, Qt::Key_Return);
    const QStringList written = f.store.texts(SparqlQuery::UpdateStatement);
    QVERIFY(!written.isEmpty());
    QVERIFY2(written.last().contains(u"<urn:uuid:2>"_s), qPrintable(written.last()));
    QVERIFY2(written.last().contains(u"\"betax\""_s), qPrintable(written.last()));
    // The list learns of it from the store.
    QCOMPARE(f.titles(), (QStringList{u"alpha"_s, u"beta"_s}));
    QStringList changed = m_rows.at(1);
    changed[VideoColumn::Title] = u"Abeta"_s;
    f.widget()->model()->videosChanged({changed});
    QTRY_COMPARE(f.titles(), (QStringList{u"Abeta"_s, u"alpha"_s}));
}

void TestVideoMenu::aTapWhileTheSheetGoesPlaysNothing()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    QSignalSpy play(f.page.get(), &LocalVideosPage::showNowPlayingPage);
    f.store.answerWith({{u"alpha"_s, u"alpha.mp4"_s}});
    openMenu(u"alpha"_s);
    choose(u"editAction"_s);
    QTRY_VERIFY(popup<Sheet>());
    QTest::keyClick(&f.window, Qt::Key_Escape);
    f.widget()->itemClicked(row(u"beta"_s));
    QCOMPARE(play.size(), 0);
    QVERIFY(runOut(f.widget()->editManager()->findChild<QTimer *>(u"displayedTimer"_s)));
    f.widget()->itemClicked(row(u"beta"_s));
    QCOMPARE(play.size(), 1);
}

void TestVideoMenu::deleted()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s, u"gamma"_s}));
    QSignalSpy notify(f.page.get(), &LocalVideosPage::handleError);
    QueryDialog *dialog = askToDelete(u"beta"_s);
    QVERIFY(dialog);
    QCOMPARE(dialog->text(), u"<span>beta</span"_s);
    QCOMPARE(f.titles().size(), 3);
    dialog->accept();
    QTRY_COMPARE(f.titles(), (QStringList{u"alpha"_s, u"gamma"_s}));
    QCOMPARE(files(), (QStringList{u"alpha.mp4"_s, u"gamma.mp4"_s}));
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
    QCOMPARE(notify.size(), 0);
}

void TestVideoMenu::theLastOneDeleted()
{
    QVERIFY(openWithFiles({u"alpha"_s}));
    QueryDialog *dialog = askToDelete(u"alpha"_s);
    QVERIFY(dialog);
    dialog->accept();
    QTRY_COMPARE(f.widget()->viewState(), int(MyAllVideosWidget::EmptyCollection));
    QVERIFY(files().isEmpty());
}

// Rows come, go and change places while the menu is open and the question stands there.
void TestVideoMenu::theVideoWhoseMenuWasOpenedIsDeleted()
{
    QVERIFY(openWithFiles({u"beta"_s, u"gamma"_s, u"delta"_s}));
    openMenu(u"gamma"_s);
    f.widget()->model()->videosDeleted({1}); // beta
    f.widget()->model()->videosChanged({LibraryFixture::row(9, u"aaa"_s)});
    choose(u"deleteAction"_s);
    QTRY_VERIFY(popup<QueryDialog>());
    QCOMPARE(popup<QueryDialog>()->text(), u"<span>gamma</span"_s);
    f.widget()->model()->videosChanged({LibraryFixture::row(10, u"aab"_s)});
    QTRY_VERIFY(f.widget()->fileManager()->findChild<FileRemoval *>()->isIdentified());
    popup<QueryDialog>()->accept();
    QTRY_COMPARE(files(), (QStringList{u"beta.mp4"_s, u"delta.mp4"_s}));
    QTRY_COMPARE(f.titles(), (QStringList{u"aaa"_s, u"aab"_s, u"delta"_s}));
}

// The file got another name, and another video its old one: neither that file nor its row goes.
void TestVideoMenu::aVideoThatMovedWhileItWasAskedAbout()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    openMenu(u"alpha"_s);
    QStringList alpha = m_rows.at(0);
    QStringList beta = m_rows.at(1);
    const QDir folder(m_folder->path());
    QVERIFY(QFile::rename(folder.filePath(u"alpha.mp4"_s), folder.filePath(u"moved.mp4"_s)));
    QVERIFY(QFile::rename(folder.filePath(u"beta.mp4"_s), folder.filePath(u"alpha.mp4"_s)));
    std::swap(alpha[VideoColumn::Url], beta[VideoColumn::Url]);
    alpha[VideoColumn::Url].replace(u"beta.mp4"_s, u"moved.mp4"_s);
    m_rows = {alpha, beta}; // the store knows; the list is told later
    choose(u"deleteAction"_s);
    QTRY_VERIFY(popup<QueryDialog>());
    f.widget()->model()->videosChanged({alpha, beta});
    QTRY_VERIFY(f.widget()->fileManager()->findChild<FileRemoval *>()->isIdentified());
    popup<QueryDialog>()->accept();
    QTRY_COMPARE(files(), QStringList{u"alpha.mp4"_s});
    QTRY_COMPARE(f.titles(), QStringList{u"beta"_s});
}

void TestVideoMenu::aFileThatCannotBeDeletedIsTold()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    QSignalSpy notify(f.page.get(), &LocalVideosPage::handleError);
    QueryDialog *dialog = askToDelete(u"alpha"_s);
    QVERIFY(dialog);
    QVERIFY(QFile::remove(m_folder->filePath(u"alpha.mp4"_s)));
    QVERIFY(QDir(m_folder->path()).mkdir(u"alpha.mp4"_s));
    dialog->accept();
    QTRY_COMPARE(notify.size(), 1);
    QCOMPARE(notify.first().first().toString(), qtTrId("qtn_vide_error_delete"));
    QCOMPARE(f.titles(), (QStringList{u"alpha"_s, u"beta"_s}));
    QCOMPARE(files(), QStringList{u"beta.mp4"_s});
    QVERIFY(QDir(m_folder->filePath(u"alpha.mp4"_s)).exists());
}

void TestVideoMenu::oneQuestionAtATime()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    QVERIFY(askToDelete(u"alpha"_s));
    LogLines log("kestrel.library");
    f.widget()->deleteVideoAction();
    QCOMPARE(log.all(), QStringList{u"void MyAllVideosWidget::deleteVideoAction() Dialog already open!"_s});
}

void TestVideoMenu::theCardGoes()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    openMenu(u"alpha"_s);
    f.widget()->mmcStateChanged(false);
    QCOMPARE(menu()->state(), ObjectMenu::State::Hidden);
    f.widget()->mmcStateChanged(true);
    QVERIFY(askToDelete(u"alpha"_s));
    f.widget()->mmcStateChanged(false);
    QVERIFY(!popup<QueryDialog>());
    f.widget()->mmcStateChanged(true);
    openMenu(u"alpha"_s);
    choose(u"editAction"_s);
    QTRY_VERIFY(popup<Sheet>());
    f.widget()->mmcStateChanged(false);
    QVERIFY(!popup<Sheet>());
    QTRY_VERIFY(!f.window.sceneManager()->isBlocked());
    QCOMPARE(files().size(), 2);
}

// Another program plays a video: what was asked over the list does not stand over the player.
void TestVideoMenu::anotherPageComes()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    QVERIFY(askToDelete(u"alpha"_s));
    toolkit::ApplicationPage other;
    other.appear(&f.window, toolkit::Appearance::Immediate);
    QVERIFY(!popup<QueryDialog>());
    QTRY_VERIFY(!f.window.sceneManager()->isBlocked());
    other.dismiss(toolkit::Appearance::Immediate);
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    openMenu(u"beta"_s);
    QCOMPARE(menu()->state(), ObjectMenu::State::Shown);
    f.page->cancelDialogs();
    QCOMPARE(menu()->state(), ObjectMenu::State::Hidden);
}

void TestVideoMenu::noMenuWhileThePageIsLeft()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.widget()->goingBack();
    Q_EMIT f.widget()->list()->itemLongTapped(row(u"alpha"_s), {100, 200});
    QCOMPARE(menu()->state(), ObjectMenu::State::Hidden);
    f.widget()->videoListEntered();
    f.widget()->videoListEntered();
    Q_EMIT f.widget()->list()->itemLongTapped(row(u"alpha"_s), {100, 200});
    QCOMPARE(menu()->state(), ObjectMenu::State::Shown);
}

void TestVideoMenu::keysActOnTheMarkedVideo()
{
    QVERIFY(openWithFiles({u"alpha"_s, u"beta"_s}));
    QTRY_VERIFY(f.widget()->list()->hasFocus());
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_F2})
        QTest::keyClick(&f.window, key);
    QTRY_VERIFY(popup<Sheet>());
    QCOMPARE(f.widget()->list()->currentIndex().siblingAtColumn(VideoColumn::Title).data().toString(),
             u"beta"_s);
    QVERIFY2(f.store.texts(SparqlQuery::SelectStatement).last().contains(u"<urn:uuid:2>"_s),
             qPrintable(f.store.texts(SparqlQuery::SelectStatement).last()));
    QTest::keyClick(&f.window, Qt::Key_Escape);
    QTRY_VERIFY(!popup<Sheet>());
    QTRY_VERIFY(f.widget()->list()->hasFocus());
    QTest::keyClick(&f.window, Qt::Key_Delete);
    QTRY_VERIFY(popup<QueryDialog>());
    QVERIFY(popup<QueryDialog>()->text().contains(u"beta"_s));
    QTest::keyClick(&f.window, Qt::Key_Escape);
    QTRY_VERIFY(!popup<QueryDialog>());
    QCOMPARE(files().size(), 2);
}

void TestVideoMenu::keysActOnNothingWhileTheCardIsAway()
{
    QVERIFY(openWithFiles({u"alpha"_s}));
    const QModelIndex alpha = row(u"alpha"_s);
    f.widget()->mmcStateChanged(false);
    Q_EMIT f.widget()->list()->editRequested(alpha);
    Q_EMIT f.widget()->list()->removeRequested(alpha);
    QVERIFY(!popup<Sheet>());
    QVERIFY(!popup<QueryDialog>());
    f.widget()->mmcStateChanged(true);
    Q_EMIT f.widget()->list()->editRequested({});
    QVERIFY(!popup<Sheet>());
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    TestVideoMenu test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_videomenu.moc"
