// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"
#include "support/loglines.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/label.h>
#include <platform/media/playercontrols.h>
#include <platform/toolkit/spinner.h>

#include <QAction>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class TestPlayerPageState : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void bufferingShowsPerCent();
    void theSpinnerFollowsTheController();
    void controlsComeAndGoWithTheWidgets();
    void controlsOfTheVideoBeforeAreNotSeenToGo();
    void controlsStayHiddenAfterTheEnd();
    void theTitleStandsInTheBar_data();
    void theTitleStandsInTheBar();
    void theInformationButtonIsThereWhenSomebodyShowsDetails();
    void informationMarksThePlaybackAsBeingLeft();
    void comingBackFromDetailsPlaysOn();
    void savingIsRefusedOnMadeUpFileSystems_data();
    void savingIsRefusedOnMadeUpFileSystems();
    void theSystemTellsItsFileSystems_data();
    void theSystemTellsItsFileSystems();
    void anUnreadableFileSystemIsWarnedOf();
    void bufferingIsWrittenAsTheLocaleDoes_data();
    void bufferingIsWrittenAsTheLocaleDoes();
    void aVideoThatIsRenamedHasItsTitleInTheBar();
    void withoutAControllerEachSaysSo();
    void bufferingIsFollowedOnce();
    void aNewPlaybackShowsItsControlsAgain();
    void informationOfAPausedVideoLeavesItPaused();
    void whatPlaysAlreadyCannotBeResumed();
    void whatWasStoppedBeforeIsNotPlayed();
    void theToolbarIsFilledAgain();
    void theMenuOfAStreamStaysDimmed();
    void aStreamAfterAFileKeepsTheFilesEntry();
};

void TestPlayerPageState::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPageState::init()
{
    QVERIFY(showPage());
}

void TestPlayerPageState::cleanup()
{
    removePage();
}

void TestPlayerPageState::bufferingShowsPerCent()
{
    QVERIFY(play(PlayerFixture::video()));
    Q_EMIT f.widget->renderer()->bufferingInfo(41.7F);
    toolkit::Label *label = PlayerPageProbe::label(*m_page);
    QVERIFY(label != nullptr);
    QCOMPARE(label->text(), u"42%"_s);
    QCOMPARE(label->styleName(), u"CommonSingleTitleInverted"_s);
    QCOMPARE(label->alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    QVERIFY(label->isVisible());
    const QRectF spinner = PlayerPageProbe::spinner(*m_page)->geometry();
    QVERIFY(label->geometry().adjusted(-1, -1, 1, 1).contains(spinner));
    QVERIFY(PlayerPageProbe::spinner(*m_page)->isVisible());
    // Nearly there is not there, whatever is read.
    Q_EMIT f.widget->renderer()->bufferingInfo(99.9F);
    QVERIFY(PlayerPageProbe::label(*m_page) == label);
    QCOMPARE(label->text(), u"100%"_s);
    QVERIFY(PlayerPageProbe::spinner(*m_page)->isVisible());
    Q_EMIT f.widget->renderer()->bufferingInfo(100);
    QCOMPARE(PlayerPageProbe::label(*m_page), nullptr);
    QVERIFY(!PlayerPageProbe::spinner(*m_page)->isVisible());
}

void TestPlayerPageState::theSpinnerFollowsTheController()
{
    toolkit::Spinner *spinner = PlayerPageProbe::spinner(*m_page);
    QCOMPARE(spinner->styleName(), u"CommonLargeSpinnerInverted"_s);
    QVERIFY(!spinner->isVisible());
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    QVERIFY(spinner->isVisible() && spinner->unknownDuration());
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QVERIFY(!spinner->isVisible() && !spinner->unknownDuration());
    // The icon that is hidden after the card came back ends the busy state.
    f.controller->handleEvent(PlayerController::TransitionBegan);
    f.controller->handleEvent(PlayerController::BackFromMassStorage);
    QVERIFY(f.controller->suppressBusyOff());
    m_page->hideBufferIcon();
    QVERIFY(!f.widget->isBusy());
}

void TestPlayerPageState::controlsComeAndGoWithTheWidgets()
{
    PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    QVERIFY(play(PlayerFixture::video()));
    QVERIFY(!overlay->isShown());
    m_page->setControlsEnabled(false);
    Q_EMIT f.widget->controlsVisibilityChangeRequested(true);
    QVERIFY(overlay->isShown());
    QVERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(m_page->componentDisplay(toolkit::ApplicationPage::EscapeButton),
             toolkit::ApplicationPage::ComponentDisplay::Show);
    QVERIFY(overlay->toolbar()->isVisible());
    Q_EMIT f.widget->controlsVisibilityChangeRequested(false);
    QVERIFY(!overlay->isShown());
    QCOMPARE(m_page->componentDisplay(toolkit::ApplicationPage::EscapeButton),
             toolkit::ApplicationPage::ComponentDisplay::Hide);
    QTRY_VERIFY(!overlay->isVisible());
}

// Left by the back mark, so with its controls shown, and resumed from the list.
void TestPlayerPageState::controlsOfTheVideoBeforeAreNotSeenToGo()
{
    PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    QVERIFY(play(PlayerFixture::video()));
    f.widget->setControlsVisible(true);
    m_page->controlsVisibilityChanged(true);
    QTRY_COMPARE(overlay->opacity(), 1.0);
    toolkit::ApplicationPage library;
    library.appear(m_window.get(), toolkit::Appearance::Immediate);
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 20);
    f.controller->play(video);
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    QVERIFY(!overlay->isVisible());
    QVERIFY(!f.widget->controls()->isVisible());
    // And where they are seen to go they fade.
    m_page->controlsVisibilityChanged(true);
    QTRY_COMPARE(overlay->opacity(), 1.0);
    m_page->controlsVisibilityChanged(false);
    QVERIFY(overlay->isVisible());
    QTRY_VERIFY(!overlay->isVisible());
}

void TestPlayerPageState::controlsStayHiddenAfterTheEnd()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(PlayerFixture::video()));
    m_page->playbackEndedByError();
    PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    m_page->controlsVisibilityChanged(true);
    QVERIFY(!overlay->isShown());
    m_page->controlsVisibilityChanged(true); // the mark was spent
    QVERIFY(overlay->isShown());
}

void TestPlayerPageState::theTitleStandsInTheBar_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("shown");
    QTest::newRow("stored") << u"Autumn & <harbour>"_s << u"file:///v/a.mp4"_s << u"Autumn & <harbour>"_s;
    QTest::newRow("from outside") << QString() << u"file:///v/a%20%C3%A4.mp4"_s << u"a ä.mp4"_s;
}

void TestPlayerPageState::theTitleStandsInTheBar()
{
    QFETCH(QString, title);
    QFETCH(QString, url);
    VideoInfo video;
    video.title = title;
    video.url = url;
    f.controller->play(video);
    QTEST(PlayerPageProbe::overlay(*m_page)->title(), "shown");
}

void TestPlayerPageState::theInformationButtonIsThereWhenSomebodyShowsDetails()
{
    PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    QCOMPARE(overlay->infoButton()->objectName(), u"InfoButton"_s);
    QCOMPARE(overlay->infoButton()->iconId(), u"icon-s-music-video-description"_s);
    QVERIFY(!overlay->infoButton()->isVisibleTo(overlay->toolbar()));
    const auto connection = connect(m_page.get(), &PlayerPage::showDetailsPage, this, [] {});
    QVERIFY(overlay->infoButton()->isVisibleTo(overlay->toolbar()));
    disconnect(connection);
    QTRY_VERIFY(!overlay->infoButton()->isVisibleTo(overlay->toolbar()));
}

void TestPlayerPageState::informationMarksThePlaybackAsBeingLeft()
{
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy details(m_page.get(), &PlayerPage::showDetailsPage);
    m_page->handleInfoButtonClick();
    m_page->handleInfoButtonClick();
    QCOMPARE(details.size(), 1);
    QVERIFY(f.controller->stopAtEnd());
}

void TestPlayerPageState::comingBackFromDetailsPlaysOn()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    m_page->handleInfoButtonClick();
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    m_page->resetSavedState();
    QVERIFY(!f.controller->stopAtEnd());
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    // Had it been stopped meanwhile, it is played again from where it was.
    m_page->handleInfoButtonClick();
    f.controller->stop();
    QVERIFY(f.waitFor(AvloRenderer::Stopped));
    f.backend->clearCommands();
    m_page->resetSavedState();
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 12"_s});
    m_page->saveCurrentState(); // transitioning or stopped: nothing to resume
}

void TestPlayerPageState::savingIsRefusedOnMadeUpFileSystems_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<quint32>("type");
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<QList<QByteArray>>("asked");
    const quint32 fuse = 0x65735546;
    QTest::newRow("disk") << u"file:///v/a%20b.mp4"_s << 0xEF53U << true << QList<QByteArray>{"/v/a b.mp4"};
    QTest::newRow("made up by a program")
        << u"file:///v/a.mp4"_s << fuse << false << QList<QByteArray>{"/v/a.mp4"};
    // Beyond what 31 bits hold: negative where the system's numbers are of 32.
    QTest::newRow("flash") << u"file:///v/a.mp4"_s << 0xF2F52010U << true << QList<QByteArray>{"/v/a.mp4"};
    QTest::newRow("with the machine's name")
        << u"file://localhost/v/a.mp4"_s << fuse << false << QList<QByteArray>{"/v/a.mp4"};
    QTest::newRow("a name that is no text")
        << u"file:///v/caf%E9.mp4"_s << fuse << false << QList<QByteArray>{"/v/caf\xE9.mp4"};
    QTest::newRow("no address") << QString() << fuse << true << QList<QByteArray>();
}

void TestPlayerPageState::savingIsRefusedOnMadeUpFileSystems()
{
    QFETCH(QString, url);
    QFETCH(quint32, type);
    QFETCH(bool, allowed);
    QFETCH(QList<QByteArray>, asked);
    VideoInfo video;
    video.url = url;
    f.controller->play(video);
    m_page->type = type;
    m_page->asked.clear();
    QCOMPARE(m_page->saveAllowed(), allowed);
    QCOMPARE(m_page->asked, asked);
}

void TestPlayerPageState::theSystemTellsItsFileSystems_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("warning"); // none when it can be told
    QTest::newRow("made up by the kernel") << u"file:///proc/self/stat"_s << QString();
    QTest::newRow("a name with a blank") << u"file://%1/a%20b.mp4"_s << QString();
    QTest::newRow("a name that is no text") << u"file://%1/caf%E9.mp4"_s << QString();
    QTest::newRow("nothing there") << u"file://%1/gone%20too.mp4"_s << u"%1/gone too.mp4"_s;
}

void TestPlayerPageState::theSystemTellsItsFileSystems()
{
    QFETCH(QString, url);
    QFETCH(QString, warning);
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.path());
    for (const char *name : {"/a b.mp4", "/caf\xE9.mp4"}) {
        const int made = ::open((path + name).constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        QVERIFY(made >= 0);
        ::close(made);
    }
    VideoInfo video;
    video.url = url.replace(u"%1"_s, folder.path());
    f.controller->play(video);
    m_page->asksTheSystem = true;
    LogLines lines("kestrel.player");
    QVERIFY(m_page->saveAllowed());
    QStringList expected;
    if (!warning.isEmpty())
        expected.append(u"bool PlayerPage::saveAllowed() const: Call to \"statfs\" failed on file "_s
                        + warning.replace(u"%1"_s, folder.path()) + u'.');
    QCOMPARE(lines.all(), expected);
}

void TestPlayerPageState::anUnreadableFileSystemIsWarnedOf()
{
    m_page->type.reset();
    VideoInfo video;
    video.url = u"file:///none/a.mp4"_s;
    const char *warning
        = "bool PlayerPage::saveAllowed() const: Call to \"statfs\" failed on file /none/a.mp4.";
    QTest::ignoreMessage(QtWarningMsg, warning); // asked when the video begins
    f.controller->play(video);
    QTest::ignoreMessage(QtWarningMsg, warning);
    QVERIFY(m_page->saveAllowed());
}

void TestPlayerPageState::bufferingIsWrittenAsTheLocaleDoes_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<float>("status");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << u"C"_s << 41.7F << u"42%"_s;
    QTest::newRow("English") << u"en_GB"_s << 41.7F << u"42%"_s;
    QTest::newRow("nothing yet") << u"en_GB"_s << 0.0F << u"0%"_s;
    QTest::newRow("almost") << u"en_GB"_s << 99.4F << u"99%"_s;
    QTest::newRow("German") << u"de_DE"_s << 41.7F << u"42 %"_s;
    QTest::newRow("French") << u"fr_FR"_s << 41.7F << u"42 %"_s;
    QTest::newRow("Turkish") << u"tr_TR"_s << 41.7F << u"%42"_s;
    QTest::newRow("Chinese") << u"zh_CN"_s << 41.7F << u"42%"_s;
    QTest::newRow("Arabic") << u"ar_EG"_s << 41.7F << u"٤٢٪"_s;
}

void TestPlayerPageState::bufferingIsWrittenAsTheLocaleDoes()
{
    QFETCH(QString, locale);
    QFETCH(float, status);
    QFETCH(QString, text);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    m_page->buffering(status);
    QString written = PlayerPageProbe::label(*m_page)->text();
    QLocale::setDefault(before);
    // Which blank that does not break, and the marks of direction, are the data's business.
    written.replace(QChar(0x202f), u' ').replace(QChar(0xa0), u' ');
    written.remove(QChar(0x061c)).remove(QChar(0x200e)).remove(QChar(0x200f));
    QCOMPARE(written, text);
}

void TestPlayerPageState::aVideoThatIsRenamedHasItsTitleInTheBar()
{
    const auto row = [](const QString &urn, const QString &title) {
        return QStringList{urn,    title,          u"clip.mp4"_s,           u"60"_s,
                           u"0"_s, u"video/mp4"_s, u"file:///v/clip.mp4"_s, u"1"_s};
    };
    const auto news
        = [](const QList<QStringList> &rows) { Q_EMIT TrackerInterface::instance()->videosChanged(rows); };
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    const PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    QCOMPARE(overlay->title(), u"Title"_s);
    news({row(u"urn:2"_s, u"Another"_s)});
    QCOMPARE(overlay->title(), u"Title"_s);
    news({row(u"urn:2"_s, u"Another"_s), row(u"urn:1"_s, u"New & shiny"_s)});
    QCOMPARE(overlay->title(), u"New & shiny"_s);
    QCOMPARE(f.controller->currentVideo().title, u"New & shiny"_s);
    QCOMPARE(f.controller->lastVideo().title, u"New & shiny"_s);
    QCOMPARE(f.widget->accessibleName(), u"New & shiny"_s);
    // What the store does not know has no row.
    VideoInfo foreign = PlayerFixture::video(QString());
    f.controller->play(foreign);
    news({row(QString(), u"Nobody's"_s)});
    QCOMPARE(overlay->title(), u"Title"_s);
}

void TestPlayerPageState::withoutAControllerEachSaysSo()
{
    PlayerPage page(new VideoWidget, nullptr);
    const auto expect = [](const char *function) {
        QTest::ignoreMessage(QtWarningMsg,
                             qPrintable(QString::fromLatin1(function) + u" playercontroller == NULL"_s));
    };
    expect("void PlayerPage::hideBufferIcon()");
    page.hideBufferIcon();
    expect("bool PlayerPage::saveAllowed() const");
    QVERIFY(page.saveAllowed());
    expect("virtual bool PlayerPage::event(QEvent*)");
    QEvent deactivated(QEvent::WindowDeactivate);
    page.event(&deactivated);
    expect("void PlayerPage::saveCurrentState()");
    QEvent blocked(QEvent::WindowBlocked);
    page.event(&blocked);
    expect("virtual bool PlayerPage::event(QEvent*)");
    QEvent unblocked(QEvent::WindowUnblocked);
    page.event(&unblocked);
}

void TestPlayerPageState::bufferingIsFollowedOnce()
{
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    f.controller->play(video);
    m_page->returnFromMassStorageMode();
    QSignalSpy shown(f.controller.get(), &PlayerController::showBufferIconRequested);
    Q_EMIT f.controller->buffering(20);
    QCOMPARE(shown.size(), 1);
}

void TestPlayerPageState::aNewPlaybackShowsItsControlsAgain()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(PlayerFixture::video()));
    m_page->playbackEndedByError();
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    m_page->controlsVisibilityChanged(true);
    QVERIFY(PlayerPageProbe::overlay(*m_page)->isShown());
}

void TestPlayerPageState::informationOfAPausedVideoLeavesItPaused()
{
    QVERIFY(play(PlayerFixture::video()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->handleInfoButtonClick();
    f.backend->clearCommands();
    m_page->resetSavedState();
    QVERIFY(!f.controller->stopAtEnd());
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageState::whatPlaysAlreadyCannotBeResumed()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->saveCurrentState();
    f.backend->clearCommands();
    QTest::ignoreMessage(QtWarningMsg, "void PlayerPage::resetSavedState() Can't resume!");
    m_page->resetSavedState();
    QCOMPARE(f.backend->commands(), QStringList());
}

// Stopped, then another page, then back: there was nothing to go on with.
void TestPlayerPageState::whatWasStoppedBeforeIsNotPlayed()
{
    QVERIFY(play(PlayerFixture::video()));
    f.controller->stop();
    QVERIFY(f.waitFor(AvloRenderer::Stopped));
    m_page->handleInfoButtonClick();
    QVERIFY(f.controller->stopAtEnd());
    f.widget->setControlsVisible(true);
    m_page->controlsVisibilityChanged(true);
    f.backend->clearCommands();
    m_page->resetSavedState();
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(!f.controller->stopAtEnd());
    QVERIFY(!PlayerPageProbe::overlay(*m_page)->isShown());
}

void TestPlayerPageState::theToolbarIsFilledAgain()
{
    QVERIFY(play(PlayerFixture::video()));
    PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    QVERIFY(!overlay->toolbar()->isVisibleTo(overlay)); // it is hidden when a video begins
    QGraphicsWidget *before = m_page->navigationBar()->setCentralWidget(nullptr);
    QCOMPARE(before, overlay->toolbar());
    m_page->navigationBar()->setMenuButtonVisible(false);
    m_page->setToolbarType(PlayerPage::DefaultToolbar);
    QVERIFY(overlay->toolbar()->isVisibleTo(overlay));
    QVERIFY(m_page->navigationBar()->menuButton()->isVisibleTo(overlay));
    QCOMPARE(m_page->navigationBar()->setCentralWidget(nullptr), overlay->toolbar());
}

// The bar comes and goes as a whole; which of its buttons can be pressed is another matter.
void TestPlayerPageState::theMenuOfAStreamStaysDimmed()
{
    VideoInfo stream;
    stream.url = u"http://h/a.mp4"_s;
    QVERIFY(play(stream));
    toolkit::Button *menu = m_page->navigationBar()->menuButton();
    QSignalSpy asked(m_page->navigationBar(), &NavigationBarWidget::menuButtonClicked);
    for (const bool enabled : {true, false, true}) {
        m_page->setControlsEnabled(enabled);
        QVERIFY(!menu->isEnabled());
        menu->click();
    }
    QCOMPARE(asked.size(), 0);
    m_page->controlsVisibilityChanged(true);
    QVERIFY(!menu->isEnabled());
    QVERIFY(play(PlayerFixture::video()));
    QVERIFY(menu->isEnabled());
    m_page->setControlsEnabled(false);
    m_page->setControlsEnabled(true);
    menu->click();
    QCOMPARE(asked.size(), 1);
}

// The one entry stands and leads nowhere: the button that opens the menu is off.
void TestPlayerPageState::aStreamAfterAFileKeepsTheFilesEntry()
{
    VideoInfo file = PlayerFixture::video(QString());
    f.controller->play(file);
    QCOMPARE(m_page->actions().size(), 1);
    VideoInfo stream;
    stream.url = u"http://h/a.mp4"_s;
    f.controller->play(stream);
    QCOMPARE(m_page->actions().size(), 1);
    QVERIFY(!m_page->navigationBar()->menuButton()->isEnabled());
    f.controller->play(file);
    QCOMPARE(m_page->actions().size(), 1);
    QVERIFY(m_page->navigationBar()->menuButton()->isEnabled());
}

QTEST_MAIN(TestPlayerPageState)
#include "test_playerpagestate.moc"
