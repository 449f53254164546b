// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <gst/video/gstvideodecoder.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 30000; // ms; a loaded machine
constexpr int Seconds = 20;
constexpr auto Distance = 2s; // of key frames

constexpr GstClockTime Nowhere = GST_CLOCK_TIME_NONE;
std::atomic<bool> s_begins = false; // the next picture is the first of a search
std::atomic<GstClockTime> s_earliest = Nowhere; // place that a decoder of pictures began at

GstPadProbeReturn noteBeginning(GstPad *, GstPadProbeInfo *info, gpointer)
{
    if ((info->type & GST_PAD_PROBE_TYPE_BUFFER) == 0)
        s_begins = s_begins || GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_SEGMENT;
    else if (s_begins.exchange(false))
        s_earliest = std::min(s_earliest.load(), GST_BUFFER_PTS(GST_PAD_PROBE_INFO_BUFFER(info)));
    return GST_PAD_PROBE_OK;
}

// Of every pipeline of this process.
gboolean elementAdded(GSignalInvocationHint *, guint, const GValue *values, gpointer)
{
    auto *element = GST_ELEMENT(g_value_get_object(&values[2]));
    if (GST_IS_VIDEO_DECODER(element)) {
        GstPad *pad = gst_element_get_static_pad(element, "sink");
        gst_pad_add_probe(pad,
                          GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
                          noteBeginning, nullptr, nullptr);
        gst_object_unref(pad);
    }
    return TRUE;
}

} // namespace

// How much is decoded for a search.
class SearchWorkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSearchThatLandsTooLateSlowsNoOther();

private:
    QTemporaryDir m_home;
    QTemporaryDir m_clips;
};

void SearchWorkTest::aSearchThatLandsTooLateSlowsNoOther()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    const QString file = m_clips.filePath(u"a.mp4"_s);
    QVERIFY(testclips::run(testclips::numberedPicture(Seconds)
                           + QStringList{u"-r"_s, u"30"_s, u"-c:v"_s, u"libx265"_s, u"-preset"_s,
                                         u"ultrafast"_s, u"-x265-params"_s,
                                         u"keyint=60:min-keyint=60:bframes=4:log-level=none"_s, file}));
    gst_init(nullptr, nullptr);
    GstMediaBackend backend;
    g_type_class_unref(g_type_class_ref(GST_TYPE_BIN)); // has its signals from then on
    g_signal_add_emission_hook(g_signal_lookup("deep-element-added", GST_TYPE_BIN), 0, elementAdded, nullptr,
                               nullptr);
    QSignalSpy pauses(&backend, &MediaBackend::paused);
    backend.play(testclips::address(file), 0);
    backend.pause();
    QTRY_COMPARE_WITH_TIMEOUT(pauses.size(), 1, Patience);
    const auto seek = [&](MediaTime place) {
        pauses.clear();
        s_earliest = Nowhere;
        backend.seek(place, MediaBackend::SeekPrecision::Exact);
        return QTest::qWaitFor([&] { return pauses.size() == 1; }, Patience);
    };
    const auto began = [] { return MediaTime(qint64(s_earliest.load())); };
    // The key frame that follows is stored before these pictures: what is found first is looked for once
    // more.
    for (const auto late : {9900ms, 9867ms}) {
        QVERIFY(seek(late));
        QVERIFY(began() < late - Distance);
        for (const auto place : {13000ms, 17000ms, 11000ms}) {
            QVERIFY(seek(place));
            QVERIFY2(began() >= place - Distance, qPrintable(QString::number(began() / 1ms)));
        }
    }
}

QTEST_MAIN(SearchWorkTest)
#include "tst_searchwork.moc"
