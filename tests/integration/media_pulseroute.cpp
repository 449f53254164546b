// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/pulseserver.h"
#include "support/testclips.h"

#include <platform/media/mediabackend.h>
#include <platform/media/pulse/pulseroutewatcher.h>
#include <platform/media/videowidget.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <signal.h>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 20000; // ms
constexpr int Retries = 60000; // ms; looked for at longer and longer intervals

} // namespace

// A real sound server, and real clips that play on it.
class PulseRouteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void outputThatGoesPausesAndStaysPaused();
    void outputThatGoesWithoutAnotherPauses();
    void outputThatIsNotInUseMayGo();
    void outputThatGoesWhileAVideoOpens();
    void restartOfTheServerIsNoUnplug_data();
    void restartOfTheServerIsNoUnplug();
    void serverThatComesLaterIsFound();
    void serverThatHangsHoldsNobodyUp();

private:
    [[nodiscard]] bool startWatching();
    void playOn(const QString &sink);
    [[nodiscard]] AvloRenderer::State state() const { return m_widget->backend()->state(); }

    QTemporaryDir m_home;
    QString m_clip;
    std::unique_ptr<PulseServer> m_server;
    PulseRouteWatcher *m_watcher = nullptr;
    std::unique_ptr<VideoWidget> m_widget;
    QStringList m_vanished;
};

void PulseRouteTest::initTestCase()
{
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    m_clip = QUrl::fromLocalFile(m_home.filePath(u"clip.mp4"_s)).toString();
    TestClips::Clip clip;
    clip.seconds = 60;
    QCOMPARE(TestClips::make(m_home.filePath(u"clip.mp4"_s), clip), QString());
    AudioRouteWatcher::setFactory([this](QObject *parent) -> AudioRouteWatcher * {
        m_watcher = new PulseRouteWatcher(parent);
        connect(m_watcher, &AudioRouteWatcher::outputVanished, this, [this] { m_vanished.append(u"x"_s); });
        return m_watcher;
    });
}

void PulseRouteTest::init()
{
    m_vanished.clear();
    m_server = std::make_unique<PulseServer>();
}

void PulseRouteTest::cleanup()
{
    m_widget.reset();
    m_server.reset();
}

bool PulseRouteTest::startWatching()
{
    if (!m_server->start())
        return false;
    m_widget = std::make_unique<VideoWidget>();
    return QTest::qWaitFor([this] { return m_watcher->isWatching() && m_widget->renderer(); }, Patience);
}

void PulseRouteTest::playOn(const QString &sink)
{
    QVERIFY(m_server->setDefault(sink));
    QSignalSpy found(m_watcher, &PulseRouteWatcher::streamFound);
    m_widget->play(m_clip, 3);
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Playing, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!found.isEmpty(), Patience);
}

void PulseRouteTest::outputThatGoesPausesAndStaysPaused()
{
    QVERIFY(startWatching());
    const QString headset = m_server->addSink(u"headset"_s);
    const QString speaker = m_server->addSink(u"speaker"_s);
    playOn(u"headset"_s);
    QSignalSpy paused(m_widget.get(), &VideoWidget::paused);
    QVERIFY(m_server->removeModule(headset));
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Paused, Patience);
    QTRY_COMPARE(paused.count(), 1);
    QCOMPARE(m_vanished.size(), 1);
    // The headset comes back: that alone plays nothing. A person does.
    QVERIFY(!m_server->addSink(u"headset"_s).isEmpty());
    QVERIFY(m_server->setDefault(u"headset"_s));
    QCOMPARE(state(), AvloRenderer::Paused);
    m_widget->resume();
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Playing, Patience);
    QCOMPARE(m_vanished.size(), 1);
}

void PulseRouteTest::outputThatGoesWithoutAnotherPauses()
{
    QVERIFY(startWatching());
    const QString headset = m_server->addSink(u"headset"_s);
    playOn(u"headset"_s);
    QVERIFY(m_server->removeModule(headset));
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Paused, Patience);
    QCOMPARE(m_vanished.size(), 1);
    // Connected again, and the person goes on: the sound is there.
    const uint place = m_widget->position();
    QVERIFY(!m_server->addSink(u"headset"_s).isEmpty());
    QSignalSpy found(m_watcher, &PulseRouteWatcher::streamFound);
    m_widget->resume();
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Playing, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!found.isEmpty(), Patience);
    QVERIFY2(m_widget->position() - place <= 2, qPrintable(QString::number(m_widget->position())));
}

void PulseRouteTest::outputThatIsNotInUseMayGo()
{
    QVERIFY(startWatching());
    const QString headset = m_server->addSink(u"headset"_s);
    const QString other = m_server->addSink(u"other"_s);
    const QString another = m_server->addSink(u"another"_s);
    playOn(u"headset"_s);
    QVERIFY(m_server->removeModule(other));
    QVERIFY(m_server->removeModule(another));
    // What comes after them is told, and is the only one.
    QVERIFY(m_server->removeModule(headset));
    QTRY_COMPARE_WITH_TIMEOUT(m_vanished.size(), 1, Patience);
}

// As soon as its stream is there: before the first picture, or just after it.
void PulseRouteTest::outputThatGoesWhileAVideoOpens()
{
    QVERIFY(startWatching());
    QVERIFY(!m_server->addSink(u"speaker"_s).isEmpty());
    QSignalSpy failed(m_widget->backend(), &MediaBackend::failed);
    for (int round = 0; round < 6; ++round) {
        const QString headset = m_server->addSink(u"headset"_s);
        QVERIFY(m_server->setDefault(u"headset"_s));
        QSignalSpy found(m_watcher, &PulseRouteWatcher::streamFound);
        m_widget->play(m_clip, 3);
        QTRY_VERIFY_WITH_TIMEOUT(!found.isEmpty(), Patience);
        QVERIFY(m_server->removeModule(headset));
        QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Paused, Patience);
        QVERIFY(failed.isEmpty());
        m_widget->stop();
        QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Stopped, Patience);
    }
}

void PulseRouteTest::restartOfTheServerIsNoUnplug_data()
{
    QTest::addColumn<bool>("killed");
    QTest::newRow("ended") << false;
    QTest::newRow("killed") << true;
}

void PulseRouteTest::restartOfTheServerIsNoUnplug()
{
    QFETCH(bool, killed);
    QVERIFY(startWatching());
    QVERIFY(!m_server->addSink(u"headset"_s).isEmpty());
    playOn(u"headset"_s);
    if (killed)
        m_server->kill();
    else
        m_server->stop();
    QTRY_VERIFY_WITH_TIMEOUT(!m_watcher->isWatching(), Patience);
    QVERIFY(m_server->start());
    QTRY_VERIFY_WITH_TIMEOUT(m_watcher->isWatching(), Retries);
    QCOMPARE(m_vanished, QStringList());
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Playing, Patience);
    // And what happens on the new one is noticed.
    const QString headset = m_server->addSink(u"headset"_s);
    playOn(u"headset"_s);
    QVERIFY(m_server->removeModule(headset));
    QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Paused, Patience);
}

void PulseRouteTest::serverThatComesLaterIsFound()
{
    m_widget = std::make_unique<VideoWidget>();
    QTRY_VERIFY(m_widget->renderer());
    QVERIFY(!m_watcher->isWatching());
    QVERIFY(m_server->start());
    QTRY_VERIFY_WITH_TIMEOUT(m_watcher->isWatching(), Retries);
}

void PulseRouteTest::serverThatHangsHoldsNobodyUp()
{
    QVERIFY(m_server->start());
    QCOMPARE(::kill(pid_t(m_server->processId()), SIGSTOP), 0);
    QElapsedTimer beat;
    qint64 longest = 0;
    int beats = 0;
    QTimer heart;
    connect(&heart, &QTimer::timeout, this, [&] {
        longest = std::max(longest, beat.restart());
        ++beats;
    });
    PulseRouteWatcher watcher;
    beat.start();
    heart.start(10);
    const bool beaten = QTest::qWaitFor([&beats] { return beats >= 100; }, Patience);
    QCOMPARE(::kill(pid_t(m_server->processId()), SIGCONT), 0);
    QVERIFY(beaten);
    QVERIFY2(longest < 100, qPrintable(u"%1 ms"_s.arg(longest)));
    QTRY_VERIFY_WITH_TIMEOUT(watcher.isWatching(), Patience);
}

QTEST_MAIN(PulseRouteTest)
#include "media_pulseroute.moc"
