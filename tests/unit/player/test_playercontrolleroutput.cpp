// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerfixture.h"

#include <platform/toolkit/applicationwindow.h>

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

// What the controller tells the renderer about the output.
class TestPlayerControllerOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theEndMovesTheOutputOffTheScreen();
    void theNextVideoHasItsOutputBack();
    void theWindowIdGoesToTheRenderer();
    void stillsAreAskedFor();
    void aRendererThatComesBackPlaysTheVideoThatWaited();

private:
    [[nodiscard]] QString rectangle() const
    {
        return f.widget->renderer()->property("render-rectangle").toString();
    }

    PlayerFixture f;
};

void TestPlayerControllerOutput::init()
{
    QVERIFY(f.startWithRenderer());
}

void TestPlayerControllerOutput::cleanup()
{
    f.stop();
}

void TestPlayerControllerOutput::theEndMovesTheOutputOffTheScreen()
{
    toolkit::ApplicationWindow window;
    window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    window.showForProfile();
    QTRY_VERIFY(window.isOnDisplay());
    window.resize(480, 700);
    QVERIFY(f.playUntilItPlays(PlayerFixture::video()));
    QString whenTold = u"never"_s;
    connect(f.controller.get(), &PlayerController::playbackEnded, this, [&] { whenTold = rectangle(); });
    f.backend->advance(60s);
    QTRY_COMPARE(rectangle(), u"0,%1,%2,%1"_s.arg(window.height()).arg(window.width()));
    QCOMPARE(whenTold, QString()); // the end is told first
}

void TestPlayerControllerOutput::theNextVideoHasItsOutputBack()
{
    f.controller->disableOutputRectangle(); // without a window
    QCOMPARE(rectangle(), QString());
    toolkit::ApplicationWindow window;
    f.controller->disableOutputRectangle();
    QVERIFY(rectangle().startsWith(u"0,"_s));
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    QCOMPARE(rectangle(), QString());
}

void TestPlayerControllerOutput::theWindowIdGoesToTheRenderer()
{
    f.controller->setXid(77);
    QCOMPARE(f.widget->renderer()->property("xid").toInt(), 77);
    Q_EMIT RendererRegistry::instance()->rendererRemoved(u"avlo_gst_internal_video_renderer"_s, QString());
    f.controller->setXid(78); // no renderer is held
    QCOMPARE(f.widget->renderer()->property("xid").toInt(), 77);
}

void TestPlayerControllerOutput::stillsAreAskedFor()
{
    QCOMPARE(f.widget->renderer()->property("current-frame-on-pause"), QVariant(true));
    QVERIFY(f.backend->stillOnPause());
}

void TestPlayerControllerOutput::aRendererThatComesBackPlaysTheVideoThatWaited()
{
    Q_EMIT RendererRegistry::instance()->rendererRemoved(u"avlo_gst_internal_video_renderer"_s, QString());
    QSignalSpy buffering(f.controller.get(), &PlayerController::buffering);
    Q_EMIT f.widget->renderer()->bufferingInfo(50);
    QVERIFY2(buffering.isEmpty(), "a renderer that was dropped is not listened to");
    f.backend->clearCommands();
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 5);
    f.controller->play(video); // the widget still has it: it is fetched at once
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 5"_s});
    Q_EMIT f.widget->renderer()->bufferingInfo(50);
    QCOMPARE(buffering.size(), 1);
}

QTEST_MAIN(TestPlayerControllerOutput)
#include "test_playercontrolleroutput.moc"
