// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// A home that has never seen GStreamer: it looks through all its plug-ins first.
class GstFirstUseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secondVideoIsAskedForBeforeTheFirstCouldBegin();
};

void GstFirstUseTest::secondVideoIsAskedForBeforeTheFirstCouldBegin()
{
    // A program asks to play a file over the bus, and a second later another one.
    QTemporaryDir folder;
    QVERIFY(qputenv("GST_REGISTRY", folder.filePath(u"registry.bin"_s).toUtf8()));
    const QString first = folder.filePath(u"first.mp4"_s);
    const QString second = folder.filePath(u"second.mp4"_s);
    for (const QString &path : {first, second})
        QVERIFY(testclips::run(testclips::numberedPicture(2) + testclips::h264() + QStringList{path}));
    GstMediaBackend backend;
    const QSignalSpy failures(&backend, &MediaBackend::failed);
    backend.play(u"file://"_s + first, 0);
    QTRY_COMPARE(backend.state(), AvloRenderer::Transitioning);
    QVERIFY(!QFile::exists(folder.filePath(u"registry.bin"_s))); // still looking
    backend.play(u"file://"_s + second, 0);
    QTRY_COMPARE_WITH_TIMEOUT(backend.state(), AvloRenderer::Playing, 30000);
    QCOMPARE(backend.uri(), u"file://"_s + second);
    QCOMPARE(failures.count(), 0);
}

QTEST_GUILESS_MAIN(GstFirstUseTest)
#include "tst_gstfirstuse.moc"
