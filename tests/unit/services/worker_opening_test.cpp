// SPDX-License-Identifier: GPL-3.0-or-later
#include "media-worker/formats.h"
#include "media-worker/inspection.h"
#include "../../support/testclips.h"

#include <QFile>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <functional>
#include <future>
#include <string_view>
#include <thread>

#include <gst/gst.h>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int PatienceMs = 30000;
constexpr int HeadStartMs = 300; // for another thread to get ahead
constexpr unsigned TimeLimitMs = 20000;

// What an element is about to do, or has done; told on the thread that does it, which goes on when this
// returns.
std::function<void(std::string_view element, std::string_view text)> onLog;

// The sink goes from PAUSED to PLAYING; the same.
std::function<void()> onSinkPlays;
GstStateChangeReturn (*changeState)(GstElement *sink, GstStateChange transition) = nullptr;

GstStateChangeReturn sinkChangesState(GstElement *sink, GstStateChange transition)
{
    if (onSinkPlays && transition == GST_STATE_CHANGE_PAUSED_TO_PLAYING)
        onSinkPlays();
    return changeState(sink, transition);
}

void logged(GstDebugCategory *, GstDebugLevel, const char *, const char *, int, GObject *object,
            GstDebugMessage *message, gpointer)
{
    GstElementFactory *const factory
        = onLog && GST_IS_ELEMENT(object) ? gst_element_get_factory(GST_ELEMENT(object)) : nullptr;
    if (factory)
        onLog(GST_OBJECT_NAME(factory), gst_debug_message_get(message));
}

struct Answer
{
    WorkerProtocol::Status status = WorkerProtocol::Ok;
    qint64 ms = 0;
};

Answer inspect(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {WorkerProtocol::Unreadable, 0};
    WorkerProtocol::Request request;
    request.timeLimitMs = TimeLimitMs;
    QElapsedTimer timer;
    timer.start();
    return {Inspection::inspect(file.handle(), request).status, timer.elapsed()};
}

} // namespace

// A file whose reading gets ahead of its opening, as happens once in many thousand.
class WorkerOpeningTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        Formats::keepClaimedOnly();
        gst_debug_remove_log_function(gst_debug_log_default);
        gst_debug_add_log_function(logged, nullptr, nullptr);
        GstElement *const sink = gst_element_factory_make("appsink", nullptr);
        GstElementClass *const sinks = GST_ELEMENT_GET_CLASS(sink);
        changeState = std::exchange(sinks->change_state, sinkChangesState);
        gst_object_unref(gst_object_ref_sink(sink));
        const TestClips::Clip clip{.width = 64, .height = 48, .seconds = 1, .sound = false, .options = {}};
        QCOMPARE(TestClips::make(m_clip, clip), QString());
        QFile whole(m_clip);
        QVERIFY(whole.open(QIODevice::ReadOnly));
        QFile cut(m_cut);
        QVERIFY(cut.open(QIODevice::WriteOnly));
        QVERIFY(cut.write(whole.read(whole.size() / 2)) > 0); // the index is at the end
        cut.close();
        QCOMPARE(inspect(m_clip).status,
                 WorkerProtocol::Ok); // the plug-ins are loaded, and with them what they log
        gst_debug_set_threshold_from_string("GST_STATES:4,appsink:5,parsebin:5", TRUE);
        gst_debug_set_active(TRUE);
    }
    void cleanup()
    {
        onLog = nullptr;
        onSinkPlays = nullptr;
    }

    void aFileThatEndsBeforeTheSinkPlays()
    {
        QSemaphore starting;
        QSemaphore ended;
        std::atomic<bool> inTime = false;
        onLog = [&](std::string_view element, std::string_view text) {
            if (element == "parsebin" && text.starts_with("typefind found caps"))
                (void)starting.tryAcquire(1, PatienceMs);
            else if (element == "appsink" && text == "receiving EOS")
                ended.release();
        };
        onSinkPlays = [&] {
            starting.release();
            inTime = ended.tryAcquire(1, PatienceMs);
        };
        std::promise<Answer> answer;
        std::thread([&] { answer.set_value(inspect(m_clip)); }).detach();
        std::future<Answer> result = answer.get_future();
        if (result.wait_for(2ms * PatienceMs) != std::future_status::ready)
            qFatal("the file was never opened"); // nor can the thread that opens it be ended
        QCOMPARE(result.get().status, WorkerProtocol::Ok);
        QVERIFY(inTime);
    }

    void anErrorBeforeTheDemuxerIsTaken()
    {
        std::atomic<int> held = 0;
        onLog = [&](std::string_view element, std::string_view text) {
            if (element == "qtdemux" && text.find("completed state change to PAUSED") != text.npos) {
                ++held;
                (void)QSemaphore().tryAcquire(1, HeadStartMs); // nothing tells that it is ahead
            }
        };
        const Answer answer = inspect(m_cut);
        QCOMPARE(answer.status, WorkerProtocol::NotMedia);
        QVERIFY2(answer.ms < TimeLimitMs / 2, qPrintable(QString::number(answer.ms)));
        QVERIFY(held > 0); // the state may be told twice
    }

private:
    QTemporaryDir m_folder;
    QString m_clip = m_folder.filePath(u"clip.mp4"_s);
    QString m_cut = m_folder.filePath(u"cut.mp4"_s);
};

QTEST_GUILESS_MAIN(WorkerOpeningTest)
#include "worker_opening_test.moc"
