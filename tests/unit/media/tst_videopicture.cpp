// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictureclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <array>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;
using pictureclips::Coded;
using pictureclips::Kind;
using Matrix = std::array<qint32, 9>; // of a track: how its pictures are turned

Q_DECLARE_METATYPE(Matrix)

namespace {

constexpr int Patience = 45000; // ms; a loaded machine
constexpr int Bars = 8;
constexpr QSize BarsSize(320, 64);

Kind bt601()
{
    return {.red = 0.299,
            .blue = 0.114,
            .matrix = u"smpte170m"_s,
            .transfer = u"smpte170m"_s,
            .primaries = u"smpte170m"_s};
}

Kind bt2020(int depth)
{
    return {.red = 0.2627, .blue = 0.0593, .depth = depth, .matrix = u"bt2020nc"_s};
}

Kind withFullRange(Kind kind)
{
    kind.full = true;
    return kind;
}

Kind untold(Kind kind)
{
    kind.matrix.clear();
    return kind;
}

int peakMemoryMegabytes()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf("VmHWM:") + 6).trimmed().split(' ').first().toInt() / 1024;
}

// How light each quarter of a picture is, in fifths.
QList<int> quarters(const QImage &image)
{
    QList<int> found;
    for (const int y : {1, 3}) {
        for (const int x : {1, 3}) {
            const QRgb pixel = image.pixel(image.width() * x / 4, image.height() * y / 4);
            found.append(qRound(qGray(pixel) / 51.0));
        }
    }
    return found;
}

} // namespace

// The right picture of whatever a file says about shape and colour, as the back end hands it on.
class VideoPictureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void colourBars_data();
    void colourBars();
    void tenBitsKeepTheirSteps();
    void highlightsAreKept_data();
    void highlightsAreKept();
    void turnedByTheFile_data();
    void turnedByTheFile();
    void mirroredByTheFile_data();
    void mirroredByTheFile();
    void pixelAspect_data();
    void pixelAspect();
    void oddSizes_data();
    void oddSizes();
    void fieldsAreNotCombed();
    void veryWideIsShrunk();
    void aPictureAsLargeAsMemoryIsRefused();

private:
    [[nodiscard]] QString file(const QString &name) const { return m_clips.filePath(name); }
    [[nodiscard]] QImage shown(const QString &name, const QSize &output = {}, bool fill = false);

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    QSize m_size; // of the video last shown
};

void VideoPictureTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
}

// The first frame, in an output of that size or as large as it is.
QImage VideoPictureTest::shown(const QString &name, const QSize &output, bool fill)
{
    GstMediaBackend backend;
    connect(&backend, &MediaBackend::videoSizeChanged, this, [this](const QSize &size) { m_size = size; });
    QSignalSpy paused(&backend, &MediaBackend::paused);
    QSignalSpy failed(&backend, &MediaBackend::failed);
    backend.setOutput(output, fill, 0);
    backend.play(testclips::address(file(name)), 0);
    backend.pause();
    const bool there = QTest::qWaitFor([&] { return !paused.isEmpty() || !failed.isEmpty(); }, Patience);
    return there ? backend.frame().image.copy() : QImage();
}

void VideoPictureTest::colourBars_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QStringList>("codec");
    const QStringList kept;
    const QStringList h264{u"-c:v"_s, u"libx264"_s, u"-qp"_s, u"1"_s};
    const QStringList hevc{u"-c:v"_s, u"libx265"_s, u"-x265-params"_s, u"log-level=error:qp=1"_s};
    const QStringList vp9{u"-c:v"_s, u"libvpx-vp9"_s, u"-lossless"_s, u"1"_s};
    QTest::newRow("601") << bt601() << BarsSize << kept;
    QTest::newRow("601 full") << withFullRange(bt601()) << BarsSize << kept;
    QTest::newRow("709") << Kind{} << BarsSize << kept;
    QTest::newRow("709 full") << withFullRange({}) << BarsSize << kept;
    QTest::newRow("709, 10 bits") << Kind{.depth = 10} << BarsSize << kept;
    QTest::newRow("709 full, 10 bits") << withFullRange({.depth = 10}) << BarsSize << kept;
    QTest::newRow("2020 matrix") << bt2020(8) << BarsSize << kept;
    QTest::newRow("2020 matrix, 10 bits") << bt2020(10) << BarsSize << kept;
    QTest::newRow("601 in H.264") << bt601() << BarsSize << h264;
    QTest::newRow("709 in H.264") << Kind{} << BarsSize << h264;
    QTest::newRow("709 full in H.264") << withFullRange({}) << BarsSize << h264;
    QTest::newRow("709 in HEVC, 10 bits") << Kind{.depth = 10} << BarsSize << hevc;
    QTest::newRow("601 in VP9") << bt601() << BarsSize << vp9;
    QTest::newRow("untold, low") << untold(bt601()) << QSize(640, 480) << kept;
    QTest::newRow("untold, high") << untold({}) << QSize(1280, 720) << kept;
}

void VideoPictureTest::colourBars()
{
    QFETCH(Kind, kind);
    QFETCH(QSize, size);
    QFETCH(QStringList, codec);
    const auto colour = [&size](int x, int y) {
        return pictureclips::bar(x * Bars / size.width(), y < size.height() / 2 ? 1 : 0.75);
    };
    QVERIFY(pictureclips::write(file(u"bars.mkv"_s), size, kind, colour, codec));
    QStringList wrong;
    for (const QSize &output : {QSize(), QSize(480, 480), QSize(120, 120)}) {
        const QImage image = shown(u"bars.mkv"_s, output);
        QVERIFY(!image.isNull());
        for (int bar = 0; bar < Bars; ++bar) {
            for (const double level : {1.0, 0.75}) {
                const Coded rgb = pictureclips::bar(bar, level);
                const QRgb wanted = QColor::fromRgbF(float(rgb[0]), float(rgb[1]), float(rgb[2])).rgb();
                const QRgb found = image.pixel((2 * bar + 1) * image.width() / (2 * Bars),
                                               image.height() * (level == 1 ? 1 : 3) / 4);
                if (pictureclips::largestDifference(wanted, found) > 3)
                    wrong.append(u"at %1: "_s.arg(image.width()) + pictureclips::text(wanted) + u" is "_s
                                 + pictureclips::text(found));
            }
        }
    }
    QCOMPARE(wrong.join(u'\n'), QString());
}

// A soft ramp of ten bits, a quarter of all codes: neither steps of four nor a fold.
void VideoPictureTest::tenBitsKeepTheirSteps()
{
    const auto colour = [](int x, int) {
        const double level = 0.25 + 0.25 * x / 1023;
        return Coded{level, level, level};
    };
    QVERIFY(pictureclips::write(file(u"ramp.mkv"_s), {1024, 16}, {.depth = 10}, colour));
    const QImage image = shown(u"ramp.mkv"_s);
    QVERIFY(!image.isNull());
    double worst = 0;
    for (int x = 8; x + 8 < image.width(); ++x) {
        double sum = 0; // dither moves a single pixel by one
        for (int i = -4; i < 4; ++i)
            sum += qGreen(image.pixel(x + i, 8)) + qGreen(image.pixel(x + i, 9));
        worst = qMax(worst, qAbs(sum / 16 - 255 * (0.25 + 0.25 * (x - 0.5) / 1023)));
    }
    QVERIFY2(worst < 1, qPrintable(QString::number(worst)));
}

void VideoPictureTest::highlightsAreKept_data()
{
    QTest::addColumn<QString>("transfer");
    QTest::addColumn<QStringList>("codec");
    QTest::addColumn<QList<int>>("levels"); // of a grey card, of reference white, of the peak; of 255
    const QString x265
        = u"log-level=error:qp=4:hdr10=1:max-cll=1000,400:"
          "master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(40000000,50)"_s;
    QTest::newRow("PQ") << u"smpte2084"_s << QStringList() << QList<int>{108, 220, 252};
    QTest::newRow("HDR10") << u"smpte2084"_s << QStringList{u"-c:v"_s, u"libx265"_s, u"-x265-params"_s, x265}
                           << QList<int>{108, 220, 252};
    QTest::newRow("HLG") << u"arib-std-b67"_s << QStringList() << QList<int>{108, 220, 252};
}

// A grey ramp from black to 1000 cd/m2: 38 % is a grey card, which ordinary video has at 42.5 %; 58 % of PQ
// and 75 % of HLG are reference white (ITU-R BT.2408).
void VideoPictureTest::highlightsAreKept()
{
    QFETCH(QString, transfer);
    QFETCH(QStringList, codec);
    QFETCH(QList<int>, levels);
    const bool pq = transfer == u"smpte2084"_s;
    const double top = pq ? 0.752 : 1;
    const auto colour = [top](int x, int) {
        const double level = top * x / 1023;
        return Coded{level, level, level};
    };
    const Kind kind{.red = 0.2627,
                    .blue = 0.0593,
                    .depth = 10,
                    .matrix = u"bt2020nc"_s,
                    .transfer = transfer,
                    .primaries = u"bt2020"_s};
    QVERIFY(pictureclips::write(file(u"light.mkv"_s), {1024, 64}, kind, colour, codec));
    const QImage image = shown(u"light.mkv"_s);
    QCOMPARE(image.width(), 1024);
    QList<int> found;
    for (const double code : {0.38, pq ? 0.58 : 0.75, top})
        found.append(qGreen(image.pixel(qRound(code / top * 1023), 32)));
    bool near = true;
    for (int i = 0; i < 3; ++i)
        near = near && qAbs(found.at(i) - levels.at(i)) <= 3;
    if (!near)
        QCOMPARE(found, levels);
    QVERIFY(qGreen(image.pixel(0, 32)) <= 1);
    int different = 0;
    for (int x = 1; x < image.width(); ++x) {
        const int step = qGreen(image.pixel(x, 32)) - qGreen(image.pixel(x - 1, 32));
        QVERIFY2(step >= (codec.isEmpty() ? 0 : -1) && step <= 3, qPrintable(QString::number(x)));
        different += step > 0 ? 1 : 0;
    }
    QVERIFY2(different > 180, qPrintable(QString::number(different)));
}

void VideoPictureTest::turnedByTheFile_data()
{
    QTest::addColumn<int>("angle"); // which way, the versions of ffmpeg do not agree
    QTest::newRow("upright") << 0;
    QTest::newRow("90") << 90;
    QTest::newRow("180") << 180;
    QTest::newRow("270") << 270;
}

// Like a telephone held sideways or upside down; ffmpeg's own picture of it tells how it is to be seen.
void VideoPictureTest::turnedByTheFile()
{
    QFETCH(int, angle);
    const QSize size(192, 96);
    const auto colour = [&size](int x, int y) {
        const double level = 0.2 * (1 + (x >= size.width() / 2 ? 1 : 0) + (y >= size.height() / 2 ? 2 : 0));
        return Coded{level, level, level};
    };
    const QStringList codec{u"-c:v"_s, u"libx264"_s, u"-qp"_s, u"10"_s};
    QVERIFY(pictureclips::write(file(u"lying.mp4"_s), size, {}, colour, codec));
    QVERIFY(testclips::run({u"-i"_s, file(u"lying.mp4"_s), u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s,
                            u"rotate=%1"_s.arg(angle), file(u"turned.mp4"_s)}));
    QVERIFY(testclips::run({u"-i"_s, file(u"turned.mp4"_s), u"-frames:v"_s, u"1"_s, file(u"turned.png"_s)}));
    const QImage wanted(file(u"turned.png"_s));
    const QImage image = shown(u"turned.mp4"_s, {400, 400});
    QCOMPARE(m_size, wanted.size());
    QCOMPARE(image.size(), wanted.size().scaled(400, 400, Qt::KeepAspectRatio));
    QCOMPARE(quarters(image), quarters(wanted));
    QCOMPARE(quarters(wanted) == (QList<int>{1, 2, 3, 4}), angle == 0);
}

void VideoPictureTest::mirroredByTheFile_data()
{
    constexpr qint32 one = 0x10000;
    constexpr qint32 last = 0x40000000;
    constexpr qint32 width = 192 * one;
    constexpr qint32 height = 96 * one;
    QTest::addColumn<Matrix>("matrix");
    QTest::addColumn<QList<int>>("seen"); // left and right at the top, left and right at the bottom
    QTest::newRow("as it is") << Matrix{one, 0, 0, 0, one, 0, 0, 0, last} << QList<int>{1, 2, 3, 4};
    QTest::newRow("left and right") << Matrix{-one, 0, 0, 0, one, 0, width, 0, last}
                                    << QList<int>{2, 1, 4, 3};
    QTest::newRow("up and down") << Matrix{one, 0, 0, 0, -one, 0, 0, height, last} << QList<int>{3, 4, 1, 2};
    QTest::newRow("along the falling diagonal")
        << Matrix{0, one, 0, one, 0, 0, 0, 0, last} << QList<int>{1, 3, 2, 4};
    // Along the other diagonal the demuxer (1.22) tells nothing.
}

// Like a telephone whose front camera films as a mirror does.
void VideoPictureTest::mirroredByTheFile()
{
    QFETCH(Matrix, matrix);
    QFETCH(QList<int>, seen);
    const QSize size(192, 96);
    const auto colour = [&size](int x, int y) {
        const double level = 0.2 * (1 + (x >= size.width() / 2 ? 1 : 0) + (y >= size.height() / 2 ? 2 : 0));
        return Coded{level, level, level};
    };
    QVERIFY(pictureclips::write(file(u"plain.mp4"_s), size, {}, colour,
                                {u"-c:v"_s, u"libx264"_s, u"-qp"_s, u"10"_s}));
    QFile plain(file(u"plain.mp4"_s));
    QVERIFY(plain.open(QIODevice::ReadOnly));
    QByteArray bytes = plain.readAll();
    const qsizetype head = bytes.indexOf("tkhd");
    QVERIFY(head > 0);
    for (size_t i = 0; i < matrix.size(); ++i)
        qToBigEndian(matrix.at(i), bytes.data() + head + 44 + 4 * qsizetype(i));
    QFile mirrored(file(u"mirrored.mp4"_s));
    QVERIFY(mirrored.open(QIODevice::WriteOnly) && mirrored.write(bytes) == bytes.size());
    mirrored.close();
    const QImage image = shown(u"mirrored.mp4"_s, {400, 400});
    const bool isTurned = matrix.at(0) == 0;
    QCOMPARE(m_size, isTurned ? size.transposed() : size);
    QCOMPARE(quarters(image), seen);
}

void VideoPictureTest::pixelAspect_data()
{
    QTest::addColumn<QSize>("coded");
    QTest::addColumn<QString>("aspect");
    QTest::addColumn<QSize>("seen");
    QTest::newRow("PAL 4:3") << QSize(720, 576) << u"16/15"_s << QSize(768, 576);
    QTest::newRow("PAL 16:9") << QSize(720, 576) << u"64/45"_s << QSize(1024, 576);
    QTest::newRow("NTSC 4:3") << QSize(720, 480) << u"8/9"_s << QSize(720, 540);
    QTest::newRow("NTSC 16:9") << QSize(720, 480) << u"32/27"_s << QSize(853, 480);
    QTest::newRow("HDV") << QSize(1440, 1080) << u"4/3"_s << QSize(1920, 1080);
    QTest::newRow("odd") << QSize(320, 180) << u"97/101"_s << QSize(320, 187);
    QTest::newRow("nonsense") << QSize(320, 180) << u"200/1"_s << QSize(320, 180);
}

void VideoPictureTest::pixelAspect()
{
    QFETCH(QSize, coded);
    QFETCH(QString, aspect);
    QFETCH(QSize, seen);
    QVERIFY(testclips::run(
        {u"-f"_s, u"lavfi"_s, u"-i"_s,
         u"color=white:s=%1x%2:r=25:d=0.4,setsar=%3"_s.arg(coded.width()).arg(coded.height()).arg(aspect),
         u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, file(u"aspect.mkv"_s)}));
    const QImage image = shown(u"aspect.mkv"_s, {600, 600});
    QCOMPARE(m_size, seen);
    const QSize wanted = QSizeF(seen).scaled(600, 600, Qt::KeepAspectRatio).toSize();
    QVERIFY2(qAbs(image.width() - wanted.width()) <= 1 && qAbs(image.height() - wanted.height()) <= 1,
             qPrintable(u"%1x%2"_s.arg(image.width()).arg(image.height())));
    // Filling covers the whole and keeps the shape.
    const QImage filling = shown(u"aspect.mkv"_s, {300, 500}, true);
    QVERIFY(filling.width() >= 298 && filling.height() >= 498);
    QVERIFY(qAbs(double(filling.width()) / filling.height() - double(seen.width()) / seen.height()) < 0.01);
}

void VideoPictureTest::oddSizes_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<Kind>("kind");
    const Kind hdr{.red = 0.2627,
                   .blue = 0.0593,
                   .depth = 10,
                   .matrix = u"bt2020nc"_s,
                   .transfer = u"smpte2084"_s,
                   .primaries = u"bt2020"_s};
    for (const QSize &size : {QSize(1, 1), QSize(3, 5), QSize(2, 1), QSize(319, 179), QSize(1, 200)}) {
        QTest::addRow("%dx%d", size.width(), size.height()) << size << Kind{};
        QTest::addRow("%dx%d of high range", size.width(), size.height()) << size << hdr;
    }
}

// One colour, and it reaches into every corner.
void VideoPictureTest::oddSizes()
{
    QFETCH(QSize, size);
    QFETCH(Kind, kind);
    QVERIFY(pictureclips::write(file(u"odd.mkv"_s), size, kind, [](int, int) {
        return Coded{0.5, 0.3, 0.3};
    }));
    for (const QSize &output : {QSize(), QSize(210, 210)}) {
        const QImage image = shown(u"odd.mkv"_s, output);
        QVERIFY(!image.isNull());
        if (output.isEmpty())
            QCOMPARE(image.size(), size);
        else
            QVERIFY(image.width() == 210 || image.height() == 210);
        const QRgb middle = image.pixel(image.width() / 2, image.height() / 2);
        QVERIFY(qRed(middle) > qGreen(middle) + 20);
        int worst = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                worst = qMax(worst, pictureclips::largestDifference(image.pixel(x, y), middle));
        }
        QVERIFY2(worst <= 2, qPrintable(QString::number(worst)));
    }
}

// The two fields of a frame of an old camera are of different moments: here one is white, the other black.
void VideoPictureTest::fieldsAreNotCombed()
{
    QVERIFY(
        testclips::run({u"-f"_s, u"lavfi"_s, u"-i"_s,
                        u"color=black:s=720x576:r=50:d=1,format=yuv420p,geq=lum='235*mod(N,2)':cb=128:cr=128,"
                        "tinterlace=mode=interleave_top,setfield=tff"_s,
                        u"-c:v"_s, u"mpeg2video"_s, u"-flags"_s, u"+ilme+ildct"_s, u"-qscale"_s, u"2"_s,
                        u"-top"_s, u"1"_s, file(u"fields.mkv"_s)}));
    const QImage image = shown(u"fields.mkv"_s);
    QCOMPARE(image.height(), 576);
    int steepest = 0;
    for (int y = 100; y < 500; ++y)
        steepest = qMax(steepest, qAbs(qGray(image.pixel(360, y)) - qGray(image.pixel(360, y + 1))));
    QVERIFY2(steepest < 40, qPrintable(QString::number(steepest)));
}

void VideoPictureTest::veryWideIsShrunk()
{
    QVERIFY(pictureclips::write(file(u"wide.mkv"_s), {16384, 64}, {}, [](int, int) {
        return Coded{1, 1, 1};
    }));
    QCOMPARE(shown(u"wide.mkv"_s, {480, 854}).size(), QSize(480, 1));
    QCOMPARE(m_size, QSize(16384, 64));
    // Filling an upright screen it would be 218,000 pixels wide.
    const QImage filling = shown(u"wide.mkv"_s, {480, 854}, true);
    QCOMPARE(filling.size(), QSize(8192, 32));
    QCOMPARE(qGray(filling.pixel(4000, 16)), 255);
    const QImage whole = shown(u"wide.mkv"_s);
    QVERIFY2(whole.width() <= 8192, qPrintable(QString::number(whole.width())));
}

// A few hundred bytes that claim 16,384 x 16,384 pixels: 400 MB for every buffer, and playing takes many. The
// decoder may have begun the first.
void VideoPictureTest::aPictureAsLargeAsMemoryIsRefused()
{
    QVERIFY(pictureclips::write(file(u"small.jpg"_s), {64, 64}, withFullRange({}),
                                [](int, int) {
                                    return Coded{1, 1, 1};
                                },
                                {u"-frames:v"_s, u"1"_s}));
    QFile file(this->file(u"small.jpg"_s));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    const QByteArray size("\xFF\xC0\x00\x11\x08\x00\x40\x00\x40", 9);
    QVERIFY(bytes.contains(size));
    bytes.replace(size, QByteArray("\xFF\xC0\x00\x11\x08\x40\x00\x40\x00", 9));
    QFile patched(this->file(u"claims.jpg"_s));
    QVERIFY(patched.open(QIODevice::WriteOnly) && patched.write(bytes) == bytes.size());
    patched.close();
    QCOMPARE(QProcess::execute(u"gst-launch-1.0"_s,
                               {u"-q"_s, u"multifilesrc"_s, u"location="_s + patched.fileName(),
                                u"caps=image/jpeg,framerate=10/1"_s, u"num-buffers=5"_s, u"!"_s,
                                u"jpegparse"_s, u"!"_s, u"matroskamux"_s, u"!"_s, u"filesink"_s,
                                u"location="_s + this->file(u"claims.mkv"_s)}),
             0);
    const int before = peakMemoryMegabytes();
    GstMediaBackend backend;
    QSignalSpy failed(&backend, &MediaBackend::failed);
    backend.play(testclips::address(this->file(u"claims.mkv"_s)), 0);
    QVERIFY(failed.wait(Patience));
    const int grown = peakMemoryMegabytes() - before;
    QVERIFY2(grown < 500, qPrintable(u"%1 MB"_s.arg(grown)));
}

QTEST_MAIN(VideoPictureTest)
#include "tst_videopicture.moc"
