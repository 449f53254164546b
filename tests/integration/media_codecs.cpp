// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/playback.h"

#include <QUrl>

#include <cstring>

#include <gst/gst.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 60000; // ms; a loaded machine

// From here on this machine is one on which nobody has installed a decoder for that.
int removeDecoders(const char *format)
{
    GstCaps *caps = gst_caps_from_string(format);
    GList *all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER, GST_RANK_NONE);
    GList *able = gst_element_factory_list_filter(all, caps, GST_PAD_SINK, FALSE);
    int count = 0;
    for (GList *it = able; it != nullptr; it = it->next) {
        // Those that find a decoder for anything stay.
        if (std::strstr(gst_element_factory_get_metadata(GST_ELEMENT_FACTORY(it->data), "klass"), "Bin")
            != nullptr)
            continue;
        // A plug-in that is loaded later would bring it back.
        GstPluginFeature *loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(it->data));
        if (loaded == nullptr)
            continue;
        gst_registry_remove_feature(gst_registry_get(), loaded);
        gst_object_unref(loaded);
        ++count;
    }
    gst_plugin_feature_list_free(able);
    gst_plugin_feature_list_free(all);
    gst_caps_unref(caps);
    return count;
}

} // namespace

// A machine that lacks the decoders of H.264 and AAC, and has those of everything else.
class CodecsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void whatIsMissingIsTold_data();
    void whatIsMissingIsTold();

private:
    [[nodiscard]] bool make(const QString &name, const QStringList &options, bool picture = true,
                            bool sound = true) const;

    QTemporaryDir m_folder;
};

bool CodecsTest::make(const QString &name, const QStringList &options, bool picture, bool sound) const
{
    TestClips::Clip clip = streamclips::small(options);
    clip.sound = sound;
    if (!picture)
        clip.source.clear();
    const QString failure = TestClips::make(m_folder.filePath(name), clip);
    if (!failure.isEmpty())
        qWarning("%s", qPrintable(failure));
    return failure.isEmpty();
}

void CodecsTest::initTestCase()
{
    const QStringList mpeg4{u"-c:v"_s, u"mpeg4"_s};
    const QStringList vorbis{u"-c:a"_s, u"libvorbis"_s};
    QVERIFY(make(u"both.mp4"_s, streamclips::h264()));
    QVERIFY(make(u"picture.mp4"_s, streamclips::h264(), true, false));
    QVERIFY(make(u"picture.mkv"_s, QStringList{u"-c:v"_s, u"libx264"_s} + vorbis));
    QVERIFY(make(u"sound.mp4"_s, mpeg4 + QStringList{u"-c:a"_s, u"aac"_s}));
    QVERIFY(make(u"sound.m4a"_s, {u"-c:a"_s, u"aac"_s}, false));
    QVERIFY(make(u"none.mkv"_s, mpeg4 + vorbis));
    QVERIFY(make(u"unknown.avi"_s, mpeg4, true, false));
    QFile avi(m_folder.filePath(u"unknown.avi"_s));
    QVERIFY(avi.open(QIODevice::ReadWrite));
    const QByteArray renamed = avi.readAll().replace("FMP4", "QQQQ");
    QVERIFY(avi.seek(0) && avi.write(renamed) == renamed.size());
    avi.close();
    gst_init(nullptr, nullptr);
    QVERIFY(removeDecoders("video/x-h264") > 0);
    QVERIFY(removeDecoders("audio/mpeg, mpegversion=(int)4") > 0);
}

void CodecsTest::whatIsMissingIsTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("story");
    QTest::newRow("neither picture nor sound") << u"both.mp4"_s << 317 << u"error317"_s;
    QTest::newRow("the picture, and there is no sound") << u"picture.mp4"_s << 317 << u"error317"_s;
    QTest::newRow("the picture, and there is sound") << u"picture.mkv"_s << 317 << u"error317"_s;
    QTest::newRow("the sound of a picture") << u"sound.mp4"_s << 0 << u"playing end"_s;
    QTest::newRow("the sound alone") << u"sound.m4a"_s << 319 << u"error319"_s;
    QTest::newRow("a picture in a format that nobody knows") << u"unknown.avi"_s << 317 << u"error317"_s;
    QTest::newRow("nothing") << u"none.mkv"_s << 0 << u"playing end"_s;
}

void CodecsTest::whatIsMissingIsTold()
{
    QFETCH(QString, name);
    QFETCH(int, code);
    QFETCH(QString, story);
    Playback playback(QUrl::fromLocalFile(m_folder.filePath(name)).toString());
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    qInfo("%s", qPrintable(playback.story()));
    QVERIFY2(playback.code == code && playback.events.join(u' ') == story, qPrintable(playback.story()));
    QVERIFY2(playback.overAfter < 5000, qPrintable(playback.story()));
}

QTEST_MAIN(CodecsTest)
#include "media_codecs.moc"
