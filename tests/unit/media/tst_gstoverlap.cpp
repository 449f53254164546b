// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QDir>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <functional>

#include <gst/gst.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 30000; // ms; a loaded machine
constexpr int HeadStart = 500; // ms for another thread to get ahead, when it can

// What GStreamer is about to do, told on the thread that does it, which goes on when this returns.
std::function<void(const QByteArray &category, const QByteArray &element, const QByteArray &text)> onLog;

void logged(GstDebugCategory *category, GstDebugLevel level, const char *file, const char *function, int line,
            GObject *object, GstDebugMessage *message, gpointer data)
{
    Q_UNUSED(level)
    Q_UNUSED(file)
    Q_UNUSED(function)
    Q_UNUSED(line)
    Q_UNUSED(data)
    if (!onLog || !GST_IS_ELEMENT(object))
        return;
    GstElementFactory *factory = gst_element_get_factory(GST_ELEMENT(object));
    onLog(gst_debug_category_get_name(category), factory != nullptr ? GST_OBJECT_NAME(factory) : "",
          gst_debug_message_get(message));
}

// Threads on which videos are opened and closed.
int controlThreads()
{
    int count = 0;
    const QStringList threads = QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &thread : threads) {
        QFile name(u"/proc/self/task/%1/comm"_s.arg(thread));
        count += name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "media-control" ? 1 : 0;
    }
    return count;
}

} // namespace

// Threads of one or two videos that get ahead of one another, as they do on a machine with much to do.
class GstOverlapTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void dataThatIsQuickerThanTheStartIsNotLost();
    void aVideoIsClosedWhileItsTypeIsReported();
    void theScreenTurnsWhileVideosAreOpened();

private:
    QTemporaryDir m_folder;
    QString m_clip;
    std::unique_ptr<GstMediaBackend> m_backend;
    int m_failures = 0;
};

void GstOverlapTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_folder.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_folder.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
    const QString path = m_folder.filePath(u"clip.mp4"_s);
    QVERIFY(testclips::run(testclips::numberedPicture(8) + testclips::tone(8) + testclips::h264()
                           + QStringList{path}));
    m_clip = testclips::address(path);
    gst_init(nullptr, nullptr);
    gst_debug_remove_log_function(gst_debug_log_default);
    gst_debug_add_log_function(logged, nullptr, nullptr);
    // The plug-ins are there, and with them the names of what they log.
    m_backend = std::make_unique<GstMediaBackend>();
    m_backend->play(m_clip, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    gst_debug_set_active(TRUE);
}

void GstOverlapTest::init()
{
    m_failures = 0;
    m_backend = std::make_unique<GstMediaBackend>();
    connect(m_backend.get(), &MediaBackend::failed, this, [this] { ++m_failures; });
}

void GstOverlapTest::cleanup()
{
    gst_debug_set_threshold_from_string("", TRUE);
    m_backend.reset();
    onLog = nullptr;
}

void GstOverlapTest::dataThatIsQuickerThanTheStartIsNotLost()
{
    std::atomic<int> held = 0;
    QSemaphore never;
    onLog = [&](const QByteArray &, const QByteArray &element, const QByteArray &text) {
        if (element == "decodebin3" && text.contains("desired next PAUSED") && held.fetch_add(1) == 0)
            (void)never.tryAcquire(1, HeadStart);
    };
    gst_debug_set_threshold_from_string("GST_STATES:4", TRUE);
    m_backend->play(m_clip, 0);
    QTRY_VERIFY_WITH_TIMEOUT(m_backend->state() == AvloRenderer::Playing || m_failures > 0, Patience);
    QCOMPARE(m_failures, 0);
    QVERIFY(held > 0);
}

void GstOverlapTest::aVideoIsClosedWhileItsTypeIsReported()
{
    QSemaphore reported;
    QSemaphore closing;
    std::atomic<bool> held = false;
    onLog = [&](const QByteArray &category, const QByteArray &element, const QByteArray &text) {
        if (category == "urisourcebin" && text.startsWith("typefind found") && !held.exchange(true)) {
            reported.release();
            (void)closing.tryAcquire(1, HeadStart);
        } else if (element == "typefind" && text.contains("desired next READY") && held) {
            closing.release();
        }
    };
    gst_debug_set_threshold_from_string("urisourcebin:6,GST_STATES:4", TRUE);
    m_backend->play(m_clip, 0);
    QVERIFY(reported.tryAcquire(1, Patience));
    m_backend->play(m_clip, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    QTRY_COMPARE(controlThreads(), 1); // the first video is closed
    QCOMPARE(m_failures, 0);
}

void GstOverlapTest::theScreenTurnsWhileVideosAreOpened()
{
    bool upright = false;
    QTimer turning;
    connect(&turning, &QTimer::timeout, this, [&] {
        upright = !upright;
        m_backend->setOutput(upright ? QSize(480, 854) : QSize(854, 480), !upright, upright ? 0 : 90);
    });
    turning.start(5);
    for (int i = 0; i < 15; ++i) {
        m_backend->play(m_clip, 0);
        QTRY_COMPARE(m_backend->state(), AvloRenderer::Transitioning);
        m_backend->play(m_clip, i % 3);
        QTRY_VERIFY_WITH_TIMEOUT(m_backend->state() == AvloRenderer::Playing || m_failures > 0, Patience);
        QCOMPARE(m_failures, 0);
    }
    turning.stop();
    m_backend->setOutput(QSize(854, 480), false, 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->frame().image.size(), QSize(854, 480), Patience);
    QTRY_COMPARE(controlThreads(), 1);
}

QTEST_GUILESS_MAIN(GstOverlapTest)
#include "tst_gstoverlap.moc"
