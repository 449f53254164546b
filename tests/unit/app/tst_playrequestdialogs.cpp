// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "data/trackerinterface.h"
#include "fileops/editmanager.h"
#include "fileops/filemanager.h"
#include "library/filteredmodel.h"
#include "library/myallvideoswidget.h"
#include "platform/media/videowidget.h"
#include "platform/sparql/sparqlquery.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/popup.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/textedit.h"
#include "player/navigationbarwidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "support/sceneitems.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

struct PlayerPageProbe
{
    static bool hasDialog(const PlayerPage &page) { return page.m_dialogOpen || page.m_wasPlaying; }
};

// A video is to be played, by a tap or by another program, while the person is being asked something.
class PlayRequestDialogsTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup() { clean(); }
    void whatWasAskedOverTheLibraryIsNotAnswered_data();
    void whatWasAskedOverTheLibraryIsNotAnswered();
    void whatWasAboutToBeAskedIsNotAsked_data();
    void whatWasAboutToBeAskedIsNotAsked();
    void aRequestThatWaitsLeavesTheQuestion();
    void aDialogOfThePlayerIsClosedBeforeTheNextVideo_data();
    void aDialogOfThePlayerIsClosedBeforeTheNextVideo();

private:
    [[nodiscard]] MyAllVideosWidget *widget() const { return library()->localVideosWidget(); }
    [[nodiscard]] toolkit::Popup *popup() const { return activePopup<toolkit::Popup>(m_window); }
    void choose(const QString &action)
    {
        widget()->itemLongTapped(widget()->proxy()->index(0, 0), {100, 200});
        for (int i = 0; i < widget()->objectMenu()->entryCount(); ++i) {
            if (widget()->objectMenu()->entry(i)->objectName() == action)
                widget()->objectMenu()->chooseEntry(i);
        }
    }
    void request(const QString &way)
    {
        if (way == u"tap"_s)
            tap(video(2));
        else if (way == u"look"_s)
            look(u"file:///videos/2.mp4"_s);
        else
            m_controller->findChild<KestrelService *>()->play({u"file:///videos/2.mp4"_s}, 3);
    }
    // The folder's film is the one row of the library, and the one answer of the store.
    void startWithAFilm()
    {
        QVERIFY(m_folder.isValid());
        QFile film(m_folder.filePath(u"film.mp4"_s));
        QVERIFY(film.open(QIODevice::WriteOnly) && film.write("film") == 4);
        start();
        m_store.answerWith({{u"urn:uuid:1"_s, u"video 1"_s, u"film.mp4"_s, 60, 0, u"video/mp4"_s,
                             u"file://"_s + film.fileName(), 1}});
    }

    QTemporaryDir m_folder;
};

void PlayRequestDialogsTest::whatWasAskedOverTheLibraryIsNotAnswered_data()
{
    QTest::addColumn<QString>("action"); // empty: the menu itself
    QTest::addColumn<QString>("way");
    for (const QString &action : {QString(), u"deleteAction"_s, u"editAction"_s}) {
        for (const QString &way : {u"tap"_s, u"look"_s, u"bus"_s})
            QTest::addRow("%s, %s", qPrintable(action.isEmpty() ? u"menu"_s : action), qPrintable(way))
                << action << way;
    }
}

void PlayRequestDialogsTest::whatWasAskedOverTheLibraryIsNotAnswered()
{
    QFETCH(QString, action);
    QFETCH(QString, way);
    startWithAFilm();
    choose(action);
    QTRY_VERIFY(popup());
    QVERIFY(m_window.sceneManager()->isBlocked());
    const QPointer<toolkit::Popup> asked = popup();
    if (qobject_cast<toolkit::Sheet *>(popup()))
        QTest::keyClicks(&m_window, u" party"_s);
    std::unique_ptr<QSignalSpy> done;
    if (action == u"deleteAction"_s)
        done = std::make_unique<QSignalSpy>(widget()->fileManager(), &FileManager::deleteDone);
    else if (action == u"editAction"_s)
        done = std::make_unique<QSignalSpy>(widget()->editManager(), &EditManager::editDone);
    m_store.clear();
    request(way);
    QTRY_VERIFY(stack().endsWith(u"player"_s));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    QTRY_VERIFY(!m_window.sceneManager()->isBlocked());
    QVERIFY(asked.isNull() || !asked->isActive());
    QVERIFY(!popup());
    // No is the answer to the question; the sheet goes without one and writes nothing.
    if (action == u"deleteAction"_s)
        QCOMPARE(*done, QList<QVariantList>{{false}});
    else if (action == u"editAction"_s)
        QCOMPARE(done->size(), 0);
    QVERIFY(QFile::exists(m_folder.filePath(u"film.mp4"_s)));
    QCOMPARE(m_store.texts(SparqlQuery::UpdateStatement).filter(u"nie:title"_s), QStringList());
    QVERIFY(!PlayerPageProbe::hasDialog(*player()));
    // The keys are the player's.
    QTest::keyClick(&m_window, Qt::Key_Space);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
}

void PlayRequestDialogsTest::whatWasAboutToBeAskedIsNotAsked_data()
{
    QTest::addColumn<QString>("action");
    QTest::newRow("delete") << u"deleteAction"_s;
    QTest::newRow("rename") << u"editAction"_s;
}

// The store is slow to answer, and meanwhile a video plays.
void PlayRequestDialogsTest::whatWasAboutToBeAskedIsNotAsked()
{
    QFETCH(QString, action);
    startWithAFilm();
    m_store.answer(FakeSparqlAnswer::later());
    const int before = int(m_store.statements().size());
    choose(action);
    QCOMPARE(int(m_store.statements().size()), before + 1);
    m_store.answerWith({});
    tap(video(2));
    QCOMPARE(stack(), u"library player"_s);
    m_store.finish(before,
                   {{u"urn:uuid:1"_s, u"video 1"_s, u"film.mp4"_s, 60, 0, u"video/mp4"_s,
                     u"file://"_s + m_folder.filePath(u"film.mp4"_s), 1}});
    QCoreApplication::processEvents();
    QVERIFY(!popup());
    QVERIFY(!m_window.sceneManager()->isBlocked());
}

// Until the place in the video before is saved the library stays, and with it what is asked there.
void PlayRequestDialogsTest::aRequestThatWaitsLeavesTheQuestion()
{
    m_media.hangsOnPause = true;
    startWithAFilm();
    tap(video(1, 20));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->advance(std::chrono::seconds(5));
    QTest::keyClick(&m_window, Qt::Key_Backspace);
    QCOMPARE(stack(), u"library"_s);
    choose(u"deleteAction"_s);
    QTRY_VERIFY(qobject_cast<toolkit::QueryDialog *>(popup()));
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    tap(video(2, 5));
    QCOMPARE(stack(), u"library"_s);
    QVERIFY(popup());
    Q_EMIT TrackerInterface::instance()->videosChanged(QList<QStringList>{});
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_VERIFY(!popup());
    QVERIFY(QFile::exists(m_folder.filePath(u"film.mp4"_s)));
}

void PlayRequestDialogsTest::aDialogOfThePlayerIsClosedBeforeTheNextVideo_data()
{
    QTest::addColumn<int>("entry"); // of the bar's menu; -1: the menu itself
    QTest::addColumn<QString>("way");
    for (const auto &[name, entry] :
         {std::pair("menu", -1), std::pair("rename", 1), std::pair("delete", 2)}) {
        for (const QString &way : {u"look"_s, u"bus"_s})
            QTest::addRow("%s, %s", name, qPrintable(way)) << entry << way;
    }
}

void PlayRequestDialogsTest::aDialogOfThePlayerIsClosedBeforeTheNextVideo()
{
    QFETCH(int, entry);
    QFETCH(QString, way);
    startWithAFilm();
    tap(video(1));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    player()->navigationBar()->menuButton()->click();
    QVERIFY(m_window.isMenuOpen());
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    if (entry >= 0) {
        QTest::keyClick(&m_window, Qt::Key_Home);
        for (int i = 0; i < entry; ++i)
            QTest::keyClick(&m_window, Qt::Key_Down);
        QTest::keyClick(&m_window, Qt::Key_Return);
        QTRY_VERIFY(!m_window.isMenuOpen());
        QTRY_VERIFY(popup());
    }
    m_store.answerWith(
        {{u"urn:uuid:2"_s, u"video 2"_s, u"2.mp4"_s, 60, 0, u"video/mp4"_s, u"file:///videos/2.mp4"_s, 2}});
    request(way);
    QTRY_COMPARE(m_controller->playerController()->currentVideo().urn, u"urn:uuid:2"_s);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    QTRY_VERIFY(!m_window.sceneManager()->isBlocked());
    QVERIFY(!popup() && !m_window.isMenuOpen());
    QVERIFY(!PlayerPageProbe::hasDialog(*player()));
    QVERIFY(QFile::exists(m_folder.filePath(u"film.mp4"_s)));
}

int main(int argc, char **argv)
{
    return runControllerTest<PlayRequestDialogsTest>(argc, argv);
}
#include "tst_playrequestdialogs.moc"
