// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"
#include "platform/share/platformshareservice.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/scenemanager.h"
#include "player/navigationbarwidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "support/fakeportal.h"

#include <QClipboard>
#include <QFile>
#include <QGraphicsScene>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QUrl>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using toolkit::Button;

// From the pages to the platform's own share service, and to the portal behind it.
class ControllerShareTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aFileOfTheLibraryReachesTheMailProgram();
    void theVideoThatPlaysIsPausedAndStaysSo();
    void aStreamIsSharedByItsAddress();
    void anotherProgramsRequestTakesTheSheetAway();
    void backClosesTheSheetFirst();
    void keysOfTheSheetAreNotThePlayers();
    void keysOfTheSheetDoNotOpenTheFilter();
    void theProgramEndsWhileTheSheetIsUp();

private:
    [[nodiscard]] ShareSheet *sheet() const
    {
        for (QGraphicsItem *item : m_window.scene()->items()) {
            if (auto *found = qobject_cast<ShareSheet *>(item->toGraphicsObject()))
                return found->isDisplayed() ? found : nullptr;
        }
        return nullptr;
    }
    [[nodiscard]] Button *row(const QString &text) const
    {
        for (Button *button : sheet()->rows()) {
            if (button->text() == text)
                return button;
        }
        return nullptr;
    }

    // As a person does it: the bar's menu, its first entry.
    void shareFromThePlayer()
    {
        QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
        player()->navigationBar()->menuButton()->click();
        QVERIFY(m_window.isMenuOpen());
        QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
        QTest::keyClick(&m_window, Qt::Key_Home);
        QTest::keyClick(&m_window, Qt::Key_Return);
        QTRY_VERIFY(!m_window.isMenuOpen());
        QVERIFY(sheet());
    }

    QTranslator m_catalog;
    QTemporaryDir m_dir;
    std::unique_ptr<FakePortal> m_portal;
};

void ControllerShareTest::initTestCase()
{
    prepare();
    QVERIFY(m_catalog.load(u":/translations/video_en.qm"_s));
    QVERIFY(QCoreApplication::installTranslator(&m_catalog));
    ShareService::setFactory(&PlatformShareService::createOnDefaultBuses);
}

void ControllerShareTest::init()
{
    m_portal = std::make_unique<FakePortal>(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
    QVERIFY(m_portal->appear());
    QGuiApplication::clipboard()->clear();
}

void ControllerShareTest::cleanup()
{
    clean();
    m_portal.reset();
}

// The store's addresses are escaped: two files tell whether what is shared is read once or twice.
void ControllerShareTest::aFileOfTheLibraryReachesTheMailProgram()
{
    const auto write = [this](const QString &name, const QByteArray &content) {
        QFile file(m_dir.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    };
    const QString odd = u"100%25 caf\u00e9#1?.mp4"_s;
    QVERIFY(write(odd, "the odd one"));
    QVERIFY(write(u"100% caf\u00e9#1?.mp4"_s, "what its name would be, read once more"));
    start();
    const QByteArray address = QUrl::fromLocalFile(m_dir.filePath(odd)).toEncoded();
    QVERIFY(address.contains("100%2525%20caf%C3%A9%231%3F.mp4"));
    Q_EMIT library()->shareVideo(QString::fromLatin1(address));
    QVERIFY(sheet());
    QCOMPARE(sheet()->title(), odd);
    QTRY_VERIFY(row(u"E-mail"_s));
    row(u"E-mail"_s)->click();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QCOMPARE(m_portal->calls.first().files, QList<QByteArray>{"the odd one"});
    QCOMPARE(m_portal->calls.first().options.value(u"subject"_s).toString(), odd);
    QTRY_VERIFY(!m_window.sceneManager()->isBlocked());
}

void ControllerShareTest::theVideoThatPlaysIsPausedAndStaysSo()
{
    start();
    tap(video(1));
    shareFromThePlayer();
    QCOMPARE(sheet()->title(), u"1.mp4"_s);
    row(u"Copy address"_s)->click();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"/videos/1.mp4"_s);
    QTRY_VERIFY(player()->navigationBar()->isEnabled()); // the page is free again
    QCOMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    QCOMPARE(stack(), u"library player"_s);
}

void ControllerShareTest::aStreamIsSharedByItsAddress()
{
    start();
    Q_EMIT library()->shareVideo(u"http://example.com/a%20film.mp4?x=1"_s);
    QVERIFY(sheet());
    QCOMPARE(sheet()->title(), u"a film.mp4"_s);
    QTRY_VERIFY(row(u"Open with another program"_s));
    row(u"Open with another program"_s)->click();
    QTRY_COMPARE(m_portal->calls.size(), 1);
    QCOMPARE(m_portal->calls.first().method, u"OpenURI"_s);
    QCOMPARE(m_portal->calls.first().address, u"http://example.com/a%20film.mp4?x=1"_s);
}

void ControllerShareTest::anotherProgramsRequestTakesTheSheetAway()
{
    start();
    Q_EMIT library()->shareVideo(u"file:///videos/2.mp4"_s);
    QVERIFY(sheet());
    look(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_VERIFY(!sheet());
    QTRY_VERIFY(!m_window.sceneManager()->isBlocked());
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
}

void ControllerShareTest::backClosesTheSheetFirst()
{
    start();
    tap(video(1));
    shareFromThePlayer();
    QTest::keyClick(&m_window, Qt::Key_Escape);
    QVERIFY(!sheet());
    QCOMPARE(stack(), u"library player"_s);
}

// Space chooses a row; in the player it would go on with the video, and Backspace would leave it.
void ControllerShareTest::keysOfTheSheetAreNotThePlayers()
{
    start();
    tap(video(1));
    shareFromThePlayer();
    QTRY_VERIFY(row(u"E-mail"_s));
    for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Right, Qt::Key_Down, Qt::Key_Up, Qt::Key_Space})
        QTest::keyClick(&m_window, key);
    QVERIFY(!sheet());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"/videos/1.mp4"_s); // the last row
    QTRY_VERIFY(!m_window.sceneManager()->isBlocked());
    QCOMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    QCOMPARE(stack(), u"library player"_s);
    QTest::keyClick(&m_window, Qt::Key_Space);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
}

void ControllerShareTest::keysOfTheSheetDoNotOpenTheFilter()
{
    start();
    QSignalSpy keys(m_controller.get(), &ApplicationController::keyEvent);
    Q_EMIT library()->shareVideo(u"file:///videos/2.mp4"_s);
    QTest::keyClicks(&m_window, u"abc"_s);
    QCOMPARE(keys.size(), 0);
    QTest::keyClick(&m_window, Qt::Key_Escape);
    QTRY_VERIFY(!m_window.sceneManager()->isBlocked());
    QTest::keyClick(&m_window, Qt::Key_A);
    QCOMPARE(keys.size(), 1);
}

void ControllerShareTest::theProgramEndsWhileTheSheetIsUp()
{
    start();
    Q_EMIT library()->shareVideo(u"file:///videos/2.mp4"_s);
    QVERIFY(sheet());
    m_controller.reset();
    QVERIFY(!sheet());
    QVERIFY(!m_window.sceneManager()->isBlocked());
}

int main(int argc, char **argv)
{
    return runControllerTest<ControllerShareTest>(argc, argv);
}

#include "tst_controllershare.moc"
