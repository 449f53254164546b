// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Videos whose streams do not all come, or not together: they play or fail at once, and nothing worse.
class OddStreamsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void streamsThatAreFoundOneByOne();
    void nothingBehindTheHead_data();
    void nothingBehindTheHead();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] bool plays(GstMediaBackend &backend, const QString &name) const;

    QTemporaryDir m_folder;
};

void OddStreamsTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_folder.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_folder.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
    const QStringList streams = testclips::numberedPicture(2, 160, 120) + testclips::tone(2);
    QVERIFY(testclips::run(streams
                           + QStringList{u"-c:v"_s, u"flv1"_s, u"-c:a"_s, u"mp3"_s, u"-ar"_s, u"44100"_s,
                                         path(u"one-by-one.flv"_s)}));
    QVERIFY(testclips::run(streams
                           + QStringList{u"-c:v"_s, u"mpeg4"_s, u"-c:a"_s, u"mp3"_s, path(u"whole.avi"_s)}));
}

bool OddStreamsTest::plays(GstMediaBackend &backend, const QString &name) const
{
    backend.stop();
    if (!QTest::qWaitFor([&] { return backend.state() == AvloRenderer::Stopped; }, TestPatience))
        return false;
    bool failed = false;
    const auto failing = connect(&backend, &MediaBackend::failed, &backend, [&] { failed = true; });
    backend.play(testclips::address(path(name)), 0);
    const bool over
        = QTest::qWaitFor([&] { return failed || backend.state() == AvloRenderer::Playing; }, TestPatience);
    disconnect(failing);
    return over && !failed;
}

// Of the first of them is told twice, the second time when both are known.
void OddStreamsTest::streamsThatAreFoundOneByOne()
{
    constexpr int Openings = 40;
    GstMediaBackend backend;
    for (int opening = 0; opening < Openings; ++opening)
        QVERIFY2(plays(backend, u"one-by-one.flv"_s), qPrintable(u"opening %1"_s.arg(opening)));
}

void OddStreamsTest::nothingBehindTheHead_data()
{
    QTest::addColumn<int>("percent");
    for (const int percent : {6, 8, 10, 12, 15, 20})
        QTest::addRow("%d percent", percent) << percent;
}

// An AVI file tells what it holds before it holds it. Closing it must not end the program.
void OddStreamsTest::nothingBehindTheHead()
{
    QFETCH(int, percent);
    QFile whole(path(u"whole.avi"_s));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QString name = u"head%1.avi"_s.arg(percent);
    QFile head(path(name));
    QVERIFY(head.open(QIODevice::WriteOnly));
    QVERIFY(head.write(whole.read(whole.size() * percent / 100)) > 0);
    head.close();
    GstMediaBackend backend;
    (void)plays(backend, name); // what came before the break, if anything
    QVERIFY(plays(backend, u"whole.avi"_s));
}

QTEST_GUILESS_MAIN(OddStreamsTest)
#include "tst_oddstreams.moc"
