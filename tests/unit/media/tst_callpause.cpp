// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include "support/fakedevice.h"

#include <platform/media/avlorenderer.h>
#include <platform/media/gst/gstmediabackend.h>
#include <platform/media/nullmediabackend.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/videowidget.h>

#include <QGraphicsScene>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine

} // namespace

// A phone call and a video.
class CallPauseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("HOME", QFile::encodeName(m_home.path()));
        qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    }

    void init()
    {
        fakes::Calls::install();
        useNullBackend();
    }

    void cleanup()
    {
        delete m_widget;
        fakes::Calls::remove();
    }

    // A call begins while a video plays: it pauses, its place is told once, and after the call it waits for
    // the person.
    void aCallPausesAndNothingResumes()
    {
        QVERIFY(play());
        m_backend->advance(12500ms);
        QSignalSpy paused(m_widget, &VideoWidget::paused);
        m_backend->clearCommands();
        fakes::Calls::set(1);
        QTRY_COMPARE(paused.size(), 1);
        QCOMPARE(m_backend->state(), AvloRenderer::Paused);
        QCOMPARE(m_widget->position(), 12u);
        fakes::Calls::set(0);
        settle();
        QCOMPARE(m_backend->state(), AvloRenderer::Paused);
        QCOMPARE(m_backend->commands(), QStringList{u"pause"_s});
        QCOMPARE(paused.size(), 1);
        QCOMPARE(m_errors, QList<int>());
        m_widget->resume();
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    }

    void aCallWhileTheVideoIsOpened()
    {
        NullMediaBackend::Media slow;
        slow.prerollDelay = 2s;
        QVERIFY(play(slow, AvloRenderer::Transitioning));
        QSignalSpy states(m_widget->renderer(), &AvloRenderer::stateChanged);
        fakes::Calls::set(1);
        m_backend->advance(3s);
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
        // It never played, and nobody is told what the telephone tells.
        QCOMPARE(states.size(), 1);
        QCOMPARE(m_errors, QList<int>());
    }

    void goingOnDuringTheCallIsRefusedAudibly()
    {
        QVERIFY(play());
        fakes::Calls::set(1);
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
        m_widget->resume();
        QTRY_COMPARE(m_errors, QList<int>{329});
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
        m_widget->play(u"file:///other.mp4"_s, 0);
        QTRY_COMPARE(m_errors, (QList<int>{329, 329}));
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    }

    void aCallWhilePausedOrStoppedChangesNothing()
    {
        QVERIFY(play());
        m_widget->pause();
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
        m_backend->clearCommands();
        fakes::Calls::set(1);
        fakes::Calls::set(0);
        m_widget->stop();
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Stopped);
        fakes::Calls::set(1);
        settle();
        QCOMPARE(m_backend->commands(), QStringList{u"stop"_s});
        QCOMPARE(m_errors, QList<int>());
    }

    // What is known of a call comes after the video has begun.
    void aCallThatIsKnownLate()
    {
        fakes::Calls::setLate(1);
        QVERIFY(play(NullMediaBackend::Media(), AvloRenderer::Paused));
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    }

    // ModemManager dies in mid-call: playing is possible again, by hand.
    void theSourceOfCallsIsLost()
    {
        QVERIFY(play());
        fakes::Calls::set(1);
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
        fakes::Calls::fail();
        settle();
        QCOMPARE(m_backend->state(), AvloRenderer::Paused);
        m_widget->resume();
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
        settle();
        QCOMPARE(m_errors, QList<int>());
    }

    void anotherRendererAfterALostOne()
    {
        QVERIFY(play());
        m_backend->lose();
        QTRY_VERIFY(m_backend && m_backend->commands().isEmpty() && m_widget->renderer());
        m_widget->play(u"file:///next.mp4"_s, 0);
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
        fakes::Calls::set(1);
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    }

    void aRealVideoPausesWithItsStill()
    {
        using namespace testclips;
        const QString clip = m_home.filePath(u"clip.mp4"_s);
        QVERIFY(run(numberedPicture(20) + tone(20) + h264() + QStringList{clip}));
        RendererRegistry::setBackendFactory([] { return std::make_unique<GstMediaBackend>(); });
        m_widget = new VideoWidget;
        m_widget->resize(480, 270);
        QTRY_VERIFY(m_widget->renderer());
        m_widget->renderer()->setProperty(u"current-frame-on-pause"_s, true);
        QSignalSpy metadata(m_widget->renderer(), &AvloRenderer::metadataChanged);
        QSignalSpy paused(m_widget, &VideoWidget::paused);
        m_widget->play(address(clip), 4);
        QTRY_COMPARE_WITH_TIMEOUT(m_widget->backend()->state(), AvloRenderer::Playing, Patience);
        fakes::Calls::set(1);
        QTRY_COMPARE_WITH_TIMEOUT(m_widget->backend()->state(), AvloRenderer::Paused, Patience);
        QTRY_COMPARE_WITH_TIMEOUT(paused.size(), 1, Patience);
        QVERIFY(m_widget->position() >= 4);
        QVERIFY(std::any_of(metadata.begin(), metadata.end(), [](const QVariantList &arguments) {
            return arguments.at(0).toString() == u"paused-thumbnail-uri"_s;
        }));
        const MediaTime place = m_widget->backend()->position();
        fakes::Calls::set(0);
        settle();
        QCOMPARE(m_widget->backend()->state(), AvloRenderer::Paused);
        QCOMPARE(m_widget->backend()->position(), place);
        m_widget->resume();
        QTRY_COMPARE_WITH_TIMEOUT(m_widget->backend()->state(), AvloRenderer::Playing, Patience);
    }

private:
    void useNullBackend()
    {
        m_errors.clear();
        RendererRegistry::setBackendFactory([this] {
            auto backend = std::make_unique<NullMediaBackend>();
            m_backend = backend.get();
            return backend;
        });
    }
    bool play(const NullMediaBackend::Media &media = {}, AvloRenderer::State until = AvloRenderer::Playing)
    {
        m_widget = new VideoWidget;
        if (!QTest::qWaitFor([this] { return m_widget->renderer() != nullptr; }))
            return false;
        connect(m_widget->renderer(), &AvloRenderer::error, this,
                [this](const AvloError &error) { m_errors.append(error.code); });
        m_backend->setDefaultMedia(media);
        m_widget->play(u"file:///video.mp4"_s, 0);
        return QTest::qWaitFor([this, until] { return m_backend->state() == until; });
    }
    // Everything that is on its way arrives.
    static void settle()
    {
        for (int i = 0; i < 10; ++i)
            QCoreApplication::processEvents();
    }

    QTemporaryDir m_home;
    QPointer<VideoWidget> m_widget;
    QPointer<NullMediaBackend> m_backend;
    QList<int> m_errors;
};

QTEST_MAIN(CallPauseTest)
#include "tst_callpause.moc"
